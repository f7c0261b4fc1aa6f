#!/usr/bin/env bash
# scripts/layout over a small project of three rooms: each rule, kept and broken.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
copyOf scripts/layout scripts/sources
cd "$work/repository" || exit 1
mkdir -p docs app host/map tests/host/map tests/support

house() {
    rm -rf app/* host/*.h host/map/* tests/host/map/* tests/support/*
    cat >docs/ARCHITECTURE.md <<'TEXT'
```
app       -> host/map
             host
host/map  -> host
host      -> host/map*
```

| `app` | The program. |
| `host/map` | The map. |
| `host` | The rest. |
TEXT
    printf '#include "host/map/Map.h"\n#include "host/Size.h"\n#include <map>\n' >app/main.cpp
    printf '#include "host/Size.h"\n' >host/map/Map.h
    printf '#include "host/map/Map.h"\n' >host/map/Map.cpp
    printf 'struct Size {};\n' >host/Size.h
    printf '#include "host/map/Map.h"\n' >host/Size.cpp
    printf '#include "host/map/Map.h"\n' >tests/host/map/MapTest.cpp
    printf '#include "host/map/Map.h"\n' >tests/support/MapTest.cpp
    printf 'add_executable(app main.cpp Map.cpp host/Size.cpp MapTest.cpp)\n' >CMakeLists.txt
}

# finds PART: one line that contains PART.
finds() {
    run scripts/layout
    is 'the exit code of a finding' "$status" 1
    isOneLine 'the finding' "$out"
    has 'the finding' "$out" "$1"
    house
}

house
run scripts/layout
is 'the exit code of a house in order' "$status" 0
is 'what is said of it' "$out" 'layout: 7 files in 3 rooms'

printf '#include "app/x.h"\n' >>host/map/Map.h && touch app/x.h
finds 'host/map/Map.h: includes app/x.h, and docs/ARCHITECTURE.md draws no arrow from host/map to app'
printf '#include "host/map/Map.h"\n' >>host/Size.h
finds 'host/Size.h: includes host/map/Map.h, which only a .cpp of host may'
sed -i '/map/d' host/Size.cpp
finds 'the arrow from host to host/map is followed by no include'
sed -i 's/map\*/map/' docs/ARCHITECTURE.md
finds 'the arrow from host to host/map points up'
mkdir -p tools && touch tools/x.h && printf '#include "tools/x.h"\n' >>app/main.cpp
finds 'app/main.cpp: includes tools/x.h, which lies in no room'
sed -i '/The map/d' docs/ARCHITECTURE.md
finds '0 rows of the table are about host/map'
# shellcheck disable=SC2016
printf '| `attic` | Old things. |\n' >>docs/ARCHITECTURE.md
finds 'a row about attic, which the drawing lacks'
for name in MapTest MapGLTest MapFailureTest; do
    touch "tests/host/$name.cpp" && printf '# %s.cpp\n' "$name" >>CMakeLists.txt
    run scripts/layout
    has 'the finding' "$out" "tests/host/$name.cpp: tests Map, and belongs into tests/host/map"
    rm "tests/host/$name.cpp"
    house
done
mkdir -p tests/attic && touch tests/attic/NewTest.cpp && printf '# NewTest.cpp\n' >>CMakeLists.txt
finds 'tests/attic/NewTest.cpp: there is no room around attic'
rm -r tests/attic
touch app/Lost.cpp
finds 'app/Lost.cpp: stands in no CMakeLists.txt'
printf '// %0118d\n' 1 >host/map/Map.vert
finds 'host/map/Map.vert:1: 121 columns'
echo 'layout: all as said'

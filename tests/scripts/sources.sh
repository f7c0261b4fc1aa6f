#!/usr/bin/env bash
# scripts/sources in a tree without git: finds our files, and nothing in folders that CMake has built in.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
copyOf scripts/sources
cd "$work/repository" || exit 1
mkdir -p 'host/a folder' build/debug/glsl 'my build/glsl' .cache node_modules/x scripts
touch host/A.cpp host/A.h 'host/a folder/B.cpp' host/x.glsl
touch build/debug/glsl/x.cpp 'my build/CMakeCache.txt' 'my build/glsl/x.cpp' .cache/x.h node_modules/x/x.cpp
printf '#!/usr/bin/env bash\n' >check
printf '#!/bin/sh\n' >scripts/other
printf '#!/usr/bin/env python3\n' >scripts/python
printf 'text\n' >scripts/text
printf '#!/bin/bash\n' >'my build/script'
chmod +x check scripts/other scripts/python 'my build/script'
touch host/part.sh

run scripts/sources cpp
is 'the list of C++ files' "$out" $'host/A.cpp\nhost/A.h\nhost/a folder/B.cpp'
run scripts/sources glsl
is 'the list of shader pieces' "$out" 'host/x.glsl'
run scripts/sources shell
is 'the list of shell scripts' "$out" $'check\nhost/part.sh\nscripts/other\nscripts/sources'
# CMake configured in the source folder itself.
touch CMakeCache.txt
run scripts/sources cpp
is 'the list of C++ files beside a CMakeCache.txt' "$out" $'host/A.cpp\nhost/A.h\nhost/a folder/B.cpp'
run scripts/sources java
is 'the exit code of another kind' "$status" 2
echo 'sources: all as said'

#!/usr/bin/env bash
# scripts/tidy with stand-ins for ninja and clang-tidy: checks every file of ours once, and a file that passed again
# only when one of ours that it depends on has changed.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
copyOf scripts/tidy .clang-tidy
cd "$work/repository" || exit 1
mkdir -p host tests 'other host' build/debug
for file in host/A.cpp host/B.cpp tests/C.cpp 'other host/D.cpp' host/A.h; do
    echo "$file" >"$file"
done

# CMake's own format. One file is compiled twice.
entry() { printf '{\n  "directory": "%s",\n  "command": "g++ %s -o %s -c %s",\n  "file": "%s"\n}' "$PWD/build/debug" "${2-}" "$1.o" "$PWD/$1" "$PWD/$1"; }
{
    printf '[\n'
    entry host/A.cpp -fprofile-update=atomic
    printf ',\n'
    entry host/B.cpp
    printf ',\n'
    entry host/B.cpp -DAGAIN
    printf ',\n'
    entry tests/C.cpp "-DX -Winvalid-pch -include \\\"$PWD/build/debug/tests/a b.dir/cmake_pch.hxx\\\" -DY"
    printf ',\n'
    entry 'other host/D.cpp'
    printf '\n]\n'
} >build/debug/compile_commands.json
standIn ninja <<'TEXT'
printf '%s: #deps 3, deps mtime 1 (VALID)\n    %s\n    ../../host/A.h\n    /usr/include/stdio.h\n\n' host/A.cpp.o "$work/repository/host/A.cpp"
TEXT
standIn clang-tidy-14 <<'TEXT'
! grep -q 'warning' "${!#}"
TEXT
looked() { calls | sed -n 's/^clang-tidy-14 .*unknown-warning-option //p' | sed "s|^$work/repository/||" | LC_ALL=C sort | xargs; }
tidy() { run scripts/tidy build/debug "$@"; }

tidy product
is 'the exit code' "$status" 0
is 'what is looked at of the product' "$(looked)" 'host/A.cpp host/B.cpp'
is 'what is said' "$out" 'tidy: 2 files, 2 to look at'
has 'the checks of the product' "$(calls)" '--checks=-clang-analyzer-*'
tidy product
is 'what is looked at of the product again' "$(looked)" ''
hasNot 'the database' "$(cat build/tidy/database/compile_commands.json)" profile-update

tidy all
has 'the database of all' "$(cat build/tidy/database/compile_commands.json)" '"g++ -DX  -DY -o tests/C.cpp.o'
is 'what is looked at of all, with all checks' "$(looked)" 'host/A.cpp host/B.cpp tests/C.cpp'
tidy all
is 'what is looked at again' "$(looked)" ''

echo 'another text' >host/A.h
tidy all
is 'what is looked at after a change of a header' "$(looked)" host/A.cpp

echo 'a warning' >host/B.cpp
tidy all
is 'the exit code with a warning' "$status" 1
tidy all
is 'what is looked at after a warning' "$(looked)" host/B.cpp

echo '[]' >build/debug/compile_commands.json
tidy all
is 'the exit code without a file' "$status" 1
echo 'tidy: all as said'

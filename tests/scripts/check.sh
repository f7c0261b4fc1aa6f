#!/usr/bin/env bash
# ./check itself, with stand-ins for everything that it starts: its sums, and its messages when something fails.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
copyOf check scripts/sources scripts/usable-path
cd "$work/repository" || exit 1
mkdir host
touch host/A.cpp

for program in git cmake clang-format-14; do
    standIn "$program" <<'TEXT'
[[ ! -e $work/fails/${0##*/} ]]
TEXT
done
for script in install-packages fetch-angle fetch-photographs fetch-format-pictures fuzz layout tidy mutate; do
    standIn "$script" <<'TEXT'
[[ ! -e $work/fails/${0##*/} ]]
TEXT
    mv "$work/bin/$script" scripts/
done
# Prints $work/says/PRESET for a preset.
standIn run-tests <<'TEXT'
cat "$work/says/$1" 2>/dev/null || echo "$1: 10 passed, 0 failed, 1 skipped"
! grep -q '^FAILED' "$work/says/$1" 2>/dev/null
TEXT
mv "$work/bin/run-tests" scripts/
mkdir "$work/fails" "$work/says"
check() { run "$work/repository/check" "$@"; }
closing() { tail -n 1 <<<"$out"; }

# Steps: ANGLE, photographs, pictures, layout, three builds, fuzzing, clang-tidy.
check
is 'the exit code where all passes' "$status" 0
is 'the closing line where all passes' "$(closing)" 'check: 39 passed, 0 failed, 3 skipped'
is 'the presets' "$(calls | sed -nE 's/^run-tests ([^ ]+).*/\1/p' | xargs)" 'asan-short release-drawing tsan-threads'
hasNot 'the calls' "$(calls)" git
has 'the calls' "$(calls)" "cmake --preset release -DVELMORA_ANGLE_DIR=$work/repository/build/angle"
has 'the calls' "$(calls)" 'fuzz --short'
has 'the calls' "$(calls)" 'clang-format-14 --dry-run --Werror host/A.cpp'

check --long
is 'the presets of --long' "$(calls | sed -nE 's/^run-tests ([^ ]+).*/\1/p' | xargs)" 'asan release tsan'
has 'the calls of --long' "$(calls)" 'tidy build/release all'
has 'the calls of --long' "$(calls)" 'mutate --sample'
has 'the packages of --long' "$(calls)" 'install-packages mutate'
touch "$work/fails/mutate"
check --long
is 'the exit code of --long where mutants are not noticed' "$status" 1
has 'what is repeated at the end' "$out" 'check: not passed: mutants'
rm "$work/fails/mutate"

# Relative to where ./check is called.
mkdir "$work/start"
VELMORA_ANGLE_DIR=../angle VELMORA_PHOTOGRAPHS_DIR=$work/p VELMORA_FORMAT_PICTURES_DIR=f run env --chdir="$work/start" "$work/repository/check"
has 'the calls with folders elsewhere' "$(calls)" \
    "cmake --preset asan -DVELMORA_ANGLE_DIR=$work/angle -DVELMORA_PHOTOGRAPHS_DIR=$work/p -DVELMORA_FORMAT_PICTURES_DIR=$work/start/f"

printf '%s\n' 'FAILED unit: A.B (reason)' 'asan-short: 5 passed, 2 failed, 3 skipped' >"$work/says/asan-short"
check
is 'the exit code where a case fails' "$status" 1
is 'the closing line where a case fails' "$(closing)" 'check: 34 passed, 2 failed, 5 skipped'
has 'what is repeated at the end' "$out" 'check: not passed: asan-short, unit: A.B (reason)'

echo 'Segmentation fault' >"$work/says/asan-short"
check
is 'the exit code where a preset is not counted' "$status" 1
is 'the closing line where a preset is not counted' "$(closing)" 'check: 29 passed, 1 failed, 2 skipped'
rm "$work/says/asan-short"

for program in install-packages fetch-angle cmake; do
    touch "$work/fails/$program"
    check
    is "the exit code where $program fails" "$status" 1
    has "the closing line where $program fails" "$(closing)" ' passed, 1 failed, 0 skipped'
    hasNot "the calls where $program fails" "$(calls)" run-tests
    rm "$work/fails/$program"
done
for program in clang-format-14 fuzz layout tidy; do
    touch "$work/fails/$program"
    check
    is "the exit code where $program fails" "$status" 1
    is "the closing line where $program fails" "$(closing)" 'check: 38 passed, 1 failed, 3 skipped'
    rm "$work/fails/$program"
done
echo 'check: all as said'

#!/usr/bin/env bash
# scripts/lib.sh, with a stand-in for cmake.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
copyOf scripts/lib.sh

# Prints its arguments; fails if a file says so.
standIn cmake <<'TEXT'
echo "cmake speaks"
if [[ $1 == --build ]]; then [[ ! -e $work/fails/build ]]; else [[ ! -e $work/fails/configure ]]; fi
TEXT
mkdir "$work/fails"
cat >"$work/caller" <<'TEXT'
#!/usr/bin/env bash
set -euo pipefail
root=$1 caller=bench/some
source "$root/scripts/lib.sh"
usage() { echo 'usage: bench/some'; }
[[ ${2-} != --wrong ]] || usageError
buildRelease "$root/build/some" -DA=ON -DB=OFF -- one two
echo built
TEXT
chmod +x "$work/caller"
build() { run "$work/caller" "$work/repository" "$@"; }
folder=$work/repository/build/some

build
is 'the exit code of a build' "$status" 0
is 'what a build says' "$out" built
has 'the first call' "$(calls | sed -n 1p)" "cmake --preset release -B $folder -DVELMORA_BUILD_TESTS=OFF -DA=ON -DB=OFF"
is 'the second call' "$(calls | sed -n 2p)" "cmake --build $folder --target one two"
is 'the log of configuring' "$(cat "$folder.log")" 'cmake speaks'

touch "$work/fails/configure"
build
is 'the exit code where configuring fails' "$status" 1
is 'what is said where configuring fails' "$err" "bench/some: configuring the build failed; see $folder.log"
is 'the calls where configuring fails' "$(calls | wc -l)" 1
rm "$work/fails/configure"

touch "$work/fails/build"
build
is 'the exit code where the build fails' "$status" 1
is 'what is said where the build fails' "$(tail -n 1 <<<"$err")" \
    "bench/some: the build failed; the compiler's message stands above"
hasNot 'what a build says that fails' "$out" built

build --wrong
is 'the exit code of wrong options' "$status" 2
is 'what is said of wrong options' "$err" 'usage: bench/some'
echo 'lib: all as said'

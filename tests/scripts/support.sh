#!/usr/bin/env bash
# Sourced by the tests of the scripts. $root is the repository. $work is the test's own folder, removed at the end,
# whose name has special characters of shells and regular expressions; programs in $work/bin come before all others.
set -uo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/velmora a b+(c)-XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin"
export PATH="$work/bin:$PATH"
# The scripts must not see the variables that ./check sets for its own tests.
unset VELMORA_ANGLE_DIR VELMORA_PHOTOGRAPHS_DIR VELMORA_FORMAT_PICTURES_DIR VELMORA_LONG GTEST_OUTPUT CMAKE_CXX_COMPILER_LAUNCHER

# standIn NAME: the text on stdin becomes the program NAME. Each call of it is a line of $work/calls.
standIn() {
    {
        printf '#!/bin/bash\nprintf "%%s\\n" "%s $*" >>%q\nwork=%q\n' "$1" "$work/calls" "$work"
        cat
    } >"$work/bin/$1"
    chmod +x "$work/bin/$1"
}

# copyOf PATH...: a repository in $work/repository that has only these files of ours.
copyOf() {
    mkdir -p "$work/repository"
    (cd "$root" && tar -cf - "$@") | tar -xf - -C "$work/repository"
}

calls() { cat "$work/calls" 2>/dev/null; }

# run COMMAND...: sets $status, $out and $err, and forgets earlier calls of stand-ins.
run() {
    rm -f "$work/calls"
    "$@" >"$work/out" 2>"$work/err" </dev/null
    status=$?
    out=$(cat "$work/out")
    err=$(cat "$work/err")
}

fail() {
    printf '%s\n' "$1" "exit code ${status-}, stdout:" "${out-}" 'stderr:' "${err-}" 'calls:' "$(calls)" >&2
    exit 1
}

# is WHAT ACTUAL EXPECTED
is() { [[ $2 == "$3" ]] || fail "$1 is \"$2\" and not \"$3\""; }

# has WHAT TEXT PART
has() { [[ $2 == *"$3"* ]] || fail "$1 does not say \"$3\""; }

# hasNot WHAT TEXT PART
hasNot() { [[ $2 != *"$3"* ]] || fail "$1 says \"$3\""; }

# isOneLine WHAT TEXT
isOneLine() { [[ -n $2 && $2 != *$'\n'* ]] || fail "$1 is not one line"; }

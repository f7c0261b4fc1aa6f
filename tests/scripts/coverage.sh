#!/usr/bin/env bash
# scripts/coverage with stand-ins for what it starts: its sums, its bounds, the lines with a reason, and what it counts anew.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
copyOf scripts/coverage
cd "$work/repository" || exit 1
mkdir -p renderbackend host docs/quality build/coverage/a
{
    printf '%s\n' 'int a() {' '    if (one) return 1;' '}' '    abort();' '    abort();'
    seq -f 'line %g' 6 300
} >renderbackend/A.cpp
seq -f 'line %g' 200 >host/B.cpp
touch build/coverage/a/{one,two}.gcno build/coverage/a/earlier.gcda
standIn install-packages <<<'true'
standIn run-tests <<<'touch build/coverage/a/program.gcda'
mv "$work/bin/"{install-packages,run-tests} scripts/
standIn cmake <<'TEXT'
[[ ! -e $work/fails ]]
TEXT
# What gcov tells: a document per object, each with the same files.
standIn gcov <<'TEXT'
[[ ! -e $work/gcovFails ]] || { echo 'no notes' >&2; exit 1; }
for object; do [[ $object != *.gcno ]] || cat "$work/told"; done
TEXT

# line NUMBER COUNT [BRANCHES [FUNCTION]]
line() { printf '{"line_number": %d, "count": %d, "branches": [%s], "function_name": "%s"}' "$1" "$2" "${3-}" "${4-a}"; }
# branch COUNT [throws]: the first of a pair falls through.
branch() { printf '{"count": %d, "throw": %s, "fallthrough": %s}' "$1" "$([[ ${2-} = throws ]] && echo true || echo false)" "${3-false}"; }
pair() { printf '%s, %s' "$(branch "$1" '' true)" "$(branch "$2" "${3-}")"; }
place() { printf '{"name": "%s", "start_line": 1, "start_column": 1}' "$1"; }
# lines FIRST LAST [COUNT...]: reached COUNT times; without a COUNT once.
lines() {
    local number
    for ((number = $1; number <= $2; ++number)); do
        line "$number" "${3-1}"
        [[ $number = "$2" ]] || printf ', '
        set -- "$1" "$2" "${@:4}"
    done
}
# told ABORTS OTHER [COUNT...]: how often the lines that end in abort() were reached, and a branch that one of two clones of a
# constructor takes; and how often the first lines of the host were.
told() {
    printf '{"files": [{"file": "%s", "functions": [%s, %s], "lines": [%s, %s, %s, %s, %s, %s, %s]}, {"file": "%s", "functions": [%s], "lines": [%s]}, {"file": "/usr/include/c", "functions": [], "lines": [%s]}]}\n' \
        "$PWD/renderbackend/A.cpp" "$(place a)" "$(place clone)" \
        "$(line 1 5)" "$(line 2 5 "$(pair 5 0), $(pair 5 0 throws)")" "$(line 2 5 "$(pair 0 "$2"), $(pair 0 0 throws)" clone)" \
        "$(line 3 0)" "$(line 4 "$1" "$(pair "$1" 0)")" "$(line 5 "$1")" "$(lines 6 300)" \
        "$PWD/host/B.cpp" "$(place a)" "$(lines 1 200 "${@:3}")" "$(line 1 0)" >"$work/told"
}
coverage() { run scripts/coverage "$@"; }
row() { grep "^$1 " <<<"$out" | xargs; }
printf '# a comment\n\n' >docs/quality/unreached.txt

told 0 5
coverage
is 'the exit code where lines have no reason' "$status" 1
has 'the output' "$out" 'no test reaches, and no reason is given: renderbackend/A.cpp:4: 2 from: abort();'
# The end of a block is no line, a call has no branches, clones and objects with the same file count as one.
is 'the row of a room' "$(row renderbackend)" 'renderbackend 299 297 99.3% 0 2 2 100.0%'
is 'the row of a room that is reached' "$(row host)" 'host 200 200 100.0% 0 0 0 100.0%'
has 'the calls' "$(calls)" 'run-tests coverage -j'
[[ ! -e build/coverage/a/earlier.gcda ]] || fail 'what an earlier run has counted is still there'

reason() { printf 'renderbackend/A.cpp\t%s\tabort();\tends the program\n' "$1" >>docs/quality/unreached.txt; }
reason 1
coverage --counted
is 'the exit code where a reason is for fewer lines' "$status" 1
has 'the output' "$out" 'reached or changed, against docs/quality/unreached.txt: renderbackend/A.cpp: 1 from: abort();'
sed -i '$d' docs/quality/unreached.txt
reason 2
coverage --counted
is 'the exit code where each line has a reason' "$status" 0
is 'the row of a room with reasons' "$(row renderbackend)" 'renderbackend 299 297 99.3% 2 2 2 100.0%'
hasNot 'what --counted starts' "$(calls)" cmake
hasNot 'what --counted starts' "$(calls)" run-tests

touch build/coverage/a/earlier.gcda
coverage --tests '^unit$'
has 'the calls' "$(calls)" 'run-tests coverage -j'
has 'the calls' "$(calls)" '-R ^unit$'
[[ -e build/coverage/a/earlier.gcda ]] || fail '--tests has removed what was counted'

told 0 0
coverage --branches
is 'the exit code where a library takes too few branches' "$status" 1
has 'the output' "$out" 'less than the 95 % of its branches'
has 'the output' "$out" 'renderbackend/A.cpp:2: no test takes 1 of 2 branches: if (one) return 1;'

told 1 5 0 0 0 0 0 0 0 0 0 0 0
coverage --counted
is 'the exit code where the host reaches too little' "$status" 1
has 'the output' "$out" 'reached or changed, against docs/quality/unreached.txt: renderbackend/A.cpp: 2 from: abort();'
has 'the output' "$out" 'less than the 95 % of its lines'
has 'the output' "$out" 'host/B.cpp:1: 11 from: line 1'

# Reasons do not make up for lines that a room must reach.
printf 'host/B.cpp\t11\tline 1\tnone\n' >>docs/quality/unreached.txt
coverage --counted
is 'the exit code where too much has a reason' "$status" 1
hasNot 'the output' "$out" 'no reason is given'

echo 'a line without tabulators' >>docs/quality/unreached.txt
coverage --counted
is 'the exit code of a list that cannot be read' "$status" 2
has 'what is said of it' "$err" 'docs/quality/unreached.txt:5: expected FILE, LINES, TEXT and REASON'

printf 'oncg*21Bnew' >build/coverage/a/one.gcno
printf 'adcg*21Bold' >build/coverage/a/one.gcda
printf 'adcg*21Bsame' >build/coverage/a/two.gcda
printf 'oncg*21Bsame' >build/coverage/a/two.gcno
coverage --counted
[[ ! -e build/coverage/a/one.gcda ]] || fail 'counts of an object that was compiled anew are still there'
[[ -e build/coverage/a/two.gcda ]] || fail 'counts of an object are gone'

touch "$work/gcovFails"
coverage --counted
is 'the exit code where gcov fails' "$status" 2
has 'what is said of it' "$err" 'scripts/coverage: gcov failed: no notes'
rm "$work/gcovFails"
printf '{"files": []}\n' >"$work/told"
sed -i '$d' docs/quality/unreached.txt
coverage --counted
is 'the exit code where a room has no lines' "$status" 2
rm -r build/coverage
coverage --counted
is 'the exit code where nothing was counted' "$status" 2
has 'what is said of it' "$err" 'nothing was counted yet'
touch "$work/fails"
coverage
is 'the exit code where the build fails' "$status" 2
has 'what is said where the build fails' "$err" 'cmake --preset coverage failed'
coverage --other
is 'the exit code of a wrong option' "$status" 2
echo 'coverage: all as said'

#!/usr/bin/env bash
# scripts/coverage with stand-ins for what it starts: its sums, its bounds, and the lines with a reason.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
copyOf scripts/coverage
cd "$work/repository" || exit 1
mkdir -p renderbackend host docs/quality
printf '%s\n' 'int a() {' '    return 1;' '}' '    abort();' >renderbackend/A.cpp
printf '%s\n' 'reached' 'not reached' >host/B.cpp
for program in install-packages run-tests; do
    standIn "$program" <<<'true'
    mv "$work/bin/$program" scripts/
done
standIn cmake <<'TEXT'
[[ ! -e $work/fails ]]
TEXT
# What gcovr writes into the file behind --json.
standIn gcovr <<'TEXT'
while [[ $1 != --json ]]; do shift; done
cat "$work/counted" >"$2"
TEXT
line() { printf '{"line_number": %d, "count": %d, "branches": [%s], "gcovr/noncode": %s}' "$1" "$2" "${3-}" "${4-false}"; }
taken='{"count": 1}' untaken='{"count": 0}'
# counted COUNT: of the line that ends in abort().
counted() {
    printf '{"files": [{"file": "renderbackend/A.cpp", "lines": [%s, %s, %s, %s]}, {"file": "host/B.cpp", "lines": [%s, %s]}]}' \
        "$(line 1 5)" "$(line 2 5 "$taken, $taken")" "$(line 3 0 '' true)" "$(line 4 "$1" "$untaken")" "$(line 1 1)" "$(line 2 "$2")" >"$work/counted"
}
mkdir -p build/coverage/a
touch build/coverage/a/old.gcda
printf '# a comment\n\n' >docs/quality/unreached.txt
coverage() { run scripts/coverage "$@"; }
row() { grep "^$1 " <<<"$out" | xargs; }

counted 0 1
coverage
is 'the exit code where a line has no reason' "$status" 1
has 'the output' "$out" 'no test reaches, and no reason is given: renderbackend/A.cpp:4: abort();'
is 'the row of a room' "$(row renderbackend)" 'renderbackend 3 2 0 66.7% 3 66.7%'
has 'the output' "$out" 'less than it must: 100 % of the lines, 95 % of the branches'
has 'the calls' "$(calls)" 'run-tests coverage'
[[ ! -e build/coverage/a/old.gcda ]] || fail 'what an earlier run has counted is still there'

printf 'renderbackend/A.cpp\t\tabort();\tends the program\n' >>docs/quality/unreached.txt
coverage --counted
is 'the exit code where each line has a reason' "$status" 0
is 'the row of a room with a reason' "$(row renderbackend)" 'renderbackend 3 2 1 100.0% 2 100.0%'
is 'the row of a room that all is reached of' "$(row host)" 'host 2 2 0 100.0% 0 100.0%'
is 'what --counted starts' "$(calls)" ''

counted 1 0
coverage
is 'the exit code where a room reaches too little' "$status" 1
has 'the output' "$out" 'reached, against docs/quality/unreached.txt: renderbackend/A.cpp: abort();'
has 'the output' "$out" 'less than it must: 95 % of the lines'
has 'the output' "$out" 'host/B.cpp:2: not reached'

echo 'a line without tabulators' >>docs/quality/unreached.txt
coverage --counted
is 'the exit code of a list that cannot be read' "$status" 2
has 'what is said of it' "$err" 'docs/quality/unreached.txt:4: expected FILE, TEXT OF THE LINE and REASON'

touch "$work/fails"
coverage
is 'the exit code where the build fails' "$status" 2
has 'what is said where the build fails' "$err" 'cmake --preset coverage failed'
coverage --other
is 'the exit code of a wrong option' "$status" 2
echo 'coverage: all as said'

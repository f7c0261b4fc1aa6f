#!/usr/bin/env bash
# runTests.sh PROGRAM: scripts/run-tests on a small project, whose tests run PROGRAM (OutcomesProgram.cpp).
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
program=$1
copyOf scripts/run-tests tests/Results.cmake
cd "$work/repository" || exit 1
cat >CMakePresets.json <<'TEXT'
{
  "version": 6,
  "configurePresets": [{ "name": "debug", "generator": "Ninja", "binaryDir": "${sourceDir}/build/debug" }],
  "testPresets": [
    { "name": "debug", "configurePreset": "debug" },
    { "name": "hasty", "configurePreset": "debug", "execution": { "timeout": 1 } }
  ]
}
TEXT

# expecting LINE...: the list of expected skips.
expecting() { printf '%s\n' '# a comment' "$@" >tests/expected-skips.txt; }
# project LINE...: CMake of the tests.
project() {
    printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' 'project(x NONE)' 'enable_testing()' 'include(tests/Results.cmake)' \
        'function(cases name filter)' "  add_test(NAME \${name} COMMAND \"$program\" --gtest_filter=\${filter} \${ARGN})" \
        "  velmora_keep_results(\${name})" 'endfunction()' "$@" >CMakeLists.txt
    cmake --preset debug >/dev/null || fail 'the project cannot be configured'
}
runTests() { run scripts/run-tests debug "$@"; }
closing() { tail -n 1 <<<"$out"; }

expecting
project 'cases(unit Outcomes.Passes*)' 'cases(folder/other Outcomes.Passes)' 'add_test(NAME plain COMMAND true)'
runTests
is 'the closing line of four that pass' "$(closing)" 'debug: 4 passed, 0 failed, 0 skipped'
is 'the exit code of four that pass' "$status" 0
runTests -R unit
is 'the closing line of one test' "$(closing)" 'debug: 2 passed, 0 failed, 0 skipped'
runTests -R nothing
is 'the closing line of no test' "$(closing)" 'debug: 0 passed, 1 failed, 0 skipped'

project 'cases(unit Outcomes.Passes:Outcomes.Fails)' 'add_test(NAME plain COMMAND false)' 'add_test(NAME none COMMAND /nowhere)'
runTests
is 'the closing line with failures' "$(closing)" 'debug: 1 passed, 3 failed, 0 skipped'
is 'the exit code with failures' "$status" 1
has 'what is said of a case that fails' "$out" 'FAILED unit: Outcomes.Fails'
has 'what is said of a test without a program' "$out" 'FAILED none (was not run: Unable to find executable)'

project 'add_test(NAME slow COMMAND sleep 2)'
run scripts/run-tests hasty
has "what is said of a test that takes longer than the preset's limit" "$out" 'FAILED slow'
VELMORA_LONG=1 run scripts/run-tests hasty
is 'the closing line of the same test in a long run' "$(closing)" 'hasty: 1 passed, 0 failed, 0 skipped'

# Results of an earlier run do not count.
project 'cases(unit Outcomes.Passes*)'
runTests
for end in Crashes ExitsInTheMiddle; do
    project "cases(unit Outcomes.Passes*:Outcomes.$end)"
    runTests
    is "the closing line of a program that $end" "$(closing)" 'debug: 0 passed, 1 failed, 0 skipped'
    has "what is said of a program that $end" "$out" 'FAILED unit (ended without results: a crash, a timeout, or an exit in the middle)'
done
project 'cases(unit Outcomes.Passes:Outcomes.FailsAtTheEnd)'
runTests
is 'the closing line of a program that fails at its end' "$(closing)" 'debug: 2 passed, 1 failed, 0 skipped'
project 'cases(unit Nothing.*)'
runTests
is 'the closing line of a program without a case' "$(closing)" 'debug: 0 passed, 1 failed, 0 skipped'
project "add_test(NAME unit COMMAND \"$program\" --gtest_filter=Outcomes.Passes)"
runTests
is 'the closing line of a program that keeps no results' "$(closing)" 'debug: 0 passed, 1 failed, 0 skipped'
has 'what is said of a program that keeps no results' "$out" 'FAILED unit (a GoogleTest program without velmora_keep_results()'

project 'cases(unit Outcomes.Passes:Outcomes.Skips:Outcomes.*IsDisabled)' \
    'add_test(NAME plain COMMAND sh -c "echo not here; exit 77")' 'set_tests_properties(plain PROPERTIES SKIP_RETURN_CODE 77)'
runTests
is 'the closing line with new skips' "$(closing)" 'debug: 1 passed, 3 failed, 0 skipped'
is 'the exit code with new skips' "$status" 1
has 'what is said of a new skip' "$out" 'FAILED unit: Outcomes.Skips (a new skip: no such thing here:'
has 'what is said of a disabled case' "$out" 'FAILED unit: Outcomes.DISABLED_IsDisabled (a new skip: disabled)'
has 'what is said of a new skip of a whole test' "$out" 'FAILED plain (a new skip: not here)'

listed=('always * unit Outcomes.Skips no such thing here*' 'always debug unit *.DISABLED_* disabled' 'short-run debug plain - not here')
expecting "${listed[@]}"
runTests
is 'the closing line with foreseen skips' "$(closing)" 'debug: 1 passed, 0 failed, 3 skipped'
is 'the exit code with foreseen skips' "$status" 0
has 'what is said of a foreseen skip' "$out" $'unit, 1: no such thing here:'
has 'what is said of a foreseen skip' "$out" '      Outcomes.Skips'
hasNot 'what is said of foreseen skips' "$out" 'No longer skipped'
VELMORA_LONG=1 runTests
is 'the closing line with a skip that a long run has not' "$(closing)" 'debug: 1 passed, 1 failed, 2 skipped'

expecting 'always * unit Outcomes.Skips for another reason' "${listed[@]:1}"
runTests
is 'the closing line with another reason' "$(closing)" 'debug: 1 passed, 1 failed, 2 skipped'
expecting 'always release unit Outcomes.Skips no such thing here*' "${listed[@]:1}"
runTests
is 'the closing line with another preset' "$(closing)" 'debug: 1 passed, 1 failed, 2 skipped'
expecting "${listed[@]}" 'always debug unit Outcomes.Passes never'
runTests
is 'the exit code with a skip that no longer happens' "$status" 0
has 'what is said of a skip that no longer happens' "$out" 'No longer skipped, against line 5 of tests/expected-skips.txt: unit: Outcomes.Passes'

expecting 'sometimes * unit Outcomes.Skips no'
runTests
is 'the exit code with a list that cannot be read' "$status" 2
has 'what is said of a list that cannot be read' "$err" 'expected-skips.txt:2: expected WHEN PRESET TEST CASE REASON'
echo 'run-tests: all as said'

#!/usr/bin/env bash
# scripts/fuzz, with stand-ins for cmake and for the targets.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
copyOf scripts/fuzz scripts/lib.sh
cd "$work/repository" || exit 1
mkdir -p tests/fuzz/seeds/one build/asan/tests/fuzz "$work/fails"
touch tests/fuzz/seeds/one/a tests/fuzz/seeds/one/b
cat >tests/fuzz/CMakeLists.txt <<'TEXT'
function(velmora_fuzz_target name)
velmora_fuzz_target(one SOURCES OneFuzz.cpp LIBRARIES host)
velmora_fuzz_target(store-edits SOURCES TwoFuzz.cpp)
TEXT

for program in install-packages cmake; do
    standIn "$program" <<'TEXT'
[[ ! -e $work/fails/${0##*/} ]]
TEXT
done
mv "$work/bin/install-packages" scripts/
# Says what libFuzzer says at the end, or leaves what it has found.
for target in one store-edits; do
    standIn "velmora-fuzz-$target" <<'TEXT'
echo "files lie in $TMPDIR"
touch "$TMPDIR/left"
prefix=$(printf '%s\n' "$@" | sed -n 's/^-artifact_prefix=//p')
if [[ -e $work/fails/${0##*/} ]]; then
    touch "${prefix}crash-1234"
    echo '==1==ERROR: AddressSanitizer: a finding'
    exit 77
fi
printf '%s\n' 'stat::number_of_executed_units: 20002' 'stat::average_exec_per_sec:     5000'
TEXT
    mv "$work/bin/velmora-fuzz-$target" build/asan/tests/fuzz/
done
fuzz() { run "$work/repository/scripts/fuzz" "$@"; }

fuzz --list
is 'the exit code of --list' "$status" 0
is 'the targets' "$(xargs <<<"$out")" 'one store-edits'
is 'the calls of --list' "$(calls)" ''

fuzz one 3
is 'the exit code of a target' "$status" 0
is 'what is said of a target' "$out" 'one: 20002 inputs, 5000 per second'
has 'the build of a target' "$(calls)" 'cmake --build --preset asan --target velmora-fuzz-one'
has 'the call of a target' "$(calls)" '-detect_leaks=0 -timeout=5 -rss_limit_mb=1024 -malloc_limit_mb=1024 -max_total_time=180'
has 'the call of a target' "$(calls)" "$work/repository/build/fuzz/corpus/one $work/repository/tests/fuzz/seeds/one"
hasNot 'the calls of one target' "$(calls)" velmora-fuzz-store-edits
folder=$(sed -n 's/^files lie in //p' build/fuzz/one.log)
[[ -n $folder && ! -e $folder ]] || fail 'the files of a target are left behind'

fuzz one
has 'the call without minutes' "$(calls)" '-max_total_time=60'

fuzz --short
is 'the exit code of --short' "$status" 0
is 'the targets of --short' "$(cut -d : -f 1 <<<"$out" | sort | xargs)" 'one store-edits'
has 'the build of --short' "$(calls)" 'cmake --build --preset asan --target velmora-fuzz'
has 'the call of a target with seeds' "$(calls | grep velmora-fuzz-one)" '-seed=1 -runs=20002 '
has 'the call of a target without seeds' "$(calls | grep velmora-fuzz-store-edits)" '-seed=1 -runs=20000 '
hasNot 'the calls of --short' "$(calls)" build/fuzz/corpus

VELMORA_LONG=1 fuzz --short
has 'the call of a long run' "$(calls | grep velmora-fuzz-one)" '-max_total_time=600'
hasNot 'the call of a long run' "$(calls | grep velmora-fuzz-one)" '-seed='

fuzz --seeds
has 'the build of the seeds' "$(calls)" 'cmake --build --preset asan --target velmora-fuzz-seeds'

touch "$work/fails/velmora-fuzz-one"
fuzz --short
is 'the exit code with a finding' "$status" 1
has 'what is said of a finding' "$out" 'AddressSanitizer: a finding'
has 'what is said after a finding' "$out" 'store-edits: 20002 inputs'
is 'the last line with a finding' "$(tail -n 1 <<<"$out")" \
    'scripts/fuzz: ended early: one; new findings: build/fuzz/findings/one-crash-1234'
fuzz one
is 'the last line with an old finding' "$(tail -n 1 <<<"$out")" 'scripts/fuzz: ended early: one; new findings: none'
rm "$work/fails/velmora-fuzz-one"

for program in install-packages cmake; do
    touch "$work/fails/$program"
    fuzz one
    is "the exit code where $program fails" "$status" 1
    isOneLine "what is said where $program fails" "$err"
    hasNot "the calls where $program fails" "$(calls)" velmora-fuzz-one
    rm "$work/fails/$program"
done

fuzz three
is 'the exit code for a target that is none' "$status" 1
is 'what is said of a target that is none' "$err" \
    'scripts/fuzz: there is no target three; scripts/fuzz --list says which there are'
fuzz one soon
is 'what is said of minutes that are none' "$err" 'scripts/fuzz: MINUTES is a whole number from 1 on'
for wrong in '' '--all' '--short one' 'one 1 2'; do
    # shellcheck disable=SC2086
    fuzz $wrong
    is "the exit code of \"$wrong\"" "$status" 2
done
echo 'fuzz: all as said'

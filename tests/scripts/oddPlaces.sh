#!/usr/bin/env bash
# scripts/odd-places with stand-ins for what it starts.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
copyOf scripts/odd-places scripts/lib.sh
cd "$work/repository" || exit 1
for script in install-packages fetch-angle fetch-photographs fetch-format-pictures; do
    standIn "$script" <<'TEXT'
[[ ! -e $work/fails/${0##*/} ]]
TEXT
    mv "$work/bin/$script" scripts/
done
# Fails with the seeds in $work/fails.
standIn run-tests <<'TEXT'
echo "seed $GTEST_RANDOM_SEED, shuffled: $GTEST_SHUFFLE, required: $VELMORA_REQUIRE_GL $VELMORA_REQUIRE_PHOTOGRAPHS"
[[ ! -e $work/fails/$GTEST_RANDOM_SEED ]]
TEXT
mv "$work/bin/run-tests" scripts/
for program in cmake localedef chown git; do
    standIn "$program" <<'TEXT'
[[ ! -e $work/fails/${0##*/} ]]
TEXT
done
standIn id <<'TEXT'
echo "${STAND_IN_USER-0}"
TEXT
standIn setsid <<'TEXT'
[[ ! -e $work/fails/tests ]]
TEXT
mkdir "$work/fails"
odd() { run scripts/odd-places "$@"; }

odd order 3
is 'the exit code of three orders' "$status" 0
is 'the seeds' "$(grep -c '^seed [123], shuffled: 1, required: 1 1$' <<<"$out")" 3
is 'the runs on one GL implementation' "$(calls | grep -cxE 'run-tests release -j [0-9]+ --schedule-random -E /\(softpipe\|zink\|angle\)\$')" 2
is 'the last run, on all' "$(calls | grep -cxE 'run-tests release -j [0-9]+ --schedule-random')" 1
odd order
is 'the runs without a number' "$(calls | grep -c '^run-tests')" 20

touch "$work/fails/2" "$work/fails/4"
odd order 5
is 'the exit code where orders fail' "$status" 1
is 'what is said where orders fail' "$err" 'scripts/odd-places: orders that failed: 2 4'
is 'the runs where orders fail' "$(calls | grep -c '^run-tests')" 5

odd elsewhere
is 'the exit code elsewhere' "$status" 0
place=$(calls | sed -nE 's/^git clone -q .* (.*velmora an odd place-.*\/a clone)$/\1/p')
has 'the calls elsewhere' "$(calls)" 'localedef -i de_DE -f UTF-8'
has 'the calls elsewhere' "$(calls)" 'setsid unshare --net setpriv --reuid=54321 --regid=54321 --clear-groups --no-new-privs env -i'
has 'the calls elsewhere' "$(calls)" 'LC_ALL=de_DE.UTF-8'
has 'the calls elsewhere' "$(calls)" "VELMORA_ANGLE_DIR=$work/repository/build/angle"
[[ -n $place && ! -e ${place%/*} ]] || fail 'its folder is still there'
touch "$work/fails/tests"
odd elsewhere
is 'the exit code where the tests fail elsewhere' "$status" 1
rm "$work/fails/tests"

STAND_IN_USER=1000 odd elsewhere
is 'the exit code without root' "$status" 1
is 'what is said without root' "$err" 'scripts/odd-places: only root can take a user and a network away'

for program in install-packages cmake; do
    touch "$work/fails/$program"
    odd order 1
    is "the exit code where $program fails" "$status" 1
    hasNot "the calls where $program fails" "$(calls)" run-tests
    rm "$work/fails/$program"
done
for wrong in '' 'order 0' 'order x' 'elsewhere 1' other; do
    # shellcheck disable=SC2086
    odd $wrong
    is "the exit code of '$wrong'" "$status" 2
done
echo 'oddPlaces: all as said'

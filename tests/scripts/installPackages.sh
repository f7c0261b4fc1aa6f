#!/usr/bin/env bash
# scripts/install-packages, with stand-ins for apt-get, dpkg-query and sudo.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
copyOf scripts
cat >"$work/repository/scripts/packages.txt" <<'TEXT'
# a comment
run,library    compiler         # why
run            window           # why
library,check  tester           # why
check  shell  unless=bash       # there already
check  helper unless=angle      # fetches ANGLE
bench  timer
quality  counter
mutate parser
TEXT
export VELMORA_ANGLE_DIR=$work/angle VELMORA_LOCK_SECONDS=2

standIn id <<'TEXT'
echo "${STAND_IN_USER-0}"
TEXT
standIn sudo <<'TEXT'
[[ -z ${STAND_IN_REFUSES-} ]] || exit 1
[[ $1 != -n ]] || shift
exec "$@"
TEXT
standIn dpkg-query <<'TEXT'
package=${!#}
[[ -e $work/installed/$package ]] && printf installed
TEXT
# Fails as $work/failure says, one line per call.
standIn apt-get <<'TEXT'
if [[ -s $work/failure ]]; then
    head -n 1 "$work/failure" >&2
    sed -i 1d "$work/failure"
    exit 100
fi
[[ " $* " != *" install "* ]] || for word; do [[ $word == *[-=/:]* || $word == install ]] || touch "$work/installed/$word"; done
TEXT
# machine INSTALLED...
machine() {
    rm -rf "$work/installed" "$work/failure"
    mkdir "$work/installed"
    local package
    for package; do touch "$work/installed/$package"; done
}
install() { run "$work/repository/scripts/install-packages" "$@"; }
aptCalls() { calls | grep '^apt-get'; }

machine compiler window tester helper
install check
is 'the exit code where nothing is missing' "$status" 0
is 'what is said where nothing is missing' "$out$err" ''
is 'what is asked of apt-get where nothing is missing' "$(aptCalls)" ''

machine compiler window
install check
is 'the exit code of an installation' "$status" 0
has 'the first call' "$(aptCalls | sed -n 1p)" ' update '
has 'the second call' "$(aptCalls | sed -n 2p)" '--no-install-recommends tester helper'
is 'the count of calls' "$(aptCalls | wc -l)" 2
is 'what is said' "$err" 'check: installing tester helper'

machine compiler window
mkdir "$work/angle"
touch "$work/angle/libEGL.so.1" "$work/angle/libGLESv2.so.2"
install check
has 'the call where ANGLE is there' "$(aptCalls)" '--no-install-recommends tester'
hasNot 'the call where ANGLE is there' "$(aptCalls)" 'helper'
rm -r "$work/angle"

machine
install run
has 'the call for ./run' "$(aptCalls)" '--no-install-recommends compiler window'
hasNot 'the call for ./run' "$(aptCalls)" tester

machine
install library
has 'the call for the preset library' "$(aptCalls)" '--no-install-recommends compiler tester'
hasNot 'the call for the preset library' "$(aptCalls)" window
hasNot 'the call for the preset library' "$(aptCalls)" helper

machine compiler window
install bench
has 'the call for bench/run' "$(aptCalls)" '--no-install-recommends timer'
hasNot 'the call for bench/run' "$(aptCalls)" tester
install quality
has 'the call for scripts/coverage' "$(aptCalls)" '--no-install-recommends counter'
hasNot 'the call for scripts/coverage' "$(aptCalls)" timer

machine compiler window
install mutate
has 'the call for scripts/mutate' "$(aptCalls)" '--no-install-recommends tester helper parser'
hasNot 'the call for scripts/mutate' "$(aptCalls)" timer

machine compiler window
echo 'E: Failed to fetch http://somewhere  Temporary failure resolving' >"$work/failure"
install check
is 'the exit code without a network' "$status" 1
has 'what is said without a network' "$(tail -n 1 <<<"$err")" 'check: apt-get update failed: no network'

lock=$work/lists/lock
held="E: Could not get lock $lock. It is held by process $$ (apt-get)"
machine compiler window
echo "$held" >"$work/failure"
install check
is 'the exit code behind a lock that is let go' "$status" 0
has 'what is said while it waits' "$err" "process $$ (bash) holds the lock $lock"
[[ -e $work/installed/tester ]] || fail 'nothing was installed behind the lock'

machine compiler window
yes "$held" | head -n 100 >"$work/failure"
install check
is 'the exit code behind a lock that stays' "$status" 1
has 'what is said of a lock that stays' "$(tail -n 1 <<<"$err")" "process $$ (bash) has held the lock $lock for"
hasNot 'what is said of a lock that stays' "$err" network

machine compiler window
yes 'E: Could not get lock /var/lib/dpkg/lock-frontend. It is held by process 2000000000 (dpkg)' | head -n 100 >"$work/failure"
install check
has 'what is said of a lock whose holder is not to be seen' "$(tail -n 1 <<<"$err")" 'process 2000000000 has held the lock /var/lib/dpkg/lock-frontend for'

machine compiler window
STAND_IN_USER=1000 install check
is 'the exit code with sudo' "$status" 0
has 'the calls with sudo' "$(calls)" 'sudo -n env LC_ALL=C DEBIAN_FRONTEND=noninteractive apt-get'

machine compiler window
STAND_IN_USER=1000 STAND_IN_REFUSES=1 install check
is 'the exit code where sudo refuses' "$status" 1
has 'what is said where sudo refuses' "$err" 'check: sudo refused; as root run: apt-get install tester helper'
isOneLine 'what is said where sudo refuses' "$err"

run "$work/repository/scripts/install-packages" everything
is 'the exit code of a wrong set' "$status" 2
echo 'install-packages: all as said'

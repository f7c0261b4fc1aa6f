#!/usr/bin/env bash
# scripts/patient-apt-get with the real apt-get on lists and a package state of the test's own, whose locks the test holds.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
command -v apt-get >/dev/null || { echo 'no apt-get here' && exit 77; }

# The user who runs the test takes root's part.
standIn sudo <<'TEXT'
[[ $1 != -n ]] || shift
exec "$@"
TEXT
machine=$(mktemp -d)
trap 'rm -rf "$work" "$machine"' EXIT
mkdir -p "$machine"/{lists/partial,cache/archives/partial,dpkg}
: >"$machine/dpkg/status"
cat >"$machine/apt.conf" <<TEXT
Dir::State "$machine";
Dir::State::Lists "$machine/lists";
Dir::State::status "$machine/dpkg/status";
Dir::Cache "$machine/cache";
Dir::Etc::sourcelist "/dev/null";
Dir::Etc::sourceparts "/dev/null";
TEXT
export APT_CONFIG=$machine/apt.conf
aptGet() { run "$root/scripts/patient-apt-get" "$work/log" "$@"; }

# hold LOCK SECONDS: by fcntl, like apt and dpkg; returns once it holds the lock.
hold() {
    python3 -c '
import fcntl, sys, time
with open(sys.argv[1], "a") as lock:
    fcntl.lockf(lock, fcntl.LOCK_EX)
    open(sys.argv[3], "w").close()
    time.sleep(float(sys.argv[2]))' "$1" "$2" "$work/held" &
    holder=$!
    until [[ -e $work/held ]]; do sleep 0.05; done
    rm "$work/held"
}
letGo() { kill "$holder" 2>/dev/null && wait "$holder" 2>/dev/null; }

aptGet update
is 'the exit code of an update' "$status" 0
is 'what an update says' "$out$err" ''
has 'the log' "$(cat "$work/log")" 'Reading package lists'

for lock in lists/lock dpkg/lock-frontend; do
    case $lock in
    lists/lock) command=(update) ;;
    *) command=(install -y) ;;
    esac
    hold "$machine/$lock" 60
    VELMORA_LOCK_SECONDS=1 aptGet "${command[@]}"
    is "the exit code behind $lock" "$status" 75
    has "what is said behind $lock" "$err" "process $holder (python3) has held the lock $machine/$lock for"
    letGo

    hold "$machine/$lock" 2
    VELMORA_LOCK_SECONDS=20 aptGet "${command[@]}"
    is "the exit code behind $lock, once it is let go" "$status" 0
    has "what is said behind $lock, once it is let go" "$err" "process $holder (python3) holds the lock $machine/$lock; waiting"
    isOneLine "what is said behind $lock, once it is let go" "$err"
    letGo
done

aptGet install -y no-such-package
is 'the exit code of another failure' "$status" 100
is 'what is said of another failure' "$out$err" ''
has 'the log' "$(cat "$work/log")" 'no-such-package'
echo 'patient-apt-get: all as said'

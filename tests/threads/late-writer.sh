#!/usr/bin/env bash
# late-writer.sh PROGRAM: ThreadSanitizer finds nothing in a host that keeps to the rules, and stops one that writes into a
# staging buffer after its write was counted as done, with a report of that very race.
set -uo pipefail
program=$1
fail() {
    printf '%s\n' "$1" "$report" >&2
    exit 1
}

export TSAN_OPTIONS="${TSAN_OPTIONS:+$TSAN_OPTIONS:}exitcode=66:halt_on_error=1"
report=$("$program" 2>&1)
status=$?
[[ $status -eq 0 && -z $report ]] || fail "the host that keeps to the rules ended with $status:"

report=$("$program" write-again 2>&1)
status=$?
[[ $status -eq 66 ]] || fail "the host that writes again ended with $status, not with ThreadSanitizer's 66:"
for part in 'WARNING: ThreadSanitizer: data race' 'Gles3ConcurrentStagingBuffer::write' 'Previous read' 'glTexImage2D'; do
    [[ $report == *"$part"* ]] || fail "no \"$part\" in the report:"
done
echo 'the late write was reported'

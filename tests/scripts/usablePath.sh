#!/usr/bin/env bash
# scripts/usable-path: which characters a path may have, and that ./check and ./run ask it before they do anything.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"

for character in ' ' '+' '(' ')' '{' '}' '&' '%' '=' '@' '~' '!' '^' '*' '?' '`' '-' '.' 'ä'; do
    run "$root/scripts/usable-path" check "/tmp/a${character}b"
    is "the exit code for [$character]" "$status" 0
    is "what is said of [$character]" "$out$err" ''
done
for character in '[' ']' '"' "'" '#' '$' ',' ':' ';' '<' '>' $'\\' '|' $'\t' $'\n'; do
    run "$root/scripts/usable-path" check /tmp/fine "/tmp/a${character}b"
    is "the exit code for [$character]" "$status" 1
    isOneLine "what is said of [$character]" "$err"
    has "what is said of [$character]" "$err" 'move it'
done

copyOf scripts check run
mv "$work/repository" "$work/a#b"
standIn cmake <<<'exit 1'
standIn apt-get <<<'exit 1'
run "$work/a#b/check"
is 'the exit code of ./check' "$status" 1
has 'what ./check says' "$err" 'check: '
has 'what ./check says' "$err" '#b: CMake, pkg-config or the loader cannot use a path'
is 'the closing line of ./check' "$(tail -n 1 <<<"$out")" 'check: 0 passed, 1 failed, 0 skipped'
is 'what ./check calls' "$(calls)" ''
run "$work/a#b/run"
is 'the exit code of ./run' "$status" 1
has 'what ./run says' "$err" 'run: '
isOneLine 'what ./run says' "$err"
is 'what ./run calls' "$(calls)" ''
echo 'usable-path: all as said'

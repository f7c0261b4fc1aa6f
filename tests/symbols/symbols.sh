#!/usr/bin/env bash
# symbols.sh exactly LIST NM LIBRARY     the library defines the dynamic symbols of LIST, all of them and no other
# symbols.sh members-of LIST NM LIBRARY  it defines only members and type information of the classes of LIST, at least one
#                                        of each, and only the functions of LIST
# Lists hold one readable name a line; "#" opens a comment. Constructors and destructors carry the variant that the
# C++ ABI gives them, [complete], [base] or [deleting], since all of them share one readable name.
set -euo pipefail
mode=$1 list=$2 nm=$3 library=$4

# Standard-library names as our headers write them: without ABI tags and default template arguments, innermost first.
readable() {
    local flat='[^<>]' nested
    nested=$flat
    for _ in 1 2 3 4; do nested="($flat|<$nested*>)"; done
    sed -E -e 's/\[abi:cxx11\]//g' -e 's/unsigned long/size_t/g' \
        -e 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> ?>/std::string/g' \
        -e ':again' -e "s/, std::(allocator|default_delete|less)<$nested*> ?>/>/; t again" -e 's/ >/>/g'
}

variant() {
    sed -E -e 's/^_ZN.*C1E.*/ [complete]/; t' -e 's/^_ZN.*C2E.*/ [base]/; t' -e 's/^_ZN.*D0Ev$/ [deleting]/; t' \
        -e 's/^_ZN.*D1Ev$/ [complete]/; t' -e 's/^_ZN.*D2Ev$/ [base]/; t' -e 's/.*//'
}

# Without the name of a version node, which is no symbol of ours, and the bookkeeping of AddressSanitizer.
defined() {
    "$nm" --dynamic --defined-only --without-symbol-versions --no-sort "$@" "$library" | cut -d' ' -f2- |
        grep -vE '^A |^[A-Z] __odr_asan' | cut -d' ' -f2-
}

found=$(paste -d '' <(defined --demangle | readable) <(defined | variant) | sort -u)
expected=$(sed -e 's/#.*//' -e 's/ *$//' -e '/^$/d' "$list" | sort -u)

# marked SIGN LINES
marked() { printf '%s\n' "$2" | sed "s/^/  $1 /"; }

exactly() {
    local missing extra
    missing=$(comm -13 <(echo "$found") <(echo "$expected"))
    extra=$(comm -23 <(echo "$found") <(echo "$expected"))
    [[ -n $missing ]] && printf 'not exported, but listed in %s:\n%s\n' "$list" "$(marked - "$missing")"
    [[ -n $extra ]] && printf 'exported, but not listed in %s:\n%s\n' "$list" "$(marked + "$extra")"
    [[ -z $missing$extra ]]
}

membersOf() {
    local entry rest=$found ok=0
    while read -r entry; do
        local own
        own=$(grep -E "^((vtable|typeinfo|typeinfo name) for $entry$|$entry(::|\())" <<<"$rest" || true)
        [[ -n $own ]] || { echo "nothing exported of $entry, which $list lists" && ok=1; }
        rest=$(comm -23 <(echo "$rest") <(echo "$own"))
    done <<<"$expected"
    [[ -z $rest ]] || { printf 'exported, but of no class or function of %s:\n%s\n' "$list" "$(marked + "$rest")" && ok=1; }
    return "$ok"
}

case $mode in
exactly) exactly ;;
members-of) membersOf ;;
esac || exit 1
echo "$(basename "$library"): $(wc -l <<<"$found") symbols, as listed"

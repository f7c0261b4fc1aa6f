#!/usr/bin/env bash
# imports.sh NM LIBRARY STAND_IN: each GL function that the library imports is one that the stand-in defines
set -euo pipefail
functions() { "$@" | grep -oE '\bgl[A-Z][A-Za-z0-9]*' | sort -u; }
imported=$(functions "$1" --dynamic --undefined-only "$2")
defined=$(functions "$1" --dynamic --defined-only "$3")
missing=$(comm -23 <(echo "$imported") <(echo "$defined"))
[[ -z $missing ]] || { printf 'imported by %s, but not in %s:\n%s\n' "$2" "$3" "$missing" && exit 1; }
echo "$(wc -l <<<"$imported") functions"

#!/usr/bin/env bash
# faultyFilesImports.sh NM STAND_IN PROGRAM: of each call that the stand-in makes fail, it has all the names under which
# the program imports it, or one of the libraries that read and write its files
set -euo pipefail
nm=$1 stand_in=$2 program=$3
calls='f?open|openat|opendir|[lf]?stat|p?read|p?write|mmap|ftruncate|f(data)?sync|fchmod|mkdir|fcntl|rename(at)?|link(at)?|unlink(at)?'
names() { "$nm" --dynamic "$1" "$2" | awk '{print $NF}' | sed 's/@.*//' | grep -xE "(__)?($calls)v?(64)?2?(_2|_chk)?" || true; }
libraries=$(ldd "$program" | grep -oE '/\S*lib(sqlite3|tiff|vips|png16|cfitsio|stdc\+\+|gles3renderbackend)[.-]\S*')
imported=$(for file in "$program" $libraries; do names --undefined-only "$file"; done | sort -u)
missing=$(comm -23 <(echo "$imported") <(names --defined-only "$stand_in" | sort -u))
[[ -z $missing ]] || { printf 'imported by %s or a library, but not in %s:\n%s\n' "$program" "$stand_in" "$missing" && exit 1; }
echo "$(wc -l <<<"$imported") names"

#!/usr/bin/env bash
# Sourced by the scripts that build first. They set $root, the repository, and $caller, the name at the beginning of
# their messages.
# shellcheck disable=SC2154

stop() {
    printf '%s: %s\n' "$caller" "$1" >&2
    exit 1
}

# usageError: for wrong options; the script defines usage itself.
usageError() {
    usage >&2
    exit 2
}

# buildRelease FOLDER [CMAKE-OPTION]... -- TARGET...: builds targets of the release preset, in a folder of their own,
# without tests. FOLDER.log has the output of configuring.
buildRelease() {
    local folder=$1
    local -a options=()
    shift
    while [[ $1 != -- ]]; do
        options+=("$1")
        shift
    done
    shift
    mkdir -p "$(dirname "$folder")"
    (cd "$root" && cmake --preset release -B "$folder" -DVELMORA_BUILD_TESTS=OFF "${options[@]}") >"$folder.log" 2>&1 ||
        stop "configuring the build failed; see $folder.log"
    cmake --build "$folder" --target "$@" >&2 || stop "the build failed; the compiler's message stands above"
}

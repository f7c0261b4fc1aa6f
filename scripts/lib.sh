#!/usr/bin/env bash
# Sourced by the scripts that build before they do something, with $root, the repository, and $caller, the name that their
# messages begin with.
# shellcheck disable=SC2154

stop() {
    printf '%s: %s\n' "$caller" "$1" >&2
    exit 1
}

# usageError: for options that are wrong; usage is the script's own.
usageError() {
    usage >&2
    exit 2
}

# buildRelease FOLDER [CMAKE-OPTION]... -- TARGET...: targets of the release preset, in a folder of their own, without tests.
# What configuring says is kept in FOLDER.log.
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

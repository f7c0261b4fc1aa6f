#!/usr/bin/env bash
# The scripts that fetch ANGLE and pictures: existing folders are left alone without a network request, wherever they
# lie; missing ones are made at the variable's path. With stand-ins for npm and apt-get.
# shellcheck source=support.sh
source "$(dirname "${BASH_SOURCE[0]}")/support.sh"
copyOf scripts
scripts=$work/repository/scripts
offline() {
    local program
    for program in npm apt-get; do
        standIn "$program" <<<'exit 1'
    done
}
isLeftAlone() {
    is "the exit code of $1" "$status" 0
    is "what $1 says" "$out$err" ''
    is "what $1 calls" "$(calls)" ''
}

# ANGLE
offline
mkdir -p "$work/repository/build/angle"
eval "$(sed -n '/^package=/p; /^version=/p; /^archive_sha256=/p' "$scripts/fetch-angle")"
echo "${package:?}@${version:?} ${archive_sha256:?}" >"$work/repository/build/angle/stamp"
run "$scripts/fetch-angle"
isLeftAlone 'fetch-angle with ANGLE in build/angle'
run "$scripts/fetch-angle" --is-there
isLeftAlone 'fetch-angle --is-there with ANGLE in build/angle'

echo 'an older version' >"$work/repository/build/angle/stamp"
run "$scripts/fetch-angle" --is-there
is 'the exit code of --is-there with an older ANGLE' "$status" 1

export VELMORA_ANGLE_DIR=$work/elsewhere/angle
mkdir -p "$VELMORA_ANGLE_DIR"
touch "$VELMORA_ANGLE_DIR/libEGL.so.1" "$VELMORA_ANGLE_DIR/libGLESv2.so.2"
run "$scripts/fetch-angle"
isLeftAlone "fetch-angle with somebody's own ANGLE"

rm "$VELMORA_ANGLE_DIR/libEGL.so.1"
run "$scripts/fetch-angle"
is 'the exit code with a folder of something else' "$status" 1
has 'what is said of a folder of something else' "$err" "fetch-angle: $VELMORA_ANGLE_DIR, which VELMORA_ANGLE_DIR may name, holds something else"
isOneLine 'what is said of a folder of something else' "$err"
[[ -e $VELMORA_ANGLE_DIR/libGLESv2.so.2 ]] || fail 'a folder of something else was emptied'

if [[ $(uname -m) == x86_64 ]]; then
    rm "$VELMORA_ANGLE_DIR/libGLESv2.so.2"
    run "$scripts/fetch-angle"
    is 'the exit code without a network' "$status" 1
    has 'what is said without a network' "$(tail -n 1 <<<"$err")" "fetch-angle: npm could not fetch $package@$version"
    is 'what is left without a network' "$(ls -A "$work/elsewhere" "$VELMORA_ANGLE_DIR")" "$work/elsewhere:"$'\nangle\n\n'"$VELMORA_ANGLE_DIR:"

    standIn npm <<'TEXT'
mkdir -p package/bin
echo 'another archive' >package/bin/swiftshader.tar.br
tar -czf x.tgz package
TEXT
    run "$scripts/fetch-angle"
    is 'the exit code with another archive' "$status" 1
    has 'what is said of another archive' "$err" 'the checksum of swiftshader.tar.br'
fi

# Pictures, out of packages that stand-in packages replace.
offline
for set in photographs:VELMORA_PHOTOGRAPHS_DIR format-pictures:VELMORA_FORMAT_PICTURES_DIR; do
    script=fetch-${set%%:*} variable=${set#*:}
    run "$scripts/$script"
    is "the exit code of $script without a network" "$status" 1
    has "what $script says without a network" "$err" 'unpack-debian-packages: apt-get could not download'
done
command -v dpkg-deb >/dev/null || { echo 'no dpkg-deb here: the rest is left out' && exit 77; }

# Each package has the files that the scripts list, each with its own name as content.
standIn apt-get <<'TEXT'
shift
[[ $1 == download ]] || exit 1
shift
for package; do
    mkdir -p "$work/deb/$package/DEBIAN" "$work/deb/$package/usr/share/backgrounds"
    printf 'Package: %s\nVersion: 1\nArchitecture: all\nMaintainer: x\nDescription: x\n' "$package" >"$work/deb/$package/DEBIAN/control"
    while read -r name; do
        echo "$name" >"$work/deb/$package/usr/share/backgrounds/$name"
    done <"$work/names"
    dpkg-deb --build "$work/deb/$package" "${package}_1_all.deb"
done
TEXT
sed -n '/^photographs=/p' "$scripts/fetch-photographs" | sed 's/.*(//; s/).*//' | tr ' ' '\n' >"$work/names"
sed -n "/^pictures='/,/^'/p" "$scripts/fetch-format-pictures" | sed "1d; \$d" | cut -d' ' -f2- | tr ' ' '\n' >>"$work/names"
for set in photographs:VELMORA_PHOTOGRAPHS_DIR format-pictures:VELMORA_FORMAT_PICTURES_DIR; do
    script=fetch-${set%%:*} variable=${set#*:}
    export "$variable=$work/elsewhere/${set%%:*}"
    run "$scripts/$script"
    is "the exit code of $script" "$status" 0
    [[ ! -e $work/repository/build/${set%%:*} ]] || fail "$script does not heed $variable"
    has "the calls of $script" "$(calls)" 'apt-get -q download'
    for file in "${!variable}"/*; do
        is "what $script put there" "$(cat "$file")" "${file##*/}"
    done
    run "$scripts/$script"
    isLeftAlone "$script, the second time"
done
is 'the count of photographs' "$(find "$VELMORA_PHOTOGRAPHS_DIR" -type f | wc -l)" 3
echo 'fetch: all as said'

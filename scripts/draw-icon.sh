#!/usr/bin/env bash
# Makes the icon of the Windows programs, packaging/windows/tarno2.ico, from packaging/tarno2.svg.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh
install_packages librsvg2-bin icoutils

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
pictures=()
for side in 16 24 32 48; do
    rsvg-convert --width "$side" --height "$side" packaging/tarno2.svg >"$folder/$side.png"
    pictures+=("$folder/$side.png")
done
rsvg-convert --width 256 --height 256 packaging/tarno2.svg >"$folder/256.png"
icotool --create --output packaging/windows/tarno2.ico "${pictures[@]}" --raw="$folder/256.png"

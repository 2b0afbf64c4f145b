#!/usr/bin/env bash
# Makes the icons from packaging/tarno2.svg: packaging/windows/tarno2.ico of the Windows programs, and the sizes that
# desktops of Linux take as pictures, packaging/linux/icons.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh
install_packages librsvg2-bin icoutils

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
draw() { rsvg-convert --width "$1" --height "$1" packaging/tarno2.svg >"$2"; }
pictures=()
for side in 16 24 32 48; do
    draw "$side" "$folder/$side.png"
    pictures+=("$folder/$side.png")
done
draw 256 "$folder/256.png"
icotool --create --output packaging/windows/tarno2.ico "${pictures[@]}" --raw="$folder/256.png"

for side in 16 22 24 32 48 64 128 256; do
    icon=packaging/linux/icons/hicolor/${side}x$side/apps/tarno2.png
    mkdir -p "$(dirname "$icon")"
    draw "$side" "$icon"
done

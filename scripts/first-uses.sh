#!/usr/bin/env bash
# Goes through three first uses of the window from nothing, as somebody would who sees it for the first time, and counts
# what has to be clicked and typed: first-uses.py tells which, and how many are allowed. On a screen of its own.
#
#   scripts/first-uses.sh [FOLDER]     keeps pictures of how each ended in FOLDER
set -euo pipefail
folder=${1:+$(realpath -m "$1")}
cd "$(dirname "$0")/.."
source scripts/common.sh

# Controls are found by their names for screen readers, on a bus of its own.
install_packages xvfb xdotool imagemagick fonts-dejavu-core dbus at-spi2-core python3-pyatspi
build_programs
[ -z "$folder" ] || mkdir -p "$folder"

home=$(mktemp -d)
screen=
clean_up() {
    [ -z "$screen" ] || kill "$screen" 2>/dev/null || true
    rm -rf "$home"
}
trap clean_up EXIT
start_screen
export XDG_RUNTIME_DIR=$home HOME=$home TARNO2_BIN=$PWD/build/release/bin
unset TARNO2_REGISTRY TARNO2_SIMULATOR XDG_CONFIG_HOME XDG_DATA_HOME
dbus-run-session -- /usr/bin/python3 scripts/first-uses.py ${folder:+"$folder"} 2> >(grep -v -e dbus-daemon -e SpiRegistry -e "X connection" >&2)

#!/usr/bin/env bash
# Makes the Debian packages, looks at them with lintian and the like, and tries them in a Debian 12 of their own: installs
# them, records as a user and as root, reads the recording, builds a driver, removes all of it. The machine stays as it is:
# that Debian lies in build/debian-root, and what is installed in it in memory.
#
#   scripts/check-debian.sh
#
# Where no file systems may be mounted, or nobody is root, the second half is skipped. The last line is
# "N passed, N failed, N skipped".
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh
install_packages "${BUILD_PACKAGES[@]}" "${DEBIAN_PACKAGES[@]}" "${DEBIAN_CHECK_PACKAGES[@]}"

passed=0 failed=0
# The command succeeds and has nothing to say.
silent() {
    local said
    said=$("$@" 2>&1) && [ -z "$said" ] || { echo "$said" && return 1; }
}
# Pages lead to each other by the folder of their section.
pages_are_right() {
    local folder page said=
    folder=$(mktemp -d)
    mkdir "$folder/man1" && cp docs/man/*.1 "$folder/man1"
    for page in docs/man/*.1; do
        said+=$(cd "$folder" && LC_ALL=C.UTF-8 MANROFFSEQ='' man --warnings -E UTF-8 -l -Tutf8 -Z \
            "man1/$(basename "$page")" 2>&1 >/dev/null) || said+="$page can't be shown"
    done
    rm -rf "$folder"
    echo -n "$said"
    [ -z "$said" ]
}

# With an address the pictures are there that it tells of.
centres_are_told() {
    local file=$PWD/build/tarno2.metainfo.xml pictures=${1:+6} picture
    cmake ${1:+-D PICTURES_URL="$1"} -D METAINFO="$file" -P cmake/Metainfo.cmake && appstreamcli validate --no-net "$file" || return 1
    [ "$(grep -c '<image' "$file")" -eq "${pictures:-0}" ] || return 1
    for picture in $(sed -n "s|.*<image.*>${1:-none}/\(.*\)</image>|\1|p" "$file"); do
        [ -s "docs/pictures/$picture" ] || { echo "there is no $picture" && return 1; }
    done
}

echo "== the packages"
packages=$PWD/build/debian
mkdir -p build
scripts/package-debian.sh "$packages" >build/package-debian.log 2>&1 || { tail -n 50 build/package-debian.log && fail "no packages"; }
ls -l "$packages"
check "lintian" silent lintian --allow-root --fail-on error,warning "$packages"/*.changes
check "the desktop file" silent desktop-file-validate packaging/linux/tarno2.desktop
check "the data for software centres" centres_are_told
check "the data for software centres, with pictures" centres_are_told https://example.org/pictures
check "the manual pages" pages_are_right
check "the completion of bash and zsh" silent eval 'bash -n packaging/linux/tarno2.bash && zsh -n packaging/linux/_tarno2'

root=$PWD/build/debian-root
may_mount() { [ "$(id -u)" -eq 0 ] && unshare --mount sh -c 'mount -t tmpfs none /mnt' 2>/dev/null; }
if ! may_mount; then
    echo "note: the packages were not installed: that takes root and the right to mount file systems"
    echo "$passed passed, $failed failed, 1 skipped"
    [ "$failed" -eq 0 ] && exit 0 || exit 1
fi

echo "== a Debian 12"
if [ ! -f "$root/complete" ]; then
    # From where this machine has its packages, if it is a Debian 12.
    find_mirror() {
        apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' 'Codename: bookworm' | sed -n 1p
    }
    mirror=$(find_mirror)
    [ -n "$mirror" ] || { as_root apt-get -q update >/dev/null && mirror=$(find_mirror); }
    proxy=
    eval "$(apt-config shell proxy Acquire::http::Proxy)"
    [ -z "$proxy" ] || export http_proxy=$proxy
    rm -rf "$root"
    debootstrap --variant=minbase bookworm "$root" ${mirror:+"$mirror"} >build/debootstrap.log 2>&1 ||
        { tail -n 20 build/debootstrap.log && fail "no Debian 12"; }
    touch "$root/complete"
fi
report=$(mktemp)
# One that ends before its end has failed, whatever it had counted.
unshare --mount --propagation private bash scripts/check-debian-inside.sh "$root" "$packages" "$report" ||
    failed=$((failed + 1))
read -r inside_passed inside_failed <"$report" || true
rm -f "$report"
passed=$((passed + ${inside_passed:-0})) failed=$((failed + ${inside_failed:-0}))
echo "$passed passed, $failed failed, 0 skipped"
[ "$failed" -eq 0 ]

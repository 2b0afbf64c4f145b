#!/usr/bin/env bash
# Makes the Debian packages from the working tree with packaging/debian.
#
#   scripts/package-debian.sh [FOLDER]     FOLDER gets the packages, build/debian without one
#
# The same tree, by its last commit, gives the same bytes, in any folder, with ccache or without it (CCACHE_DISABLE=1), but
# not those of the other. TARNO2_BUILD_DEBIAN names another folder to build in.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh
install_packages "${BUILD_PACKAGES[@]}" "${DEBIAN_PACKAGES[@]}"
use_ccache
# debhelper gives the build a home of its own.
! command -v ccache >/dev/null || CCACHE_DIR=${CCACHE_DIR:-$(ccache --get-config cache_dir)}
export CCACHE_DIR=${CCACHE_DIR:-}

version=$(project_version)
packages=$(realpath -m "${1:-build/debian}")
work=$(realpath -m "${TARNO2_BUILD_DEBIAN:-build/debian-work}")
tree=$work/tarno2-$version
rm -rf "$work" && mkdir -p "$tree" "$packages"
tree_files | tar --null -T - -cf - | tar -xf - -C "$tree"
cp -r packaging/debian "$tree/debian"
# ccache takes the paths below its base as relative ones, so that it serves a build anywhere.
export CCACHE_BASEDIR=$tree
cat >"$tree/debian/changelog" <<END
tarno2 ($version) unstable; urgency=medium

  * CHANGELOG.md tells what is new.

 -- $(sed -n 's/^Maintainer: //p' packaging/debian/control)  $(LC_ALL=C date -u -R -d "@$(tree_time)")
END
# The system's own Python, whatever else is called python3 here.
(cd "$tree" && PATH=/usr/sbin:/usr/bin:/sbin:/bin dpkg-buildpackage --build=binary --no-sign)
rm -f "$packages"/*.deb "$packages"/*.changes "$packages"/*.buildinfo
mv "$work"/*.deb "$work"/*.changes "$work"/*.buildinfo "$packages"
rm -rf "$work"
ls -l "$packages"

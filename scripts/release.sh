#!/usr/bin/env bash
# Makes what a release consists of, from a clean checkout of its tag: the source archive, the Debian packages, and, where
# a Qt for MinGW is known (QT_MINGW), zip and installer for Windows; with their checksums.
#
#   scripts/release.sh [--again] [FOLDER]     FOLDER: build/releases/VERSION without one
#
# The tag is v and the version of CMakeLists.txt. The same tag gives the same source archive and Debian packages to the
# byte; with --again they are made a second time, in another folder, and compared with what FOLDER has.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

again=
[ "${1:-}" != --again ] || { again=1 && shift; }
install_packages git xz-utils
version=$(project_version)
tag=v$version
folder=$(realpath -m "${1:-build/releases/$version}")
[ -z "$(git status --porcelain)" ] || fail "The checkout has changes: commit them, or put them away"
[ "$(git rev-parse HEAD)" = "$(git rev-parse -q --verify "$tag^{commit}")" ] || fail "This is not $tag, the tag of the version in CMakeLists.txt"
grep -q "^## \[$version\]\|^## \[${version%.*}\]" CHANGELOG.md || fail "CHANGELOG.md does not tell of $version"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
name=tarno2-$version
# Everything is made from the archive, so that it has all that is needed.
SOURCE_DATE_EPOCH=$(tree_time)
export SOURCE_DATE_EPOCH
git archive --format tar --prefix "$name/" "$tag" | xz -9 --threads 1 >"$work/$name.tar.xz"
tar -xf "$work/$name.tar.xz" -C "$work"
# What ccache gives names its sources in another way, and so has other bytes.
export CCACHE_DISABLE=1
(cd "$work/$name" && scripts/package-debian.sh "$work/debian") >&2

if [ -n "$again" ]; then
    failed=0
    for file in "$work/$name.tar.xz" "$work"/debian/*.deb; do
        cmp "$file" "$folder/$(basename "$file")" || failed=1
    done
    [ "$failed" -eq 0 ] || fail "The same tag gave other bytes"
    echo "The same bytes: $name.tar.xz and $(find "$work/debian" -name '*.deb' | wc -l) packages"
    exit 0
fi

rm -rf "$folder" && mkdir -p "$folder"
mv "$work/$name.tar.xz" "$work"/debian/*.deb "$folder"
if [ -n "${QT_MINGW:-}" ]; then
    (cd "$work/$name" && scripts/test.sh windows && scripts/package-windows.sh) >&2
    mv "$work/$name"/build/windows/packages/* "$folder"
else
    echo "note: QT_MINGW names no Qt for MinGW: there are no packages for Windows" >&2
fi
(cd "$folder" && sha256sum -- * >SHA256SUMS && cat SHA256SUMS)

#!/usr/bin/env bash
# Packs what the preset "windows" has built: a zip that is unpacked and run, and an installer.
#
#   scripts/package-windows.sh [BUILD]      BUILD: the build folder, build/windows by default
#
# Leaves BUILD/packages/Tarno2-VERSION-windows.zip and Tarno2-VERSION-setup.exe. Of a build without windows they are good
# for trying the installer alone, and are named Tarno2-VERSION-without-windows-...
# The sample recording is that of the native build, which is made when it is not there.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh
install_packages "${PACKAGING_PACKAGES[@]}"

build=$(cd "${1:-build/windows}" && pwd)
bin=$build/bin
packages=$build/packages
folder=$packages/Tarno2
[ -f "$bin/Tarno2.exe" ] || fail "$bin holds no program: build it first"
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:.*=//p' "$build/CMakeCache.txt")
name=Tarno2-$version
has_windows "$build" || name=$name-without-windows

rm -rf "$packages"
for component in runtime drivers; do
    cmake --install "$build" --component "$component" --prefix "$folder"
done
mv "$folder/LICENSE" "$folder/LICENSE.txt"
# A recording is the same on every system: this is the one that the native build has made.
build_targets sample
cp -r build/release/bin/sample "$folder/"
find "$folder" -type f \( -name '*.exe' -o -name '*.dll' \) -exec x86_64-w64-mingw32-strip {} +

# What signs a file where it lies: "$TARNO2_SIGN FILE".
if [ -n "${TARNO2_SIGN:-}" ]; then
    find "$folder" -type f \( -name '*.exe' -o -name '*.dll' \) -print0 | xargs -0 -r -n 1 $TARNO2_SIGN
fi

(cd "$packages" && zip -q -9 -r "$name-windows.zip" Tarno2)

# The same files and registry entries, as lines of the installer's script: each that is written is removed again.
install=$packages/install.nsh uninstall=$packages/uninstall.nsh
: >"$install" && : >"$uninstall"
while read -r path; do
    relative=${path#"$folder"/}
    windows=${relative//\//\\}
    case $windows in
    *\\*) printf 'SetOutPath "$INSTDIR\\%s"\n' "${windows%\\*}" ;;
    *) echo 'SetOutPath "$INSTDIR"' ;;
    esac >>"$install"
    printf 'File "%s"\n' "$path" >>"$install"
    printf 'Delete "$INSTDIR\\%s"\n' "$windows" >>"$uninstall"
done < <(find "$folder" -type f -not -path '*/registry.d/*' | LC_ALL=C sort)
while read -r path; do
    printf 'RMDir "$INSTDIR\\%s"\n' "$(sed "s|^$folder/||; s|/|\\\\|g" <<<"$path")" >>"$uninstall"
done < <(find "$folder" -mindepth 1 -type d -not -name registry.d | LC_ALL=C sort -r)
for text in "$folder"/registry.d/*.reg; do
    key=$(tr -d '\r' <"$text" | sed -n 's/^\[HKEY_LOCAL_MACHINE\\\(.*\)\]$/\1/p')
    library=$(tr -d '\r' <"$text" | sed -n 's/^"path"="\.\.\/\(.*\)"$/\1/p')
    [ -n "$key" ] && [ -f "$folder/$library" ] || fail "$text names no library of ours"
    printf '!insertmacro RegisterLibrary "%s" "%s"\n' "$key" "$library" >>"$install"
    printf '!insertmacro UnregisterLibrary "%s" "%s"\n' "$key" "$library" >>"$uninstall"
done

makensis -V2 -INPUTCHARSET UTF8 -DNAME="$name" -DVERSION="$version" -DPACKAGES="$packages" -DICON="$PWD/packaging/windows/tarno2.ico" \
    -DLICENSE="$folder/LICENSE.txt" ${TARNO2_SIGN:+"-DSIGN=$TARNO2_SIGN"} packaging/windows/setup.nsi
rm -rf "$folder" "$install" "$uninstall"
ls -l "$packages"

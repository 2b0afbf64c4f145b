#!/usr/bin/env bash
# Records from drivers of Debian's own kernel: Comedi's test board and the loopback sound card. The kernel runs in a
# machine of its own, emulated, so that this one's is left alone; in it runs build/release/tests/test_kernel.
#
#   scripts/kernel/run.sh
#
# The last line is "N passed, N failed"; where the kernel's package can't be had, a note and "0 passed, 0 failed,
# 1 skipped".
set -euo pipefail
cd "$(dirname "$0")/../.."
source scripts/common.sh

tests=$PWD/build/release/tests/test_kernel
bin=$PWD/build/release/bin
work=$PWD/build/kernel

# What each module is loaded with. The waveform of Comedi's test board reaches over the whole input range, one code and a
# bit per microsecond, so that a sample tells when it was taken; its buffer is small enough to run over soon.
module_options() {
    case $1 in
    comedi) echo comedi_default_buf_size_kb=64 ;;
    comedi_test) echo amplitude=10000000 period=65521 ;;
    snd-aloop) echo pcm_substreams=1 ;;
    esac
}

# Unpacks the newest kernel package that there is; its version is left in `version`.
fetch_kernel() {
    local image
    image=$(apt-cache depends linux-image-amd64 2>/dev/null | grep -o 'linux-image-[0-9][^ ]*' | head -1) || return 1
    version=${image#linux-image-}
    [ ! -f "$work/$version/unpacked" ] || return 0
    rm -rf "$work" && mkdir -p "$work/download" "$work/$version"
    (cd "$work/download" && apt-get -q -o APT::Sandbox::User=root download "$image") || return 1
    dpkg-deb -x "$work"/download/*.deb "$work/$version" && depmod -b "$work/$version" "$version" || return 1
    rm -rf "$work/download" && touch "$work/$version/unpacked"
}

# Puts files into the machine under the names that they have here, programs and libraries with what they load.
place() {
    local file
    for file in "$@"; do
        echo "$file"
        # One line a library, " => FILE (ADDRESS)" or "FILE (ADDRESS)"; a text has none.
        ldd "$file" 2>/dev/null | sed -n 's/^[^/]*\(\/[^ ]*\) (.*/\1/p' || true
    done | sort -u | while read -r file; do
        mkdir -p "$work/root$(dirname "$file")"
        cp -L "$file" "$work/root$file"
    done
}

place_modules() {
    local module file name
    mkdir -p "$work/root/modules"
    for module in "$@"; do
        modprobe -d "$work/$version" -S "$version" --show-depends "$module"
    done | awk '!seen[$2]++ { print $2 }' | while read -r file; do
        name=$(basename "$file")
        cp "$file" "$work/root/modules/$name"
        echo "$name $(module_options "${name%.ko}")"
    done >"$work/root/modules/list"
}

make_root() {
    local driver
    rm -rf "$work/root" && mkdir -p "$work"/root/{bin,proc,sys,dev,usr/share}
    cp "$(command -v busybox)" "$work/root/bin/busybox"
    ln -s busybox "$work/root/bin/sh"
    cp scripts/kernel/init "$work/root/init" && chmod +x "$work/root/init"
    echo "$tests" >"$work/root/tests"
    place "$tests" "$bin/tarno2-console" "$(command -v aplay)"
    for driver in comedi sound; do
        [ ! -f "$bin/$driver.so" ] || place "$bin/$driver.so" "$bin/registry.d/$driver.reg"
    done
    cp -r /usr/share/alsa "$work/root/usr/share/alsa"
    place_modules comedi_test snd-aloop
    (cd "$work/root" && find . | cpio -o -H newc --quiet | gzip -1 >"$work/initrd.gz")
}

install_packages qemu-system-x86 busybox-static cpio kmod alsa-utils
if ! fetch_kernel; then
    echo "note: no package of Debian's kernel: nothing was recorded from its drivers"
    echo "0 passed, 0 failed, 1 skipped"
    exit 0
fi
build_targets test_kernel
make_root
# Never with KVM: where this machine is an emulated one itself, that hangs.
timeout 300 qemu-system-x86_64 -accel tcg -smp 2 -m 768 -nographic -no-reboot -kernel "$work/$version/boot/vmlinuz-$version" \
    -initrd "$work/initrd.gz" -append "console=ttyS0 quiet panic=-1" </dev/null | tr -d '\r' |
    tee "$work/console.log" | sed -un '/== tests/,$p'
passed=$(sed -n 's/^\[  PASSED  \] \([0-9]*\) test.*/\1/p' "$work/console.log")
failed=$(sed -n 's/^\[  FAILED  \] \([0-9]*\) test.*listed below.*/\1/p' "$work/console.log")
skipped=$(sed -n 's/^\[  SKIPPED \] \([0-9]*\) test.*listed below.*/\1/p' "$work/console.log")
if ! grep -q '^== status 0$' "$work/console.log"; then
    failed=${failed:-1}
fi
echo "${passed:-0} passed, ${failed:-0} failed, ${skipped:-0} skipped"
[ "${failed:-0}" -eq 0 ]

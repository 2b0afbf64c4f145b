#!/usr/bin/env bash
# Looks at the programs and libraries that were built for Linux: that a fault in one of them is stopped where it happens.
#
#   scripts/check-hardening.sh [PRESET]      release, the default, or another one that is optimised
#
# Each is position-independent, has its tables read-only and everything bound from the start, no stack that could be run,
# and guards of its stack; those that copy memory do it through the C library's checked functions, and those that use
# containers check their bounds. The check itself is tried on a program that has none of it. The last line is
# "N passed, N failed".
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

preset=${1:-release}
bin=build/$preset/bin
passed=0 failed=0

# Prints what a file lacks, a word each.
lacks() {
    local headers dynamic symbols
    headers=$(readelf -hlW "$1")
    dynamic=$(readelf -dW "$1")
    symbols=$(readelf --dyn-syms -W "$1")
    grep -qE 'Type: +DYN' <<<"$headers" || echo position-independent
    grep -q GNU_RELRO <<<"$headers" || echo relro
    grep -qE 'BIND_NOW|FLAGS_1.*NOW' <<<"$dynamic" || echo bind-now
    grep -qE 'GNU_STACK .* RW ' <<<"$headers" || echo no-executable-stack
    ! grep -q TEXTREL <<<"$dynamic" || echo no-text-relocations
    grep -q __stack_chk_fail <<<"$symbols" || echo stack-protector
    grep -qE ' __[a-z]+_chk(@| |$)' <<<"$symbols" || echo fortify
    grep -q __glibcxx_assert_fail <<<"$symbols" || echo assertions
}

check() {
    local missing
    missing=$(lacks "$1" | tr '\n' ' ')
    if [ -z "$missing" ]; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        echo "$1 lacks: $missing"
    fi
}

for file in Tarno2 tarno2-console tarno2-drivers tarno2-export tarno2-recover tarno2-verify simulator.so replay.so serial.so network.so sound.so; do
    check "$bin/$file"
done
[ ! -e "$bin/scopera.so" ] || check "$bin/scopera.so"

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
echo 'int main() {}' >"$folder/plain.c"
"${CC:-gcc}" -no-pie -fno-stack-protector -z norelro -z lazy -z execstack -o "$folder/plain" "$folder/plain.c" 2>/dev/null
wanted="assertions bind-now fortify no-executable-stack position-independent relro stack-protector"
found=$(lacks "$folder/plain" | sort | tr '\n' ' ')
if [ "$found" = "$wanted " ]; then
    passed=$((passed + 1))
else
    failed=$((failed + 1))
    echo "The check does not see what a plain program lacks: \"$found\""
fi

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]

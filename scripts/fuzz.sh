#!/usr/bin/env bash
# Feeds the readers of files with invented inputs, each for a while.
#
#   scripts/fuzz.sh [SECONDS]      30 by default
#
# An input that breaks a reader stays in build/fuzz/findings; run the reader's program with its name to see it again.
# The last line is "N passed, N failed".
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

install_packages "${BUILD_PACKAGES[@]}" "${FUZZ_PACKAGES[@]}"
use_ccache

readers=()
for source in fuzz/*_fuzz.cpp; do
    reader=$(basename "$source" _fuzz.cpp)
    readers+=("$reader")
done
cmake --preset fuzz
cmake --build build/fuzz --target "${readers[@]/#/fuzz_}"

mkdir -p build/fuzz/findings
results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
export results
# As many at a time as there are processors. New inputs are kept from run to run, beside those of the tree.
printf '%s\n' "${readers[@]}" | xargs -P "$(nproc)" -n 1 bash -c '
    mkdir -p "build/fuzz/corpus/$2"
    "build/fuzz/bin/fuzz_$2" -max_total_time="$1" -timeout=10 -max_len=20000 -print_final_stats=1 \
        -artifact_prefix="build/fuzz/findings/$2-" "build/fuzz/corpus/$2" "fuzz/corpus/$2" >"$results/$2.out" 2>&1 &&
        touch "$results/$2.passed" || true' fuzz "${1:-30}"

passed=0 failed=0
for reader in "${readers[@]}"; do
    echo "== $reader"
    grep -vE "^#|^\"" "$results/$reader.out" | tail -n 40 || true
    if [ -f "$results/$reader.passed" ]; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
    fi
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]

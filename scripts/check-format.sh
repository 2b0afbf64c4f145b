#!/usr/bin/env bash
# Fails when a C++ file that git tracks is not as clang-format 14 would write it. --fix rewrites them instead.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

install_packages clang-format-14
mapfile -t files < <(git ls-files '*.h' '*.hpp' '*.cpp' '*.cc' | while read -r file; do
    [ ! -f "$file" ] || echo "$file"
done)
[ ${#files[@]} -gt 0 ] || fail "No file to check"

if [ "${1:-}" = --fix ]; then
    clang-format-14 -i "${files[@]}"
    exit
fi
failed=0
for file in "${files[@]}"; do
    clang-format-14 --dry-run -Werror "$file" || failed=$((failed + 1))
done
echo "$((${#files[@]} - failed)) passed, $failed failed"
[ "$failed" -eq 0 ]

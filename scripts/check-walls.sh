#!/usr/bin/env bash
# The checks of includes, of texts and of the manual, each proven first on planted violations, and the count of lines.
set -uo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh
install_packages git python3
cd scripts

passed=0 failed=0
for check in "check-includes.sh --self-test" "check-includes.sh" "check-texts.sh --self-test" "check-texts.sh" \
    "check-manual.py --self-test" "check-manual.py" "check-links.py --self-test" "check-links.py" "count-lines.sh"; do
    echo "== $check"
    # shellcheck disable=SC2086 # the words are meant to part
    if ./$check; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]

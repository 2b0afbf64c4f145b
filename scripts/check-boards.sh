#!/usr/bin/env bash
# Records from boards that send by themselves, each family for ten seconds at its full rate, and checks every sample.
# The other ends are the tests themselves: nothing has to be plugged in.
#
#   scripts/check-boards.sh [FOLDER]     of the programs and drivers; build/release/bin is the default. Windows programs
#                                        (build/windows/bin) run under Wine
#   scripts/check-boards.sh [FOLDER] FAMILY...     serial, network alone
#
# Needs what scripts/test.sh has built for "release". A busy machine may well be late: nothing else should run
# meanwhile. The last line is "N passed, N failed".
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

families=(serial network)
programs=$(realpath -m "${1:-build/release/bin}")
shift || true
[ $# -eq 0 ] || families=("$@")
tests=$PWD/build/release/tests/test_apps
[ -x "$tests" ] || fail "$tests is missing: run scripts/test.sh release first"
if [ -e "$programs/tarno2-console.exe" ]; then
    install_packages "${WINDOWS_PACKAGES[@]}"
    start_wine
else
    [ -x "$programs/tarno2-console" ] || fail "$programs has no tarno2-console"
fi
export TARNO2_BOARDS_PROGRAMS=$programs

passed=0 failed=0
for family in "${families[@]}"; do
    echo "== $family"
    list=$("$tests" --gtest_also_run_disabled_tests --gtest_filter="DISABLED_Boards.${family^}*" --gtest_list_tests |
        sed -n 's/^  //p')
    [ -n "$list" ] || fail "there is no such family: $family"
    for name in $list; do
        if timeout 300 "$tests" --gtest_also_run_disabled_tests --gtest_brief=1 --gtest_filter="DISABLED_Boards.$name"; then
            echo "ok: $name" && passed=$((passed + 1))
        else
            echo "FAILED: $name" && failed=$((failed + 1))
        fi
    done
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]

#!/usr/bin/env bash
# Installs what the build needs, builds everything and runs every test.
#
#   scripts/test.sh [PRESET]      release (the default), debug, asan, tsan or windows
#
# The whole output of the tests goes to build/PRESET/ctest.log. The last line is "N passed, N failed, N skipped".
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

preset=${1:-release}
install_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}"
ensure_russian_locale
use_ccache

prefix=()
case $preset in
release | debug) ;;
asan)
    export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1}
    export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
    ;;
tsan)
    # The window toolkit is not instrumented: its locks go unseen, and what it hands between threads looks like a race.
    export TSAN_OPTIONS=${TSAN_OPTIONS:-second_deadlock_stack=1:ignore_noninstrumented_modules=1}
    ;;
windows)
    install_packages "${WINDOWS_PACKAGES[@]}"
    ;;
*) fail "No preset \"$preset\": release, debug, asan, tsan or windows" ;;
esac

cmake --preset "$preset" -DTARNO2_TESTS=ON
cmake --build --preset "$preset"

if [ "$preset" = tsan ]; then
    prefix_text=$(tsan_prefix)
    read -r -a prefix <<<"$prefix_text"
fi
if [ "$preset" = windows ]; then
    # A Wine of its own, thrown away afterwards: no setting of the user's plays a part, and none is changed.
    unset DISPLAY
    wine_folder=$(mktemp -d)
    export WINEPREFIX=$wine_folder/prefix WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml='
    trap 'wineserver -k >/dev/null 2>&1 || true; wineserver -w >/dev/null 2>&1 || true; rm -rf "$wine_folder"' EXIT
    wine wineboot --init </dev/null || fail "Wine does not start"
    wineserver -w 2>/dev/null || true
fi

log=build/$preset/ctest.log
status=0
"${prefix[@]}" ctest --preset "$preset" -V --timeout "${TARNO2_TEST_TIMEOUT:-900}" --no-tests=error \
    </dev/null >"$log" 2>&1 || status=$?

# Of a run that went well the table is enough; of another, all but the cases that passed.
if [ "$status" -eq 0 ]; then
    grep -E '^ *[0-9]+/[0-9]+ Test +#|tests passed|Total Test time' "$log" || true
else
    grep -vE '^[0-9]+: (\[ RUN      \]|\[       OK \]|\[-{10}\]|\s*$)' "$log" || true
fi
read -r passed failed skipped <<<"$(count_tests "$log")"
if [ "$status" -ne 0 ] && [ "$failed" -eq 0 ]; then
    failed=1
fi
echo "$passed passed, $failed failed, $skipped skipped"
[ "$status" -eq 0 ] && [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]

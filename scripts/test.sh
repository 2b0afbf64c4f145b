#!/usr/bin/env bash
# Installs what the build needs, builds everything and runs every test.
#
#   scripts/test.sh [PRESET]      release (the default), debug, asan, tsan or windows
#
# The whole output of the tests goes to build/PRESET/ctest.log. Tests that were skipped are listed. The last line is
# "N passed, N failed, N skipped".
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

preset=${1:-release}
install_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}"
ensure_russian_locale
use_ccache

prefix=() options=()
case $preset in
release | debug) ;;
asan)
    export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1}
    export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1}
    ;;
tsan)
    # The window toolkit is not instrumented: its locks go unseen, and what it hands between threads looks like a race.
    export TSAN_OPTIONS=${TSAN_OPTIONS:-second_deadlock_stack=1:ignore_noninstrumented_modules=1:suppressions=$PWD/tests/tsan.supp}
    ;;
windows)
    install_packages "${WINDOWS_PACKAGES[@]}"
    if [ -n "${QT_MINGW:-}" ]; then
        options=(-DTARNO2_GUI=ON -DQT_MINGW="$QT_MINGW")
    else
        echo "note: there is no Qt for MinGW here: built without windows, whose tests are skipped; QT_MINGW names one"
        options=(-DTARNO2_GUI=OFF)
    fi
    ;;
*) fail "No preset \"$preset\": release, debug, asan, tsan or windows" ;;
esac

cmake --preset "$preset" -DTARNO2_TESTS=ON "${options[@]}"
cmake --build --preset "$preset"

if [ "$preset" = tsan ]; then
    prefix_text=$(tsan_prefix)
    read -r -a prefix <<<"$prefix_text"
fi
if [ "$preset" = windows ]; then
    start_wine
fi

log=build/$preset/ctest.log
status=0
"${prefix[@]}" ctest --preset "$preset" -V -j "$(nproc)" --timeout "${TARNO2_TEST_TIMEOUT:-900}" --no-tests=error \
    </dev/null >"$log" 2>&1 || status=$?

# Of a run that went well the table is enough; of another, all but the cases that passed.
if [ "$status" -eq 0 ]; then
    grep -E '^ *[0-9]+/[0-9]+ Test +#|tests passed|Total Test time' "$log" || true
else
    grep -vE '^[0-9]+: (\[ RUN      \]|\[       OK \]|\[-{10}\]|\s*$)' "$log" || true
fi
list_skipped "$log"
read -r passed failed skipped <<<"$(count_tests "$log")"
if [ "$status" -ne 0 ] && [ "$failed" -eq 0 ]; then
    failed=1
fi
echo "$passed passed, $failed failed, $skipped skipped"
[ "$status" -eq 0 ] && [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]

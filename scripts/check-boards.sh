#!/usr/bin/env bash
# Records from boards without one, each family at its full rate with the console program, and checks every sample. The
# other ends are programs of this tree and of the system: nothing has to be plugged in.
#
#   scripts/check-boards.sh [FAMILY...]                       serial, network, sound, sigrok, iio; all when none is named
#   scripts/check-boards.sh --windows FOLDER [FAMILY...]      with the Windows programs of that folder, under Wine:
#                                                             serial, network, sound
#
# Installs and builds (release) what the families need. A busy machine may well be late: nothing else should run
# meanwhile. Of a bench that failed the folder is kept. Comedi's boards are recorded by scripts/kernel/run.sh. The last
# line is "N passed, N failed, N skipped".
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

bin=$PWD/build/release/bin
test_bin=$PWD/build/release/tests
console=("$bin/tarno2-console")
families=(serial network sound sigrok iio)
windows=
if [ "${1:-}" = --windows ]; then
    [ -e "${2:-}/tarno2-console.exe" ] || fail "There is no tarno2-console.exe in \"${2:-}\""
    windows=$(realpath "$2")
    families=(serial network sound)
    shift 2
fi
[ $# -eq 0 ] || families=("$@")
for family in "${families[@]}"; do
    [ -f "scripts/boards/$family.sh" ] || fail "No family \"$family\": serial, network, sound, sigrok or iio"
done

passed=0 failed=0 skipped=0
work=$(mktemp -d)
run=$work/run # the folder of the bench that runs

clean_up() {
    jobs -p | xargs -r kill 2>/dev/null || true
    wait
    [ -z "${wine_folder:-}" ] || stop_wine
    [ "$failed" -gt 0 ] || rm -rf "$work"
}
trap clean_up EXIT

skip() {
    echo "skipped: $*"
    skipped=$((skipped + 1))
}

# bench NAME COMMAND...: runs one in a fresh folder and counts it.
bench() {
    local name=$1 kept=$work/$((passed + failed + 1))
    shift
    mkdir "$run"
    if "$@"; then
        echo "passed: $name"
        passed=$((passed + 1))
        rm -rf "$run"
    else
        mv "$run" "$kept"
        echo "FAILED: $name (in $kept)"
        failed=$((failed + 1))
    fi
}

# record DRIVER SETTINGS CHANNELS RATE SECONDS: records the first channels of board 1, to its end when SECONDS is 0, into
# run.dat.
record() {
    {
        printf '%s\r\n' 'DebugMode = 1' "DriverName = \"$1\"" "DriverSettings = \"$2\"" 'BaseNumber = 1' \
            'FileName = "run.dat"' "ChannelCount = $3" "ChannelsNumber = $(seq -s, 0 $(($3 - 1)))" "Frequency = $4" \
            'CutMode = 0'
        [ "$5" = 0 ] || printf '%s\r\n' 'MeasureFileMode = 1' "TimeNeed = $5"
    } >"$run/auto.txt"
    (cd "$run" && TARNO2_HOME=. timeout $(($5 + 60)) "${console[@]}" /c auto.txt) >"$run/output.txt" 2>&1 </dev/null &&
        [ -s "$run/run.dat" ] && return 0
    cat "$run/output.txt" "$run/AutoLog.txt"
    return 1
}

# holds KIND CHANNELS FRAMES [EXACTLY]: whether what was recorded is at least (or exactly) so many frames, all right.
holds() {
    local frames
    frames=$("$test_bin/check_samples" "$1" "$2" "$run/run.dat") || { echo "$frames" && return 1; }
    if [ "$frames" -lt "$3" ] || { [ $# -gt 3 ] && [ "$frames" -ne "$3" ]; }; then
        echo "$frames frames instead of $3" && return 1
    fi
    echo "    $frames frames"
}

# record_by_tests FAMILY: the long recordings of the test program, which is the other end itself.
record_by_tests() {
    local name names
    names=$("$test_bin/test_apps" --gtest_filter="DISABLED_Boards.$1*" --gtest_list_tests | sed -n 's/^  //p')
    [ -n "$names" ] || fail "test_apps has no recordings of $1"
    for name in $names; do
        bench "$name" env TARNO2_BOARDS_PROGRAMS="${windows:-$bin}" timeout 300 "$test_bin/test_apps" \
            --gtest_also_run_disabled_tests --gtest_brief=1 --gtest_filter="DISABLED_Boards.$name"
    done
}

if [ -n "$windows" ]; then
    install_packages "${WINDOWS_PACKAGES[@]}"
    start_wine
    trap clean_up EXIT
    console=(wine "$windows/tarno2-console.exe")
fi
# Each family says what it needs: packages, targets of the build, and what it can record under Wine.
for family in "${families[@]}"; do
    echo "== $family"
    packages=() targets=() under_wine=
    # shellcheck source=/dev/null
    source "scripts/boards/$family.sh"
    if [ -n "$windows" ] && [ -z "$under_wine" ]; then
        skip "$family: no driver on Windows"
        continue
    fi
    install_packages "${packages[@]}"
    [ ${#targets[@]} -eq 0 ] || build_targets "${targets[@]}"
    benches
done
echo "$passed passed, $failed failed, $skipped skipped"
[ "$failed" -eq 0 ]

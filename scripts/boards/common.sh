# What the benches of boards share; sourced, with the checkout's root as the working directory.
# shellcheck shell=bash

bin=${TARNO2_BIN_FOLDER:-$PWD/build/release/bin}
test_bin=${bin%/bin}/tests
passed=0 failed=0 folder=

# bench NAME COMMAND...: runs one and counts it.
bench() {
    local name=$1
    shift
    if "$@"; then
        echo "passed: $name" && passed=$((passed + 1))
    else
        echo "FAILED: $name (in $folder)" && failed=$((failed + 1))
    fi
}

# record DRIVER CHANNELS RATE SECONDS: records the first so many channels of board 1, to its end when SECONDS is 0, into
# the fresh folder $folder.
record() {
    local channels
    channels=$(seq -s, 0 $(($2 - 1)))
    folder=$(mktemp -d)
    {
        printf 'DebugMode = 1\r\nDriverName = "%s"\r\nBaseNumber = 1\r\nFileName = "%s/run.dat"\r\n' "$1" "$folder"
        printf 'ChannelCount = %s\r\nChannelsNumber = %s\r\nFrequency = %s\r\nCutMode = 0\r\n' "$2" "$channels" "$3"
        [ "$4" = 0 ] || printf 'MeasureFileMode = 1\r\nTimeNeed = %s\r\n' "$4"
    } >"$folder/auto.txt"
    TARNO2_HOME=$folder timeout $(($4 + 60)) "$bin/tarno2-console" /c "$folder/auto.txt" >"$folder/output.txt" 2>&1 ||
        { cat "$folder/output.txt" && return 1; }
}

# holds KIND CHANNELS FRAMES [EXACTLY]: whether what was recorded is at least (or exactly) so many frames, all right.
holds() {
    local frames
    frames=$("$test_bin/check_samples" "$1" "$2" "$folder/run.dat") || { echo "$frames" && return 1; }
    if [ "$frames" -lt "$3" ] || { [ $# -gt 3 ] && [ "$frames" -ne "$3" ]; }; then
        echo "$frames frames instead of $3" && return 1
    fi
    echo "    $frames frames"
    rm -rf "$folder"
}

#!/usr/bin/env bash
# Records the demonstration device of libsigrok at length and checks every sample. Needs the targets sigrok,
# tarno2-console and check_samples.
set -uo pipefail
cd "$(dirname "$0")/../.."
. scripts/boards/common.sh

# demo DEVICES CHANNELS RATE SECONDS KIND
demo() {
    TARNO2_SIGROK="Devices=$1;Options=Logic:pattern=incremental" record Sigrok "$2" "$3" "$4" &&
        holds "$5" "$2" $(($3 * $4 - $3 / 2)) # the device sends by tenths of a second
}

bench "4 analog channels and 8 lines, 1 MHz, 60 s" demo demo:analog_channels=4:logic_channels=8 4 1000000 60 demo
bench "16 lines, 4 MHz, 10 s" demo demo:analog_channels=0:logic_channels=16 1 4000000 10 lines16
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]

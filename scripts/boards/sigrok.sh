# The demonstration device of libsigrok, at length.
# shellcheck shell=bash disable=SC2034
targets=(tarno2-console sigrok check_samples)

# demo DEVICES CHANNELS RATE SECONDS KIND
demo() {
    record Sigrok "Devices=$1;Options=Logic:pattern=incremental" "$2" "$3" "$4" &&
        holds "$5" "$2" $(($3 * $4 - $3 / 2)) # the device sends by tenths of a second
}

benches() {
    bench "4 analog channels and 8 lines, 1 MHz, 60 s" demo demo:analog_channels=4:logic_channels=8 4 1000000 60 demo
    bench "16 lines, 4 MHz, 10 s" demo demo:analog_channels=0:logic_channels=16 1 4000000 10 lines16
}

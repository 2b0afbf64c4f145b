# Boards of industrial I/O that count, of a server on the loopback and of this computer.
# shellcheck shell=bash disable=SC2034,SC2154
targets=(tarno2-console iio fake_iiod check_samples)

# served KIND RATE SECONDS [FRAMES FAULT...]: two channels of a server; with a fault exactly so many frames.
served() {
    local kind=$1 rate=$2 seconds=$3 frames=${4:-$(($2 * $3 - $2 / 2))} server status=0 # samples come by tenths of a second
    shift $(($# > 4 ? 4 : $#))
    "$test_bin/fake_iiod" 0 "$kind" "$@" >"$run/uri" &
    server=$!
    while [ ! -s "$run/uri" ] && kill -0 $server 2>/dev/null; do sleep 0.05; done
    record IIO "Context=$(cat "$run/uri")" 2 "$rate" "$seconds" &&
        holds "count${kind#?}" 2 "$frames" ${1:+exactly} || status=1
    kill $server
    wait $server 2>/dev/null || true
    return $status
}

# with_local_board FRAMES COMMAND...: in a namespace of its own, a device of the kernel that is made of files, and a
# device node that is a pipe.
with_local_board() {
    local frames=$1 old device=/sys/bus/iio/devices/iio:device0 node channel generator status=0
    shift
    old=$(mktemp -d)
    mount --rbind /dev "$old" && mount -t tmpfs none /dev && mount -t tmpfs none /sys/bus || return 1
    for node in null zero urandom random tty full shm; do
        if [ -d "$old/$node" ]; then mkdir "/dev/$node"; else touch "/dev/$node"; fi
        mount --bind "$old/$node" "/dev/$node"
    done
    mkdir -p $device/scan_elements $device/buffer
    echo localadc >$device/name
    echo 48000 >$device/sampling_frequency
    echo "8000 48000" >$device/sampling_frequency_available
    for channel in 0 1; do
        echo 0.305176 >$device/in_voltage${channel}_scale
        echo $channel >$device/scan_elements/in_voltage${channel}_index
        echo "le:s16/16>>0" >$device/scan_elements/in_voltage${channel}_type
        echo 0 >$device/scan_elements/in_voltage${channel}_en
    done
    echo 0 >$device/buffer/enable
    echo 2 >$device/buffer/length
    mkfifo /dev/iio:device0
    # Unpaced: the pipe holds back what was not read. At the end it is silent, which ends the recording.
    perl -e '$| = 1; for my $i (0 .. $ARGV[0] - 1) { print pack("S<S<", $i & 0xFFFF, ($i + 1000) & 0xFFFF) }' "$frames" \
        <>/dev/iio:device0 >&0 &
    generator=$!
    "$@" || status=$?
    kill $generator 2>/dev/null
    return $status
}

# own FRAMES: a board of this computer.
own() {
    local console=(unshare -m bash -c "$(declare -f with_local_board)"'; with_local_board "$@"' bash "$1" "${console[@]}")
    record IIO "Context=local;Timeout=1" 2 48000 0 && holds count16 2 "$1" exactly
}

benches() {
    bench "16 bit, 48 kHz, 10 s" served s16 48000 10
    bench "12 of 16 bit, 100 kHz, 10 s" served u12 100000 10
    bench "24 of 32 bit, 48 kHz, 10 s" served s24 48000 10
    bench "the connection breaks after 100000 frames" served s16 50000 0 100000 cutAfter=100000
    bench "the board goes after 123456 frames" served s24 48000 0 123456 goneAfter=123456
    bench "77 frames are lost after 100001" served u12 48000 0 100001 loseAt=100001 loseFrames=77
    if unshare -m true 2>/dev/null; then
        bench "a board of this computer" own 480000
    else
        skip "a board of this computer: no namespace of its own can be made"
    fi
}

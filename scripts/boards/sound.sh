# A card in user space that counts, for ten seconds each; and speech that is played to a sound server of its own, which
# is heard through ALSA, or through Windows' sound interface.
# shellcheck shell=bash disable=SC2034,SC2154
packages=(pulseaudio pulseaudio-utils libasound2-plugins alsa-utils python3) under_wine=1
[ -n "$windows" ] || targets=(tarno2-console sound tarno2_counter_card check_samples)
speech_rate=48000 # of the words that alsa-utils brings, one channel of 16 bits

# counter CHANNELS RATE BITS: ten seconds of the counting card.
counter() {
    printf '%s\n' "pcm_type.tarno2_card { lib \"$test_bin/tarno2_counter_card.so\" }" \
        "pcm.card { type tarno2_card channels $1 rates [ $2 ] formats \"S16_LE S24_3LE S32_LE\" }" >"$run/asound.conf"
    ALSA_CONFIG_PATH=$run/asound.conf record Sound "Device=card;Bits=$3" "$1" "$2" 10 &&
        holds "counter$3" "$1" $(($2 * 19 / 2))
}

# A sound server of its own, whose only output leads to its only input; it ends with the script.
start_server() {
    mkdir -m 700 "$work/server"
    export XDG_RUNTIME_DIR=$work/server PULSE_RUNTIME_PATH=$work/server PULSE_SERVER=unix:$work/server/native
    HOME=$work pulseaudio --daemonize=no --system=no -n --exit-idle-time=-1 --disable-shm=yes --use-pid-file=no \
        -L "module-null-sink sink_name=bench format=s16le channels=1 rate=$speech_rate" \
        -L "module-native-protocol-unix socket=$work/server/native auth-anonymous=1" >"$work/server.log" 2>&1 &
    for _ in $(seq 100); do
        HOME=$work pactl info >/dev/null 2>&1 && return 0
        sleep 0.1
    done
    cat "$work/server.log"
    return 1
}

# speech DEVICE BITS: what was played is in the recording, sample by sample.
speech() {
    local seconds player status=0
    for file in /usr/share/sounds/alsa/{Front,Rear,Side}_*.wav; do tail -c +45 "$file"; done >"$run/speech.raw"
    seconds=$(($(stat -c %s "$run/speech.raw") / 2 / speech_rate + 6))
    {
        while [ ! -s "$run/run.dat" ]; do sleep 0.1; done
        # Behind a second of silence, because a server cuts the beginning.
        { head -c $((2 * speech_rate)) /dev/zero && cat "$run/speech.raw"; } |
            HOME=$work paplay --raw --rate=$speech_rate --channels=1 --format=s16le
    } &
    player=$!
    record Sound "Device=$1;Bits=$2" 1 $speech_rate $seconds || status=1
    kill $player 2>/dev/null || true
    wait $player 2>/dev/null || true
    [ $status = 0 ] && python3 - "$run" "$2" <<'PYTHON'
import array, sys
folder, bits = sys.argv[1], int(sys.argv[2])
played = open(folder + "/speech.raw", "rb").read()
recorded = open(folder + "/run.dat", "rb").read()
if bits > 16:
    words = array.array("i")
    words.frombytes(recorded)
    if any(word & ((1 << (bits - 16)) - 1) for word in words):
        sys.exit("the recording has bits that were not played")
    recorded = array.array("h", (word >> (bits - 16) for word in words)).tobytes()
begin = (len(played) - len(played.lstrip(b"\0"))) // 2 * 2
samples = (len(played) - begin) // 2
at = recorded.find(played[begin:])
print(f"    {samples} samples played,", "found whole" if at >= 0 and at % 2 == 0 else "not found in the recording")
sys.exit(at < 0 or at % 2 != 0 or samples < 400000)
PYTHON
}

benches() {
    local size
    if [ -z "$windows" ]; then
        for size in "4 48000 16" "4 48000 24" "4 48000 32" "8 192000 16" "8 192000 32"; do
            # shellcheck disable=SC2086 # the words are meant to part
            bench "sound card, channels x rate x bits: $size" counter $size
        done
        bench "a sound server starts" start_server
        for size in 16 32; do bench "speech through a sound server, $size bits" speech pulse $size; done
    else
        bench "a sound server starts" start_server
        for size in 16 24 32; do bench "speech through a sound server, $size bits" speech "" $size; done
    fi
}

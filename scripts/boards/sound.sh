#!/usr/bin/env bash
# Records from sound cards without one, and checks every sample.
#
#   scripts/boards/sound.sh [sound | sound-wine]...     both
#
# sound: ten seconds each of a card in user space, and speech that is played to a sound server of its own. Needs the
# release build of tarno2-console, sound and tarno2_counter_card. sound-wine: the same speech through Windows' sound
# interface, with the Windows build of tarno2-console and sound (build/windows). What is missing is told and left out.
set -uo pipefail
cd "$(dirname "$0")/../.."
. scripts/common.sh

. scripts/boards/common.sh

folder=$(mktemp -d)
pulse=

clean_up() {
    [ -z "$pulse" ] || { kill "$pulse" && wait "$pulse"; } 2>/dev/null
    [ -z "${wine_folder:-}" ] || stop_wine
    [ "$failed" -gt 0 ] || rm -rf "$folder"
}
trap clean_up EXIT

# record_sound CHANNELS RATE SECONDS COMMAND...: board 1 of the driver into the folder $folder/run, by a console program.
record_sound() {
    rm -rf "$folder/run" && mkdir -p "$folder/run"
    printf '%s\r\n' 'DriverName = "Sound"' 'BaseNumber = 1' 'FileName = "run.dat"' "ChannelCount = $1" \
        "ChannelsNumber = $(seq -s, 0 $(($1 - 1)))" "Frequency = $2" 'CutMode = 0' 'MeasureFileMode = 1' \
        "TimeNeed = $3" >"$folder/run/auto.txt"
    local seconds=$3
    shift 3
    (cd "$folder/run" && TARNO2_HOME=. timeout $((seconds + 60)) "$@" /c auto.txt) >"$folder/output.txt" 2>&1 </dev/null &&
        [ -s "$folder/run/run.dat" ] || { cat "$folder/output.txt" "$folder/run/AutoLog.txt" && return 1; }
}

# counter CHANNELS RATE BITS: ten seconds of the counting card.
counter() {
    printf '%s\n' "pcm_type.tarno2_card { lib \"$test_bin/tarno2_counter_card.so\" }" \
        "pcm.card { type tarno2_card channels $1 rates [ $2 ] formats \"S16_LE S24_3LE S32_LE\" }" >"$folder/asound.conf"
    ALSA_CONFIG_PATH=$folder/asound.conf TARNO2_SOUND="Device=card;Bits=$3" \
        record_sound "$1" "$2" 10 "$bin/tarno2-console" || return 1
    python3 - "$folder/run/run.dat" "$1" "$2" "$3" <<'PYTHON'
import array, sys
name, channels, rate, bits = sys.argv[1], *map(int, sys.argv[2:])
got = array.array("H" if bits == 16 else "I")
with open(name, "rb") as file:
    got.frombytes(file.read())
span = 1 << bits
for first in range(0, len(got), 65536):
    block = got[first:first + 65536]
    count = range(first, first + len(block))
    if bits == 16:  # the counter jumps at each multiple of its span, so that a lost block of that length shows
        count = ((i + 40503 * (i >> 16)) % span for i in count)
    elif bits == 24:  # with the sign extended
        count = ((i % span | 0xFF000000) if i & 0x800000 else i % span for i in count)
    if block != array.array(got.typecode, count):
        sys.exit(f"a sample from {first} on is not the card's")
frames = len(got) // channels
print(f"    {frames} frames")
sys.exit(len(got) % channels != 0 or frames < 9.5 * rate)
PYTHON
}

# Speech as the server plays it, behind a second of silence, because a server cuts the beginning: one channel, 16 bits.
make_speech() {
    if command -v espeak-ng >/dev/null; then
        seq -s ', ' 1 30 | espeak-ng --stdin -w "$folder/speech.wav"
    fi
    python3 - "$folder" /usr/share/sounds/alsa/*_*.wav <<'PYTHON'
import glob, os, sys, wave
work, names = sys.argv[1], sys.argv[2:]
made = os.path.join(work, "speech.wav")
data, rate = b"", 48000
for name in [made] if os.path.exists(made) else names:
    if os.path.exists(name):
        with wave.open(name) as file:
            if file.getnchannels() == 1 and file.getsampwidth() == 2:
                rate = file.getframerate()
                data += file.readframes(file.getnframes())
while data and len(data) < 800000:
    data += data
open(os.path.join(work, "speech.raw"), "wb").write(data)
open(os.path.join(work, "play.raw"), "wb").write(bytes(2 * rate) + data)
if data:
    print(rate, len(data) // 2 // rate + 1)
PYTHON
}

# A sound server of its own, whose only output leads to its only input. False with a note where there is none.
start_server() {
    [ -z "$pulse" ] || return 0
    command -v pulseaudio >/dev/null && command -v paplay >/dev/null && command -v python3 >/dev/null ||
        { echo "note: no sound server: pulseaudio, pulseaudio-utils or python3 is missing" && return 1; }
    read -r speech_rate speech_seconds < <(make_speech) || { echo "note: no speech to play" && return 1; }
    mkdir -m 700 "$folder/server"
    export XDG_RUNTIME_DIR=$folder/server PULSE_RUNTIME_PATH=$folder/server PULSE_SERVER=unix:$folder/server/native
    HOME=$folder pulseaudio --daemonize=no --system=no -n --exit-idle-time=-1 --disable-shm=yes --use-pid-file=no \
        -L "module-null-sink sink_name=bench format=s16le channels=1 rate=$speech_rate" \
        -L "module-native-protocol-unix socket=$folder/server/native auth-anonymous=1" >"$folder/server.log" 2>&1 &
    pulse=$!
    local i
    for i in $(seq 100); do
        HOME=$folder pactl info >/dev/null 2>&1 && return 0
        sleep 0.1
    done
    cat "$folder/server.log"
    return 1
}

# speech BITS COMMAND...: what was played is in the recording, sample by sample.
speech() {
    local bits=$1 status=0
    shift
    rm -rf "$folder/run"
    {
        while [ ! -s "$folder/run/run.dat" ]; do sleep 0.1; done
        HOME=$folder paplay --raw --rate="$speech_rate" --channels=1 --format=s16le "$folder/play.raw"
    } &
    local player=$!
    TARNO2_SOUND="Device=${SOUND_DEVICE:-};Bits=$bits" record_sound 1 "$speech_rate" $((speech_seconds + 5)) "$@" || status=1
    kill "$player" 2>/dev/null
    wait "$player" 2>/dev/null
    [ $status = 0 ] && python3 - "$folder" "$bits" <<'PYTHON'
import array, sys
work, bits = sys.argv[1], int(sys.argv[2])
played = open(work + "/speech.raw", "rb").read()
recorded = open(work + "/run/run.dat", "rb").read()
if bits > 16:
    words = array.array("i")
    words.frombytes(recorded)
    if any(word & ((1 << (bits - 16)) - 1) for word in words):
        sys.exit("the recording has bits that were not played")
    recorded = array.array("h", (word >> (bits - 16) for word in words)).tobytes()
begin = len(played) - len(played.lstrip(b"\0"))
found = recorded.find(played[begin - begin % 2:])
print(f"    {len(played) // 2} samples played, found whole" if found >= 0 else "    not found in the recording")
sys.exit(found < 0)
PYTHON
}

sound() {
    local size
    for size in "4 48000 16" "4 48000 24" "4 48000 32" "8 192000 16" "8 192000 32"; do
        # shellcheck disable=SC2086 # the words are meant to part
        bench "sound card, channels x rate x bits: $size" counter $size
    done
    start_server || return 0
    for size in 16 32; do
        SOUND_DEVICE=pulse bench "speech through a sound server, $size bits" \
            speech $size "$bin/tarno2-console"
    done
}

sound-wine() {
    local size program=${TARNO2_WINDOWS_BIN:-$PWD/build/windows/bin}/tarno2-console.exe
    command -v wine >/dev/null && [ -e "$program" ] ||
        { echo "note: no recording under Wine: wine or the Windows build is missing" && return 0; }
    start_server || return 0
    start_wine
    trap clean_up EXIT
    for size in 16 24 32; do
        bench "speech under Wine, $size bits" speech $size wine "$program"
    done
}

[ $# -gt 0 ] || set -- sound sound-wine
for family in "$@"; do
    case $family in
    sound | sound-wine) "$family" ;;
    *) fail "No family \"$family\": sound or sound-wine" ;;
    esac
done
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]

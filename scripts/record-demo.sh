#!/usr/bin/env bash
# Installs what the build and the tests need, builds the programs, the drivers and the signal view in build/release,
# records five seconds of the simulated board without a window, and shows what came of it. Where it may not install, it
# prints the one line to be run by root.
#
#   scripts/record-demo.sh [FOLDER]      a folder that is new or empty; demo-recording[-N] when none is given
set -euo pipefail
started_in=$PWD
cd "$(dirname "$0")/.."
source scripts/common.sh

channels=4
frequency=200000 # Hz, all channels together
seconds=5

new_folder() {
    local folder=${1:-} k=1
    if [ -n "$folder" ]; then
        case $folder in /*) ;; *) folder=$started_in/$folder ;; esac
        [ ! -e "$folder" ] || [ -z "$(ls -A "$folder")" ] || fail "$folder is not empty: name a new folder"
    else
        folder=$PWD/demo-recording
        while [ -e "$folder" ]; do
            k=$((k + 1))
            folder=$PWD/demo-recording-$k
        done
    fi
    mkdir -p "$folder"
    echo "$folder"
}

# Escapes what stands between double quotes in an autosettings file.
quoted() {
    local text=${1//\\/\\\\}
    echo "\"${text//\"/\\\"}\""
}

write_autosettings() {
    cat >"$1" <<SETTINGS
; Four channels of the first simulated board, five seconds.
DriverName = "Simulator"
BaseNumber = 1
FileName = $(quoted "$2")
ChannelCount = $channels
ChannelsNumber = 0, 1, 2, 3
Frequency = $frequency
MeasureFileMode = 1
TimeNeed = $seconds
SETTINGS
}

# The number that a description gives for a key.
described() {
    tr -d '\r' <"$description" | sed -n "s/^$1 = //p" | sed -n 1p
}

complain() {
    echo "--- AutoLog.txt" >&2
    iconv -f CP1251 -t UTF-8 "$folder/AutoLog.txt" >&2 || echo "(there is none)" >&2
    fail "$@"
}

# Half to one and a half times what was asked for: a busy machine starts and stops late, a broken one is far off.
check_recording() {
    [ -s "$data" ] || complain "No data file $data"
    [ -s "$description" ] || complain "No description $description"
    local bytes wanted=$((frequency * seconds)) frames recorded_channels sample_bytes samples
    bytes=$(stat -c %s "$data")
    frames=$(described DataCountPerChannel)
    recorded_channels=$(described ChannelNumber)
    sample_bytes=$(described DataFormat | cut -d ' ' -f 1)
    [[ $frames =~ ^[0-9]+$ && $recorded_channels =~ ^[0-9]+$ && $sample_bytes =~ ^[0-9]+$ ]] ||
        complain "The description lacks its counts"
    samples=$((frames * recorded_channels))
    [ "$recorded_channels" -eq "$channels" ] || complain "$recorded_channels channels instead of $channels"
    [ $((samples * sample_bytes)) -eq "$bytes" ] ||
        complain "$bytes bytes of data, but $samples samples of $sample_bytes bytes are described"
    [ $((samples * 2)) -ge "$wanted" ] && [ $((samples * 2)) -le $((wanted * 3)) ] ||
        complain "$samples samples where about $wanted were expected"
}

build_programs
folder=$(new_folder "${1:-}")

data=$folder/demo.dat
description=$folder/demo.txt
write_autosettings "$folder/demo.cfg" "$data"
echo "Recording $seconds s of the simulated board ..."
status=0
TARNO2_HOME=$folder build/release/bin/tarno2-console /c "$folder/demo.cfg" </dev/null || status=$?
[ "$status" -eq 0 ] || complain "tarno2-console ended with status $status"
check_recording

echo
iconv -f CP1251 -t UTF-8 "$description" | tr -d '\r'
cat <<WHERE
Settings     $folder/demo.cfg
Samples      $data ($(stat -c %s "$data") bytes)
Description  $description
Log          $folder/AutoLog.txt
Programs     $PWD/build/release/bin
WHERE

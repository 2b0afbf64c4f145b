#!/usr/bin/env bash
# Makes the pictures of the README and the manual from the real program: builds it, shows it on a screen of its own,
# operates it with keys as a user would, and keeps what is seen, in English and in Russian.
#
#   scripts/screenshots.sh [FOLDER]     docs/pictures without a folder
set -euo pipefail
folder=$(realpath -m "${1:-$(dirname "$0")/../docs/pictures}")
cd "$(dirname "$0")/.."
source scripts/common.sh

install_packages xvfb xdotool imagemagick fonts-dejavu-core
build_programs
bin=$PWD/build/release/bin

mkdir -p "$folder"
# What stands here is seen in the pictures.
home=/tmp/Tarno2
[ ! -e "$home" ] || fail "$home is in the way"
screen=
program=
locale=
clean_up() {
    [ -z "$program" ] || kill "$program" 2>/dev/null || true
    [ -z "$screen" ] || kill "$screen" 2>/dev/null || true
    rm -rf "$home"
}
trap clean_up EXIT

# The settings of an operator: four channels of the simulated board, ten minutes; light (1)
# or dark (2), the data file, and further lines.
write_settings() {
    local scheme=$1 file=$2
    shift 2
    mkdir -p "$home/Data"
    printf '%s\r\n' "Language = $([ "$language" = en ] && echo 1 || echo 0)" 'Driver = Simulator' 'Base = 1' \
        'Frequency = 200000' "FileName = $home/Data/$file.dat" 'StopMode = 1' 'StopValue = 10' 'StopPower = 1' \
        'HDDTestSpeed = 0' 'ActiveChannel = 1 1 1 1 ' 'ShowSettingMember = 2' 'MainFormPos = 0 0 1280 900 ' \
        'FollowToData = 1' 'AxisXValue = 500' 'AxisXUnit = 2' "ColorScheme = $scheme" "$@" >"$home/Tarno2.cfg"
}

start_program() {
    TARNO2_HOME=$home XDG_RUNTIME_DIR=$home LC_ALL=${locale:-C.UTF-8} "$bin/Tarno2" "$@" 2>"$home/output" &
    program=$!
    main=$(timeout 30 xdotool search --sync --onlyvisible --name Tarno2 | head -n 1)
    focus "$main"
    sleep 1
}

end_program() {
    press ctrl+q
    wait "$program"
    program=
}

windows() {
    xdotool search --onlyvisible --class Tarno2 | sort
}

# Gives a window the keys: nobody manages windows here.
focus() {
    xdotool windowfocus --sync "$1"
    sleep 0.3
}

# Keeps the picture of the screen, or of a window on it, under a name.
keep() {
    import -window "${2:-root}" -strip +dither -colors 256 "png8:$folder/${language}_$1.png"
    echo "$folder/${language}_$1.png"
}

# Presses keys one after the other and waits until they were answered.
press() {
    local key
    for key in "$@"; do
        xdotool key "$key"
        sleep 0.7
    done
}

# Prints the window that comes to those named in $1, a line each. False when there is none for ten seconds.
new_window() {
    local i window
    for i in $(seq 100); do
        window=$(windows | grep -vxF "$1" | tail -n 1 || true)
        [ -z "$window" ] || { echo "$window" && return; }
        sleep 0.1
    done
    return 1
}

# Opens a window by keys, keeps its picture under a name and closes it.
keep_window() {
    local name=$1 key window=$main before
    shift
    for key in "$@"; do
        focus "$window"
        before=$(windows)
        press "$key"
        window=$(new_window "$before") || fail "$key opened no window"
    done
    focus "$window"
    keep "$name" "$window"
    press Escape
    focus "$main"
}

# Without settings the language is the system's.
keep_first_start() {
    mkdir -p "$home"
    locale=$([ "$language" = ru ] && echo ru_RU.UTF-8 || echo C.UTF-8)
    start_program
    keep first "$main"
    end_program
    rm "$home/Tarno2.cfg"
    locale=
}

take_pictures() {
    keep_first_start

    write_settings 1 engine 'ViewLanes = 1'
    start_program
    keep ready
    press F4
    sleep 3
    keep monitoring
    press F5
    sleep 4
    keep recording
    press F6
    keep stopped
    press alt+1
    keep board
    press alt+2
    keep measuring
    press alt+5
    keep program
    press alt+3
    keep_window export ctrl+t Return
    end_program

    write_settings 1 hits 'SynchroAnalyzeMode = 2' 'SynchroAnalogMode = 0' \
        'SynchroAnalogValue = 4.5' 'SynchroAllSize = 5000' 'SynchroPrehistorySize = 1000'
    start_program
    press F5
    sleep 3
    keep waiting
    press F6
    keep_window synchronisation F7
    end_program

    write_settings 1 pump 'ExtendedChannelMode = 1' 'PanelsOpen = 8'
    start_program
    press F5
    sleep 3
    keep channels
    press F6
    end_program

    write_settings 1 next 'ViewLanes = 1' 'ViewSpectrum = 1' 'SpectrumHeight = 200'
    start_program --open "$home/Data/engine.dat"
    press ctrl+b
    xdotool mousemove 640 250 click 1
    press plus c
    sleep 2
    keep opened
    end_program

    write_settings 2 night 'ViewLanes = 1'
    start_program
    press F5
    sleep 4
    keep dark
    press F6
    end_program
    rm -rf "$home"
}

start_screen
language=en take_pictures
language=ru take_pictures

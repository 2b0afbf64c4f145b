#!/usr/bin/env bash
# Packs the Windows program and tries the packages under Wine, with its windows on a display of their own: installs,
# records, compares with recordings made natively, removes; unpacks the zip into a folder with a Russian name and
# records from there. Needs what scripts/test.sh has built for "windows"; when that has no windows, for want of a Qt, only
# the windows are left out.
#
#   scripts/check-windows.sh [FOLDER]     FOLDER: gets pictures of recordings that are made with mouse and keys, in both
#                                         languages; without one none are made so
#
# The last line is "N passed, N failed, N skipped".
set -euo pipefail
pictures=${1:+$(realpath -m "$1")}
cd "$(dirname "$0")/.."
source scripts/common.sh

install_packages "${WINDOWS_PACKAGES[@]}" "${PACKAGING_PACKAGES[@]}"
build_programs >/dev/null
ensure_russian_locale
scripts/package-windows.sh

passed=0 failed=0 skipped=0
contains() { tr -d '\r' <"$1" 2>/dev/null | grep -qF -- "$2"; }
has_value() { [ "$(wine reg query "$1" /v "$2" 2>/dev/null | tr -d '\r' | sed -n "s/^ *$2 *REG_SZ *//p")" = "$3" ]; }
has_key() { wine reg query "$1" >/dev/null 2>&1; }
wait_for_wine() { timeout 60 wineserver -w; }

# settings FILE RECORDING SIGNAL: an autosettings file for a recording of four channels.
settings() {
    local name=${2//\\/\\\\}
    printf '%s\r\n' 'DebugMode = 1' 'DriverName = "Simulator"' 'BaseNumber = 2' "FileName = \"$name\"" \
        'ChannelCount = 4' 'ChannelsNumber = 0, 1, 2, 3' 'Frequency = 1000000' 'CutMode = 1' 'MeasureFileMode = 2' \
        'SizeNeedLow = 3000000' >"$1"
}
# record_natively FOLDER SIGNAL, record_under_wine PROGRAM SETTINGS SIGNAL
record_natively() {
    settings "$1/native-$2.txt" "$1/$2.dat"
    TARNO2_HOME=$1 TARNO2_SIMULATOR="RealTime=0;Signal=$2" build/release/bin/tarno2-console /c "$1/native-$2.txt"
}
record_under_wine() { TARNO2_SIMULATOR="RealTime=0;Signal=$3" timeout 120 wine "$1" /c "$2"; }
# The same bytes; descriptions may differ in their time.
same_recording() {
    local a b
    for a in "$1"*.dat; do
        b=$2/$(basename "$a")
        cmp "$a" "$b" || return 1
        cmp <(grep -av '^CreateTime = ' "${a%.dat}.txt") <(grep -av '^CreateTime = ' "${b%.dat}.txt") || return 1
    done
}

# True as soon as the command is; false when it was not for half a minute.
within_half_a_minute() {
    local i
    for i in $(seq 150); do
        if "$@" >/dev/null 2>&1; then
            return
        fi
        sleep 0.2
    done
    return 1
}
larger_than() { [ -n "$(find "$2" -size +"$1"c 2>/dev/null)" ]; }
keep_picture() { import -window root -strip +dither -colors 64 "png8:$pictures/$1.png"; }
# record_by_hand LANGUAGE NAME: starts the program from the start menu, and records with mouse and keys.
record_by_hand() {
    local data=$drive/by-hand/$2.dat window
    printf '%s\r\n' "Language = $1" 'Driver = Simulator' 'Base = 1' 'Frequency = 200000' 'ActiveChannel = 1 1 1 ' \
        "FileName = C:\\by-hand\\$2.dat" 'HDDTestSpeed = 0' 'ShowSettingMember = 2' 'MainFormPos = 0 0 1024 768 ' \
        >"$installed/Tarno2.cfg"
    timeout 120 wine start /unix "$link"
    within_half_a_minute xdotool search --onlyvisible --name Tarno2
    window=$(xdotool search --onlyvisible --name Tarno2 | head -n 1)
    xdotool windowfocus "$window" mousemove --window "$window" 45 43
    # A window that was only just shown may miss what it is told; once it follows, the same again means nothing to it.
    starts() { xdotool click 1 && larger_than 0 "$data"; }
    stops() { xdotool key F6 && grep -a '^DataCountPerChannel = [1-9]' "${data%.dat}.txt"; }
    ends() { xdotool key ctrl+q && not xdotool search --onlyvisible --name Tarno2; }
    within_half_a_minute starts && within_half_a_minute larger_than 1000000 "$data" || return
    keep_picture "recording_$2"
    within_half_a_minute stops || return
    keep_picture "stopped_$2"
    within_half_a_minute ends && wait_for_wine
}

# make_older: an installer of a version long ago, with a file that later ones don't have. Prints its name.
make_older() {
    local folder=$wine_folder/older
    mkdir -p "$folder"
    printf 'SetOutPath "$INSTDIR"\nFile /oname=Tarno2.exe "%s"\nFile /oname=outdated.dll "%s"\n' \
        "$PWD/LICENSE" "$PWD/LICENSE" >"$folder/install.nsh"
    printf 'Delete "$INSTDIR\\Tarno2.exe"\nDelete "$INSTDIR\\outdated.dll"\n' >"$folder/uninstall.nsh"
    makensis -V1 -INPUTCHARSET UTF8 -DNAME=older -DVERSION=1.0.0.0 -DPACKAGES="$folder" \
        -DICON="$PWD/packaging/windows/tarno2.ico" -DLICENSE="$PWD/LICENSE" packaging/windows/setup.nsi
    echo "$folder/older-setup.exe"
}
# Runs an installer that asks nothing; its exit status is 2 when it refuses.
refuses() {
    local status=0
    timeout 120 wine "$1" /S || status=$?
    wait_for_wine
    [ "$status" -eq 2 ]
}

start_wine
display_number=$wine_folder/display
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp >/dev/null 2>&1 3>"$display_number" &
display_process=$!
trap 'kill "$display_process" 2>/dev/null || true; stop_wine' EXIT
until [ -s "$display_number" ]; do
    kill -0 "$display_process" || fail "no display"
done
DISPLAY=:$(cat "$display_number")
export DISPLAY
drive=$WINEPREFIX/drive_c
catalogue='HKLM\SOFTWARE\Kestrel Lines LTD\Drivers\1.0'
uninstall_key='HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\Tarno2'

echo "== the installer"
setup=$(echo build/windows/packages/Tarno2-*-setup.exe)
archive=$(echo "$PWD"/build/windows/packages/Tarno2-*-windows.zip)
wine reg add "$catalogue\\Other" /v path /d 'C:\other.dll' /f >/dev/null
program='C:\Program Files\Tarno2'
installed="$drive/Program Files/Tarno2"
older=$(make_older)
timeout 120 wine "$older" /S
wait_for_wine
check "an older version is installed" has_value "$uninstall_key" DisplayVersion 1.0.0.0
printf 'Language = 1\r\n' >"$installed/Tarno2.cfg"
timeout 120 wine "$setup" /S
wait_for_wine
check "files of the older version are gone" not test -e "$installed/outdated.dll"
check "its settings are kept" test -f "$installed/Tarno2.cfg"
check "an older version is refused" refuses "$older"
check "what is installed stays then" not test -e "$installed/outdated.dll"
opens_recordings() {
    wine reg query 'HKLM\Software\Classes\Tarno2.Recording\shell\open\command' /ve 2>/dev/null |
        grep -qF -- "\"$program\\Tarno2.exe\" --open \"%1\""
}
check "recordings are offered to the program" opens_recordings
rm "$installed/Tarno2.cfg"
check "programs are installed" test -f "$installed/Tarno2.exe" -a -f "$installed/tarno2-console.exe"
check "the sample recording is installed" test -s "$installed/sample/sample.dat"
check "registry.d is left to the real registry" not test -e "$installed/registry.d"
check "the simulator is registered" has_value "$catalogue\\Simulator" path "$program\\simulator.dll"
check "the replay driver is registered" has_value "$catalogue\\Replay" path "$program\\replay.dll"
if has_windows build/windows; then
    check "Qt's Russian texts are installed" test -f "$installed/translations/qtbase_ru.qm"
    check "the plotting library is registered" has_value 'HKLM\SOFTWARE\Kestrel Lines LTD\SCOPERA' path "$program\\scopera.dll"
else
    echo "skipped: the plotting library is registered: there was no Qt for MinGW, so the programs have no windows"
    skipped=1
fi
check "the uninstaller is registered" has_value "$uninstall_key" UninstallString "\"$program\\uninstall.exe\""
link=$(find "$drive/ProgramData/Microsoft/Windows/Start Menu/Programs/Tarno2" -name Tarno2.lnk)
check "the start menu has the program" test -f "$link"
timeout 60 wine "$installed/tarno2-drivers.exe" list >"$wine_folder/drivers.txt" 2>/dev/null || true
check "the drivers load from where they were installed" contains "$wine_folder/drivers.txt" "$program\\simulator.dll"

echo "== recordings, under Wine and natively"
mkdir -p "$drive/records" "$wine_folder/native"
export TARNO2_HOME='C:\records'
for signal in Counter Ramp Square Sine; do
    settings "$drive/records/$signal.cfg" "C:\\records\\$signal.dat"
    record_under_wine "$installed/Tarno2.exe" "C:\\records\\$signal.cfg" "$signal"
    record_natively "$wine_folder/native" "$signal"
    check "$signal: the same bytes" same_recording "$wine_folder/native/$signal" "$drive/records"
    check "$signal: cut at 1 MiB" test -f "$drive/records/${signal}_2.dat"
done
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:.*=//p' build/windows/CMakeCache.txt)
check "the log names the version" contains "$drive/records/AutoLog.dbg" "Debug start Tarno2 version = $version"
unset TARNO2_HOME
settings "$drive/records/own.cfg" 'C:\records\own.dat'
record_under_wine "$installed/tarno2-console.exe" 'C:\records\own.cfg' Counter
check "the program without windows records too" cmp "$wine_folder/native/Counter.dat" "$drive/records/own.dat"
log=$(find "$drive" -name AutoLog.txt -not -path '*/records/*')
check "the log lies in the program's directory" contains "$log" "Program exit at"

if [ -n "$pictures" ] && has_windows build/windows; then
    echo "== recordings with mouse and keys"
    install_packages xdotool imagemagick fonts-dejavu-core
    mkdir -p "$pictures"
    for name in 'MS Shell Dlg' 'MS Shell Dlg 2' 'Segoe UI' Tahoma; do
        wine reg add 'HKCU\Software\Wine\Fonts\Replacements' /v "$name" /d 'DejaVu Sans' /f >/dev/null
    done
    check "in English" record_by_hand 1 en
    check "in Russian" record_by_hand 0 ru
    check "the operator's settings are kept" contains "$installed/Tarno2.cfg" 'C:\by-hand\'
fi

echo "== the uninstaller"
timeout 120 wine "$installed/uninstall.exe" /S
wait_for_wine
check "the programs are gone" not test -e "$installed/Tarno2.exe"
check "the libraries are gone" not test -e "$installed/Qt6Core.dll"
check "the drivers are gone from the registry" not has_key "$catalogue\\Simulator"
check "so is the plotting library" not has_key 'HKLM\SOFTWARE\Kestrel Lines LTD\SCOPERA'
check "recordings are offered to nobody" not has_key 'HKLM\Software\Classes\Tarno2.Recording'
check "so is the uninstaller" not has_key "$uninstall_key"
check "another maker's driver stays" has_value "$catalogue\\Other" path 'C:\other.dll'
check "the start menu is clean" not test -e "$(dirname "$link")"
check "recordings stay" test -f "$drive/records/Counter.dat"
check "logs stay" test -f "$log"

echo "== the zip"
folder="$drive/Мои программы/Tarno2 стенд № 1"
mkdir -p "$folder" "$drive/Записи"
unzip -q "$archive" -d "$folder"
# Wine quotes an argument that has blanks, and the program takes quotes for a part of the name.
text="$drive/Записи/задание.txt"
settings "$text" 'C:\Записи\насос № 2\давление.dat'
iconv -f UTF-8 -t CP1251 "$text" >"$text.1251"
mv "$text.1251" "$text"
for name in Tarno2 tarno2-console; do
    LC_ALL=ru_RU.UTF-8 record_under_wine "$folder/Tarno2/$name.exe" 'C:\Записи\задание.txt' Counter
    check "$name records from and into folders with Russian names" \
        cmp "$wine_folder/native/Counter.dat" "$drive/Записи/насос № 2/давление.dat"
done
check "it kept the first recording" \
    cmp "$wine_folder/native/Counter.dat" "$drive/Записи/насос № 2/давление_old1.dat"
check "the log lies beside the program" contains "$folder/Tarno2/AutoLog.txt" "Program exit at"

echo "$passed passed, $failed failed, $skipped skipped"
[ "$failed" -eq 0 ]

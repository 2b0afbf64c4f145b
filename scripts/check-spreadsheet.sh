#!/usr/bin/env bash
# Records the simulated board, converts the recording to text, has LibreOffice open the text and save it as a workbook,
# and compares the numbers of the workbook with the recorded samples: codes, and volts with a decimal comma. Run by hand:
# it installs LibreOffice Calc when that is missing.
#
#   scripts/check-spreadsheet.sh [FOLDER]     a folder that is new or empty; a temporary one when none is given
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

rows=20000

install_packages libreoffice-calc python3
folder=$(realpath -m "${1:-$(mktemp -d)}")
[ -n "${1:-}" ] || trap 'rm -rf "$folder"' EXIT
scripts/record-demo.sh "$folder" >"$folder.log" 2>&1 || { cat "$folder.log" >&2 && fail "No recording"; }
rm -f "$folder.log"
export_program=$PWD/build/release/bin/tarno2-export

# A sheet has room for a million lines; the beginning of the recording is enough.
head -c $((rows * 4 * 2)) "$folder/demo.dat" >"$folder/part.dat"
cp "$folder/demo.txt" "$folder/part.txt"

# LibreOffice: columns parted by ";" (59), UTF-8 (76), from line 1, language of the numbers (1033 English, 1049 Russian).
check() {
    local name=$1 language=$2
    shift 2
    "$export_program" "$folder/part.dat" -o "$folder/$name.csv" --divider ';' --quiet "$@"
    HOME=$folder soffice --headless --norestore --infilter="CSV:59,34,76,1,,$language" \
        --convert-to xlsx --outdir "$folder" "$folder/$name.csv" >/dev/null 2>&1
    [ -s "$folder/$name.xlsx" ] || fail "LibreOffice made no $name.xlsx"
    python3 scripts/compare-workbook.py "$folder/$name.xlsx" "$folder/part.dat" "$folder/part.txt" "$name"
}

check codes 1033 --first-column samples --voltage-precision 0
check volts 1049 --first-column seconds --data volts --decimal comma --voltage-precision 9

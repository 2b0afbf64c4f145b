#!/usr/bin/env bash
# Counts the lines of C++ that are not blank, and fails when the tests outgrow the product or a file its readers.
#
#   scripts/count-lines.sh       the files that git tracks, as they are in the working tree
#
# Tests are at most a third of all (MOST_TESTS in percent), a product file has at most MOST_LINES lines; tables (*.inc)
# may be longer, they are looked up and not read. The length of functions is checked by clang-tidy (scripts/tidy.sh).
set -euo pipefail
cd "$(dirname "$0")/.."

MOST_TESTS=33
MOST_LINES=450

# Prints the number of lines in the C++ files of a folder that are not blank.
count() {
    git ls-files -z "$1/*.h" "$1/*.cpp" "$1/*.inc" | xargs -0 -r cat -- | grep -c '[^[:space:]]' || true
}

all=0 tests=0
for folder in src sdk bench fuzz tests; do
    lines=$(count "$folder")
    printf '%-6s %6d\n' "$folder" "$lines"
    all=$((all + lines))
    [ "$folder" != tests ] || tests=$lines
done
share=$((tests * 1000 / all))
printf 'all    %6d, of which tests %d.%d %% (at most %d %%)\n' "$all" $((share / 10)) $((share % 10)) "$MOST_TESTS"

# shellcheck disable=SC2016 # the variables are those of awk
long=$(git ls-files -z 'src/*.h' 'src/*.cpp' 'sdk/*.h' 'sdk/*.cpp' | xargs -0 -r -n 1 awk -v most="$MOST_LINES" '
    END { if (NR > most) print FILENAME ": " NR " lines, more than " most }')
[ -z "$long" ] || echo "$long"
[ "$tests" -gt 0 ] && [ $((tests * 100)) -le $((all * MOST_TESTS)) ] && [ -z "$long" ]

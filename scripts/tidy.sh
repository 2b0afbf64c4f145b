#!/usr/bin/env bash
# Runs clang-tidy (.clang-tidy) over source files; any finding fails.
#
#   scripts/tidy.sh            files changed since the commit TARNO2_TIDY_BASE; without one, the files that were
#                              committed last; either way at most TARNO2_TIDY_FILES (25), newest first
#   scripts/tidy.sh --all      the whole tree
#   scripts/tidy.sh FILE...    these
#
# Without --all it stops beginning new files after TARNO2_TIDY_SECONDS (300) and says which it left out. A changed
# header is checked through a source that includes it. Sources that this system does not build are left out.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

install_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" clang-tidy-14

# A header's source: the one of the same name, else the first that includes it.
source_of() {
    case $1 in
    *.cpp) echo "$1" ;;
    *.h) if [ -f "${1%.h}.cpp" ]; then echo "${1%.h}.cpp"; else
        git grep -lF "#include \"${1#src/}\"" -- '*.cpp' | sed -n 1p || true
    fi ;;
    esac
}

changed_files() {
    if [ -n "${TARNO2_TIDY_BASE:-}" ]; then
        git diff --name-only --diff-filter=d "$TARNO2_TIDY_BASE" --
    else
        git log -n 100 --no-merges --format= --name-only --diff-filter=d
    fi
}

chosen_files() {
    local file
    case ${1:-} in
    --all) git ls-files '*.cpp' ;;
    '') changed_files | while read -r file; do
        [ ! -f "$file" ] || source_of "$file"
    done | awk '!seen[$0]++' | built_files | sed -n "1,${TARNO2_TIDY_FILES:-25}p" ;;
    *) printf '%s\n' "$@" ;;
    esac
}

# Keeps the files that the compilation database knows.
built_files() {
    local file
    while read -r file; do
        ! grep -qF "\"file\": \"$PWD/$file\"" build/debug/compile_commands.json || echo "$file"
    done
}

# With Ninja the database comes with the configuration; no build is needed. Only "debug" compiles each test by itself.
cmake --preset debug -DTARNO2_TESTS=ON >/dev/null
mapfile -t files < <(chosen_files "$@" | built_files)
[ ${#files[@]} -gt 0 ] || fail "No file to check"

deadline=$(($(date +%s) + ${TARNO2_TIDY_SECONDS:-300}))
[ "${1:-}" != --all ] || deadline=$((deadline + 86400))
results=$(mktemp -d)
trap 'rm -rf "$results"' EXIT
export deadline results
printf '%s\n' "${files[@]}" | xargs -d '\n' -P "$(nproc)" -n 1 bash -c '
    result=$results/${1//\//_}
    if [ "$(date +%s)" -ge "$deadline" ]; then
        echo "$1" >"$result.late"
    elif clang-tidy-14 -p build/debug --extra-arg=-Wno-unknown-warning-option --quiet "$1" >"$result.out" 2>&1; then
        touch "$result.passed"
    else
        grep -v " warnings\? generated\|^Suppressed \|^Use -header-filter" "$result.out" >"$result.failed"
    fi' tidy

shopt -s nullglob
late=("$results"/*.late) passed=("$results"/*.passed) failed=("$results"/*.failed)
[ ${#failed[@]} -eq 0 ] || cat "${failed[@]}"
[ ${#late[@]} -eq 0 ] || { echo "Not checked for lack of time:" && cat "${late[@]}"; }
echo "${#passed[@]} passed, ${#failed[@]} failed, ${#late[@]} skipped"
[ ${#failed[@]} -eq 0 ] && [ ${#passed[@]} -gt 0 ]

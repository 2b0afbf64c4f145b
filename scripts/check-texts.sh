#!/usr/bin/env bash
# Fails when code, comments, tests or documents point to papers that a reader of this tree does not have. A comment has
# to give its reason itself.
#
#   scripts/check-texts.sh [FOLDER]       checks the files that git tracks in a checkout (this one)
#   scripts/check-texts.sh --self-test    checks that planted references are found, and that nothing else is
set -euo pipefail
export LC_ALL=C.UTF-8
root=$(cd "$(dirname "$0")/.." && pwd)

# Square brackets keep the patterns from finding themselves.
patterns=(
    '[s]pecification'
    '[a]s specified'
    '(^|[^A-Za-z_.])[t]he spec($|[^A-Za-z_])'
    '[p]er (the )?spec($|[^A-Za-z_])'
    '[s]pec\.md'
    '[d]esign\.md'
    '(^|[^A-Za-z])[P]arts? [0-9]+\.[0-9]'
    '[s]ettled reading'
    '(^|[^A-Za-z])[i]ssues? #?[0-9]'
)

find_references() {
    local arguments=() pattern
    for pattern in "${patterns[@]}"; do
        arguments+=(-e "$pattern")
    done
    xargs -r -d '\n' grep -nHIiE "${arguments[@]}" -- || [ $? -eq 123 ] || [ $? -eq 1 ]
}

self_test() {
    local kind text passed=0 failed=0 found
    folder=$(mktemp -d)
    trap 'rm -rf "$folder"' EXIT
    while IFS='|' read -r kind text; do
        printf '%s\n' "$text" >"$folder/planted"
        found=$(echo "$folder/planted" | find_references)
        if { [ "$kind" = bad ] && [ -z "$found" ]; } || { [ "$kind" = good ] && [ -n "$found" ]; }; then
            echo "self-test: $kind: $text" && failed=$((failed + 1))
        else
            passed=$((passed + 1))
        fi
    done < <(sed 's/_//g' <<'TABLE'
bad|// as the speci_fication asks
bad|// Writes them a_s speci_fied.
bad|See sp_ec.md.
bad|see des_ign.md
bad|// P_art 1.3
bad|// (P_arts 2.4 and 3.1)
bad|// a sett_led reading
bad|Closes is_sue #2
bad|for is_sue 12
bad|// a quirk that th_e spec requires
bad|// capped p_er spec
good|// a part of 3.5 samples
good|// the special case; the specific one
good|// issued 3 times
good|// partition 1.3
TABLE
    )
    echo "$passed passed, $failed failed"
    [ "$failed" -eq 0 ]
}

if [ "${1:-}" = --self-test ]; then
    self_test
else
    cd "${1:-$root}"
    tracked=$(git ls-files | grep -vxE 'LICENSE' || true)
    references=$(while read -r file; do [ ! -f "$file" ] || echo "$file"; done <<<"$tracked" | find_references)
    names=$(grep -niE 'spec[i]fication|issue[-_ ]?[0-9]' <<<"$tracked" || true)
    if [ -n "$references$names" ]; then
        printf '%s\n' "$references" "$names"
        echo "These lines point to papers that a reader does not have"
        exit 1
    fi
    echo "No stray reference in $(wc -l <<<"$tracked") files"
    [ -n "$tracked" ]
fi

#!/usr/bin/env bash
# Installs what the readers of recordings need, builds the programs that make recordings, and tries the readers: Python
# (types, form, tests), Octave, and the programs of docs/reading.md.
#
#   scripts/test-python.sh [TEST...]      arguments go to pytest: a file of python/tests, or -k WORDS
#
# Where TARNO2_PROGRAMS names a folder its programs are used, and nothing is built. Nothing is skipped: what is missing
# fails. The last line is "N passed, N failed, N skipped".
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

# Debian's own: another Python may come first in the path, without these packages.
python=/usr/bin/python3

install_packages python3 python3-numpy python3-pytest python3-h5py python3-dask python3-distributed python3-xarray \
    python3-mne python3-matplotlib python3-jsonschema python3-soundfile python3-scipy sox sigrok-cli mypy black octave \
    r-base-core gcc
[ -n "${TARNO2_PROGRAMS:-}" ] || build_targets tarno2-console tarno2-export tarno2-recover tarno2-verify \
    tarno2-measured simulator

export PYTHONDONTWRITEBYTECODE=1 TARNO2_TEST_ALL=1
passed=0 failed=0 skipped=0
check() {
    echo "== $*"
    if "$@"; then passed=$((passed + 1)); else failed=$((failed + 1)); fi
}
check $python -m mypy --strict --config-file python/pyproject.toml --cache-dir /dev/null python/tarno2
check $python -m black --check --quiet --diff --config python/pyproject.toml python

results=$(mktemp)
trap 'rm -f "$results"' EXIT
echo "== pytest"
status=0
$python -m pytest -q -p no:cacheprovider --durations=5 --rootdir python -c python/pyproject.toml --junitxml "$results" \
    "${@:-python/tests}" </dev/null || status=$?
read -r tests bad left <<<"$($python - "$results" <<'COUNT' || echo 0 0 0
import sys, xml.etree.ElementTree as tree
suite = tree.parse(sys.argv[1]).getroot().find("testsuite").attrib
print(suite["tests"], int(suite["failures"]) + int(suite["errors"]), suite["skipped"])
COUNT
)"
passed=$((passed + tests - bad - left)) skipped=$((skipped + left))
# What fails without a test that does: it ended early, or there was no such file.
[ "$status" -eq 0 ] || [ "$bad" -gt 0 ] || bad=1
failed=$((failed + bad))
echo "$passed passed, $failed failed, $skipped skipped"
[ "$failed" -eq 0 ]

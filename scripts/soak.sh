#!/usr/bin/env bash
# Records again and again, with boards and disks that fail at random, and checks every sample of every file.
#
#   scripts/soak.sh [SECONDS [SEED]]      60 s by default; the seed of an earlier run repeats its recordings
#
# Files go to the folder for temporary ones (TMPDIR); about 200 MB have to be free. The last line is "N passed, N failed".
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

build_targets tarno2-soak
exec build/release/tests/tarno2-soak "${@:-60}"

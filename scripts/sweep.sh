#!/usr/bin/env bash
# Fails, shortens and tears the system calls of a recording and of a recovery one by one, kills the programs there, and
# checks every file that is left, files of others beside them too.
#
#   scripts/sweep.sh [all|SECONDS]      120 s by default; all of it takes an hour or so
#   scripts/sweep.sh case SCENE KIND NUMBER ACTION      one case, as it is named where it failed
#
# The last line is "N passed, N failed".
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

build_targets tarno2-sweep
# In memory, where there is room: thousands of cases wait for no disk.
if [ -z "${TMPDIR:-}" ] && [ -w /dev/shm ]; then
    export TMPDIR=/dev/shm
fi
exec build/release/tests/tarno2-sweep "${@:-120}"

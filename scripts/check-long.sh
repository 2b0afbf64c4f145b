#!/usr/bin/env bash
# Records for long, checks every sample, and prints a summary.
#
#   scripts/check-long.sh [PRESET]      release is the default
#
# A minute of all 160 channels in real time; 4 GiB as fast as the board can be read. Takes two to three minutes and
# 4 GiB in the folder for temporary files ($TMPDIR, else /tmp), which are removed at the end.
# A busy machine may well miss samples of the board in real time: nothing else should run meanwhile.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

preset=${1:-release}
program=build/$preset/tests/test_apps
[ -x "$program" ] || fail "$program is missing: run scripts/test.sh $preset first"
exec "$program" --gtest_also_run_disabled_tests --gtest_filter='DISABLED_Long.*'

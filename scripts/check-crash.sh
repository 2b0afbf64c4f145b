#!/usr/bin/env bash
# Kills recordings at random moments, recovers them, checks every sample, and prints the worst loss.
#
#   scripts/check-crash.sh [KILLS [PRESET [slow]]]      200 kills of the release build by default, about ten minutes;
#                                                       slow: boards of 1 Hz, and of ten packets a second
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/common.sh

program=build/${2:-release}/tests/test_apps
[ -x "$program" ] || fail "$program is missing: run scripts/test.sh ${2:-release} first"
cd "$(dirname "$program")"
[ "${3:-}" != slow ] || export TARNO2_KILL_SLOW_BOARDS=1
LC_ALL=C.UTF-8 TARNO2_KILLS=${1:-200} exec ./test_apps --gtest_filter='Crash.AtRandomMoments*'

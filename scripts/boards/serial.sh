# Four channels at 10,000 frames/s for ten seconds over a terminal pair, plain and with one frame in a hundred damaged.
# shellcheck shell=bash disable=SC2034
targets=(test_apps) under_wine=1

benches() { record_by_tests Serial; }

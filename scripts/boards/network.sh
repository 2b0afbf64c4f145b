# Two channels at 2 MHz for ten seconds over the loopback: by TCP, and by UDP with a packet missing.
# shellcheck shell=bash disable=SC2034
targets=(test_apps) under_wine=1

benches() { record_by_tests Network; }

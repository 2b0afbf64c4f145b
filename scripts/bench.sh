#!/usr/bin/env bash
# Builds the benchmarks optimised and prints the ratios that docs/performance.md explains.
#
#   scripts/bench.sh                       the ratios; fails when recording is slower than it has to be
#   scripts/bench.sh --display [BYTES]     the signal view's data; with BYTES the overview of such a file too
#   scripts/bench.sh --stalls              recordings in real time on a disk that stalls, two minutes
#   scripts/bench.sh --plot                a paint of full-height noise against a bare painter
#   scripts/bench.sh --view                the signal view at work under a recording
#   scripts/bench.sh --times [OPTION...]   the times instead; options are Google Benchmark's
#   scripts/bench.sh --window              the main window with 160 channels, and how long it takes to appear
#   scripts/bench.sh --synchro             the evaluator against copying
#   scripts/bench.sh --checksums           what checksums cost a recording, and tarno2-verify against sha256sum
#   scripts/bench.sh --measure             statistics between cursors over 1 GiB against adding it up
#   scripts/bench.sh --export              the conversion to text against fprintf and against copying
#   scripts/bench.sh --formats             exports to WAV and NPY against copying
#
# Files go to the memory file system, or to the folder that TARNO2_BENCH_FOLDER names; about 600 MB have to be free.
set -euo pipefail
started_in=$PWD
cd "$(dirname "$0")/.."
source scripts/common.sh

install_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}"
[ "${1:-}" != --window ] || install_packages xvfb xauth
use_ccache
cmake --preset release
cmake --build --preset release --target tarno2-bench tarno2-bench-ratios tarno2-bench-stall tarno2-bench-synchro \
    tarno2-bench-display tarno2-bench-measure tarno2-bench-export tarno2-bench-formats tarno2-bench-checksums tarno2-bench-plot tarno2-bench-view tarno2-bench-window simulator scopera
bin=$PWD/build/release/bench

# A relative folder counts from where the script was called.
cd "$started_in"
if [ "${1:-}" = --times ]; then
    shift
    exec "$bin/tarno2-bench" "$@"
fi
[ "${1:-}" != --stalls ] || exec "$bin/tarno2-bench-stall"
[ "${1:-}" != --synchro ] || exec "$bin/tarno2-bench-synchro"
[ "${1:-}" != --display ] || exec "$bin/tarno2-bench-display" "${@:2}"
[ "${1:-}" != --window ] || exec xvfb-run -a -s '-screen 0 1280x1024x24' "$bin/tarno2-bench-window"
[ "${1:-}" != --export ] || exec "$bin/tarno2-bench-export"
[ "${1:-}" != --formats ] || exec "$bin/tarno2-bench-formats"
[ "${1:-}" != --checksums ] || exec "$bin/tarno2-bench-checksums"
[ "${1:-}" != --measure ] || exec "$bin/tarno2-bench-measure"
[ "${1:-}" != --plot ] || exec "$bin/tarno2-bench-plot"
[ "${1:-}" != --view ] || exec "$bin/tarno2-bench-view"
[ $# -eq 0 ] || fail "Unknown: $*"
exec "$bin/tarno2-bench-ratios"

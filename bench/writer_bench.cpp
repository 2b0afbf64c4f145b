// The data file writer alone, with blocks of several sizes. `plainWrite` is its measure.

#include <benchmark/benchmark.h>

#include "bench/scratch_folder.h"
#include "bench/writer_alone.h"

namespace tarno2::bench {

namespace {

void writer(benchmark::State& state) {
    constexpr uint64_t fileBytes = uint64_t{256} << 20;
    const ScratchFolder folder;
    for (auto _ : state) {
        state.SetIterationTime(
            writeBlocks(folder.file("run.dat"), fileBytes, static_cast<size_t>(state.range(0)) << 10));
        folder.clear();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(fileBytes));
}
BENCHMARK(writer)
    ->ArgName("block_KiB")
    ->Arg(4)
    ->Arg(64)
    ->Arg(1024)
    ->Arg(4096)
    ->Arg(16384)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tarno2::bench

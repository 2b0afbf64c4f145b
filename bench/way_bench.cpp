// The way of the samples from the driver's ring to the file, and what it is measured by.

#include <benchmark/benchmark.h>

#include "bench/plain_write.h"
#include "bench/scratch_folder.h"
#include "bench/simulated_board.h"

namespace tarno2::bench {

namespace {

constexpr uint64_t kFileBytes = uint64_t{256} << 20;

void setBytes(benchmark::State& state, uint64_t bytes) {
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes));
}

/// Runs `measure` with a board (channels, KiB of a half), a fresh file and its size.
template <typename Measure>
void withBoard(benchmark::State& state, Measure measure) {
    const ScratchFolder folder;
    SimulatedBoard board(folder.path(), static_cast<uint32_t>(state.range(0)),
                         static_cast<uint64_t>(state.range(1)) << 10);
    const uint64_t bytes = board.wholeHalves(kFileBytes);
    for (auto _ : state) {
        state.SetIterationTime(measure(board, folder.file("run.dat"), bytes));
        folder.clear();
    }
    setBytes(state, bytes);
}

void boards(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"channels", "half_KiB"})->ArgsProduct({{1, 16, 160}, {64, 1024, 8192}});
    bench->UseManualTime()->Unit(benchmark::kMillisecond);
}

void wholeWay(benchmark::State& state) {
    withBoard(state,
              [](SimulatedBoard& board, const std::string& file, uint64_t bytes) { return board.record(file, bytes); });
}
BENCHMARK(wholeWay)->Apply(boards);

void fetchAndWrite(benchmark::State& state) {
    withBoard(state, [](SimulatedBoard& board, const std::string& file, uint64_t bytes) {
        return board.fetchAndWrite(file, bytes);
    });
}
BENCHMARK(fetchAndWrite)->Apply(boards);

void fetchOnly(benchmark::State& state) {
    withBoard(state, [](SimulatedBoard& board, const std::string&, uint64_t bytes) { return board.fetch(bytes); });
}
BENCHMARK(fetchOnly)->Apply(boards);

void plain(benchmark::State& state) {
    const ScratchFolder folder;
    for (auto _ : state) {
        state.SetIterationTime(plainWrite(folder.file("plain.dat"), kFileBytes));
        folder.clear();
    }
    setBytes(state, kFileBytes);
}
BENCHMARK(plain)->Name("plainWrite")->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tarno2::bench

// Reading settings: taking a text in, looking values up, and a copy of the same bytes to measure both by.

#include <benchmark/benchmark.h>
#include <cstring>
#include <vector>

#include "bench/settings_text.h"

namespace tarno2::bench {

namespace {

void setBytes(benchmark::State& state, const std::string& text) {
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->ArgName("bytes")->Arg(0)->Arg(1 << 20)->Unit(benchmark::kMicrosecond);
}

void keyValueTakeIn(benchmark::State& state) {
    const std::string text = settingsText(static_cast<size_t>(state.range(0)));
    KeyValueFile file;
    for (auto _ : state) {
        file.readText(text);
        benchmark::ClobberMemory();
    }
    setBytes(state, text);
}
BENCHMARK(keyValueTakeIn)->Apply(sizes);

void keyValueLookUp(benchmark::State& state) {
    const std::string text = settingsText(static_cast<size_t>(state.range(0)));
    KeyValueFile file;
    file.readText(text);
    for (auto _ : state) {
        lookUpSettings(file);
    }
    setBytes(state, text);
}
BENCHMARK(keyValueLookUp)->Apply(sizes);

void copyOfText(benchmark::State& state) {
    const std::string text = settingsText(static_cast<size_t>(state.range(0)));
    std::vector<char> copy(text.size());
    for (auto _ : state) {
        std::memcpy(copy.data(), text.data(), text.size());
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    setBytes(state, text);
}
BENCHMARK(copyOfText)->Apply(sizes);

}  // namespace

}  // namespace tarno2::bench

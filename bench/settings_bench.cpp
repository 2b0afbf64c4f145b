// The settings file: reading and writing the whole of it, and a plain write of the same bytes with one flush.

#include <benchmark/benchmark.h>

#include "bench/scratch_folder.h"
#include "config/settings/language_choice.h"
#include "config/settings/settings_file.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2::bench {

namespace {

void settingsWrite(benchmark::State& state) {
    const ScratchFolder folder;
    selectLanguage(InterfaceLanguage::Russian);
    const ProgramSettings settings;
    for (auto _ : state) {
        if (!WriteConfig(folder.path(), settings)) {
            state.SkipWithError("the settings can't be written");
            break;
        }
    }
}
BENCHMARK(settingsWrite)->Unit(benchmark::kMicrosecond);

void settingsRead(benchmark::State& state) {
    const ScratchFolder folder;
    selectLanguage(InterfaceLanguage::Russian);
    WriteConfig(folder.path(), {});
    for (auto _ : state) {
        ProgramSettings settings;
        if (!LoadConfig(folder.path(), settings).ok()) {
            state.SkipWithError("the settings can't be read");
            break;
        }
        benchmark::DoNotOptimize(settings);
    }
}
BENCHMARK(settingsRead)->Unit(benchmark::kMicrosecond);

void plainReplaceOfSettings(benchmark::State& state) {
    const ScratchFolder folder;
    selectLanguage(InterfaceLanguage::Russian);
    WriteConfig(folder.path(), {});
    const std::string path = joinPath(folder.path(), "Tarno2.cfg");
    std::string contents;
    readWholeFile(path, UINT64_MAX, FileShare::None, contents);
    for (auto _ : state) {
        replaceWholeFile(path, contents);
    }
    state.counters["bytes"] = static_cast<double>(contents.size());
}
BENCHMARK(plainReplaceOfSettings)->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace tarno2::bench

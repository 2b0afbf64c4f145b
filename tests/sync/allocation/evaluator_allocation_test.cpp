// Replaces the global operator new to count what the evaluator allocates once it is warm: nothing.

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <vector>

#include "sync/condition_analyzer.h"

namespace {

std::atomic<size_t> allocations{0};

}  // namespace

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kCounting = false;
#else
constexpr bool kCounting = true;

void* operator new(size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, size_t /*size*/) noexcept {
    std::free(memory);
}
#endif

namespace tarno2::test {
namespace {

TEST(EvaluatorAllocation, NothingIsAllocatedOnceItIsWarm) {
    std::vector<int16_t> block(20000, 0);
    for (size_t i = 0; i < block.size(); i += 500) {
        block[i] = 10;
    }
    SynchroSettings write;
    write.SynchroAnalyzeMode = 1;
    write.writeAnalogEnabled = true;
    write.AnalyzeAnalogWriteMode = 0;
    SynchroSettings records;
    records.SynchroAnalyzeMode = 2;
    records.synchroCode = 5;
    for (const SynchroSettings& settings : {write, records}) {
        ConditionAnalyzer analyzer(settings, {100, 150}, {});
        const int16_t* words = nullptr;
        size_t written = 0;
        size_t channels = 0;
        size_t before = 0;
        for (int call = 0; call < 60; ++call) {
            before = call == 10 ? allocations.load() : before;
            size_t count = 0;
            ASSERT_EQ(Analyze16(analyzer, block.data(), block.size(), &words, &count, 2, &channels, false), 0);
            written += count;
        }
        EXPECT_EQ(allocations - before, 0U) << "mode " << settings.SynchroAnalyzeMode;
        EXPECT_EQ(before > 0, kCounting);
        EXPECT_GT(written, 0U);
    }
}

}  // namespace
}  // namespace tarno2::test

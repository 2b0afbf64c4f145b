// A program of its own, since it replaces the global operator new.

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <new>

#include "tests/core/rig.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kCounting = false;
#else
constexpr bool kCounting = true;

namespace {
thread_local bool counting = false;
thread_local size_t allocations = 0;
}  // namespace

void* operator new(std::size_t size) {
    allocations += counting ? 1 : 0;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
#endif

namespace tarno2::test {
namespace {

/// Passes blocks on, as records when `frames` is not 0; the thread that brings them counts its allocations between the
/// first block and the last one.
class CountingEvaluator final : public BlockEvaluator {
public:
    CountingEvaluator(uint32_t blocks, uint32_t frames, size_t& result)
        : blocks_(blocks), frames_(frames), result_(result) {}

    int32_t evaluate(std::span<const std::byte> block, EvaluatedBlock& out) override {
        out = {block, frames_, {}, {}};
        if (frames_ != 0) {
            events_.resize(block.size() / (frames_ * kFrameBytes));  // blocks are of one size: memory for the first
            out.events = events_;
        }
        ++seen_;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        if (seen_ == 1) {
            allocations = 0;
            counting = true;
        } else if (seen_ == blocks_) {
            counting = false;
            result_ = allocations;
        }
#endif
        return seen_ == blocks_ ? 1 : 0;
    }

    static constexpr size_t kFrameBytes = 4 * sizeof(int16_t);

private:
    uint32_t blocks_;
    uint32_t frames_;
    std::vector<SynchroEvent> events_;
    uint32_t seen_ = 0;
    size_t& result_;
};

TEST(Allocation, NoneBetweenTheFirstBlockAndTheLast) {
    if (!kCounting) {
        GTEST_SKIP() << "the sanitizers have an operator new of their own";
    }
    const struct {
        uint32_t decimation;
        uint32_t recordFrames;
    } ways[] = {{1, 0}, {3, 0}, {1, 25}};  // a thousand records a block
    for (const auto& way : ways) {
        FakeDevice device;
        device.quiet = true;
        device.ring = [](uint32_t, uint32_t) { return 200000U; };
        device.readerPaced = 100000000;
        SessionRig rig(device);
        size_t counted = 12345;
        rig.board->decimation = way.decimation;
        // The cache is written several times.
        rig.board->evaluator = std::make_unique<CountingEvaluator>(100, way.recordFrames, counted);
        // The driver marks something with every other look, and the edges of a line do, more often than there is room.
        bool mark = false;
        device.answer = [&mark](uint32_t code, void* result) {
            const ADCMark told{mark ? 1U : 0U, 0, 7, "a mark"};
            mark = !mark;
            std::memcpy(result, &told, code == kADCGetMark ? sizeof told : 0);
            return code == kADCGetMark ? 1 : 0;
        };
        rig.board->markedLine = {1, 2};
        rig.setup.marks = &rig.board->marks();
        LiveTap tap;  // somebody watches
        tap.setWatched(true);
        ASSERT_TRUE(rig.prepare(4, 1e6F));
        ASSERT_TRUE(tap.prepare(8, 200000, 2e6));
        rig.board->liveTap = &tap;
        ASSERT_TRUE(rig.board->marks().open(rig.dataName));
        rig.board->Begin();
        EXPECT_EQ(rig.end().code, StopCode::StopMeasuring);
        EXPECT_EQ(counted, 0U) << "decimation " << way.decimation << ", records of " << way.recordFrames;
        EXPECT_EQ(rig.board->eventCount(), way.recordFrames == 0 ? 0U : 100000U);
        EXPECT_GT(tap.frameCount(), 0U);
        EXPECT_GT(rig.board->marks().written(), 0U);
        EXPECT_GT(rig.board->writer().totalBytes(), DataWriter::kCacheBytes);
    }
}

}  // namespace
}  // namespace tarno2::test

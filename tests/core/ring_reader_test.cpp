#include "core/recording/ring_reader.h"

#include <gtest/gtest.h>

namespace tarno2 {
namespace {

TEST(StreamTiming, FollowsFromRateAndRing) {
    struct Case {
        const char* what;
        double frequency;
        uint32_t factor;
        uint32_t width;
        uint32_t ring;
        bool hotPlug;
        uint32_t threshold;
        uint32_t sleep;
        int64_t check;
    };
    const Case cases[] = {
        {"slow: a fifth of a second", 10000.0, 1, 2, 20000, false, 2000, 1, 20},
        {"slow: at most the half less one", 10000.0, 1, 2, 2000, false, 999, 1, 20},
        {"slow: at least 100", 300.0, 1, 2, 1000, false, 100, 1, 34},
        {"slow: a small ring caps the least threshold", 2.0, 1, 2, 32, false, 15, 1, 5120},
        {"fast: half a ring less one, a quarter of its time", 1e6, 1, 2, 500000, false, 249999, 62, 20},
        {"counted per channel it is fast", 100000.0, 16, 2, 100000, false, 49999, 7, 20},
        {"hot-plug: read early", 1e6, 1, 2, 500000, true, 100, 1, 20},
        {"check time follows the frequency", 3000.0, 1, 2, 3000, false, 600, 1, 3},
        {"check time of exactly 1 s is taken as 20", 10240.0, 1, 2, 10240, false, 2047, 1, 20},
    };
    for (const Case& c : cases) {
        const StreamTiming timing = streamTiming(c.frequency, c.factor, c.width, c.ring, c.hotPlug);
        EXPECT_NEAR(timing.threshold, c.threshold, 1.0) << c.what;
        EXPECT_NEAR(timing.maximumSleep, c.sleep, 1.0) << c.what;
        EXPECT_EQ(timing.checkSeconds, c.check) << c.what;
        EXPECT_LT(timing.threshold, c.ring / 2) << c.what << ": a filled half has to be read";
    }
}

TEST(RingReader, ThresholdHasToBeExceeded) {
    RingReader equal(120, 3, 60);
    equal.halvesFilled(1);
    EXPECT_EQ(equal.nextHalves().count, 0U);
    EXPECT_TRUE(equal.nextHalves().belowThreshold);
    RingReader less(120, 3, 59);
    less.halvesFilled(1);
    EXPECT_EQ(less.nextHalves().count, 60U);
}

TEST(RingReader, EventsTakeOverWhereTheCountStops) {
    RingReader ring(120, 3, 59);
    ring.halvesFilled(1);
    ring.samplesWritten(75);
    ring.advance(75);
    ring.halvesFilled(0);
    EXPECT_EQ(ring.nextHalves().count, 0U);
    ring.halvesFilled(1);
    EXPECT_EQ(ring.written(), 120U);
    EXPECT_EQ(ring.nextHalves().offset, 75U);
    EXPECT_EQ(ring.nextHalves().count, 45U) << "a half that was begun is not too little to bother";

    RingReader once(120, 3, 59);  // two events that came as one, and an event that told nothing
    once.halvesFilled(1);
    once.samplesWritten(125);
    once.halvesFilled(0);
    EXPECT_EQ(once.halvesPosition(), 120U);
    once.halvesFilled(1);
    EXPECT_EQ(once.halvesPosition(), 180U);
    once.samplesWritten(170);
    EXPECT_EQ(once.halvesPosition(), 120U);
    once.halvesFilled(1);
    EXPECT_EQ(once.written(), 180U);
}

TEST(RingReader, RestComesInStretchesOfWholeFrames) {
    RingReader ring(120, 3, 59);
    ring.samplesWritten(60);
    ring.advance(60);
    ring.samplesWritten(60 + 60 + 31);
    RingReader::Part part = ring.nextStretch(ring.written());
    EXPECT_EQ(part.offset, 60U);
    EXPECT_EQ(part.count, 60U) << "up to the ring's end";
    ring.advance(part.count);
    part = ring.nextStretch(ring.written());
    EXPECT_EQ(part.offset, 0U);
    EXPECT_EQ(part.count, 30U) << "the torn frame stays";
    ring.advance(part.count);
    EXPECT_EQ(ring.nextStretch(ring.written()).count, 0U);
}

TEST(RingReader, EndOfTheStreamCountsForMoreThanEventsAndCount) {
    RingReader ring(120, 3, 59);
    ring.halvesFilled(3);
    ring.samplesWritten(100);
    ring.advance(60);
    ring.streamEnds(181);
    EXPECT_EQ(ring.written(), 180U) << "the torn frame stays";
    EXPECT_FALSE(ring.overwritten()) << "a full ring is no lost sample";
    ring.halvesFilled(1);
    EXPECT_EQ(ring.written(), 180U) << "the end has an event too";
    ring.samplesWritten(181);
    EXPECT_EQ(ring.written(), 180U);
    EXPECT_TRUE(ring.overwritten()) << "written on over what is unread";
    ring.advance(180);
    EXPECT_EQ(ring.written(), 240U) << "what was read stays read";
    EXPECT_EQ(ring.nextStretch(ring.written()).count, 0U);
}

TEST(RingReader, PositionsGoOnBeyond32Bits) {
    RingReader ring(4000000000U, 4, 100);
    for (int i = 0; i < 6; ++i) {
        ring.halvesFilled(1);
        const RingReader::Part part = ring.nextHalves();
        ASSERT_EQ(part.count, 2000000000U);
        ring.advance(part.count);
    }
    EXPECT_EQ(ring.readPosition(), 12000000000U);
}

}  // namespace
}  // namespace tarno2

#include <gtest/gtest.h>

#include "display/axis_x.h"
#include "display/axis_y.h"
#include "display/follow.h"
#include "display/glide.h"
#include "display/repaint.h"
#include "display/scroll.h"

namespace tarno2 {
namespace {

TEST(Scroll, KeysMoveByPagesAndThirds) {
    struct Case {
        uint64_t position;
        int32_t key;
        uint64_t page, written, after;
    };
    for (const Case& c :
         {Case{100, 39, 100, 1000, 133}, Case{100, 37, 100, 1000, 67}, Case{100, 34, 100, 1000, 200},
          Case{100, 33, 100, 1000, 0}, Case{20, 37, 100, 1000, 0}, Case{950, 34, 100, 1000, 1000},
          Case{990, 39, 100, 1000, 1000}, Case{50, 34, 100, 0, 50}, Case{50, 13, 100, 1000, 50},
          Case{5, 34, UINT64_MAX, 1000, 1000}, Case{1500, 34, 100, 1000, 1000}, Case{10, 39, 2, 1000, 10}}) {
        EXPECT_EQ(scrolledPosition(c.position, c.key, c.page, c.written), c.after) << c.position << " " << c.key;
    }
}

TEST(Follow, ShowsTheFramesOfEachMode) {
    struct Case {
        FollowMode mode;
        uint64_t frames, first;
        double axisFirst;
    };
    for (const Case& c : {Case{FollowMode::None, 5000, 300, 300}, Case{FollowMode::Recorder, 0, 0, 0},
                          Case{FollowMode::Recorder, 999, 0, 0}, Case{FollowMode::Recorder, 1001, 1, 1},
                          Case{FollowMode::Recorder, 5500, 4500, 4500}, Case{FollowMode::Sweep, 0, 0, 0},
                          Case{FollowMode::Sweep, 999, 0, 0}, Case{FollowMode::Sweep, 1000, 0, 0},
                          Case{FollowMode::Sweep, 1001, 1000, 0}, Case{FollowMode::Sweep, 5500, 5000, 0}}) {
        const VisibleFrames visible = visibleFrames(c.mode, c.frames, 1000, 300);
        EXPECT_EQ(visible.first, c.first) << c.frames;
        EXPECT_EQ(visible.end, c.first + 1000);
        EXPECT_EQ(visible.axisFirst, c.axisFirst);
        EXPECT_EQ(visible.axisEnd, c.axisFirst + 1000);
    }
    EXPECT_EQ(visibleFrames(FollowMode::Sweep, 5, 0, 0).first, 4U);
    EXPECT_EQ(pageFrames(100.0, AxisXUnit::Milliseconds, 2000.0), 200U);
    EXPECT_EQ(pageFrames(0.0, AxisXUnit::Seconds, 2000.0), 1U);
    EXPECT_EQ(pageFrames(5.0, AxisXUnit::Seconds, 0.0), 1U);
}

LocalTime at(uint16_t hour, uint16_t minute, uint16_t second, uint16_t millisecond) {
    LocalTime time;
    time.hour = hour;
    time.minute = minute;
    time.second = second;
    time.millisecond = millisecond;
    return time;
}

TEST(Repaint, IsDueAfterFortyMilliseconds) {
    RepaintRate repaint;
    EXPECT_TRUE(repaint.due(at(10, 59, 59, 980)));
    EXPECT_EQ(repaint.rate(), 0);
    EXPECT_FALSE(repaint.due(at(11, 0, 0, 19)));
    EXPECT_EQ(repaint.waitMs(at(11, 0, 0, 19)), 1);
    EXPECT_TRUE(repaint.due(at(11, 0, 0, 20)));
    EXPECT_EQ(repaint.rate(), 25);
    EXPECT_EQ(repaint.waitMs(at(11, 0, 0, 20)), 40);
    EXPECT_TRUE(repaint.due(at(11, 0, 0, 120)));
    EXPECT_EQ(repaint.rate(), 10);
}

TEST(Repaint, ClockThatWentBackMakesItDue) {
    RepaintRate repaint;
    EXPECT_TRUE(repaint.due(at(23, 59, 59, 990)));
    EXPECT_EQ(repaint.waitMs(at(0, 0, 0, 5)), 0);
    EXPECT_TRUE(repaint.due(at(0, 0, 0, 5)));
    EXPECT_FALSE(repaint.due(at(0, 0, 0, 44)));
    EXPECT_TRUE(repaint.due(at(0, 0, 0, 45)));
    EXPECT_EQ(repaint.rate(), 25);
}

SignalFormat twoChannels() {
    SignalFormat format;
    format.channels = {{0, 5.0, -5.0}, {1, 0.5, -0.5}};
    format.minimumCode = -2048;
    format.maximumCode = 2047;
    return format;
}

TEST(AxisY, TurnsCodesIntoUnits) {
    const SignalFormat format = twoChannels();
    struct Case {
        size_t channel;
        AxisYUnit unit;
        double code, value;
    };
    for (const Case& c :
         {Case{0, AxisYUnit::Volts, -2048, -5.0}, Case{0, AxisYUnit::Volts, 2047, 5.0},
          Case{0, AxisYUnit::Volts, 0, 2048 * 10.0 / 4095 - 5.0}, Case{1, AxisYUnit::Millivolts, 2047, 500.0},
          Case{1, AxisYUnit::Microvolts, -2048, -500000.0}, Case{1, AxisYUnit::Codes, 123, 123.0}}) {
        EXPECT_NEAR(axisYScale(format, c.channel, c.unit).of(c.code), c.value, 1e-9 + 1e-12 * std::abs(c.value));
    }
    EXPECT_NEAR(digitalAxisYScale(format, AxisYUnit::Volts).of(2047), 5.0, 1e-12);
    EXPECT_EQ(fullScaleVolts(format), 5.0);
    // A channel's own unit; lines lie against the widest channel.
    SignalFormat labelled = format;
    labelled.channels[0].label = {"inlet", "bar", -2.0, 0.5};
    const double volts = axisYScale(format, 0, AxisYUnit::Volts).of(100);
    EXPECT_NEAR(axisYScale(labelled, 0, AxisYUnit::Units).of(100), -2.0 * volts + 0.5, 1e-9);
    EXPECT_NEAR(axisYScale(labelled, 1, AxisYUnit::Units).of(100), axisYScale(format, 1, AxisYUnit::Volts).of(100),
                1e-9);
    EXPECT_EQ(unitsOf(labelled, {0, 1, 0}, "V"), "bar, V");
    EXPECT_EQ(unitsOf(labelled, {1}, "V"), "V");
    EXPECT_EQ(unitsOf(labelled, {}, "V"), "");
    EXPECT_EQ(axisYScale(SignalFormat{}, 0, AxisYUnit::Volts).of(7), 7.0);
    EXPECT_EQ(unitForVolts(5.0), AxisYUnit::Volts);
    EXPECT_EQ(unitForVolts(0.5), AxisYUnit::Millivolts);
    EXPECT_EQ(unitForVolts(0.0005), AxisYUnit::Microvolts);
}

TEST(AutomaticScaleY, GrowsAtOnce) {
    AutomaticScaleY scale;
    EXPECT_EQ(scale.update({-1.0, 1.0}, 0), (AxisRange{-1.2, 1.2}));
    // Noise within the margin moves nothing, on either side.
    EXPECT_EQ(scale.update({-1.1, 1.15}, 40), (AxisRange{-1.2, 1.2}));
    EXPECT_EQ(scale.update({-0.9, 0.8}, 80), (AxisRange{-1.2, 1.2}));
    EXPECT_FALSE(scale.moving());
    // Only the side that was left moves: by a tenth of the span beyond the value.
    EXPECT_EQ(scale.update({-1.0, 3.0}, 120), (AxisRange{-1.2, 3.4}));
    // Nothing visible keeps it.
    EXPECT_EQ(scale.update({1.0, -1.0}, 160), (AxisRange{-1.2, 3.4}));
    // The line that a spike rises from does not end in the frame.
    scale.reset();
    EXPECT_LT(scale.update({0.0, 0.001}, 200).high, 0.002);
    EXPECT_NEAR(scale.update({0.0, 4.0}, 240).low, -0.4, 1e-9);
}

TEST(AutomaticScaleY, ShrinksSlowlyAfterASecond) {
    AutomaticScaleY scale;
    AxisRange last = scale.update({-10.0, 10.0}, 1000);
    uint64_t now = 1040;
    for (; now < 2000; now += 40) {
        EXPECT_EQ(scale.update({-1.0, 1.0}, now), (AxisRange{-12.0, 12.0}));
        EXPECT_TRUE(scale.moving());
    }
    // A single large value starts the second anew.
    EXPECT_EQ(scale.update({-10.0, 10.0}, now), (AxisRange{-12.0, 12.0}));
    const uint64_t begin = now + 40;
    for (now = begin; scale.update({-1.0, 1.0}, now).high == 12.0; now += 40) {
    }
    EXPECT_GE(now - begin, 1000U);
    EXPECT_LE(now - begin, 1080U);
    uint64_t steps = 0;
    last = {-12.0, 12.0};
    for (; scale.moving() && steps < 1000; now += 40, ++steps) {
        const AxisRange next = scale.update({-1.0, 1.0}, now);
        EXPECT_LE(last.high - next.high, 24.0 * 0.1);  // no leap
        EXPECT_LE(next.high, last.high);
        last = next;
    }
    EXPECT_EQ(last, (AxisRange{-1.2, 1.2}));
    EXPECT_GT(steps, 25U);
}

TEST(AutomaticScaleY, GivesFlatLinesASpan) {
    AutomaticScaleY scale;
    EXPECT_EQ(scale.update({0.0, 0.0}, 0), (AxisRange{-0.1, 0.1}));
    scale.reset();
    const AxisRange range = scale.update({5.0, 5.0}, 40);
    EXPECT_LT(range.low, 5.0);
    EXPECT_GT(range.high, 5.0);
}

TEST(AxisX, FramesStandAtTheirTime) {
    struct Case {
        AxisXUnit unit;
        double frame, place;
    };
    for (const Case& c : {Case{AxisXUnit::Samples, 1500, 1500}, Case{AxisXUnit::Microseconds, 3, 3000},
                          Case{AxisXUnit::Milliseconds, 7, 7}, Case{AxisXUnit::Seconds, 1500, 1.5},
                          Case{AxisXUnit::Minutes, 90000, 1.5}, Case{AxisXUnit::Hours, 3600000, 1.0}}) {
        EXPECT_DOUBLE_EQ(axisXOfFrame(c.frame, c.unit, 1000.0), c.place);
        EXPECT_DOUBLE_EQ(frameOfAxisX(c.place, c.unit, 1000.0), c.frame);
    }
}

TEST(AxisX, WithoutARateOnlySamplesHavePlaces) {
    for (const double rate : {0.0, -1.0}) {
        EXPECT_EQ(axisXOfFrame(5, AxisXUnit::Seconds, rate), 0.0);
        EXPECT_EQ(frameOfAxisX(5, AxisXUnit::Seconds, rate), 0.0);
        EXPECT_EQ(axisXOfFrame(5, AxisXUnit::Samples, rate), 5.0);
    }
}

TEST(AxisX, DecimalsTellNeighbouringPixelsApart) {
    const struct {
        double span, steps;
        int decimals;
    } cases[] = {{1e6, 500, 0}, {500, 500, 0}, {50, 500, 1}, {0.01, 500, 5}, {1e-30, 1, 12}, {0, 500, 0}, {3, 0, 0}};
    for (const auto& [span, steps, decimals] : cases) {
        EXPECT_EQ(resolvedDecimals(span, steps), decimals) << span;
    }
}

// A board that hands over a quarter of a second at a time, at pictures that come unevenly.
TEST(Glide, ABoardsBlocksBecomeAnEvenPace) {
    constexpr double kRate = 100000.0;
    constexpr uint64_t kBlockMs = 250;
    Glide glide;
    uint64_t before = 0;
    uint64_t nowMs = 1000;
    for (int i = 0; i < 1000; ++i) {
        const uint64_t period = i % 3 == 0 ? 44 : 38;
        nowMs += period;
        const uint64_t arrived = nowMs / kBlockMs * kBlockMs * 100;
        const uint64_t shown = glide.shown(arrived, kRate, nowMs);
        ASSERT_LE(shown, arrived);
        if (i > 100) {
            EXPECT_LE(arrived - shown, 2 * kBlockMs * 100) << i;
            const auto way = static_cast<double>(shown - before) / (static_cast<double>(period) * 100.0);
            EXPECT_NEAR(way, 1.0, 0.12) << i;
        }
        before = shown;
    }
    EXPECT_EQ(glide.shown(5, kRate, nowMs + 40), 5U) << "another recording";
    EXPECT_EQ(glide.shown(77, 0.0, nowMs + 80), 77U) << "without a rate everything is shown";
}

}  // namespace
}  // namespace tarno2

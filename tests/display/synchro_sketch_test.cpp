#include "display/synchro_sketch.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace tarno2 {
namespace {

SynchroBoardFacts board() {
    SynchroBoardFacts facts;
    facts.channels = {{0, 1, 10.0F}, {3, 10, 10.0F}, {4, 2, 0.0F, 0.0, 10.0}};
    return facts;
}

SynchroSettings record(double value, int32_t mode, int32_t channel = 0) {
    SynchroSettings s;
    s.SynchroAnalyzeMode = 2;
    s.SynchroAnalogMode = mode;
    s.SynchroAnalogValue = value;
    s.SynchroAnalogChannelNumber = channel;
    return s;
}

int64_t keptPoints(const SynchroSketch& sketch) {
    return std::count(sketch.kept.begin(), sketch.kept.end(), true);
}

TEST(SynchroSketch, ATurnedScaleTurnsTheSignal) {
    SynchroBoardFacts turned = board();
    turned.channels[0].label.factor = -2.0;
    const SynchroSketch volts = sketchSynchronisation(record(5.0, 0), {250, 750}, board());
    const SynchroSketch values = sketchSynchronisation(record(5.0, 0), {250, 750}, turned);
    EXPECT_EQ(values.levels.front().height, -volts.levels.front().height);
    EXPECT_TRUE(values.falling);
    const auto& signal = values.lanes.front().signal;
    const auto at = static_cast<size_t>(values.trigger);
    EXPECT_GT(signal[at - 2], values.levels.front().height);
    EXPECT_LT(signal[at + 2], values.levels.front().height);
    EXPECT_FALSE(sketchSynchronisation(record(5.0, 0, 3), {250, 750}, turned).falling);
}

TEST(SynchroSketch, TheEdgeIsAtTheTriggerForEveryLevelOfTheRange) {
    for (const double volts : {-10.0, -8.5, -3.0, 0.0, 0.7, 6.0, 10.0}) {
        for (const int32_t mode : {0, 1}) {
            const SynchroSketch sketch = sketchSynchronisation(record(volts, mode), {250, 750}, board());
            SCOPED_TRACE(volts);
            ASSERT_GE(sketch.trigger, 1);
            const auto& signal = sketch.lanes.front().signal;
            const auto at = static_cast<size_t>(sketch.trigger);
            const float level = sketch.levels.front().height;
            EXPECT_EQ(signal[at - 2] > level, mode == 1);
            EXPECT_EQ(signal[at + 2] > level, mode == 0);
            EXPECT_EQ(sketch.falling, mode == 1);
            EXPECT_EQ((sketch.trigger - sketch.recordBegin) * 4, sketch.recordEnd - sketch.recordBegin);
            EXPECT_EQ(keptPoints(sketch), sketch.recordEnd - sketch.recordBegin);
        }
    }
}

TEST(SynchroSketch, WhatNeverTriggersKeepsNothing) {
    const SynchroSketch outside = sketchSynchronisation(record(1.5, 0, 3), {250, 750}, board());
    EXPECT_EQ(keptPoints(outside), 0) << "1.5 V at a range of 1 V";
    EXPECT_FALSE(outside.levels.front().reachable);
    EXPECT_FALSE(sketchSynchronisation(record(-0.1, 0, 4), {250, 750}, board()).levels.front().reachable);
    EXPECT_EQ(sketchSynchronisation(record(7.5, 0, 4), {250, 750}, board()).levels.front().height, 0.5F)
        << "of 0 to 10 V";
    EXPECT_EQ(keptPoints(sketchSynchronisation(record(1.5, 2), {250, 750}, board())), 0) << "no edge";
    EXPECT_EQ(keptPoints(sketchSynchronisation(record(1.5, 0), {250, -10}, board())), 0) << "no history";
}

TEST(SynchroSketch, AnalysisKeepsFromStartToStopWhatMayBeWritten) {
    SynchroSettings s;
    EXPECT_EQ(keptPoints(sketchSynchronisation(s, {}, board())), SynchroSketch::kPoints) << "off";
    s.SynchroAnalyzeMode = 1;
    s.AnalyzeAnalogStartMode = 0;
    s.AnalyzeAnalogStartValue = 5.0;
    s.AnalyzeAnalogStopMode = 1;
    s.AnalyzeAnalogStopValue = -5.0;
    s.AnalyzeAnalogWriteMode = 0;
    s.AnalyzeAnalogWriteValue = 0.1;
    s.AnalyzeAnalogWriteChannel = 3;
    const SynchroSketch sketch = sketchSynchronisation(s, {}, board());
    ASSERT_GE(sketch.start, 0);
    ASSERT_GT(sketch.stop, sketch.start);
    EXPECT_GT(keptPoints(sketch), 0);
    const auto& signal = sketch.lanes.front().signal;
    for (int32_t i = 0; i < SynchroSketch::kPoints; ++i) {
        const auto at = static_cast<size_t>(i);
        EXPECT_EQ(sketch.kept[at], i >= sketch.start && i < sketch.stop && signal[at] > 0.1F) << i;
    }
    s.AnalyzeAnalogStartValue = 11.0;
    EXPECT_EQ(keptPoints(sketchSynchronisation(s, {}, board())), 0) << "the start is never met";
}

TEST(SynchroSketch, LinesOfThePortHaveLanesOfTheirOwn) {
    SynchroSettings s;
    s.SynchroAnalyzeMode = 1;
    s.analysisOnAnalog = false;
    s.analysisOnPort = true;
    s.AnalyzePortStartMode = 0;
    s.AnalyzePortStartBit = 1;
    s.AnalyzePortWriteMode = 1;
    s.AnalyzePortWriteBit = 2;
    s.AnalyzePortStopMode = 1;
    s.AnalyzePortStopBit = 1;
    const SynchroSketch sketch = sketchSynchronisation(s, {}, board());
    ASSERT_EQ(sketch.lanes.size(), 2U);
    for (int32_t i = 0; i < SynchroSketch::kPoints; ++i) {
        const auto at = static_cast<size_t>(i);
        EXPECT_EQ(sketch.kept[at], i >= sketch.start && i < sketch.stop && sketch.lanes[1].signal[at] == 0.0F) << i;
    }
    EXPECT_GT(keptPoints(sketch), 0);
}

}  // namespace
}  // namespace tarno2

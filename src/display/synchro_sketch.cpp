#include "display/synchro_sketch.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace tarno2 {

namespace {

constexpr int32_t kPoints = SynchroSketch::kPoints;
constexpr int32_t kNotUsed = 2;
constexpr float kSwing = 0.95F;        // how far the invented signals go
constexpr float kHighestLevel = 0.9F;  // levels beyond are drawn here, where the signals still cross them
constexpr int32_t kRecordPoints = 360;
constexpr int32_t kRecordBegin = 120;

/// Whether the values of a channel fall while its volts rise.
bool isTurned(int32_t number, const SynchroBoardFacts& board) {
    return std::any_of(board.channels.begin(), board.channels.end(), [number](const auto& channel) {
        return channel.number == number && channel.label.factor < 0.0;
    });
}

/// A threshold as part of its channel's range.
SynchroSketch::Level levelOf(SketchCondition condition, double volts, int32_t number, const SynchroBoardFacts& board) {
    const auto found = std::find_if(board.channels.begin(), board.channels.end(),
                                    [number](const auto& channel) { return channel.number == number; });
    const auto* channel = found != board.channels.end() ? &*found
                          : board.channels.empty()      ? nullptr
                                                        : &board.channels.front();
    auto [lower, upper] = channel == nullptr ? std::pair{0.0, 0.0} : channel->limits();
    if (!(lower < upper)) {
        upper = std::max(2.0 * std::abs(volts), 1.0);
        lower = -upper;
    }
    const double part = (volts - (lower + upper) / 2.0) / ((upper - lower) / 2.0);
    const double height = isTurned(number, board) ? -part : part;
    return {condition, static_cast<float>(std::clamp(height, double{-kHighestLevel}, double{kHighestLevel})),
            std::abs(height) <= 1.0};
}

/// A signal that goes through its whole range several times.
SynchroSketch::Lane wave() {
    SynchroSketch::Lane lane;
    for (int32_t i = 0; i < kPoints; ++i) {
        const double turns = 2.5 * i / kPoints - 0.25;
        lane.signal.push_back(kSwing * static_cast<float>(std::sin(2.0 * std::numbers::pi * turns)));
    }
    return lane;
}

/// A line of the port; neighbours change at different times.
SynchroSketch::Lane pulses(int32_t line) {
    SynchroSketch::Lane lane{true, line, {}};
    const int32_t half = kPoints / (5 + line % 4);
    for (int32_t i = 0; i < kPoints; ++i) {
        lane.signal.push_back((i + half / 2) / half % 2 == 0 ? 0.0F : 1.0F);
    }
    return lane;
}

/// Rises and falls once, and crosses the height on the wanted side of its top at the point `at`.
SynchroSketch::Lane bump(float height, bool falling, int32_t at) {
    constexpr double kWidth = kPoints / 9.0;
    const double part = (static_cast<double>(height) + kSwing) / (2.0 * kSwing);
    const double side = kWidth * std::sqrt(-2.0 * std::log(part));
    const double top = falling ? at - side : at + side;
    SynchroSketch::Lane lane;
    for (int32_t i = 0; i < kPoints; ++i) {
        const double distance = (i - top) / kWidth;
        lane.signal.push_back(kSwing * static_cast<float>(2.0 * std::exp(-distance * distance / 2.0) - 1.0));
    }
    return lane;
}

/// A line that changes once at the point `at` and back later.
SynchroSketch::Lane step(int32_t line, bool falling, int32_t at) {
    SynchroSketch::Lane lane{true, line, {}};
    constexpr int32_t kLength = kPoints / 5;
    for (int32_t i = 0; i < kPoints; ++i) {
        lane.signal.push_back((i >= at && i < at + kLength) != falling ? 1.0F : 0.0F);
    }
    return lane;
}

/// Points of the sketch at which a condition is met; empty for one that is not used.
using Met = std::vector<bool>;

Met metByLevel(const SynchroSketch& sketch, const SynchroSketch::Level& level, bool below) {
    Met met;
    for (const float value : sketch.lanes.front().signal) {
        met.push_back(below             ? level.reachable ? value < level.height : level.height > 0.0F
                      : level.reachable ? value > level.height
                                        : level.height < 0.0F);
    }
    return met;
}

Met metByLine(const SynchroSketch::Lane& lane, bool zero) {
    Met met;
    for (const float value : lane.signal) {
        met.push_back((value > 0.5F) != zero);
    }
    return met;
}

int32_t firstMet(const Met& met, int32_t from) {
    const auto found = std::find(met.begin() + from, met.end(), true);
    return found == met.end() ? -1 : static_cast<int32_t>(found - met.begin());
}

/// From where the start condition is met to where the stop condition is, what meets the write condition.
void keepAnalysed(SynchroSketch& sketch, const Met& start, const Met& write, const Met& stop) {
    sketch.start = start.empty() ? -1 : firstMet(start, 0);
    if (!start.empty() && sketch.start < 0) {
        return;
    }
    const int32_t begin = std::max(sketch.start, 0);
    sketch.stop = stop.empty() ? -1 : firstMet(stop, begin);
    const int32_t end = sketch.stop < 0 ? kPoints : sketch.stop;
    for (int32_t i = begin; i < end; ++i) {
        sketch.kept[static_cast<size_t>(i)] = write.empty() || write[static_cast<size_t>(i)];
    }
}

void sketchAnalogAnalysis(const SynchroSettings& s, const SynchroBoardFacts& board, SynchroSketch& sketch) {
    sketch.lanes.push_back(wave());
    const auto ask = [&](SketchCondition condition, int32_t mode, double value, int32_t unit, int32_t channel) {
        if (mode == kNotUsed) {
            return Met{};
        }
        sketch.levels.push_back(levelOf(condition, levelVolts(value, unit), channel, board));
        return metByLevel(sketch, sketch.levels.back(), (mode == 1) != isTurned(channel, board));
    };
    const Met start = ask(SketchCondition::Start, s.AnalyzeAnalogStartMode, s.AnalyzeAnalogStartValue,
                          s.AnalyzeAnalogStartUnit, s.AnalyzeAnalogStartChannel);
    const Met write = ask(SketchCondition::Write, s.AnalyzeAnalogWriteMode, s.AnalyzeAnalogWriteValue,
                          s.AnalyzeAnalogWriteUnit, s.AnalyzeAnalogWriteChannel);
    const Met stop = ask(SketchCondition::Stop, s.AnalyzeAnalogStopMode, s.AnalyzeAnalogStopValue,
                         s.AnalyzeAnalogStopUnit, s.AnalyzeAnalogStopChannel);
    keepAnalysed(sketch, start, write, stop);
}

void sketchPortAnalysis(const SynchroSettings& s, SynchroSketch& sketch) {
    const auto ask = [&](int32_t mode, int32_t bit) {
        if (mode == kNotUsed) {
            return Met{};
        }
        SynchroSketch::Lane lane = pulses(bit);
        Met met = metByLine(lane, mode == 1);
        if (std::none_of(sketch.lanes.begin(), sketch.lanes.end(), [bit](const auto& l) { return l.line == bit; })) {
            sketch.lanes.push_back(std::move(lane));
        }
        return met;
    };
    const Met start = ask(s.AnalyzePortStartMode, s.AnalyzePortStartBit);
    const Met write = ask(s.AnalyzePortWriteMode, s.AnalyzePortWriteBit);
    const Met stop = ask(s.AnalyzePortStopMode, s.AnalyzePortStopBit);
    keepAnalysed(sketch, start, write, stop);
}

/// A record of the width that is always drawn, divided as the sizes are; its trigger is where the edge is.
void keepRecord(SynchroSketch& sketch, const SynchroSizes& sizes, int32_t trigger) {
    if (sizes.prehistory < 0 || sizes.history < 0 || int64_t{sizes.prehistory} + sizes.history < 1) {
        return;
    }
    sketch.recordBegin = kRecordBegin;
    sketch.recordEnd = kRecordBegin + kRecordPoints;
    sketch.trigger = trigger;
    std::fill(sketch.kept.begin() + sketch.recordBegin, sketch.kept.begin() + sketch.recordEnd, true);
}

void sketchRecord(const SynchroSettings& s, const SynchroSizes& sizes, const SynchroBoardFacts& board,
                  SynchroSketch& sketch) {
    const double all = std::max(1.0, static_cast<double>(sizes.prehistory) + sizes.history);
    const double before = std::clamp(sizes.prehistory / all, 0.0, 1.0);
    const int32_t trigger = kRecordBegin + static_cast<int32_t>(before * kRecordPoints);
    const int32_t mode = s.synchroOnPort ? s.SynchroPortMode : s.SynchroAnalogMode;
    const bool asked = (s.synchroOnPort || s.synchroOnAnalog) && mode != kNotUsed;
    sketch.falling = (mode == 1) != (!s.synchroOnPort && isTurned(s.SynchroAnalogChannelNumber, board));
    if (s.synchroOnPort) {
        sketch.lanes.push_back(step(s.SynchroPortBit, sketch.falling, trigger));
    } else if (asked) {
        sketch.levels.push_back(levelOf(SketchCondition::Trigger, levelVolts(s.SynchroAnalogValue, s.SynchroAnalogUnit),
                                        s.SynchroAnalogChannelNumber, board));
        sketch.lanes.push_back(bump(sketch.levels.back().height, sketch.falling, trigger));
    } else {
        sketch.lanes.push_back(wave());
    }
    if (asked && (s.synchroOnPort || sketch.levels.back().reachable)) {
        keepRecord(sketch, sizes, trigger);
    }
}

}  // namespace

SynchroSketch sketchSynchronisation(const SynchroSettings& settings, const SynchroSizes& sizes,
                                    const SynchroBoardFacts& board) {
    SynchroSketch sketch;
    sketch.kept.assign(kPoints, settings.SynchroAnalyzeMode == 0);
    if (settings.SynchroAnalyzeMode == 2) {
        sketchRecord(settings, sizes, board, sketch);
    } else if (settings.SynchroAnalyzeMode == 1 && settings.analysisOnPort) {
        sketchPortAnalysis(settings, sketch);
    } else if (settings.SynchroAnalyzeMode == 1 && settings.analysisOnAnalog) {
        sketchAnalogAnalysis(settings, board, sketch);
    }
    if (sketch.lanes.empty()) {
        sketch.lanes.push_back(wave());
    }
    return sketch;
}

}  // namespace tarno2

#pragma once

#include <cstdint>
#include <vector>

#include "sync/synchro_check.h"

namespace tarno2 {

/// What asks a signal of the sketch.
enum class SketchCondition { Start, Write, Stop, Trigger };

/// A sketch of what synchronisation settings do: an invented signal, and which of it would be recorded. It is there to
/// be drawn beside the settings. Everything runs over the same points in time, `kPoints` of them.
struct SynchroSketch {
    static constexpr int32_t kPoints = 600;

    /// One lane of the picture: a level from -1 to 1 (the ends of the channel's range), or a line that is 0 or 1.
    struct Lane {
        bool digital = false;
        int32_t line = 0;  ///< number of the line
        std::vector<float> signal;
    };
    /// A threshold in the analog lane.
    struct Level {
        SketchCondition condition = SketchCondition::Start;
        float height = 0.0F;     ///< -1 to 1
        bool reachable = false;  ///< the signal of that channel can get there
    };

    std::vector<Lane> lanes;
    std::vector<Level> levels;
    std::vector<bool> kept;    ///< one a point
    int32_t recordBegin = -1;  ///< first point of the record; -1: there is none
    int32_t recordEnd = -1;    ///< one past its last
    int32_t trigger = -1;      ///< point of the edge
    bool falling = false;      ///< the edge
    int32_t start = -1;        ///< where a start condition is met
    int32_t stop = -1;         ///< where a stop condition is met
};

/// `settings` as the user has them, with channel numbers. Channels that are not active have the first one's range.
/// Signals are told in the values of their channels, which may fall while their volts rise.
[[nodiscard]] SynchroSketch sketchSynchronisation(const SynchroSettings& settings, const SynchroSizes& sizes,
                                                  const SynchroBoardFacts& board);

}  // namespace tarno2

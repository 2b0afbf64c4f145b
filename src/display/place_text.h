#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "display/wall_clock.h"

namespace tarno2 {

/// What a place in a signal can be told by.
struct PlaceTerms {
    double framesPerSecond = 0.0;    ///< 0 or less: not known
    uint64_t frames = 0;             ///< of the signal
    std::optional<WallClock> clock;  ///< nothing: nobody knows when it began
    bool countsFrames = false;       ///< the axis counts frames: a plain number is one
    bool tellsClock = false;         ///< the axis tells the time of day: so does hh:mm:ss
};

enum class PlaceProblem : uint8_t { None, NotUnderstood, NoRate, NoClock, Outside };

/// The frame that was typed:
///     12.5, 12.5s           seconds from the beginning (a plain number is a frame when the axis counts frames)
///     #48000                a frame, from 0
///     1:30, 00:01:30.250    from the beginning; the time of day, the first within the signal, when the axis tells that
///     2026-11-23 14:05:30   date and time of day, with or without decimals; a T in place of the blank
/// Blanks around it don't matter, and a comma is taken for the point. Nothing, and why, for what is none of them or
/// lies outside of the signal.
[[nodiscard]] std::optional<double> parsePlace(std::string_view text, const PlaceTerms& terms, PlaceProblem& problem);

}  // namespace tarno2

#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "records/conversion_inputs.h"

namespace tarno2 {

/// Which frames of a data file are wanted, and which of their channels.
struct FrameChoice {
    uint64_t from = 0;                                   ///< the first frame
    uint64_t to = std::numeric_limits<uint64_t>::max();  ///< the one behind the last; the file may end earlier
    uint64_t every = 1;                                  ///< each so many frames one is taken, the first one too
    std::vector<uint32_t> columns;                       ///< positions in a frame, in the wanted order; empty: all

    /// How many are taken of a file of `frames` frames.
    [[nodiscard]] uint64_t count(uint64_t frames) const;
    /// The frame of the file that is taken as number `index`, from 0.
    [[nodiscard]] uint64_t frameOf(uint64_t index) const { return from + index * every; }
    /// The number of a frame of the file, from `from` on: its own, or that of the last one before it that is taken.
    [[nodiscard]] uint64_t indexOf(uint64_t frame) const { return (frame - from) / every; }
};

/// What the frames hold once they are chosen: channels, limits, names and marks, by the numbers of the frames taken.
/// The frequency stays that of the file, by which frames are told in time.
[[nodiscard]] ConversionInputs chosenInputs(const ConversionInputs& inputs, const FrameChoice& choice);

}  // namespace tarno2

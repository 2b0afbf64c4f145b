#pragma once

#include <cstdint>
#include <string>

#include "records/conversion_inputs.h"
#include "records/frame_choice.h"

namespace tarno2 {

/// Which frames and channels of a recording the user has asked for, as typed.
struct FrameWish {
    /// Where to begin, and the first one that is too many: frames from 0 ("48000") or seconds ("1.5s"). Empty: from the
    /// begin, to the end.
    std::string from;
    std::string to;
    uint64_t every = 1;
    /// Names, numbers of inputs as headings tell them ("Channel 5" is 5) or spans of those ("0-3"), parted by commas. A
    /// name counts before a number, and may have commas in it where it stands alone. Empty: all channels.
    std::string channels;
};

/// What is wrong with it.
enum class WishProblem : uint8_t { None, From, To, Every, Channels, Span };

/// What the wish means for a recording with these inputs. `subject` gets the part of the text that is wrong.
[[nodiscard]] WishProblem chooseFrames(const FrameWish& wish, const ConversionInputs& inputs, FrameChoice& choice,
                                       std::string& subject);

/// The problem in English, in one line.
[[nodiscard]] std::string describe(WishProblem problem, const std::string& subject);

}  // namespace tarno2

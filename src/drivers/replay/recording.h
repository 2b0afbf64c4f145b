#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "drivers/common/board_facts.h"
#include "drivers/common/sample_source.h"

namespace tarno2::drivers {

/// A recorded file as a board.
struct Recording {
    std::string path;
    uint64_t dataOffset = 0;  ///< bytes
    uint64_t frames = 0;
    uint32_t zeroWord = 0;  ///< the word of zero volts
    BoardFacts board;
};

/// Reads what a .wav file, or a data file with its description beside it, is. False with a reason that names the file.
[[nodiscard]] bool openRecording(const std::string& path, Recording& recording, std::string& reason);

/// Makes the source that plays the chosen channels of a recording; null when the file can't be opened any more.
[[nodiscard]] std::unique_ptr<SampleSource> playRecording(const Recording& recording, const Measurement& measurement,
                                                          bool loop);

}  // namespace tarno2::drivers

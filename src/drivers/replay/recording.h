#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <tarno2/driver/board.h>

#include "drivers/common/sample_source.h"
#include "drivers/replay/wav_file.h"

namespace tarno2::drivers {

/// A recorded file as a board.
struct Recording {
    std::string path;
    uint64_t dataOffset = 0;  ///< bytes
    uint64_t frames = 0;
    std::optional<WavSample> sample;       ///< of a .wav file whose samples are no words of the board
    double channelRate = 0.0;              ///< Hz, of each channel
    std::vector<sdk::InputLimits> limits;  ///< of each channel, where the recording tells them
    sdk::Board board;
};

/// Reads what a .wav file, or a data file with its description beside it, is. False with a reason that names the file.
[[nodiscard]] bool openRecording(const std::string& path, Recording& recording, std::string& reason);

/// Makes the source that plays the chosen channels of a recording; null when the file can't be opened any more.
[[nodiscard]] std::unique_ptr<SampleSource> playRecording(const Recording& recording,
                                                          const sdk::Measurement& measurement, bool loop);

}  // namespace tarno2::drivers

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "config/settings/program_settings.h"
#include "core/devices/board_facts.h"
#include "core/recording/recording_shell.h"
#include "language/text_ids.h"

namespace tarno2 {

/// What the operator has set, as the start of a recording takes it: active channels of the board, base units, and only
/// those modes that the board offers. `frequencyField`: what stands there, with "." or ",".
[[nodiscard]] RecordingSettings recordingSettings(const ProgramSettings& settings, const BoardFacts& board,
                                                  std::string_view frequencyField);
/// The same, with the frequency of the settings.
[[nodiscard]] RecordingSettings recordingSettings(const ProgramSettings& settings, const BoardFacts& board);

/// A wish that a board can't fulfil.
struct BeyondBoard {
    TextId message;
    std::string detail;  ///< names it
};
/// Modes that the board lacks, channels that it has not, gains that are none; nothing when it can do everything.
[[nodiscard]] std::optional<BeyondBoard> beyondBoard(const RecordingSettings& settings, const BoardFacts& board);

/// A stop after so many seconds, minutes or hours (`unit` 0 to 2), seconds.
[[nodiscard]] double stopSeconds(double value, int32_t unit);
/// A stop after so many bytes, KiB or MiB (`unit` 0 to 2), bytes; 0 for a value that is none.
[[nodiscard]] uint64_t stopBytes(double value, int32_t unit);

}  // namespace tarno2

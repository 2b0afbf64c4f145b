#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "config/settings/program_settings.h"
#include "core/devices/board_facts.h"
#include "language/text_ids.h"

namespace tarno2 {

/// What the operator has set, as the start of a recording takes it: the active channels of the board, the stop value in
/// base units, and only what the board offers.
[[nodiscard]] RecordingWish recordingWish(const ProgramSettings& settings, const BoardFacts& board);
/// The way back, for the controls of a window to show what an autosettings file asks; the order of the channels does
/// not show there.
void showWish(const RecordingWish& wish, ProgramSettings& shown);

/// Puts into `wish` what `running` has asked of the board that runs: the rest is what can be changed meanwhile.
void takeBoardSettings(const RecordingWish& running, RecordingWish& wish);

/// A wish that a board can't fulfil.
struct BeyondBoard {
    TextId message;
    std::string detail;  ///< names it
};
/// Modes that the board lacks, channels that it has not, gains that are none; nothing when it can do everything.
[[nodiscard]] std::optional<BeyondBoard> beyondBoard(const RecordingWish& wish, const BoardFacts& board);

/// A stop after so many seconds, minutes or hours (`unit` 0 to 2), seconds.
[[nodiscard]] double stopSeconds(double value, int32_t unit);
/// A stop after so many bytes, KiB or MiB (`unit` 0 to 2), bytes; 0 for a value that is none.
[[nodiscard]] uint64_t stopBytes(double value, int32_t unit);

}  // namespace tarno2

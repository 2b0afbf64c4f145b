#pragma once

#include "core/devices/board_selection.h"
#include "core/recording/recording_shell.h"
#include "ui/additional_mode_window.h"

namespace tarno2 {

/// What the synchronisation window shows of a recording with these settings on the chosen board.
[[nodiscard]] AdditionalModeFacts additionalModeFacts(const RecordingWish& settings, BoardSelection& selection);

}  // namespace tarno2

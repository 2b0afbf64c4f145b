#pragma once

#include "core/recording/board.h"
#include "core/recording/run_end.h"
#include "core/recording/stop_code.h"
#include "records/passport.h"
#include "records/recording_facts.h"

namespace tarno2 {

/// What a passport tells of a recording before its first sample: of what was asked for, of the board as its driver has
/// set it up, and of the computer. Window thread.
[[nodiscard]] Passport passportAtStart(const RecordingWish& wish, const T_BOARD& session, const RecordingFacts& facts);

/// What a passport tells of the end of a recording; its clock is left empty. `end` counts for one that was ended from
/// outside. Any thread.
[[nodiscard]] PassportEnd passportEnd(const RecordingResult& result, OutsideEnd end);

}  // namespace tarno2

#pragma once

#include "config/settings/recording_wish.h"
#include "core/recording/stop_code.h"

namespace tarno2 {

/// What came of a recording, held against what was asked for; the values are exit statuses for scripts.
enum class RecordingOutcome { AsAsked = 0, EndedEarly = 1, NothingRecorded = 2 };

/// Why a recording ended that was ended from outside.
enum class OutsideEnd {
    User,         ///< the operator, or a signal
    StopTime,     ///< the time that was asked for is over
    SystemEnding  ///< the system shuts down, or the user is logged off
};

/// `end` counts for a recording that was ended from outside. One without a rule of its own is over as asked when its
/// operator ends it.
[[nodiscard]] RecordingOutcome outcomeOf(const RecordingResult& result, StopRule rule, OutsideEnd end);

/// One line for the error output, with a line end, in UTF-8. `logPath`: where to read more.
[[nodiscard]] std::string outcomeLine(RecordingOutcome outcome, const RecordingResult& result,
                                      const std::string& logPath);

}  // namespace tarno2

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "config/settings/recording_wish.h"
#include "core/recording/stop_code.h"
#include "language/text_ids.h"

namespace tarno2 {

/// What the program is doing, as it is read from two metres.
enum class RunState {
    Ready,
    Starting,
    WaitingForStart,
    WaitingForTrigger,
    Recording,
    Warning,
    Stopping,
    Stopped,
    Error,
    Monitoring
};

/// What came of a recording, held against what was asked for; the values are exit statuses for scripts.
enum class RecordingOutcome { AsAsked = 0, EndedEarly = 1, NothingRecorded = 2 };

/// Why a recording ended that was ended from outside.
enum class OutsideEnd {
    User,         ///< the operator, or a signal
    StopTime,     ///< the time that was asked for is over
    SystemEnding  ///< the system shuts down, or the user is logged off
};

/// How a message is told.
enum class MessageKind {
    Information,  ///< in the list of messages
    Attention     ///< "Attention: ..." in the log, and shown until the next start
};

/// What the end of a recording means: to the logs, to the operator, to a script.
struct RunEnd {
    RunState state = RunState::Error;  ///< Stopped or Error
    const char* status = "";           ///< log line and status text ("Stop - By user"); empty when it has none
    std::optional<TextId> message;     ///< why it ended, when the operator does not know by himself
    MessageKind kind = MessageKind::Attention;
    TextId summary = TextId::NothingRecorded;  ///< or `RecordingEnded`, with the counts of frames and files
    RecordingOutcome outcome = RecordingOutcome::NothingRecorded;
};

/// `rule`: how the recording was to end; `end` counts for one that was ended from outside. One without a rule of its
/// own is over as asked when its operator ends it.
[[nodiscard]] RunEnd runEnd(const RecordingResult& result, StopRule rule, OutsideEnd end);

/// One line for the error output, with a line end, in UTF-8. `logPath`: where to read more.
[[nodiscard]] std::string outcomeLine(RecordingOutcome outcome, const RecordingResult& result,
                                      const std::string& logPath);

}  // namespace tarno2

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/storage/loss.h"

namespace tarno2 {

/// How a recording ended.
enum class StopCode : int32_t {
    Error = -1,         ///< see ErrorDetail
    Running = 0,        ///< it has not: a progress notification
    User = 1,           ///< from outside: user, stop timer, signal
    StopMeasuring = 2,  ///< size limit reached or stop condition met
    WriteError = 3,     ///< the disk did not take the data
    Unplug = 4,         ///< the board was pulled out
    NoData = 5,         ///< the board gave no data in time
    AnalyzeError = 6,   ///< the evaluator failed
    TransferError = 7,  ///< `GetData` failed, or the board told of an error
    Incompatible = 8,   ///< the driver's ring can't be used
    SourceEnd = 9       ///< the board's source has come to its end
};

/// What went wrong when the code is `StopCode::Error`.
enum class ErrorDetail : int32_t { Unknown, Overflow, Init, Start, Memory };

/// The `GetData` call that failed, for the report to the user.
struct GetDataReport {
    int32_t mode = 0;
    uint32_t size = 0;             ///< samples
    uint32_t offset = 0;           ///< samples from the ring's start
    const void* buffer = nullptr;  ///< destination of the failed call
    const void* bufferStart = nullptr;
    uint32_t bufferSize = 0;  ///< samples
    int32_t partNumber = 0;   ///< 1: second part of a split read, 2: unsplit read

    /// The report's text.
    [[nodiscard]] std::string text() const;
};

/// A copy of everything that is to be told of a recording; outlives its session.
struct RecordingResult {
    StopCode code = StopCode::Running;
    ErrorDetail detail = ErrorDetail::Unknown;
    GetDataReport getData;          ///< when `code` is TransferError, `mode` 0: no call failed
    uint64_t bytes = 0;             ///< in the files that are left; while it runs: accepted by the writer
    uint32_t files = 0;             ///< that are left
    uint64_t overflowPosition = 0;  ///< index of the first lost sample when the ring or the board overflowed
    uint64_t events = 0;            ///< of the synchronisation
    bool sizeReached = false;       ///< it ended by its size
    bool diskNearlyFull = false;    ///< it ended so that the disk does not fill up; code StopMeasuring
    bool startCame = false;         ///< of a running one when its first data were read after they had been waited for
    uint64_t waitingBytes = 0;  ///< of a running one when more than half of its memory has come to wait for the disk
    bool monitored = false;     ///< nothing was to be kept: nobody has begun a recording
    std::optional<uint64_t> monitoredFrames;  ///< before the first one that is kept, of a session that was monitored
    std::vector<Loss> losses;                 ///< samples that the host knows to be lost
    std::string fileName;                     ///< its first data file, once it is over
    std::string problem;                      ///< what exactly went wrong, in English; empty when nothing is known

    /// More than progress, which may be looked up at any time.
    [[nodiscard]] bool isNews() const { return code != StopCode::Running || waitingBytes > 0 || startCame; }
};

}  // namespace tarno2

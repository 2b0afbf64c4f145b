#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "records/conversion_inputs.h"

namespace tarno2 {

/// What is known of a data file besides its samples.
struct ExportFacts {
    using MomentOf = std::function<std::optional<int64_t>(uint64_t frame, double rate)>;

    /// When its first frame came, by the clocks of the place where it was recorded: microseconds since 1970.
    std::optional<int64_t> start;
    /// When any frame of it came, likewise; `rate`: frames a second, Hz, where the description alone tells.
    /// May be empty.
    MomentOf momentOf;
    /// Packets a second that were kept, Hz, where each frame is a packet: then it is the rate of the frames.
    std::optional<double> packetRate;
    std::string device;              ///< driver and board, UTF-8; may be empty
    std::string comment;             ///< of the operator, UTF-8; may be empty
    std::vector<uint64_t> triggers;  ///< the frames of the file that triggered a record
};

/// Looks for them: in the passport of the recording, of which the data file may be a piece, else in the description.
/// Throws std::bad_alloc.
[[nodiscard]] ExportFacts findExportFacts(const std::string& dataFile, const RecordedKeys& described);

}  // namespace tarno2

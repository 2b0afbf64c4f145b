#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "records/passport.h"
#include "records/recorded_labels.h"

namespace tarno2 {

/// What the passport of a recording says of its columns.
struct FoundLabels {
    RecordedLabels labels;
    std::optional<Passport> passport;  ///< all of it
    std::string problem;               ///< why nothing is known, in English; empty when something is
    uint32_t piece = 0;                ///< of the recording that the passport tells of, which the data file is
};

/// Looks for the passport of a data file, which may be a piece of its recording. What tells of another count of
/// channels than `channelCount` belongs to other data, and doesn't count. Throws std::bad_alloc.
[[nodiscard]] FoundLabels findLabels(const std::string& dataFile, uint32_t channelCount);

}  // namespace tarno2

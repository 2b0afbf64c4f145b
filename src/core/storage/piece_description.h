#pragma once

#include <cstdint>
#include <string>

#include "records/journal_text.h"
#include "records/record_description.h"

namespace tarno2 {

/// Completes the description of a data file, which holds so many bytes, and writes it beside the file; it is on the
/// disk then. `description` has the facts and the events of the file. What went wrong, empty when nothing did;
/// else there is no description, or somebody else's file of its name.
[[nodiscard]] std::string describeDataFile(const std::string& dataName, uint64_t bytes, const JournalState& state,
                                           RecordDescription& description);

}  // namespace tarno2

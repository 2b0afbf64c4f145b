#pragma once

#include <cstdint>
#include <string>

namespace tarno2 {

/// How frames are put into the records of an EDF file: so many in each, which last so long.
struct EdfRecords {
    uint64_t frames = 1;    ///< of a record
    std::string duration;   ///< seconds, as the header tells them, in at most 8 characters
    bool exactRate = true;  ///< frames / duration is the rate
};

/// Records for frames at that rate (Hz, above 0): the longest of at most a second that stay below the size which
/// the format recommends, with frames of `frameBytes`, and whose duration is a short number; without one those whose
/// duration tells the rate best. They last longer at rates below that, and where `frames` would otherwise need
/// more records than the header can count.
[[nodiscard]] EdfRecords edfRecords(double rate, uint64_t frameBytes, uint64_t frames);

}  // namespace tarno2

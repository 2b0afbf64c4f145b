#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarno2 {

/// Characters of a number in the header.
constexpr size_t kEdfNumberLength = 8;

/// A signal as the header of an EDF file tells it.
struct EdfSignal {
    std::string label;      ///< UTF-8
    std::string dimension;  ///< likewise
    double physicalMinimum = -1.0;
    double physicalMaximum = 1.0;
    int64_t digitalMinimum = 0;
    int64_t digitalMaximum = 0;
    uint64_t samples = 0;  ///< of a record
    bool exact = true;     ///< the physical limits are told with all their digits
};

struct EdfHeader {
    bool bdf = false;
    std::optional<int64_t> start;  ///< microseconds since 1970 by the clocks of the place
    std::string equipment;         ///< UTF-8
    uint64_t records = 0;
    std::string duration;  ///< of a record, seconds
    std::vector<EdfSignal> signals;
};

/// The bytes of the header.
[[nodiscard]] std::string edfHeader(const EdfHeader& header);

/// A text in the letters that the header may have, the degree sign, the letter for millionths and small numbers
/// spelled; others become "?".
[[nodiscard]] std::string edfText(const std::string& utf8);

}  // namespace tarno2

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "records/export_format.h"

namespace tarno2 {

/// Makes lines of text out of the values of frames. An object is used by one thread at a time.
class LineFormatter {
public:
    /// `firstLine` is the number of the first line; each further one has one that is larger by `step`.
    explicit LineFormatter(ExportFormat format, uint64_t firstLine = 0, uint64_t step = 1);

    /// Formats a line and copies it to `out` when it is shorter than `spaceLeft`: then 0 is returned, `lineLength` gets
    /// its length (bytes, line end included) and the line is counted. Otherwise 1 is returned and nothing has changed.
    /// `seconds` is the time of the frame. A digital value prints as a signed byte that is widened to 32 unsigned bits.
    int format(char* out, size_t spaceLeft, size_t& lineLength, double seconds, std::span<const double> analog,
               std::span<const int8_t> digital);

private:
    char* writeLine(char* out, double seconds, std::span<const double> analog, std::span<const int8_t> digital) const;

    ExportFormat format_;
    uint64_t lineCount_;  ///< number of the next line
    uint64_t step_;
    std::vector<char> line_;  ///< a line of which it is not sure beforehand that it fits
};

}  // namespace tarno2

#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace tarno2 {

/// What was marked in one data file.
struct FileMarks {
    std::map<uint64_t, std::string> texts;  ///< by the frame of the file, UTF-8; those of one frame parted by "; "
    std::string problem;                    ///< why not everything is known, in English; empty when it is
};

/// Looks for the marks of a data file, which may be a piece of its recording; `frameBytes`: of a frame in it. A mark
/// without a text has its number. Throws std::bad_alloc.
[[nodiscard]] FileMarks findFileMarks(const std::string& dataFile, uint64_t frameBytes);

}  // namespace tarno2

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "records/mark_list.h"
#include "records/stream_places.h"

namespace tarno2 {

/// The marks of the recording that a data file belongs to, which may be a piece of it.
struct RecordedMarks {
    std::vector<RecordingMark> marks;
    StreamPlaces places;      ///< of their frames in all data files, one behind the other
    uint64_t firstFrame = 0;  ///< of those, the first one of this data file
    std::string problem;      ///< why not everything is known, in English; empty when it is, or nothing was marked
};

/// Looks for them; `frameBytes`: of a frame in the data file. Throws std::bad_alloc.
[[nodiscard]] RecordedMarks findRecordedMarks(const std::string& dataFile, uint64_t frameBytes);

/// The texts of what was marked in one data file, by its frames, UTF-8; those of one frame parted by "; ". A mark
/// without a text has its number.
[[nodiscard]] std::map<uint64_t, std::string> marksOfFile(const RecordedMarks& recorded, const std::string& dataFile,
                                                          uint64_t frameBytes);

}  // namespace tarno2

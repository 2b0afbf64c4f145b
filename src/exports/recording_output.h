#pragma once

#include <string>

#include "records/text_conversion.h"

namespace tarno2 {

/// Whether a file of the recording has that name, be it of another piece.
[[nodiscard]] bool isOfRecording(const std::string& output, const std::string& dataFile);

/// Whether a recording of its own can be made with the data file `output` of what is in `dataFile`. `Finished`: it can,
/// and no file but the data and the description of that name is replaced; these only with `replace`. Else status and
/// subject tell why not. Looks at the disk; changes nothing.
[[nodiscard]] ConversionResult checkRecordingOutput(const std::string& output, const std::string& dataFile,
                                                    bool replace);

}  // namespace tarno2

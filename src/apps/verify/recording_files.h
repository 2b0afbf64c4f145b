#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "config/files/recording_name.h"
#include "records/found_passport.h"

namespace tarno2 {

/// The first data file of the recording that a file belongs to: the file may be any of it. Empty when it belongs to
/// none.
[[nodiscard]] std::string recordingOf(const std::string& file);
/// The first data files of all recordings in a folder.
[[nodiscard]] std::set<std::string> recordingsIn(const std::string& folder);
/// The numbers of a recording's data files that are there. One that is a recording of its own is none of them.
[[nodiscard]] std::set<uint32_t> piecesOf(const RecordingName& name);

}  // namespace tarno2

#pragma once

#include <string>
#include <vector>

#include "config/files/recording_name.h"
#include "platform/os_error.h"

namespace tarno2 {

/// What moving the files of a recording out of the way came to.
struct MovedAside {
    OsError error;                   ///< why it failed; `inUse` when another program is writing the file
    std::string file;                ///< that could not be renamed
    std::vector<std::string> names;  ///< new names of the files that were moved; none when they were moved back
};

/// The first n for which no file of `name.old(n)` is there.
[[nodiscard]] uint32_t freeOldNumber(const RecordingName& name);

/// Whether a recording has left anything that `moveAside` would move.
[[nodiscard]] bool hasFilesToMove(const RecordingName& name);

/// Renames what a recording has left (data files and descriptions of all pieces, lists of losses and marks, passport,
/// checksums) to `name.old(n)`: all of it or, after a failure, nothing. It fails when another program is writing one of
/// them. What an interrupted move has left is moved when it is done again with the same n.
[[nodiscard]] MovedAside moveAside(const RecordingName& name, uint32_t n);

}  // namespace tarno2

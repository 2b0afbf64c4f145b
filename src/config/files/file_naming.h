#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "config/files/move_aside.h"
#include "config/files/recording_name.h"
#include "platform/os_error.h"

namespace tarno2 {

/// Makes names for recordings: "<folder>/file_<year>_<month>_<day>_n<number>.dat", never one that exists.
/// One object serves the whole run, so that its running number only grows. Window thread only.
class FileNaming {
public:
    /// A new name in the folder of `currentName` (what the name field holds), else in that of the name saved in the
    /// settings file, else in "Data" under the documents folder, else in the current folder. The folder itself is made
    /// when the recording starts, not here.
    [[nodiscard]] std::string GenerateFileName(const std::string& currentName, const std::string& savedName);

    /// The name for the first recording of a run: the saved one when the operator had chosen it and nothing was
    /// recorded under it, else a generated one.
    [[nodiscard]] std::string NameAtStart(const std::string& savedName);

    /// Whether this is the newest name that was made here. It was free then: what stands there now is somebody else's.
    [[nodiscard]] bool isNewest(const std::string& name) const { return !newest_.empty() && name == newest_; }

private:
    std::string newest_;
    uint32_t runningNumber_ = 0;
};

/// The name as a line of a log may hold it: with "?" in the place of control characters.
[[nodiscard]] std::string shownName(std::string name);

/// Makes the folders of a file's path that are missing, one by one. The error is that of the last one.
OsError createFoldersFor(const std::string& fileName);

}  // namespace tarno2

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

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

private:
    uint32_t runningNumber_ = 0;
};

/// The user's documents folder: the registry's "Personal", else $XDG_DOCUMENTS_DIR, else ~/Documents. Empty when
/// there is none.
[[nodiscard]] std::string documentsFolder();

/// `name` with ".dat" when its last part ends in no extension of data files; what only looks like one ("probe 1.5 mm")
/// belongs to the name. Names of files that stand beside data stay as they are, to be refused.
[[nodiscard]] std::string withDataExtension(const std::string& name);
/// Name of piece `k` of a recording: the name itself for 0, else "<base>_<k>.<extension>".
[[nodiscard]] std::string pieceName(const std::string& name, uint32_t k);

/// A data file's name without its extension.
[[nodiscard]] std::string recordingBase(const std::string& dataName);
/// "<base>.tarno2-journal": what is known of a recording that is not finished.
[[nodiscard]] std::string journalNameFor(const std::string& dataName);
/// "<base>.journal": what earlier versions called it. Such journals are read, never made.
[[nodiscard]] std::string earlierJournalNameFor(const std::string& dataName);
/// Both endings, with their point.
inline constexpr std::string_view kJournalExtension = ".tarno2-journal";
inline constexpr std::string_view kEarlierJournalExtension = ".journal";
/// Whether data files of a recording may end in this: a point and 1 to 16 letters or digits, and no ending of the files
/// that stand beside the data.
[[nodiscard]] bool isDataExtension(std::string_view extension);
/// "<base>.log": what a recording has lost.
[[nodiscard]] std::string lossLedgerNameFor(const std::string& dataName);

/// The name as a line of a log may hold it: with "?" in the place of control characters.
[[nodiscard]] std::string shownName(std::string name);

/// Makes the folders of a file's path that are missing, one by one. The error is that of the last one.
OsError createFoldersFor(const std::string& fileName);

/// Moves what an earlier recording of that name left (data file, description, pieces and their descriptions, list of
/// losses) out of the way, as "<base>_old<k>...", with the first k for which none of the new names is taken.
struct MovedAside {
    std::string newName;             ///< of the first data file, whether or not there was anything to move
    OsError error;                   ///< the first failure; the files before it were moved
    std::vector<std::string> names;  ///< new names
};
[[nodiscard]] MovedAside moveEarlierRecordingAside(const std::string& name);

}  // namespace tarno2

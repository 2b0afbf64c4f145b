#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/storage/recording_journal.h"

namespace tarno2 {

/// What came of a recording that was cut off: by a crash, a power cut, a killed program.
struct RecoveryReport {
    enum class Outcome {
        Recovered,
        InProgress,
        OtherUsers,  ///< nobody has asked for it by its name
        LeftAlone,   ///< it is called like a journal and is none that this version knows
        Failed
    };
    Outcome outcome = Outcome::Failed;
    std::string name;     ///< its first data file; its journal when that can't be read
    uint64_t frames = 0;  ///< in all its files
    uint32_t lastPiece = 0;
    std::string problem;  ///< why it failed, in English

    /// What to tell the user, in the current language.
    [[nodiscard]] std::string text() const;
};

/// Recovers the recording with this journal, whoever's it is: cuts the file that was being written to whole frames,
/// describes it, and removes the journal. Files that were finished before are left as they are, and everything is when
/// another program still writes the recording or the file is no journal. Nothing when the recording had not begun:
/// there was nothing to recover. Doing it again after it was interrupted comes to the same end. Every outcome is a line
/// in the debug log. Any thread.
[[nodiscard]] std::optional<RecoveryReport> recoverRecording(const std::string& journalName);
/// The same with a journal that was found and is held; it is kept, for the recording to come.
[[nodiscard]] std::optional<RecoveryReport> recoverRecording(RecordingJournal& journal);

/// Recovers every unfinished recording of this user in a folder (empty: the current one). What this program records
/// itself is passed over. Once `stop` is true it ends after the current recording; null: it is not interrupted.
[[nodiscard]] std::vector<RecoveryReport> recoverFolder(const std::string& folder,
                                                        const std::atomic<bool>* stop = nullptr);

/// Waits while another thread of this program recovers a recording of that journal's name. False when none does.
bool waitForRecoveryOf(const std::string& journalName);

/// The journal of the unfinished recording that a file belongs to: the file may be the journal, a data file, a piece or
/// a description. Empty when there is none.
[[nodiscard]] std::string journalOfFile(const std::string& fileName);

/// Names of the files in a folder that are called like journals, whatever they are.
[[nodiscard]] std::vector<std::string> journalsIn(const std::string& folder);

}  // namespace tarno2

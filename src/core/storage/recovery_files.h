#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "config/files/recording_name.h"
#include "core/storage/recording_journal.h"
#include "platform/os_error.h"

namespace tarno2 {

/// What came of the data files of a recording that was cut off.
struct FinishedFiles {
    uint64_t frames = 0;  ///< in all of them
    std::string problem;  ///< why they could not be finished, in English; empty when they are
};

/// Makes the data files whole that the held journal tells of: cuts the one that was being written to whole frames,
/// describes it or removes it when it has none, and removes the empty ones that were made ahead. Only regular files of
/// the journal's own folder are opened, changed or removed, and none that another program writes or that has a journal
/// or a name besides. Interrupted and done again it comes to the same end.
[[nodiscard]] FinishedFiles finishFiles(RecordingJournal& journal);

/// The numbers of a recording's data files that are there, up to `last`, in ascending order. When the folder can't be
/// read to its end some may be missing; `error`, unless null, gets the reason, or ok.
[[nodiscard]] std::set<uint32_t> piecesUpTo(const RecordingName& name, uint32_t last, OsError* error = nullptr);

/// The first data file of the recording with this journal.
[[nodiscard]] std::string dataNameOf(const RecordingJournal& journal);

}  // namespace tarno2

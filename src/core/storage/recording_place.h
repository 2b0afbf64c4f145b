#pragma once

#include <string>
#include <vector>

#include "core/storage/recording_journal.h"
#include "core/storage/writer_setup.h"

namespace tarno2 {

/// What was found where a recording is to be written.
struct PlaceFindings {
    bool nameTaken = false;               ///< somebody else has that name: another one may do
    std::string problem;                  ///< why nothing can be recorded there; empty when it can
    std::vector<std::string> movedAside;  ///< new names of the files of an earlier recording
};

/// Makes the place for a recording ready: makes the folders, takes the journal, finishes a recording of that name that
/// was cut off, and moves what an earlier one has left out of the way. A name is refused when another program records
/// under it or under one that may lead to the same files, when a journal of another user's is there, when something
/// stands in the place of its journal that is none, and when it had to be free and is not. Recordings that were cut off
/// and may have files of the same names are finished first. From then on no other program makes or moves files of that
/// name, or of its pieces. Without a journal, where none can be made, the recording goes on and the debug log says so.
/// Window thread.
[[nodiscard]] PlaceFindings preparePlace(const WriterSetup& setup, RecordingJournal& journal);

}  // namespace tarno2

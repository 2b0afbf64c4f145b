#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/journal_text.h"
#include "records/record_description.h"

namespace tarno2 {

/// What a recording could not do to a closed file at once (no file can be opened, no space) and tries again later: data
/// files without a description, and empty ones that are still there. An object belongs to one thread at a time.
class UnfinishedFiles {
public:
    /// Writes the description of a data file with so many bytes. False when that failed: the file and its description
    /// are kept. `state.piece` has to be there.
    bool describe(const std::string& name, uint64_t bytes, const JournalState& state, RecordDescription& description);
    /// Removes an empty file, which is kept when that failed.
    void removeEmpty(const std::string& name);
    /// The file is to be removed at the end if it is empty then.
    void removeEmptyLater(const std::string& name) { emptyFiles_.push_back(name); }

    /// Tries once more to write the descriptions. True when one was written.
    bool describeLate();
    /// Tries once more, for the last time, to remove what is empty still. What went wrong.
    [[nodiscard]] std::vector<std::string> removeLate();

    [[nodiscard]] bool allDescribed() const { return undescribed_.empty(); }
    /// The pieces without a description, the oldest first.
    [[nodiscard]] std::vector<PieceState> undescribedPieces() const;
    /// Why the oldest of them has none. While there is one.
    [[nodiscard]] std::string problem() const;

private:
    /// A file without a description, and what that is to tell.
    struct Undescribed {
        std::string name;
        uint64_t bytes = 0;
        JournalState state;
        RecordDescription description;
        std::string problem;
    };

    std::vector<Undescribed> undescribed_;
    std::vector<std::string> emptyFiles_;
};

}  // namespace tarno2

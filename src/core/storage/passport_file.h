#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/storage/recording_journal.h"
#include "records/passport.h"

namespace tarno2 {

/// The passport of a recording while it is made: written when it begins, and anew, whole, when it ends. What goes wrong
/// with it is told and ends nothing. An object belongs to one thread at a time.
class PassportFile {
public:
    /// `known`: what is known before the first sample; nothing: no passport is made.
    void open(const std::string& dataName, std::optional<Passport> known);
    /// Puts the passport of a recording that runs beside its first file. What went wrong, empty when nothing did.
    [[nodiscard]] std::string begin() const;

    /// A data file has been closed; `name` has its folder.
    void addPiece(const std::string& name, uint64_t bytes, uint64_t frameBytes, uint64_t records);
    /// The next record was triggered by that frame of the stream.
    void addTrigger(uint64_t streamFrame);
    /// How the recording ended.
    void setEnd(PassportEnd end);
    /// So many moments were marked, as that file lists.
    void setMarks(const std::string& name, uint64_t count);
    /// The disk did not take the last samples.
    void setDiskFailure(const std::string& words, const PassportLoss& loss);
    /// Puts the whole passport in place of the first one, or removes that of a recording without a sample. What went
    /// wrong, empty when nothing did.
    [[nodiscard]] std::string finish();
    /// The passport that `finish` has written; nothing when there is none.
    [[nodiscard]] std::optional<Passport> take();

private:
    [[nodiscard]] std::string write() const;

    std::string name_;
    std::optional<Passport> passport_;
};

/// Completes the passport of a recording that was cut off and whose data files are finished, by what the files and the
/// held journal tell. One that is complete, and a file of that name that is none of this recording, stay as they are.
/// What went wrong, empty when nothing did.
[[nodiscard]] std::string completePassport(const RecordingJournal& journal);

}  // namespace tarno2

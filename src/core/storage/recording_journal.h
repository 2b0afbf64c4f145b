#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "platform/file.h"
#include "records/journal_text.h"

namespace tarno2 {

/// What stands under the name of a journal.
enum class JournalFound {
    Nothing,
    Ours,      ///< a journal that nobody holds
    NotBegun,  ///< an empty file with the ending of a journal: a recording that had not begun to make it
    InUse,     ///< held by who records, or who recovers
    Foreign    ///< anything else, also a journal of a later version: left alone
};

/// The journal of a recording: a file `<base>.tarno2-journal` beside the data files, which is there from before the
/// first sample until everything is closed and described. Who records holds it locked, so that nobody else writes files
/// of that name, and a journal that nobody holds tells of a recording that was cut off. It never grows: a full disk
/// does not keep it from being brought up to date. Only a file that was seen to be a journal is opened for writing,
/// changed or removed. An object belongs to one thread at a time.
class RecordingJournal {
public:
    RecordingJournal() = default;
    /// Lets go of the journal; one that was not removed stays.
    ~RecordingJournal() { release(); }
    RecordingJournal(const RecordingJournal&) = delete;
    RecordingJournal& operator=(const RecordingJournal&) = delete;

    /// Looks what is there, and holds it if it is a journal (`Ours`, `NotBegun`). What can't be read is `Foreign`.
    [[nodiscard]] JournalFound takeExisting(const std::string& name);
    /// Looks what is there, without holding it. `Ours` may be held by somebody all the same. Nothing when it can't be
    /// read: it could be anything.
    [[nodiscard]] static std::optional<JournalFound> look(const std::string& name);
    /// Whether this program holds a journal of that name, in whatever folder. Any thread.
    [[nodiscard]] static bool isHeldHere(const std::string& name);
    /// Makes a journal with this state, whole and held as soon as it is there; alreadyExists when the name is taken.
    OsError create(const std::string& name, const JournalState& state);

    /// What a journal that was found says.
    [[nodiscard]] const JournalState& state() const { return state_; }
    /// Whether nobody else can hold it: not known where the file system has no locks.
    OsError confirmLock() { return file_.confirmLock(); }
    /// Whether it belongs to the user that this program runs as.
    [[nodiscard]] bool isOfThisUser() const { return file_.isOfThisUser(); }

    /// Begins anew with this state in place of the earlier one; at every moment one of the two is there.
    OsError begin(const JournalState& state);
    /// Puts a changed state in place of the last but one, and has it on the disk when it returns.
    OsError save(const JournalState& state);
    /// Everything is closed and described: the journal goes. An error when it could not be removed; it is let go of all
    /// the same.
    OsError remove();
    /// Lets go of the journal, which stays.
    void release();

    [[nodiscard]] bool held() const { return file_.isOpen(); }
    /// Whether the journal that is held still has its name.
    [[nodiscard]] Named named() const { return file_.named(name_); }
    [[nodiscard]] const std::string& name() const { return name_; }

private:
    void setHeld(bool held);

    File file_;
    std::string name_;
    JournalState state_;
    uint64_t sequence_ = 0;  ///< of the newest state
    /// Its place among the journals that this program holds.
    std::optional<std::multiset<std::string>::const_iterator> heldName_;
};

}  // namespace tarno2

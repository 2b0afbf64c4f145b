#pragma once

#include <cstddef>
#include <string>

#include "core/journal_text.h"
#include "platform/file.h"

namespace tarno2 {

/// The journal of a recording: a file `<base>.journal` beside the data files, which is there from before the first
/// sample until everything is closed and described. Who records holds it locked, so that nobody else writes files of
/// that name, and a journal that nobody holds tells of a recording that was cut off. It never grows: a full disk does
/// not keep it from being brought up to date. An object belongs to one thread at a time.
class RecordingJournal {
public:
    RecordingJournal() = default;
    /// Lets go of the journal; one that was not removed stays.
    ~RecordingJournal() = default;
    RecordingJournal(const RecordingJournal&) = delete;
    RecordingJournal& operator=(const RecordingJournal&) = delete;

    /// Holds the journal of that name, making it when there is none. The error is `inUse` when somebody else holds it.
    OsError take(const std::string& name) { return hold(name, FileMode::OpenAlways); }
    /// Holds a journal that is there.
    OsError takeExisting(const std::string& name) { return hold(name, FileMode::OpenExisting); }
    /// Whether nobody else can hold it: not known where the file system has no locks.
    OsError confirmLock() { return file_.confirmLock(); }
    /// What it contains.
    OsError read(std::string& contents);

    /// Begins anew with this state, which has no piece.
    OsError begin(const JournalState& state);
    /// Puts a changed state in place of the last but one, and has it on the disk when it returns.
    OsError save(JournalState& state);
    /// Everything is closed and described: the journal goes.
    void remove();
    /// Lets go of the journal, which stays.
    void release() { file_.close(); }

    [[nodiscard]] bool held() const { return file_.isOpen(); }
    [[nodiscard]] const std::string& name() const { return name_; }

private:
    OsError hold(const std::string& name, FileMode mode);
    OsError put(const JournalState& state);

    File file_;
    std::string name_;
};

}  // namespace tarno2

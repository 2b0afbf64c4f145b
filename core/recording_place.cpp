#include "core/recording_place.h"

#include <string_view>
#include <utility>

#include "config/debug_log.h"
#include "config/file_naming.h"
#include "core/recovery.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/codepage1251.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

/// Whether `name` is "<base>_<digits>", what a piece of `base` is called.
bool isPieceOf(std::string_view name, std::string_view base) {
    return name.size() > base.size() + 1 && name.starts_with(base) && name[base.size()] == '_' &&
           name.find_first_not_of("0123456789", base.size() + 1) == std::string_view::npos;
}

/// Looks for a journal and holds it. One that this program itself is just recovering is waited for.
JournalFound take(const std::string& name, RecordingJournal& journal) {
    JournalFound found = journal.takeExisting(name);
    for (bool waited = true; waited && found == JournalFound::InUse;) {
        waited = waitForRecoveryOf(name);
        found = journal.takeExisting(name);
    }
    return found;
}

/// The journal of another recording that runs and has data files with the names of our pieces, or we of its. Empty when
/// there is none.
std::string runningNeighbour(const std::string& fileName) {
    const std::string base = recordingBase(fileName);
    for (const std::string& name : journalsIn(parentFolder(fileName))) {
        const std::string other = recordingBase(name);
        RecordingJournal journal;
        if ((isPieceOf(other, base) || isPieceOf(base, other)) && take(name, journal) == JournalFound::InUse) {
            return name;
        }
    }
    return {};
}

void logJournal(const std::string& name, const OsError& error) {
    DEBUG_LOG("!!!!! No journal \"%s\": %s", name.c_str(), error.text().c_str());
}

/// Makes a place ready, step by step.
class Place {
public:
    Place(const WriterSetup& setup, RecordingJournal& journal) : setup_(setup), journal_(journal) {}

    PlaceFindings prepare() {
        const std::string name = journalNameFor(setup_.fileName);
        if (!finish(earlierJournalNameFor(setup_.fileName), earlier_) || !finish(name, journal_) ||
            !keepOthersOut(name)) {
            giveBack();
            return findings_;
        }
        MovedAside moved = moveEarlierRecordingAside(setup_.fileName);
        findings_.movedAside = std::move(moved.names);
        if (!moved.error.ok()) {
            findings_.problem = text(TextId::EarlierRecordingNotMoved) + ": " + moved.error.text();
            giveBack();
            return findings_;
        }
        keepUnfinished(moved.newName);
        return findings_;
    }

private:
    bool refuse(TextId why, const std::string& name, const char* line) {
        findings_.nameTaken = true;
        findings_.problem = formatText(text(why).c_str(), systemTextToCp1251(name).c_str());
        DEBUG_LOG(line, name.c_str());
        return false;
    }

    /// Holds a journal that was left there, and finishes its recording. False when the name can't be had.
    bool finish(const std::string& name, RecordingJournal& journal) {
        const JournalFound found = take(name, journal);
        if (found == JournalFound::InUse) {
            return refuse(TextId::FileInUse, setup_.fileName, "!!!!! \"%s\" is in use by another program");
        }
        if (found == JournalFound::Foreign) {
            // Under its earlier name ours would not stand.
            return name.ends_with(kEarlierJournalExtension) ||
                   refuse(TextId::JournalInTheWay, name, "!!!!! \"%s\" is no journal of this version, and in the way");
        }
        if (found == JournalFound::Nothing) {
            return true;
        }
        if (!journal.isOfThisUser()) {
            journal.release();
            return refuse(TextId::JournalOfOtherUser, name, "!!!!! \"%s\" is another user's, and in the way");
        }
        if (found == JournalFound::Ours) {
            const auto report = recoverRecording(journal);
            if (report && report->outcome == RecoveryReport::Outcome::Failed) {
                return true;
            }
        }
        journal.remove();
        return true;
    }

    /// From here on the name, and those of its pieces, are ours.
    bool keepOthersOut(const std::string& name) {
        if (!journal_.held()) {
            const OsError error = journal_.create(name, setup_.journalState());
            if (error.inUse() || error.alreadyExists()) {
                return refuse(TextId::FileInUse, setup_.fileName, "!!!!! \"%s\" is in use by another program");
            }
            if (!error.ok()) {
                logJournal(name, error);
            }
            isNew_ = error.ok();
        }
        const std::string other = runningNeighbour(setup_.fileName);
        return other.empty() || refuse(TextId::FileInUse, other, "!!!!! \"%s\" is in use by another program");
    }

    /// Keeps a journal whose recording could not be finished for who wants to look into it, beside the files that it
    /// belongs to.
    void keepUnfinished(const std::string& dataName) {
        if (!isNew_ && journal_.held()) {
            copyTo(journalNameFor(dataName), journal_);
            if (const OsError error = journal_.begin(setup_.journalState()); !error.ok()) {
                logJournal(journal_.name(), error);
                journal_.remove();
            }
        }
        if (earlier_.held() && copyTo(journalNameFor(dataName), earlier_)) {
            earlier_.remove();
        }
    }

    static bool copyTo(const std::string& name, const RecordingJournal& journal) {
        RecordingJournal copy;
        const OsError error = copy.create(name, journal.state());
        if (!error.ok()) {
            logJournal(name, error);
        }
        return error.ok();
    }

    /// Nothing is recorded here: a journal that was not there before goes.
    void giveBack() {
        if (isNew_) {
            journal_.remove();
        }
        journal_.release();
    }

    const WriterSetup& setup_;
    RecordingJournal& journal_;
    RecordingJournal earlier_;  ///< one that an earlier version has left
    bool isNew_ = false;
    PlaceFindings findings_;
};

}  // namespace

PlaceFindings preparePlace(const WriterSetup& setup, RecordingJournal& journal) {
    if (const OsError error = createFoldersFor(setup.fileName); !error.ok()) {
        PlaceFindings findings;
        findings.problem = error.text();
        return findings;
    }
    return Place(setup, journal).prepare();
}

}  // namespace tarno2

#include "core/storage/recording_place.h"

#include <utility>

#include "config/files/file_naming.h"
#include "config/files/move_aside.h"
#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "core/storage/recovery.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/codepage1251.h"
#include "platform/paths.h"
#include "records/file_extensions.h"

namespace tarno2 {

namespace {

/// Whether the recording with this journal may have files with the names of ours, or we of its, on this disk.
bool isNeighbour(const RecordingName& own, const std::string& journalName) {
    const RecordingName other = RecordingName::ofJournal(journalName);
    if (!own.mayShareFilesWith(other) || isSameFile(journalName, own.journal()) ||
        isSameFile(journalName, own.earlierJournal())) {
        return false;
    }
    // Where letters' case counts, one in other letters has other files.
    const auto piece = own.pieceOf(journalName);
    const RecordingName inOurLetters = piece ? RecordingName(own.piece(*piece)) : own.whole().value_or(own);
    return isSameFile(inOurLetters.base() + journalName.substr(other.base().size()), journalName);
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

void logJournal(const std::string& name, const OsError& error) {
    DEBUG_LOG("!!!!! No journal \"%s\": %s", name.c_str(), error.text().c_str());
}

/// Makes a place ready, step by step. Each step is false when nothing can be recorded there.
class Place {
public:
    Place(const WriterSetup& setup, RecordingJournal& journal)
        : setup_(setup), name_(setup.fileName), journal_(journal) {}

    PlaceFindings prepare() {
        if (!finish(name_.earlierJournal(), earlier_) || !finish(name_.journal(), journal_) || !finishNeighbours() ||
            !keepOthersOut() || !makeRoom()) {
            giveBack();
        }
        return findings_;
    }

private:
    bool refuse(TextId why, const std::string& name, const char* line) {
        findings_.nameTaken = true;
        findings_.problem = formatText(text(why).c_str(), systemTextToCp1251(name).c_str());
        DEBUG_LOG(line, name.c_str());
        return false;
    }

    /// Holds a journal that was left there, and finishes its recording. False when the name is not available.
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
        if (const OsError error = journal.remove(); !error.ok()) {
            DEBUG_LOG("!!!!! The journal \"%s\" could not be removed: %s", name.c_str(), error.text().c_str());
        }
        return true;
    }

    /// From here on the name, and those of its pieces, are ours.
    bool keepOthersOut() {
        isNew_ = !journal_.held();
        const OsError error = isNew_ ? journal_.create(name_.journal(), setup_.journalState()) : OsError();
        if (error.inUse() || error.alreadyExists()) {
            return refuse(TextId::FileInUse, setup_.fileName, "!!!!! \"%s\" is in use by another program");
        }
        if (!error.ok()) {
            logJournal(name_.journal(), error);
        }
        isNew_ = isNew_ && error.ok();
        // One that has begun meanwhile did not see our journal, or we see its.
        return forNeighbours([](RecordingJournal& /*found*/) { return true; });
    }

    /// Recordings that were cut off and may have files of the same names are finished before these are made or moved.
    /// Before our own journal is there: a file that has one is no neighbour's any more.
    bool finishNeighbours() {
        return forNeighbours([this](RecordingJournal& found) { return finishNeighbour(found); });
    }

    /// Goes through the neighbours that were cut off; one that is being recorded is a refusal.
    template <typename Handle>
    bool forNeighbours(Handle handle) {
        for (const std::string& name : journalsIn(name_.folder())) {
            if (!isNeighbour(name_, name)) {
                continue;
            }
            RecordingJournal other;
            const JournalFound found = take(name, other);
            if (found == JournalFound::InUse) {
                return refuse(TextId::FileInUse, name, "!!!!! \"%s\" is in use by another program");
            }
            if (found == JournalFound::Ours && !handle(other)) {
                return false;
            }
        }
        return true;
    }

    bool finishNeighbour(RecordingJournal& other) {
        if (!other.isOfThisUser()) {
            return refuse(TextId::JournalOfOtherUser, other.name(), "!!!!! \"%s\" is another user's, and in the way");
        }
        const auto report = recoverRecording(other);
        if (!report || report->outcome == RecoveryReport::Outcome::Recovered) {
            other.remove();
        }
        return true;
    }

    /// Moves an earlier recording out of the way. The journal tells of it, so that a move that is cut off is finished
    /// by who finds the journal.
    bool makeRoom() {
        // What else an earlier recording may have left is moved as ever.
        if (setup_.freeName && (fileExists(name_.data()) || fileExists(name_.description()))) {
            return refuse(TextId::FileInUse, setup_.fileName, "!!!!! \"%s\" was taken by another program");
        }
        const uint32_t n = freeOldNumber(name_);
        const bool marked = isNew_ && hasFilesToMove(name_);
        if (marked) {
            JournalState state = setup_.journalState();
            state.aside = n;
            beginJournal(state);
        }
        MovedAside moved = moveAside(name_, n);
        findings_.movedAside = std::move(moved.names);
        if (moved.error.inUse()) {
            return refuse(TextId::FileInUse, moved.file, "!!!!! \"%s\" is in use by another program");
        }
        if (!moved.error.ok()) {
            findings_.problem =
                text(TextId::EarlierRecordingNotMoved) + ": " +
                systemTextToCp1251(formatText("\"%s\": %s", moved.file.c_str(), moved.error.text().c_str()));
            return false;
        }
        keepUnfinished(name_.old(n).journal());
        if (marked) {
            beginJournal(setup_.journalState());
        }
        return true;
    }

    void beginJournal(const JournalState& state) {
        if (const OsError error = journal_.begin(state); !error.ok()) {
            logJournal(journal_.name(), error);
            journal_.remove();
        }
    }

    /// Keeps a journal whose recording could not be finished for who wants to look into it, beside the files that it
    /// belongs to.
    void keepUnfinished(const std::string& newName) {
        if (!isNew_ && journal_.held()) {
            copyTo(newName, journal_);
            beginJournal(setup_.journalState());
        }
        if (earlier_.held() && copyTo(newName, earlier_)) {
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

    /// Nothing is recorded here: a journal that was not there before goes, unless it tells of files that could not be
    /// moved back.
    void giveBack() {
        if (isNew_ && findings_.movedAside.empty()) {
            journal_.remove();
        }
        journal_.release();
    }

    const WriterSetup& setup_;
    RecordingName name_;
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

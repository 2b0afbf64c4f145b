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

/// The journal of another recording that runs and has data files with the names of our pieces, or we of its. Empty when
/// there is none.
std::string runningNeighbour(const std::string& fileName) {
    const std::string base = recordingBase(fileName);
    for (const std::string& name : journalsIn(parentFolder(fileName))) {
        const std::string other = recordingBase(name);
        RecordingJournal journal;
        if ((isPieceOf(other, base) || isPieceOf(base, other)) && journal.takeExisting(name).inUse()) {
            return name;
        }
    }
    return {};
}

PlaceFindings inUse(const std::string& name) {
    PlaceFindings findings;
    findings.inUse = true;
    findings.problem = formatText(text(TextId::FileInUse).c_str(), systemTextToCp1251(name).c_str());
    DEBUG_LOG("!!!!! \"%s\" is in use by another program", name.c_str());
    return findings;
}

void logJournal(const std::string& name, const OsError& error) {
    DEBUG_LOG("!!!!! No journal \"%s\": %s", name.c_str(), error.text().c_str());
}

/// Keeps a journal that could not be used for who wants to look into it, beside the files that it belongs to.
void keepCopy(const std::string& contents, const std::string& dataName) {
    const std::string name = journalNameFor(dataName);
    File file;
    size_t done = 0;
    OsError error = file.open(name, FileMode::CreateNew, FileAccess::Write, FileShare::ReadWrite);
    if (error.ok()) {
        error = file.write(contents.data(), contents.size(), done);
    }
    if (!error.ok()) {
        logJournal(name, error);
    }
}

/// Nothing is recorded here: a journal that was not there before goes.
void giveBack(RecordingJournal& journal, const std::string& found) {
    if (found.empty()) {
        journal.remove();
    }
    journal.release();
}

}  // namespace

PlaceFindings preparePlace(const WriterSetup& setup, RecordingJournal& journal) {
    PlaceFindings findings;
    if (const OsError error = createFoldersFor(setup.fileName); !error.ok()) {
        findings.problem = error.text();
        return findings;
    }
    OsError error = journal.take(journalNameFor(setup.fileName));
    if (error.inUse()) {
        return inUse(setup.fileName);
    }
    std::string found;
    if (error.ok()) {
        error = journal.read(found);
    }
    if (!error.ok()) {
        logJournal(journal.name(), error);
    }
    if (const std::string other = runningNeighbour(setup.fileName); !other.empty()) {
        giveBack(journal, found);
        return inUse(other);
    }
    bool unusable = false;
    if (!found.empty()) {
        const auto report = recoverRecording(journal);
        unusable = report && report->outcome == RecoveryReport::Outcome::Failed;
    }
    MovedAside moved = moveEarlierRecordingAside(setup.fileName);
    findings.movedAside = std::move(moved.names);
    if (!moved.error.ok()) {
        findings.problem = text(TextId::EarlierRecordingNotMoved) + ": " + moved.error.text();
        giveBack(journal, found);
        return findings;
    }
    if (unusable) {
        keepCopy(found, moved.newName);
    }
    if (journal.held()) {
        error = journal.begin(setup.journalState());
        if (!error.ok()) {
            logJournal(journal.name(), error);
            journal.remove();
        }
    }
    return findings;
}

}  // namespace tarno2

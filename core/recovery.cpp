#include "core/recovery.h"

#include <set>
#include <string_view>
#include <utility>

#include "config/debug_log.h"
#include "config/figure_text.h"
#include "config/file_naming.h"
#include "core/piece_description.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/codepage1251.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

constexpr std::string_view kJournalExtension = ".journal";

RecoveryReport failed(std::string name, const std::string& problem) {
    DEBUG_LOG("!!!!! \"%s\" not recovered: %s", name.c_str(), problem.c_str());
    return {RecoveryReport::Outcome::Failed, std::move(name), 0, problem};
}

std::string baseOf(const std::string& journalName) {
    return journalName.substr(0, journalName.size() - kJournalExtension.size());
}

uint64_t sizeOf(const std::string& name) {
    File file;
    uint64_t bytes = 0;
    if (file.open(name, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite).ok() &&
        !file.size(bytes).ok()) {
        bytes = 0;
    }
    return bytes;
}

void removeEmptyFile(const std::string& name) {
    if (fileExists(name) && !isDirectory(name) && sizeOf(name) == 0) {
        removeFile(name);
    }
}

/// Whether any file could belong to a recording whose journal tells nothing.
bool hasOtherFiles(const std::string& journalName) {
    const std::string base = fileNameOf(baseOf(journalName));
    const std::string folder = parentFolder(journalName);
    for (const std::string& name : listDirectory(folder.empty() ? "." : folder)) {
        if (name.starts_with(base) && name != fileNameOf(journalName)) {
            return true;
        }
    }
    return false;
}

/// The events of a file with so many bytes. Records have one size, and their points grow by the prehistory.
void addEvents(const PieceState& piece, uint64_t bytes, RecordDescription& description) {
    if (piece.recordBytes == 0) {
        return;
    }
    SynchroEvent event = piece.firstEvent;
    for (uint64_t begin = 0; begin < bytes; begin += piece.recordBytes) {
        description.addSynchroEvent(event);
        event.point += event.prehistory;
    }
}

/// Cuts a file to whole frames; `bytes` gets what it has then.
OsError cutToFrames(const std::string& name, uint64_t frameBytes, uint64_t& bytes) {
    File file;
    OsError error = file.open(name, FileMode::OpenExisting, FileAccess::ReadWrite, FileShare::None);
    uint64_t size = 0;
    if (error.ok()) {
        error = file.size(size);
    }
    bytes = size / frameBytes * frameBytes;
    if (error.ok() && bytes != size) {
        error = file.truncate(bytes);
    }
    return error.ok() ? file.flush() : error;
}

/// Finishes the data file at hand. What went wrong, empty when nothing did.
std::string finishPiece(const std::string& dataName, const JournalState& state) {
    const std::string name = pieceName(dataName, state.piece->number);
    const std::string next = pieceName(dataName, state.piece->number + 1);
    if (!fileExists(name)) {
        return "\"" + name + "\" is missing";
    }
    if (fileExists(next) && !fileExists(RecordDescription::fileNameFor(next)) && sizeOf(next) != 0) {
        return "the journal does not tell of \"" + next + "\"";
    }
    uint64_t bytes = 0;
    if (const OsError error = cutToFrames(name, state.frameBytes(), bytes); !error.ok()) {
        return "\"" + name + "\": " + error.text();
    }
    if (bytes == 0) {
        removeFile(name);
    } else {
        RecordDescription description;
        state.facts.describe(description);
        addEvents(*state.piece, bytes, description);
        if (std::string problem = describeDataFile(name, bytes, state, description); !problem.empty()) {
            return "\"" + name + "\": " + problem;
        }
    }
    removeEmptyFile(next);
    static_cast<void>(flushFolder(parentFolder(dataName)));
    return {};
}

std::optional<RecoveryReport> recoverHeld(RecordingJournal& journal) {
    std::string contents;
    if (const OsError error = journal.read(contents); !error.ok()) {
        return failed(journal.name(), error.text());
    }
    const auto state = readJournal(contents);
    if (!state && !hasOtherFiles(journal.name())) {
        return std::nullopt;
    }
    if (!state) {
        return failed(journal.name(), "the journal is damaged");
    }
    const std::string dataName = baseOf(journal.name()) + state->extension;
    if (!state->piece) {
        removeEmptyFile(dataName);
        return std::nullopt;
    }
    if (std::string problem = finishPiece(dataName, *state); !problem.empty()) {
        return failed(dataName, problem);
    }
    RecoveryReport report{RecoveryReport::Outcome::Recovered, dataName, 0, {}};
    for (uint32_t piece = 0; piece <= state->piece->number; ++piece) {
        report.frames += sizeOf(pieceName(dataName, piece)) / state->frameBytes();
    }
    DEBUG_LOG("\"%s\" recovered, %llu frames", dataName.c_str(), static_cast<unsigned long long>(report.frames));
    return report;
}

}  // namespace

std::string RecoveryReport::text() const {
    const std::string shownName = systemTextToCp1251(name);
    switch (outcome) {
        case Outcome::Recovered:
            return formatText(tarno2::text(TextId::RecordingRecovered).c_str(), shownName.c_str(),
                              formatCount(frames).c_str());
        case Outcome::InProgress:
            return formatText(tarno2::text(TextId::RecordingInProgress).c_str(), shownName.c_str());
        case Outcome::Failed:
            break;
    }
    return formatText(tarno2::text(TextId::RecordingNotRecovered).c_str(), shownName.c_str(),
                      systemTextToCp1251(problem).c_str());
}

std::optional<RecoveryReport> recoverRecording(RecordingJournal& journal) {
    // On a file system without locks a program that still writes could not be told from one that is gone.
    if (const OsError error = journal.confirmLock(); !error.ok()) {
        return failed(journal.name(), "it is not known whether another program still writes it: " + error.text());
    }
    return recoverHeld(journal);
}

std::optional<RecoveryReport> recoverRecording(const std::string& journalName) {
    RecordingJournal journal;
    const OsError error = journal.takeExisting(journalName);
    if (error.notFound()) {
        return std::nullopt;
    }
    if (error.inUse()) {
        DEBUG_LOG("\"%s\" is held by another program", journalName.c_str());
        return RecoveryReport{RecoveryReport::Outcome::InProgress, baseOf(journalName), 0, {}};
    }
    if (!error.ok()) {
        return failed(journalName, error.text());
    }
    auto report = recoverRecording(journal);
    if (!report || report->outcome == RecoveryReport::Outcome::Recovered) {
        journal.remove();
    }
    return report;
}

std::vector<RecoveryReport> recoverFolder(const std::string& folder) {
    std::vector<RecoveryReport> reports;
    for (const std::string& journal : journalsIn(folder)) {
        if (auto report = recoverRecording(journal)) {
            reports.push_back(std::move(*report));
        }
    }
    return reports;
}

std::vector<RecoveryReport> recoverFoldersOf(const std::vector<std::string>& dataNames) {
    std::set<std::string> folders;
    for (const std::string& name : dataNames) {
        if (!name.empty()) {
            folders.insert(parentFolder(name));
        }
    }
    std::vector<RecoveryReport> reports;
    for (const std::string& folder : folders) {
        for (RecoveryReport& report : recoverFolder(folder)) {
            reports.push_back(std::move(report));
        }
    }
    return reports;
}

std::vector<std::string> journalsIn(const std::string& folder) {
    std::vector<std::string> journals;
    for (const std::string& name : listDirectory(folder.empty() ? "." : folder)) {
        if (name.size() > kJournalExtension.size() && name.ends_with(kJournalExtension)) {
            journals.push_back(joinPath(folder, name));
        }
    }
    return journals;
}

std::string journalOfFile(const std::string& fileName) {
    if (fileName.ends_with(kJournalExtension)) {
        return fileExists(fileName) ? fileName : std::string();
    }
    std::string journal = journalNameFor(fileName);
    if (fileExists(journal)) {
        return journal;
    }
    // A piece: "<base>_<number>" belongs to "<base>".
    const std::string base = baseOf(journal);
    const size_t digits = base.find_last_not_of("0123456789") + 1;
    if (digits < 2 || digits == base.size() || base[digits - 1] != '_') {
        return {};
    }
    journal = base.substr(0, digits - 1).append(kJournalExtension);
    return fileExists(journal) ? journal : std::string();
}

}  // namespace tarno2

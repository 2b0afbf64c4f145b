#include "core/storage/recovery_files.h"

#include <algorithm>
#include <limits>

#include "config/files/file_naming.h"
#include "config/files/move_aside.h"
#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "core/storage/piece_description.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

constexpr uint32_t kMadeAhead = 2;  // files that a recorder may have made behind the one that the journal tells of
constexpr uint64_t kMostEvents = 250'000;  // a description with more is longer than its readers take

std::string quoted(const std::string& name) {
    return "\"" + name + "\"";
}

/// Whose a data file is: of another recording when a journal is named after it.
enum class Owner { This, Other, Unknown };

Owner ownerOf(const std::string& dataFile, const std::string& ownJournal) {
    const std::string present = RecordingName(dataFile).journal();
    const std::string earlier = RecordingName(dataFile).earlierJournal();
    // What has the present ending may be a journal that was damaged; the earlier one is common.
    const auto found = present == ownJournal ? JournalFound::Nothing : RecordingJournal::look(present);
    if (!found) {
        return Owner::Unknown;
    }
    if (found != JournalFound::Nothing && found != JournalFound::NotBegun) {
        return Owner::Other;
    }
    // Of two journals of the same base the present one counts.
    const auto old = earlier == ownJournal ? JournalFound::Nothing : RecordingJournal::look(earlier);
    const bool others = old == JournalFound::InUse || (old == JournalFound::Ours && present != ownJournal);
    return others ? Owner::Other : Owner::This;
}

std::string unreadableJournal(const std::string& dataFile) {
    return quoted(RecordingName(dataFile).journal()) + " can not be read";
}

/// The data file is opened so that it can be changed. What is in the way, empty when nothing is.
std::string openDataFile(const std::string& name, const std::string& ownJournal, File& file) {
    if (!fileExists(name)) {
        return quoted(name) + " is missing";
    }
    if (!isPlainFile(name)) {
        return quoted(name) + " is a link, or no file";
    }
    if (const Owner owner = ownerOf(name, ownJournal); owner != Owner::This) {
        return owner == Owner::Unknown ? unreadableJournal(name)
                                       : quoted(name) + " belongs to another recording, which is not finished";
    }
    const OsError error = file.openPlain(name, FileMode::OpenExisting, FileAccess::ReadWriteRemove, FileShare::Read);
    if (error.inUse()) {
        return quoted(name) + " is in use by another program";
    }
    if (!error.ok()) {
        return quoted(name) + ": " + error.text();
    }
    return file.hasOtherNames() ? quoted(name) + " is also another file: it has a second name" : std::string();
}

/// Cuts a file to whole frames; `bytes` gets what it has then.
OsError cutToFrames(File& file, uint64_t frameBytes, uint64_t& bytes) {
    uint64_t size = 0;
    OsError error = file.size(size);
    bytes = size / frameBytes * frameBytes;
    if (error.ok() && bytes != size) {
        error = file.truncate(bytes);
    }
    return error.ok() ? file.flush() : error;
}

class Finisher {
public:
    explicit Finisher(RecordingJournal& journal)
        : journal_(journal), state_(journal.state()), dataName_(dataNameOf(journal)) {}

    FinishedFiles finish() {
        FinishedFiles result;
        // A recorder makes its first file, and the next one, before it has data.
        uint64_t empty = 0;
        uint64_t lastEmpty = kMadeAhead - 1;
        if (!state_.piece && state_.aside) {
            // What made room for a recording that never began is put together.
            static_cast<void>(moveAside(RecordingName(dataName_), *state_.aside));
        }
        result.problem = describeEarlier();
        if (state_.piece && result.problem.empty()) {
            const bool wasDropped = state_.piece->dropped;
            result.problem = wasDropped ? std::string() : finishPiece();
            empty = uint64_t{state_.piece->number} + (wasDropped ? 0 : 1);
            lastEmpty = uint64_t{state_.piece->number} + kMadeAhead;
        }
        if (!result.problem.empty()) {
            return result;
        }
        for (; empty <= lastEmpty && result.problem.empty(); ++empty) {
            result.problem = removeMadeAhead(empty);
        }
        static_cast<void>(flushFolder(parentFolder(dataName_)));
        result.frames = countFrames();
        return result;
    }

private:
    std::string nameOf(uint64_t number) const {
        constexpr uint64_t kLast = std::numeric_limits<uint32_t>::max();
        return number > kLast ? std::string() : RecordingName(dataName_).piece(static_cast<uint32_t>(number));
    }

    std::string finishPiece() {
        const std::string name = RecordingName(dataName_).piece(state_.piece->number);
        const std::string next = nameOf(uint64_t{state_.piece->number} + 1);
        File file;
        if (std::string problem = openDataFile(name, journal_.name(), file); !problem.empty()) {
            return problem;
        }
        if (!next.empty() && plainFileSize(next).value_or(0) != 0 &&
            !fileExists(RecordDescription::fileNameFor(next)) && ownerOf(next, journal_.name()) != Owner::Other) {
            return "the journal does not tell of " + quoted(next);
        }
        uint64_t bytes = 0;
        OsError error = cutToFrames(file, state_.frameBytes(), bytes);
        if (error.ok() && bytes == 0) {
            // Said first: without the file nobody could tell this from a file that somebody took away.
            state_.piece->dropped = true;
            error = journal_.save(state_);
            return error.ok() ? removeOpen(file, name) : quoted(journal_.name()) + ": " + error.text();
        }
        return error.ok() ? describe(name, bytes, state_) : quoted(name) + ": " + error.text();
    }

    /// What was whole, and could not be described when it was. What somebody took away needs no description.
    std::string describeEarlier() {
        for (const PieceState& piece : state_.undescribed) {
            const std::string name = RecordingName(dataName_).piece(piece.number);
            if (!fileExists(name)) {
                continue;
            }
            File file;
            std::string problem = openDataFile(name, journal_.name(), file);
            uint64_t bytes = 0;
            if (problem.empty()) {
                const OsError error = file.size(bytes);
                JournalState own = state_;
                own.piece = piece;
                problem = error.ok() ? describe(name, bytes, own) : quoted(name) + ": " + error.text();
            }
            if (!problem.empty()) {
                return problem;
            }
        }
        return {};
    }

    static std::string removeOpen(File& file, const std::string& name) {
        const OsError error = file.removeNamed(name);
        return error.ok() ? std::string() : quoted(name) + ": " + error.text();
    }

    static std::string describe(const std::string& name, uint64_t bytes, const JournalState& state) {
        RecordDescription description;
        if (!state.facts.describe(description)) {
            return "no memory";
        }
        if (const uint64_t record = state.piece->recordBytes; record != 0) {
            const uint64_t events = bytes / record + (bytes % record != 0 ? 1 : 0);
            if (events > kMostEvents) {
                DEBUG_LOG("The description of \"%s\" has the first %llu events of %llu", name.c_str(),
                          static_cast<unsigned long long>(kMostEvents), static_cast<unsigned long long>(events));
            }
            description.setSynchroEvents(state.piece->firstEvent, std::min(events, kMostEvents));
        }
        return describeDataFile(name, bytes, state, description);
    }

    /// Removes a file that was made before there were data for it. Why that was not possible; empty also when there is
    /// none, or another recording's.
    std::string removeMadeAhead(uint64_t number) {
        const std::string name = nameOf(number);
        bool found = false;
        if (const OsError error = name.empty() ? OsError() : findFile(name, found); !error.ok()) {
            return quoted(name) + ": " + error.text();
        }
        if (!found || fileExists(RecordDescription::fileNameFor(name))) {
            return {};
        }
        if (const Owner owner = ownerOf(name, journal_.name()); owner != Owner::This) {
            return owner == Owner::Unknown ? unreadableJournal(name) : std::string();
        }
        File file;
        OsError error = file.openPlain(name, FileMode::OpenExisting, FileAccess::ReadWriteRemove, FileShare::Read);
        if (!error.ok()) {
            return isPlainFile(name) ? quoted(name) + ": " + error.text() : std::string();
        }
        uint64_t bytes = 0;
        error = file.size(bytes);
        if (error.ok() && bytes == 0 && !file.hasOtherNames()) {
            return removeOpen(file, name);
        }
        return error.ok() ? std::string() : quoted(name) + ": " + error.text();
    }

    uint64_t countFrames() const {
        if (!state_.piece) {
            return 0;
        }
        uint64_t frames = 0;
        const RecordingName name(dataName_);
        for (const uint32_t number : piecesUpTo(name, state_.piece->number)) {
            frames += plainFileSize(name.piece(number)).value_or(0) / state_.frameBytes();
        }
        return frames;
    }

    RecordingJournal& journal_;
    JournalState state_;
    std::string dataName_;
};

}  // namespace

// A folder has fewer names than a journal may count pieces.
std::set<uint32_t> piecesUpTo(const RecordingName& name, uint32_t last, OsError* error) {
    std::set<uint32_t> pieces;
    for (const std::string& file : listDirectory(name.folder().empty() ? "." : name.folder(), error)) {
        const auto number = name.pieceOf(file);
        if (number && *number <= last && file == fileNameOf(name.piece(*number))) {
            pieces.insert(*number);
        }
    }
    return pieces;
}

std::string dataNameOf(const RecordingJournal& journal) {
    return RecordingName::ofJournal(journal.name(), journal.state().extension).data();
}

FinishedFiles finishFiles(RecordingJournal& journal) {
    return Finisher(journal).finish();
}

}  // namespace tarno2

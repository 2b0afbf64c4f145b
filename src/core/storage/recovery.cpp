#include "core/storage/recovery.h"

#include <condition_variable>
#include <mutex>
#include <new>
#include <set>
#include <string_view>
#include <utility>

#include "config/files/figure_text.h"
#include "config/files/file_naming.h"
#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "core/storage/mark_writer.h"
#include "core/storage/passport_file.h"
#include "core/storage/recovery_files.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/codepage1251.h"
#include "platform/paths.h"
#include "records/file_extensions.h"

namespace tarno2 {

namespace {

using Outcome = RecoveryReport::Outcome;

/// The recoveries that threads of this program are at, by the names of the journals without their folders: two
/// spellings of a folder are one.
class RunningRecoveries {
public:
    using Running = std::multiset<std::string>::const_iterator;

    Running begin(const std::string& journalName) {
        const std::scoped_lock lock(mutex_);
        return names_.insert(fileNameOf(journalName));
    }
    void end(Running recovery) noexcept {
        {
            const std::scoped_lock lock(mutex_);
            names_.erase(recovery);
        }
        ended_.notify_all();
    }
    bool waitFor(const std::string& journalName) {
        const std::string name = fileNameOf(journalName);
        std::unique_lock lock(mutex_);
        const bool running = names_.contains(name);
        ended_.wait(lock, [&] { return !names_.contains(name); });
        return running;
    }

private:
    std::mutex mutex_;
    std::condition_variable ended_;
    std::multiset<std::string> names_;
};

RunningRecoveries& runningRecoveries() {
    static RunningRecoveries recoveries;
    return recoveries;
}

class RunningRecovery {
public:
    explicit RunningRecovery(const std::string& journalName) : running_(runningRecoveries().begin(journalName)) {}
    ~RunningRecovery() { runningRecoveries().end(running_); }
    RunningRecovery(const RunningRecovery&) = delete;
    RunningRecovery& operator=(const RunningRecovery&) = delete;

private:
    RunningRecoveries::Running running_;
};

RecoveryReport failed(std::string name, const std::string& problem) {
    DEBUG_LOG("!!!!! \"%s\" not recovered: %s", name.c_str(), problem.c_str());
    return {Outcome::Failed, std::move(name), 0, 0, problem};
}

RecoveryReport untouched(Outcome outcome, const std::string& name, const char* line) {
    DEBUG_LOG(line, name.c_str());
    return {outcome, name, 0, 0, {}};
}

/// There is nothing more to do: the journal goes. What to report then.
std::optional<RecoveryReport> finished(RecordingJournal& journal, std::optional<RecoveryReport> report) {
    if (const OsError error = journal.remove(); !error.ok()) {
        return failed(journal.name(), "the journal could not be removed: " + error.text());
    }
    return report;
}

/// `named`: the user has asked for this very recording.
std::optional<RecoveryReport> recover(const std::string& journalName, bool named) {
    const RunningRecovery running(journalName);
    RecordingJournal journal;
    const JournalFound found = journal.takeExisting(journalName);
    switch (found) {
        case JournalFound::Nothing:
            return std::nullopt;
        case JournalFound::InUse:
            if (!named && RecordingJournal::isHeldHere(journalName)) {
                return std::nullopt;  // it is what this program records now
            }
            return untouched(Outcome::InProgress, RecordingName(journalName).base(),
                             "\"%s\" is held by another program");
        case JournalFound::Foreign:
            if (!named && journalName.ends_with(kEarlierJournalExtension)) {
                return std::nullopt;  // many programs call files so
            }
            return untouched(Outcome::LeftAlone, journalName, "\"%s\" is no journal of this version and left alone");
        case JournalFound::NotBegun:
        case JournalFound::Ours:
            break;
    }
    if (!named && !journal.isOfThisUser()) {
        return untouched(Outcome::OtherUsers, journalName, "\"%s\" is another user's and left alone");
    }
    if (found == JournalFound::NotBegun) {
        return journal.confirmLock().ok() ? finished(journal, std::nullopt) : std::nullopt;
    }
    auto report = recoverRecording(journal);
    const bool done = !report || report->outcome == Outcome::Recovered;
    return done ? finished(journal, std::move(report)) : report;
}

bool isJournalName(std::string_view name) {
    const auto ends = [name](std::string_view ending) { return name.size() > ending.size() && name.ends_with(ending); };
    return ends(kJournalExtension) || ends(kEarlierJournalExtension);
}

/// One of many: the others are recovered too when there is no memory for it.
std::optional<RecoveryReport> recoverNext(const std::string& journalName) {
    try {
        return recover(journalName, false);
    } catch (const std::bad_alloc&) {
        return failed(journalName, "no memory");
    }
}

/// The journals of a folder, and why they are not all; a folder that is not there has none.
std::vector<std::string> journalsIn(const std::string& folder, OsError& error) {
    std::vector<std::string> journals;
    for (const std::string& name : listDirectory(folder.empty() ? "." : folder, &error)) {
        // No recording has a name that could make lines of its own in a log.
        if (isJournalName(name) && shownName(name) == name) {
            journals.push_back(joinPath(folder, name));
        }
    }
    if (error.notFound()) {
        error = {};
    }
    return journals;
}

/// The journal that a recording of that name has left; empty when there is none.
std::string journalOf(const RecordingName& name) {
    std::string present = name.journal();
    if (fileExists(present)) {
        return present;
    }
    std::string earlier = name.earlierJournal();
    const auto found = RecordingJournal::look(earlier);
    return found == JournalFound::Ours || found == JournalFound::InUse ? earlier : std::string();
}

}  // namespace

std::string RecoveryReport::text() const {
    const std::string shown = systemTextToCp1251(name);
    switch (outcome) {
        case Outcome::Recovered:
            return formatText(tarno2::text(TextId::RecordingRecovered).c_str(), shown.c_str(),
                              formatCount(frames).c_str());
        case Outcome::InProgress:
            return formatText(tarno2::text(TextId::RecordingInProgress).c_str(), shown.c_str());
        case Outcome::OtherUsers:
            return formatText(tarno2::text(TextId::JournalOfOtherUser).c_str(), shown.c_str());
        case Outcome::LeftAlone:
            return formatText(tarno2::text(TextId::JournalLeftAlone).c_str(), shown.c_str());
        case Outcome::Failed:
            break;
    }
    return formatText(tarno2::text(TextId::RecordingNotRecovered).c_str(), shown.c_str(),
                      systemTextToCp1251(problem).c_str());
}

std::optional<RecoveryReport> recoverRecording(RecordingJournal& journal) {
    // On a file system without locks a program that still writes could not be told from one that is gone.
    if (const OsError error = journal.confirmLock(); !error.ok()) {
        return failed(journal.name(), "it is not known whether another program still writes it: " + error.text());
    }
    const std::string dataName = dataNameOf(journal);
    const FinishedFiles files = finishFiles(journal);
    if (!files.problem.empty()) {
        return failed(dataName, files.problem);
    }
    for (const std::string& problem : {completeMarks(journal, files.frames), completePassport(journal)}) {
        if (!problem.empty()) {
            DEBUG_LOG("!!!!! %s", problem.c_str());
        }
    }
    if (!journal.state().piece) {
        return std::nullopt;
    }
    DEBUG_LOG("\"%s\" recovered, %llu frames", dataName.c_str(), static_cast<unsigned long long>(files.frames));
    return RecoveryReport{Outcome::Recovered, dataName, files.frames, journal.state().piece->number, {}};
}

std::optional<RecoveryReport> recoverRecording(const std::string& journalName) {
    return recover(journalName, true);
}

std::vector<RecoveryReport> recoverFolder(const std::string& folder, const std::atomic<bool>* stop) {
    std::vector<RecoveryReport> reports;
    OsError error;
    std::string problem;
    try {
        for (const std::string& journal : journalsIn(folder, error)) {
            if (stop != nullptr && stop->load(std::memory_order_relaxed)) {
                break;
            }
            if (auto report = recoverNext(journal)) {
                reports.push_back(std::move(*report));
            }
        }
        problem = error.ok() ? std::string() : "the folder could not be read: " + error.text();
    } catch (const std::bad_alloc&) {
        problem = "no memory";
    }
    if (!problem.empty()) {
        reports.push_back(failed(joinPath(folder, "*"), problem));
    }
    return reports;
}

bool waitForRecoveryOf(const std::string& journalName) {
    return runningRecoveries().waitFor(journalName);
}

std::vector<std::string> journalsIn(const std::string& folder) {
    OsError error;
    return journalsIn(folder, error);
}

std::string journalOfFile(const std::string& fileName) {
    if (isJournalName(fileName)) {
        return fileExists(fileName) ? fileName : std::string();
    }
    const RecordingName name(fileName);
    if (std::string journal = journalOf(name); !journal.empty()) {
        return journal;
    }
    const auto whole = name.whole();
    return whole ? journalOf(*whole) : std::string();
}

}  // namespace tarno2

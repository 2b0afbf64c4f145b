#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "apps/options/usual_options.h"
#include "core/storage/checksum_thread.h"
#include "core/storage/recovery.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/file.h"
#include "platform/run_program.h"
#include "platform/terminal.h"
#include "platform/termination.h"

namespace {

using namespace tarno2;

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kBadUse = 2;

std::string english(TextId id) {
    return languageTable().loadUtf8(static_cast<int32_t>(id));
}

void complain(const std::string& what) {
    std::cerr << "tarno2-recover: " << what << '\n';
}

/// Says what came of one recording. False when it is not whole.
bool tell(const RecoveryReport& report) {
    const auto say = [&](TextId id) { return formatText(english(id).c_str(), report.name.c_str()); };
    switch (report.outcome) {
        case RecoveryReport::Outcome::Recovered:
            std::cout << formatText(english(TextId::RecordingRecovered).c_str(), report.name.c_str(),
                                    std::to_string(report.frames).c_str())
                      << '\n';
            return true;
        case RecoveryReport::Outcome::InProgress:
            complain(say(TextId::RecordingInProgress));
            return false;
        case RecoveryReport::Outcome::OtherUsers:
            complain(say(TextId::JournalOfOtherUser) + " Give its name to recover it all the same.");
            return false;
        case RecoveryReport::Outcome::LeftAlone:
            complain(say(TextId::JournalLeftAlone));
            return false;
        case RecoveryReport::Outcome::Failed:
            break;
    }
    complain(formatText(english(TextId::RecordingNotRecovered).c_str(), report.name.c_str(), report.problem.c_str()));
    return false;
}

/// Computes the checksums of what was recovered; how far it is stands on the error output, where that is a terminal.
void computeChecksums(const std::vector<RecoveryReport>& reports) {
    constexpr uint32_t kPeriodMs = 500;
    ChecksumThread checksums([](const std::string& /*dataName*/, const std::string& problem) {
        if (!problem.empty()) {
            complain(formatText(english(TextId::ChecksumsNotDone).c_str(), problem.c_str()));
        }
    });
    for (const RecoveryReport& report : reports) {
        if (report.outcome == RecoveryReport::Outcome::Recovered && report.frames > 0) {
            checksums.add(report.name, report.lastPiece);
        }
    }
    const TerminationWatcher watcher([&checksums] { checksums.stop(); });
    const bool terminal = errorOutputIsTerminal();
    while (!checksums.wait(kPeriodMs)) {
        if (const auto progress = checksums.progress(); progress && terminal) {
            std::cerr << '\r'
                      << formatText(english(TextId::ChecksumsProgress).c_str(), progress->dataName.c_str(),
                                    progress->percent())
                      << std::flush;
        }
    }
    std::cerr << (terminal && !reports.empty() ? "\n" : "") << std::flush;
}

int recover(const std::string& path, bool withChecksums) {
    // One that the system can't tell anything of may be a folder all the same.
    OsError notListed;
    static_cast<void>(listDirectory(path, &notListed));
    const bool folder = isDirectory(path) || notListed.ok();
    std::vector<RecoveryReport> reports;
    if (folder) {
        reports = recoverFolder(path);
    } else if (const std::string journal = journalOfFile(path); !journal.empty()) {
        if (auto report = recoverRecording(journal)) {
            reports.push_back(*report);
        }
    } else if (!fileExists(path)) {
        complain(path + ": there is no such file or folder");
        return kBadUse;
    }
    bool good = true;
    for (const RecoveryReport& report : reports) {
        good = tell(report) && good;
    }
    if (withChecksums) {
        computeChecksums(reports);
    }
    if (reports.empty() && folder) {
        std::cout << formatText(english(TextId::NothingToRecover).c_str(), path.c_str()) << '\n';
    } else if (reports.empty()) {
        std::cout << path << ": no unfinished recording\n";
    }
    return good ? kDone : kFailed;
}

int parseAndRun(int argc, char** argv) {
    languageTable().select(kLanguageEnglish);
    CLI::App app{
        "Finishes recordings of Tarno2 that were cut off by a crash or a power cut: cuts the last data file to whole "
        "frames, writes its description, from the journal beside it, completes the passport and computes the "
        "checksums. "
        "Nothing else is changed.",
        "tarno2-recover"};
    app.footer(
        "Recordings that a program still writes are left alone. Those of other users are recovered when FILE names "
        "them.\n"
        "Exit status: 0 done, also when there was nothing to do; 1 something was left as it is; 2 bad use.");
    addUsualOptions(app);
    std::string path;
    app.add_option("FILE-OR-FOLDER", path,
                   "A file of the recording (data, piece, description or journal), or a folder with recordings")
        ->required();
    bool noChecksums = false;
    app.add_flag("--no-checksums", noChecksums, "Compute no checksums of what is recovered");
    try {
        app.parse(argc, argv);
        return recover(path, !noChecksums);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kBadUse;
    }
}

}  // namespace

int main(int argc, char** argv) {
    return runProgram("tarno2-recover", kFailed, [&] { return parseAndRun(argc, argv); });
}

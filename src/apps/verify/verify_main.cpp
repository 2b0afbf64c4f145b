#include <atomic>
#include <iostream>
#include <string>
#include <vector>

#include "apps/options/usual_options.h"
#include "apps/verify/recording_check.h"
#include "language/language_table.h"
#include "platform/file.h"
#include "platform/run_program.h"
#include "platform/termination.h"

namespace {

using namespace tarno2;

constexpr int kRight = 0;
constexpr int kWrong = 1;
constexpr int kUnchecked = 2;

/// Tells what is found, a line each, and keeps the worst of it.
class Report {
public:
    explicit Report(bool quiet) : quiet_(quiet) {}

    void add(const std::string& recording, Verdict verdict, const std::string& what) {
        wrong_ = wrong_ || verdict == Verdict::Wrong;
        unchecked_ = unchecked_ || verdict == Verdict::Unchecked;
        const bool fault = verdict == Verdict::Wrong || verdict == Verdict::Unchecked;
        if (fault || !quiet_) {
            std::cout << word(verdict) << recording << ": " << what << std::endl;
        }
    }
    [[nodiscard]] int status() const { return wrong_ ? kWrong : unchecked_ ? kUnchecked : kRight; }

private:
    static const char* word(Verdict verdict) {
        switch (verdict) {
            case Verdict::Right:
                return "right      ";
            case Verdict::Wrong:
                return "WRONG      ";
            case Verdict::Unchecked:
                return "UNCHECKED  ";
            case Verdict::Note:
                break;
        }
        return "note       ";
    }

    bool quiet_;
    bool wrong_ = false;
    bool unchecked_ = false;
};

std::set<std::string> recordingsOf(const std::string& path, Report& report) {
    if (isDirectory(path)) {
        auto recordings = recordingsIn(path);
        if (recordings.empty()) {
            report.add(path, Verdict::Unchecked, "there is no recording in this folder");
        }
        return recordings;
    }
    const std::string recording = fileExists(path) ? recordingOf(path) : std::string();
    if (recording.empty()) {
        report.add(path, Verdict::Unchecked,
                   fileExists(path) ? "it belongs to no recording" : "there is no such file or folder");
        return {};
    }
    return {recording};
}

int verify(const std::vector<std::string>& paths, bool quiet) {
    std::atomic<bool> stop{false};
    const TerminationWatcher watcher([&stop] { stop = true; });
    Report report(quiet);
    for (const std::string& path : paths) {
        for (const std::string& recording : recordingsOf(path, report)) {
            const auto tell = [&](Verdict verdict, const std::string& what) { report.add(recording, verdict, what); };
            if (!stop) {
                RecordingCheck(recording, tell, stop).run();
            }
        }
    }
    return stop ? kUnchecked : report.status();
}

int parseAndRun(int argc, char** argv) {
    languageTable().select(kLanguageEnglish);
    CLI::App app{
        "Checks recordings of Tarno2: description, passport, sizes, checksums and the continuity of the data files. "
        "Says "
        "in a line each what is right and what is not. No file is changed.",
        "tarno2-verify"};
    app.footer(
        "A recording without passport or checksums is checked as far as its files tell, and that is said.\n"
        "Exit status: 0 all is right; 1 something is wrong; 2 something could not be checked, or bad use.");
    addUsualOptions(app);
    std::vector<std::string> paths;
    app.add_option("FILE-OR-FOLDER", paths, "Any file of a recording, or a folder with recordings")->required();
    bool quiet = false;
    app.add_flag("-q,--quiet", quiet, "Tell only what is wrong or could not be checked");
    try {
        app.parse(argc, argv);
        return verify(paths, quiet);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kRight : kUnchecked;
    }
}

}  // namespace

int main(int argc, char** argv) {
    return runProgram("tarno2-verify", kUnchecked, [&] { return parseAndRun(argc, argv); });
}

// Records until it is killed, and notes once a millisecond how far the recording has come by then.
// Usage: crash_recorder SETTINGS NOTES. NOTES gets 64-bit numbers: nanoseconds, bytes that the data file writer has
// been given, samples that the board has taken; and so on. It marks each of these moments, and prints the lines of the
// marks that are on the disk.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "config/files/file_naming.h"
#include "config/settings/auto_settings.h"
#include "core/devices/board_selection.h"
#include "core/recording/recording_control.h"
#include "language/language_table.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2::test {
namespace {

/// The least that a recording needs around it.
class Shell final : public RecordingShell {
public:
    explicit Shell(const RecordingWish& settings) : settings_(settings), fileName_(settings.fileName) {}

    // What ends by itself is not killed: the test sees it from the exit status.
    void post(const Notification& notification) override {
        if (notification.result.code != StopCode::Running) {
            std::fprintf(stderr, "ended: %s\n", notification.result.problem.c_str());
            std::_Exit(EXIT_FAILURE);
        }
    }
    RecordingWish settings() override { return settings_; }
    std::string fileName() override { return fileName_; }
    void setFileName(const std::string& name) override { fileName_ = name; }
    std::string savedFileName() override { return {}; }
    void showStatus(const std::string& text) override { std::fprintf(stderr, "%s\n", text.c_str()); }
    void showAttention(const std::string& text) override { std::fprintf(stderr, "%s\n", text.c_str()); }
    void showDetail(const std::string& text) override { std::fprintf(stderr, "%s\n", text.c_str()); }
    void showMessage(const std::string& text) override { std::fprintf(stderr, "%s\n", text.c_str()); }
    void synchronisationSwitchedOff() override {}
    void recordingEnded(const Notification& /*last*/, const RunEnd& /*end*/) override {}
    void startTimer(uint32_t /*milliseconds*/) override {}
    void killTimer() override {}
    bool consoleMode() override { return true; }
    void quit() override {}

private:
    RecordingWish settings_;
    std::string fileName_;
};

int record(const char* settingsFile, const char* notesFile) {
    languageTable().select(kLanguageEnglish);
    const auto settings = LoadAutoSettings(settingsFile, programDirectory());
    File notes;
    if (!settings || !notes.open(notesFile, FileMode::CreateAlways, FileAccess::Write, FileShare::ReadWrite).ok()) {
        return EXIT_FAILURE;
    }
    Shell shell(*settings);
    FileNaming naming;
    BoardSelection selection([](const std::string&) {}, programDirectory());
    RecordingControl control(shell, selection.driver(), naming);
    if (selection.apply(settings->driver, settings->base) != ApplyOutcome::Done || !control.StartButtonClick()) {
        return EXIT_FAILURE;
    }
    size_t told = 0;
    for (;;) {
        std::array<uint64_t, 3> note = {monotonicNanoseconds(), control.session()->writer().totalBytes(), 0};
        if (!selection.driver().device().get(kADCGetSamplesWritten, note[2])) {
            return EXIT_FAILURE;
        }
        // What is marked is told once it is on the disk.
        MarkWriter& marks = control.session()->marks();
        if (auto mark = control.session()->mark(); mark) {
            mark->text = "word, " + std::to_string(mark->number);
            marks.setText(*mark);
        }
        const size_t written = marks.written();
        std::vector<RecordingMark> lines;
        size_t seen = 0;
        marks.read(seen, lines);
        for (; told < written; ++told) {
            std::printf("%s", markLine(lines[told]).c_str());
        }
        std::fflush(stdout);
        size_t done = 0;
        if (!notes.write(note.data(), sizeof note, done).ok()) {
            return EXIT_FAILURE;
        }
        sleepMilliseconds(1);
    }
}

}  // namespace
}  // namespace tarno2::test

int main(int argc, char** argv) {
    return argc == 3 ? tarno2::test::record(argv[1], argv[2]) : EXIT_FAILURE;
}

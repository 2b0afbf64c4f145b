#include "core/recording/session_host.h"

#include <deque>
#include <gtest/gtest.h>
#include <stdexcept>

#include "config/logs/console_log.h"
#include "language/language_table.h"
#include "platform/event.h"
#include "platform/file.h"
#include "tests/core/rig.h"
#include "tests/core/settings_driver.h"

namespace tarno2::test {
namespace {

/// A program that keeps what it is shown. Its steps are done by `pump`.
class FakeFront final : public SessionFront {
public:
    void post(std::function<void()> step) override {
        const std::scoped_lock lock(mutex_);
        steps_.push_back(std::move(step));
        posted_.set();
    }
    void faultFound(const std::string& /*fault*/) override {}
    RecordingWish settings() override {
        RecordingWish wanted;
        wanted.channels = {0, 1};
        wanted.frequency = 1e6;
        wanted.stopRule = StopRule::Size;
        wanted.stopBytes = 400;
        return wanted;
    }
    std::string fileName() override { return name; }
    void setFileName(const std::string& newName) override { name = newName; }
    void startTimer(uint32_t /*milliseconds*/) override {}
    void killTimer() override {}
    void quit() override { ++quits; }
    void showState() override { note("state"); }
    void runBegun() override { note("begun"); }
    void runEnded() override { note("gone"); }
    void showEnd(const RecordingResult& result, const RunEnd& /*end*/) override {
        note("end " + std::to_string(result.bytes));
    }

    /// Does the next step that comes.
    void pump() {
        ASSERT_EQ(posted_.wait(30000), WaitResult::Signalled);
        std::function<void()> step;
        {
            const std::scoped_lock lock(mutex_);
            step = std::move(steps_.front());
            steps_.pop_front();
        }
        step();
    }
    [[nodiscard]] std::string told() { return std::exchange(told_, {}); }

    std::string name;
    std::string broken;  ///< showing this throws
    int quits = 0;

private:
    void note(const std::string& what) {
        if (what == broken) {
            throw std::runtime_error("no " + what);
        }
        told_ += what + ';';
    }

    std::string told_;
    std::mutex mutex_;
    std::deque<std::function<void()>> steps_;
    Event posted_;
};

/// What the front is told of a recording by size, with one thing in it that can't be shown.
TEST(SessionHost, WhatAStepThrowsIsALineAndTheRecordingGoesOn) {
    languageTable().select(kLanguageEnglish);
    const struct {
        const char* broken;
        const char* start;
        const char* end;
        RunState state;
        const char* line;
        bool console;
        int quits;
    } cases[] = {
        {"", "state;begun;", "end 400;gone;", RunState::Stopped, "Recorded 400 bytes in 1 files", true, 1},
        {"", "state;begun;", "end 400;gone;", RunState::Stopped, "Stop - By stop measuring", false, 0},
        {"begun", "state;", "end 400;gone;", RunState::Stopped, "!!!! StartButtonClick: no begun", false, 0},
        {"end 400", "state;begun;", "", RunState::Recording, "!!!! Notification: no end 400", false, 0},
        {"end 400", "state;begun;", "", RunState::Recording, "!!!! Notification: no end 400", true, 1},
        {"state", "", "", RunState::Ready, "!!!! StartButtonClick: no state", true, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.line << (c.console ? ", console" : ""));
        const TemporaryFolder folder;
        FakeDevice device;
        device.ring = [](uint32_t, uint32_t) { return 1000U; };
        device.readerPaced = 100000;
        FakeFront front;
        front.name = folder.file("run.dat");
        front.broken = c.broken;
        ASSERT_TRUE(consoleLog().open(folder.path()).ok());
        {
            std::optional<RecordingWish> console;
            if (c.console) {
                console.emplace();
                console->channels = {0, 1};
                console->frequency = 1e6;
                console->stopRule = StopRule::Size;
                console->stopBytes = 400;
            }
            SessionHost host(front, folder.path(), console);
            std::string why;
            ASSERT_TRUE(host.selection().driver().attach(&device, "Fake", folder.path(), why)) << why;
            ASSERT_TRUE(host.selection().driver().selectBoard(1, why)) << why;
            host.start();
            EXPECT_EQ(front.told(), c.start);
            if (host.control().running()) {
                front.pump();
            }
            EXPECT_EQ(front.told(), c.end);
            EXPECT_EQ(host.watch().state(), c.state);
            EXPECT_EQ(front.quits, c.quits);
            EXPECT_EQ(host.ending(), c.quits > 0);
            host.control().StopButtonClick();
        }
        consoleLog().close();
        const std::string log = readFile(folder.file("AutoLog.txt"));
        EXPECT_NE(log.find(std::string(c.line) + "\r\n"), std::string::npos) << log;
    }
}

/// What an unattended run says of what its driver is to be told and of the search for its board, and whether it goes
/// on.
TEST(SessionHost, TheDriverOfAnUnattendedRunTakesItsSettingsOrNothingBegins) {
    languageTable().select(kLanguageEnglish);
    const InstalledSettingsDriver installed;
    constexpr uint32_t kNotAtAll = 0;
    constexpr uint32_t kLong = SessionHost::kLongestSearchMs;
    const struct {
        const char* settings;
        uint32_t longestSearch;
        bool goesOn;
        const char* line;
    } cases[] = {
        {"File=run.wav;Channels=4", kLong, true, ""},
        {"File=missing.wav;Channels=4", kLong, false,
         "Value File of \"DriverSettings\" refused: missing.wav: no such file... Program aborted"},
        {"Fiel=run.wav", kLong, true, "Unknown parameter \"Fiel\" of \"DriverSettings\" ignored"},
        {"Host=home", kLong, true, "Value Host of \"DriverSettings\" is fixed by the environment... Use \"lab\""},
        {"Host=lab", kLong, true, ""},
        {"Asks=3", kLong, true, ""},
        {"Asks=100", kNotAtAll, false, "The driver still searches for boards, and has not found this one"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.settings);
        const TemporaryFolder folder;
        FakeFront front;
        RecordingWish console;
        console.driver = "Settings";
        console.driverSettings = c.settings;
        ASSERT_TRUE(consoleLog().open(folder.path()).ok());
        {
            SessionHost host(front, folder.path(), console);
            host.selection().setDriverSettings("Settings/Channels=7");
            EXPECT_EQ(host.applyConsoleSettings(c.longestSearch), c.goesOn);
            EXPECT_EQ(front.quits, c.goesOn ? 0 : 1);
            for (const DriverSetting& setting : host.selection().settings()) {
                EXPECT_FALSE(setting.key == "Channels" && setting.value == "7") << "that is of Tarno2.cfg";
            }
        }
        consoleLog().close();
        const std::string log = readFile(folder.file("AutoLog.txt"));
        const std::string line = c.line;
        EXPECT_EQ(log.find("DriverSettings") != std::string::npos, line.find("DriverSettings") != std::string::npos);
        EXPECT_TRUE(line.empty() || log.find(line + "\r\n") != std::string::npos) << log;
    }
}

}  // namespace
}  // namespace tarno2::test

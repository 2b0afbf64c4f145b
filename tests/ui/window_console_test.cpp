// Console mode with a window: it is minimised, records once and closes itself.

#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "config/settings/auto_settings.h"
#include "platform/file.h"
#include "tests/ui/main_window.h"

namespace tarno2::test {
namespace {

class WindowConsole : public MainWindow {
protected:
    ~WindowConsole() override { finish(); }

    void run(const std::string& more) {
        const std::string path = folder_.write(
            "auto.txt", "DebugMode = 1\r\nBaseNumber = 1\r\nFileName = " + quoted(folder_.file("data/run.dat")) +
                            "\r\nChannelCount = 2\r\nChannelsNumber = 3,5\r\nFrequency = 100000\r\n" + more);
        auto settings = LoadAutoSettings(path, folder_.path());
        ASSERT_TRUE(settings.has_value()) << readFile(folder_.file("AutoLog.txt"));
        form_ = std::make_unique<T_MainForm>(folder_.path(), std::move(settings));
        QSignalSpy closed(form_.get(), &T_MainForm::closed);
        form_->present();
        minimized_ = form_->isMinimized();
        ASSERT_TRUE(QTest::qWaitFor([&] { return closed.count() > 0; }, 30000));
    }
    void finish() {
        form_.reset();
        consoleLog().close();
        debugLog().close();
    }
    [[nodiscard]] bool logHas(const std::string& line) const {
        return readFile(folder_.file("AutoLog.txt")).find(line + "\r\n") != std::string::npos;
    }

    std::unique_ptr<T_MainForm> form_;
    bool minimized_ = false;
};

TEST_F(WindowConsole, RecordsMinimisedAndCloses) {
    run("DriverName = \"Simulator\"\r\nMeasureFileMode = 2\r\nSizeNeedLow = 200\r\nSizeMode = 1\r\n");
    EXPECT_TRUE(minimized_);
    EXPECT_EQ(form_->findChild<QComboBox*>("FrequencyBox")->currentText(), "100000") << "the window shows what it does";
    finish();
    EXPECT_EQ(readFile(folder_.file("data/run.dat")).size(), 204800U);
    for (const char* line : {"Config read OK...", "Stop - By stop measuring"}) {
        EXPECT_TRUE(logHas(line)) << line << readFile(folder_.file("AutoLog.txt"));
    }
    EXPECT_NE(readFile(folder_.file("AutoLog.txt")).find("Console mode ENABLED Tarno2 version "), std::string::npos);
    const std::string debug = readFile(folder_.file("AutoLog.dbg"));
    for (const char* line : {"LoadConfig consolemode", "LoadConfig consolemode - Status OK", "StartButtonClick",
                             "WriteConfig consolemode"}) {
        EXPECT_NE(debug.find(line), std::string::npos) << line;
    }
    EXPECT_FALSE(fileExists(folder_.file("Tarno2.cfg"))) << "the operator's settings stay as they were";
}

TEST_F(WindowConsole, EndsWithoutADriverOrAUsableStart) {
    run("DriverName = \"None\"\r\n");
    EXPECT_TRUE(form_->isHidden());
    finish();
    EXPECT_TRUE(logHas("Driver not founded"));

    run("DriverName = \"Simulator\"\r\nBoardMode = 4\r\nPacketFreq = 10\r\nDecimation = 1\r\nCutMode = -1\r\n"
        "MeasureFileMode = 1\r\nTimeNeed = 0\r\n");
    finish();
    EXPECT_TRUE(logHas("Attention: Start faild because stop value incorrect."))
        << readFile(folder_.file("AutoLog.txt"));
    EXPECT_FALSE(fileExists(folder_.file("data/run.dat")));
}

}  // namespace
}  // namespace tarno2::test

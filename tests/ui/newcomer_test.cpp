// A recording from a board that was never used before, by mouse alone.

#include <QAbstractItemView>

#include "core/devices/driver_catalogue.h"
#include "platform/file.h"
#include "tests/core/settings_driver.h"
#include "tests/ui/main_window.h"

namespace tarno2::test {
namespace {

class NewcomersWindow : public MainWindow {
protected:
    NewcomersWindow() {
        const std::string name = wanted_.wish.fileName;
        wanted_ = ProgramSettings();
        wanted_.wish.fileName = name;
        wanted_.checkDiskSpeed = false;
    }
    ~NewcomersWindow() override { drop(); }

    void mouse(const char* name) {
        click(name);
        ++clicks_;
    }
    void pick(const char* list, const QString& entry) {
        auto* box = find<QComboBox>(list);
        mouse(list);
        ASSERT_TRUE(QTest::qWaitFor([box] { return box->view()->isVisible(); }));
        const int row = box->findText(entry);
        ASSERT_GE(row, 0) << entry.toStdString();
        // A list takes a click for the end of the one that opened it, for a moment.
        box->view()->setCurrentIndex(box->model()->index(row, 0));
        QTest::keyClick(box->view(), Qt::Key_Return);
        ++clicks_;
    }

    int clicks_ = 0;
};

/// Two channels of 16 bits at 8 kHz.
std::string wavFile(const std::string& samples) {
    const auto number = [](size_t value, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; ++i) {
            text += static_cast<char>(value >> (8 * i) & 0xFF);
        }
        return text;
    };
    return "RIFF" + number(36 + samples.size(), 4) + "WAVEfmt " + number(16, 4) + number(1, 2) + number(2, 2) +
           number(8000, 4) + number(32000, 4) + number(4, 2) + number(16, 2) + "data" + number(samples.size(), 4) +
           samples;
}

TEST_F(NewcomersWindow, RecordsTheFileThatWasChosenByItsDialog) {
    wanted_.wish.driver = "Simulator";
    wanted_.channels[1].active = true;
    open();
    pick("DriverBox", "Replay");
    EXPECT_TRUE(listHas("File: choose what is to be played"));
    EXPECT_FALSE(listHas("can not be loaded")) << "it is, and only wants to be told a file";
    std::string samples;
    for (int i = 0; i < 40000; ++i) {
        samples += static_cast<char>(i % 251);
    }
    chooseFile(form(), QString::fromStdString(folder_.write("speech.wav", wavFile(samples))));
    mouse("DriverSettingChoose_File");
    EXPECT_EQ(find<QComboBox>("BaseBox")->currentText(), "001 Replay of speech.wav");
    mouse("DriverSetting_RealTime");
    mouse("StartButton");
    ASSERT_TRUE(waitForState(TextId::StatusStopped)) << attention().toStdString();
    EXPECT_EQ(recordings(), std::vector<std::string>{"run.dat"});
    EXPECT_EQ(readFile(folder_.file("data/run.dat")), samples);
}

TEST_F(NewcomersWindow, RecordsFromASoundCardInFiveClicks) {
    // Another driver stands in for the card that this computer may not have.
    std::string why;
    const InstalledDriver sound("Sound", driverLibraryPath("Simulator", why).value_or(""));
    wanted_.wish.driver = "Replay";
    open();
    pick("DriverBox", "Sound");
    mouse("StartButton");
    ASSERT_TRUE(waitForState(TextId::StatusRecording)) << attention().toStdString();
    ASSERT_TRUE(waitForBytes(1));
    mouse("StopButton");
    ASSERT_TRUE(waitForState(TextId::StatusStopped));
    EXPECT_LE(clicks_, 5);
    EXPECT_EQ(recordings(), std::vector<std::string>{"run.dat"});
    EXPECT_GT(readFile(folder_.file("data/run.dat")).size(), 0U);
}

}  // namespace
}  // namespace tarno2::test

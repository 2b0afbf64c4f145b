// A recording from a board that was never used before, by mouse alone.

#include <QAbstractItemView>
#include <numeric>

#include "core/devices/driver_catalogue.h"
#include "platform/file.h"
#include "tests/core/settings_driver.h"
#include "tests/ui/main_window.h"

namespace tarno2::test {
namespace {

class NewcomersWindow : public MainWindow {
protected:
    NewcomersWindow() { wanted_.channels = ProgramSettings().channels; }
    ~NewcomersWindow() override { drop(); }

    void mouse(const char* name) {
        click(name);
        ++clicks_;
    }
    void pick(const char* list, const QString& entry) {
        auto* box = find<QComboBox>(list);
        mouse(list);
        // For a moment a list takes a click for the end of the one that opened it.
        box->view()->setCurrentIndex(box->model()->index(box->findText(entry), 0));
        QTest::keyClick(box->view(), Qt::Key_Return);
        ++clicks_;
    }

    int clicks_ = 0;
};

// Two channels of 16 bits at 8 kHz, 40,000 bytes of samples.
constexpr std::string_view kWavHeader(
    "RIFF\x64\x9c\0\0WAVEfmt \x10\0\0\0\1\0\2\0\x40\x1f\0\0\0\x7d\0\0\4\0\x10\0data\x40\x9c\0\0", 44);

TEST_F(NewcomersWindow, RecordsTheFileThatWasChosenByItsDialog) {
    wanted_.channels[1].active = true;
    open();
    pick("DriverBox", "Replay");
    EXPECT_TRUE(listHas("File: choose what is to be played"));
    EXPECT_FALSE(listHas("can not be loaded")) << "it is, and only wants to be told a file";
    std::string samples(40000, '\0');
    std::iota(samples.begin(), samples.end(), '\0');
    EXPECT_TRUE(find("BoardNeedButton")->isVisible());
    EXPECT_EQ(find<QLabel>("StripNeedLabel")->text().mid(2), "Replay has no file: choose one");
    const std::string speech = folder_.write("speech.wav", std::string(kWavHeader) + samples);
    folder_.write("empty.wav", "");
    for (const std::string& chosen : {folder_.file("empty.wav"), speech}) {
        press(Qt::Key_B, Qt::ControlModifier);
        chooseFile(form(), QString::fromStdString(chosen));
        mouse("StripNeedButton");
        EXPECT_EQ(find("StripNeedButton")->isVisible(), chosen != speech);
        EXPECT_EQ(find("BoardNeedButton")->isVisible(), chosen != speech);
    }
    EXPECT_TRUE(form().selection().driver().startAllowed());
    EXPECT_EQ(find<QComboBox>("BaseBox")->currentText(), "001 Replay of speech.wav");
    mouse("DriverSetting_RealTime");
    mouse("StartButton");
    ASSERT_TRUE(waitForState(TextId::StatusStopped)) << attention().toStdString();
    EXPECT_EQ(readFile(folder_.file("data/run.dat")), samples);
}

TEST_F(NewcomersWindow, IsLedToWhatADriverWantsToBeTold) {
    open();
    pick("DriverBox", "Network");
    mouse("StripNeedButton");
    EXPECT_EQ(QApplication::focusWidget(), find("DriverSetting_Address"));
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
    EXPECT_GT(readFile(folder_.file("data/run.dat")).size(), 0U);
}

}  // namespace
}  // namespace tarno2::test

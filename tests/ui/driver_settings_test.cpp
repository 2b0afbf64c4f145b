// What the operator tells a driver, and boards that take their time.

#include "config/settings/settings_file.h"
#include "platform/file.h"
#include "tests/core/settings_driver.h"
#include "tests/ui/main_window.h"

namespace tarno2::test {
namespace {

class DriverSettingsWindow : public MainWindow {
protected:
    DriverSettingsWindow() {
        wanted_.wish.driver = "Settings";
        wanted_.showSettingMember = 0;
    }
    ~DriverSettingsWindow() override { drop(); }

    /// The name of the only board tells what its driver was told, in order.
    QString board() { return find<QComboBox>("BaseBox")->currentText(); }
    QLabel* problem(const char* key) { return find<QLabel>((std::string("DriverSettingProblem_") + key).c_str()); }
    [[nodiscard]] std::string inUse(const std::string& key) {
        for (const DriverSetting& setting : form().selection().settings()) {
            if (setting.key == key) {
                return setting.value;
            }
        }
        return "no such key";
    }
    [[nodiscard]] std::string kept() {
        EXPECT_TRUE(close());
        ProgramSettings settings;
        EXPECT_TRUE(LoadConfig(folder_.path(), settings).ok());
        return settings.driverSettings;
    }
    [[nodiscard]] bool waitForSearch() {
        return QTest::qWaitFor([this] { return !form().followsSearch() && !form().looksForBoard(); }, 30000);
    }

    InstalledSettingsDriver installed_;
};

TEST_F(DriverSettingsWindow, EachFieldTellsTheDriverWhenItsEditIsDone) {
    wanted_.driverSettings = "Gone/Key=1;;2;Settings/Label=B";
    open();
    EXPECT_EQ(board(), "001 .B");
    find("DriverBox")->setFocus();
    for (const char* next : {"DriverSetting_Label", "DriverSetting_Channels"}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(QApplication::focusWidget(), find(next));
    }
    type("DriverSetting_Label", "C", false);
    EXPECT_EQ(inUse("Label"), "B") << "it is still being typed";
    find<QLineEdit>("DriverSetting_Label")->clearFocus();
    EXPECT_EQ(board(), "001 .BC");
    find<QSpinBox>("DriverSetting_Channels")->setFocus();
    QTest::keyClick(find("DriverSetting_Channels"), Qt::Key_Up);
    QTest::keyClick(find("DriverSetting_Channels"), Qt::Key_Return);
    EXPECT_EQ(inUse("Channels"), "3");
    type("DriverSetting_Rate", "2,5e2");
    EXPECT_EQ(inUse("Rate"), "2.5e2");
    type("DriverSetting_Rate", "1e");
    EXPECT_EQ(find<QLineEdit>("DriverSetting_Rate")->text(), "2.5e2") << "no number";
    auto* format = find<QComboBox>("DriverSetting_Format");
    EXPECT_EQ(format->currentText(), "16 bit, little-endian");
    format->setFocus();
    QTest::keyClick(format, Qt::Key_Home);
    EXPECT_EQ(inUse("Format"), "u8");
    EXPECT_EQ(find<QComboBox>("DriverSetting_Port")->currentText(), "/dev/ttyACM7") << "not in the list";
    type("DriverSetting_Port", "/dev/mine");
    EXPECT_EQ(inUse("Port"), "/dev/mine");
    const std::string file = folder_.write("run.wav", "sound");
    chooseFile(form(), QString::fromStdString(file));
    click("DriverSettingChoose_File");
    EXPECT_EQ(inUse("File"), file);
    EXPECT_FALSE(find("DriverSetting_Host")->isEnabled());
    EXPECT_EQ(find<QCheckBox>("DriverSetting_Invert")->text(), "Inverted");
    for (const char* value : {"1", "0", "1"}) {
        click("DriverSetting_Invert");
        EXPECT_EQ(inUse("Invert"), value);
    }
    EXPECT_EQ(kept(),
              "Gone/Key=1;;2;Settings/Label=C;Settings/Channels=3;Settings/Rate=2.5e2;Settings/Format=u8;"
              "Settings/Port=/dev/mine;Settings/File=" +
                  file + ";Settings/Invert=1");
}

TEST_F(DriverSettingsWindow, FieldsAreWideEnoughInBothLanguages) {
    open();
    for (const char* language : {"EnglishChoose", "RussianChoose"}) {
        find<QAction>(language)->trigger();
        for (const char* key : {"Label", "Channels", "Rate", "Format", "Port", "File", "Folder", "Host", "Asks"}) {
            const QWidget* field = find((std::string("DriverSetting_") + key).c_str());
            EXPECT_GE(field->width(), field->fontMetrics().horizontalAdvance("0.000123456")) << key;
        }
    }
}

TEST_F(DriverSettingsWindow, ARefusalIsShownAndNothingRecordsUntilItIsPutRight) {
    wanted_.driverSettings = "Settings/File=missing.dat";
    open();
    const QString told = uiText(TextId::DriverSettingRefused, {"File", "missing.dat", "missing.dat: no such file"});
    EXPECT_TRUE(listHas(told));
    for (const bool pending : {false, true}) {
        type("DriverSetting_Rate", "7000", !pending);
        press(Qt::Key_F5);
        EXPECT_TRUE(problem("Rate")->isVisible());
        EXPECT_EQ(problem("Rate")->text(), "Rate: from 0.5 to 5000");
        EXPECT_EQ(attention(), uiText(TextId::Attention, {uiText(TextId::DriverSettingToCorrect)}));
        EXPECT_FALSE(form().control().running());
        EXPECT_EQ(inUse("Rate"), "1000.5");
        find("DriverSetting_Rate")->setFocus();
        QTest::keyClick(find("DriverSetting_Rate"), Qt::Key_Escape);
        EXPECT_EQ(find<QLineEdit>("DriverSetting_Rate")->text(), "1000.5");
        EXPECT_FALSE(problem("Rate")->isVisible());
    }
    find<QAction>("RussianChoose")->trigger();
    EXPECT_EQ(find<QLineEdit>("DriverSetting_Rate")->accessibleName(), QStringLiteral("Частота канала, Гц"));
    EXPECT_EQ(kept(), "Settings/File=missing.dat");
}

TEST_F(DriverSettingsWindow, ALongSearchIsFollowedAndTheBoardChosenAtItsEnd) {
    wanted_.driverSettings = "Settings/Asks=100";
    open();
    EXPECT_TRUE(form().followsSearch());
    EXPECT_EQ(find<QLabel>("BoardFactsLabel")->text(), uiText(TextId::SearchingForBoards));
    EXPECT_EQ(board(), "001") << "nobody knows yet that it is missing";
    EXPECT_TRUE(find("DriverBox")->isEnabled());
    press(Qt::Key_F5);
    EXPECT_TRUE(listHas(uiText(TextId::StartsWhenFound)));
    click("SearchAgainButton");
    EXPECT_TRUE(form().followsSearch()) << "it has begun anew";
    type("DriverSetting_Asks", "2");
    ASSERT_TRUE(waitForSearch());
    EXPECT_EQ(board(), "001 .1002");
    EXPECT_TRUE(form().selection().driver().startAllowed());
    click("SearchAgainButton");
    ASSERT_TRUE(waitForSearch());
    EXPECT_TRUE(form().selection().driver().startAllowed());
    type("DriverSetting_Pause", "700");
    EXPECT_FALSE(find("DriverSetting_Pause")->isEnabled()) << "nobody else may use a driver that opens its board";
    ASSERT_TRUE(waitForSearch());
    EXPECT_EQ(QApplication::focusWidget(), find("DriverSetting_Pause"));
    form().DriverBoxChange("Simulator");
    ASSERT_TRUE(waitForSearch());
    EXPECT_EQ(form().findChild<QWidget*>("DriverSetting_Label"), nullptr);
    click("SearchAgainButton");
    EXPECT_TRUE(form().selection().driver().startAllowed()) << "a driver that does not search is just asked anew";
    record();
    EXPECT_FALSE(find("SearchAgainButton")->isEnabled());
    press(Qt::Key_F6);
}

}  // namespace
}  // namespace tarno2::test

// Measurements under a name, files that record them unattended, and what is told after a recording.

#include <QDialog>
#include <QDockWidget>

#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "config/settings/auto_settings.h"
#include "config/settings/setup_file.h"
#include "platform/file.h"
#include "tests/ui/main_window.h"
#include "ui/save_as_text_form.h"
#include "ui/setups_window.h"
#include "ui/show_form.h"

namespace tarno2::test {
namespace {

class WindowSetups : public MainWindow {
protected:
    /// Does something in the window of the setups and closes it.
    void inSetups(const std::function<void(SetupsWindow&)>& act) {
        inDialog<SetupsWindow>(form(), [act](SetupsWindow& window) {
            act(window);
            window.reject();
        });
        form().SetupsClick();
    }
    void saveAs(const QString& name) {
        inSetups([name](SetupsWindow& window) {
            typeIn(window, "SetupNameEdit", name);
            clickIn(window, "SaveSetupButton");
        });
    }
    void load(const QString& name) {
        inSetups([name](SetupsWindow& window) {
            window.list(name);
            clickIn(window, "LoadSetupButton");
        });
        ASSERT_TRUE(QTest::qWaitFor([this] { return !form().looksForBoard(); }, 30000));
    }
};

TEST_F(WindowSetups, AllThatDescribesAMeasurementComesBackAndTheWindowStays) {
    wanted_.channels[1].label = {"Inlet", "bar", 2.5, -1.0};
    wanted_.wish.synchro.SynchroAnalyzeMode = kModeSynchronisation;
    wanted_.wish.synchro.SynchroAnalogChannelNumber = 1;
    wanted_.wish.synchro.SynchroAnalogValue = 0.4;
    wanted_.wish.stopRule = StopRule::Time;
    wanted_.viewLegend = true;
    open();
    EXPECT_EQ(find("ConditionsButton")->accessibleName(), "Trigger: Inlet > 0 bar");
    saveAs("Pressure");
    EXPECT_TRUE(listHas("Setup \"Pressure\" is saved."));

    openPanel(2);
    type("FrequencyBox", "250000");
    find<QAction>("RussianChoose")->trigger();
    form().programSettings().channels[1].label = {};
    form().programSettings().wish.synchro.SynchroAnalyzeMode = 0;
    form().programSettings().viewLegend = false;
    find<QComboBox>("BaseBox")->setFocus();
    QTest::keyClick(find<QComboBox>("BaseBox"), Qt::Key_Down);
    type("FileNameEdit", QString::fromStdString(folder_.file("other.dat")));
    load("Pressure");
    EXPECT_EQ(find<QComboBox>("FrequencyBox")->currentText(), "100000");
    EXPECT_EQ(find<QComboBox>("BaseBox")->currentData().toInt(), 1);
    EXPECT_EQ(nameField(), folder_.file("data/run.dat"));
    EXPECT_EQ(find("ConditionsButton")->accessibleName(), QStringLiteral("Синхронизация: Inlet > 0 bar"));
    EXPECT_EQ(form().programSettings().language, InterfaceLanguage::Russian) << "the window's own stays";
    EXPECT_TRUE(form().programSettings().viewLegend);
    EXPECT_EQ(form().programSettings().wish.stopRule, StopRule::Time);
    find<QAction>("EnglishChoose")->trigger();
    form().programSettings().wish.synchro.SynchroAnalyzeMode = 0;
    record();
    EXPECT_EQ(form().findChildren<T_ShowForm*>().size(), 1);
    press(Qt::Key_F6);
}

TEST_F(WindowSetups, OnesThatAreNoneAreToldAndChangeNothing) {
    open();
    QStringList told;
    inSetups([&](SetupsWindow& window) {
        for (const QString& name : {QString(), QStringLiteral("a/b")}) {
            inDialog<QMessageBox>(window, [&told](QMessageBox& box) {
                told << box.text();
                box.accept();
            });
            typeIn(window, "SetupNameEdit", name);
            clickIn(window, "SaveSetupButton");
        }
    });
    EXPECT_EQ(told, QStringList(2, uiText(TextId::SetupBadName)));
    EXPECT_TRUE(setupNames(folder_.path()).empty());
    ASSERT_TRUE(createDirectory(folder_.file("Setups")).ok());
    folder_.write("Setups/Odd.setup", "nothing = of ours\r\n");
    const std::string before = nameField();
    inSetups([&](SetupsWindow& window) {
        window.list("Odd");
        inDialog<QMessageBox>(window, [&told](QMessageBox& box) {
            told << box.text();
            box.accept();
        });
        clickIn(window, "LoadSetupButton");
    });
    EXPECT_EQ(told.last(), "Setup \"Odd\" can not be read: it holds no settings");
    EXPECT_EQ(nameField(), before);
}

// What the driver does not tell would be missing in the file.
TEST_F(WindowSetups, WithoutItsBoardNoAutosettingsFileIsWritten) {
    wanted_.wish.base = 0x999;
    open();
    QString told;
    inDialog<QMessageBox>(form(), [&told](QMessageBox& box) {
        told = box.text();
        box.accept();
    });
    form().AutoSettingsClick();
    EXPECT_EQ(told, uiText(TextId::AutoSettingsNeedBoard));
}

TEST_F(WindowSetups, AFileOfTheWindowRecordsTheSameUnattended) {
    wanted_.channels[5].active = true;
    wanted_.channels[5].gain = 10;
    wanted_.channels[5].label = {"Inlet; \"2\"", "bar", 2.5, -0.1};
    wanted_.wish.frequency = 2000000.0;
    wanted_.wish.decimation = 3;
    wanted_.wish.cut = true;
    wanted_.wish.cutMegabytes = 1;
    wanted_.wish.stopRule = StopRule::Size;
    wanted_.stopValue = 1500.0;
    wanted_.stopPower = 1;
    wanted_.wish.synchro.SynchroAnalyzeMode = kModeSynchronisation;
    wanted_.wish.synchro.SynchroAnalogValue = 0.25;
    wanted_.wish.synchroSizes = {100, 900};
    open();
    chooseFile(form(), QString::fromStdString(folder_.file("auto.txt")));
    form().AutoSettingsClick();
    record();
    ASSERT_TRUE(waitForState(TextId::StatusStopped, 60000));
    const std::vector<std::string> names = recordings();
    ASSERT_EQ(names.size(), 2U);
    std::vector<std::string> attended;
    for (const std::string& name : names) {
        attended.push_back(readFile(folder_.file("data/" + name)));
        ASSERT_TRUE(removeFile(folder_.file("data/" + name)).ok());
    }
    ASSERT_TRUE(close());

    auto wish = LoadAutoSettings(folder_.file("auto.txt"), folder_.path());
    ASSERT_TRUE(wish.has_value()) << readFile(folder_.file("AutoLog.txt"));
    T_MainForm unattended(folder_.path(), std::move(wish));
    QSignalSpy closed(&unattended, &T_MainForm::closed);
    unattended.present();
    ASSERT_TRUE(QTest::qWaitFor([&] { return closed.count() > 0; }, 60000));
    consoleLog().close();
    debugLog().close();
    ASSERT_EQ(recordings(), names) << readFile(folder_.file("AutoLog.txt"));
    for (size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(readFile(folder_.file("data/" + names[i])) == attended[i], true) << names[i];
    }
}

TEST_F(WindowSetups, AfterTheStopOneLineTellsAndOffersWhatWasRecorded) {
    wanted_.wish.stopRule = StopRule::Size;
    wanted_.stopValue = 400000.0;
    open();
    EXPECT_FALSE(find("OpenRecordedButton")->isVisible());
    record();
    ASSERT_TRUE(waitForState(TextId::StatusStopped));
    EXPECT_EQ(find<QLabel>("NewestMessage")->text().mid(10),
              QStringLiteral("run.dat: 100\u00A0000 frames, 2.000 s, 391 KB, losses: 0"));
    click("OpenRecordedButton");
    EXPECT_EQ(find<T_ShowForm>("T_ShowForm")->openedFile(), folder_.file("data/run.dat"));
    click("SaveRecordedAsTextButton");
    QDialog* text = nullptr;
    for (QDialog* dialog : form().findChildren<QDialog*>()) {
        text = dynamic_cast<T_SaveAsTextForm*>(dialog) != nullptr ? dialog : text;
    }
    ASSERT_NE(text, nullptr);
    EXPECT_TRUE(text->isVisible());
    text->close();
    record();
    EXPECT_FALSE(find("OpenRecordedButton")->isVisible());
    ASSERT_TRUE(waitForState(TextId::StatusStopped));
    EXPECT_EQ(find<T_ShowForm>("T_ShowForm")->openedFile(), "");
    saveAs("Same");
    load("Same");
    EXPECT_EQ(find<T_ShowForm>("T_ShowForm")->openedFile(), form().host().watch().facts().file) << "it is still shown";
}

}  // namespace
}  // namespace tarno2::test

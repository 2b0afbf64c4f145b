// Recordings as an operator makes them.

#include "platform/event.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "tests/core/fake_device.h"
#include "tests/ui/main_window.h"
#include "ui/show_form.h"

namespace tarno2::test {
namespace {

class WindowRecording : public MainWindow {
protected:
    /// How many frames the description of a recording tells; -1 without one.
    [[nodiscard]] int64_t described(const std::string& name) const {
        const std::string text = readFile(folder_.file("data/" + name + ".txt"));
        const std::string key = "DataCountPerChannel = ";
        const size_t at = text.find(key);
        return at == std::string::npos ? -1 : std::stoll(text.substr(at + key.size()));
    }
    [[nodiscard]] uint64_t frames(const std::string& name) const {
        return readFile(folder_.file("data/" + name + ".dat")).size() / 4;
    }
};

TEST_F(WindowRecording, EndsByItsTimeRule) {
    open();
    EXPECT_EQ(stateWord(), "Ready");
    EXPECT_FALSE(find<QPushButton>("StopButton")->isEnabled());
    openPanel(3);
    auto* rule = find<QComboBox>("StopModeBox");
    rule->setFocus();
    QTest::keyClick(rule, Qt::Key_Down);
    auto* value = find<QDoubleSpinBox>("StopValueBox");
    value->setFocus();
    value->selectAll();
    QTest::keyClicks(value, "1");

    record();
    EXPECT_FALSE(find<QPushButton>("StartButton")->isEnabled());
    EXPECT_TRUE(find("StopButton")->hasFocus());
    EXPECT_FALSE(rule->isEnabled());
    EXPECT_FALSE(find<QComboBox>("DriverBox")->isEnabled());
    EXPECT_TRUE(find<QProgressBar>("ProgressBar")->isVisible());
    EXPECT_TRUE(form().windowTitle().contains("Recording"));
    EXPECT_NE(find("WrittenCell")->findChildren<QLabel*>().last()->text(), "0.0 b");
    ASSERT_TRUE(waitForState(TextId::StatusStopped));

    EXPECT_EQ(find<QProgressBar>("ProgressBar")->value(), 100);
    EXPECT_EQ(find("ElapsedCell")->findChildren<QLabel*>().last()->text(), "00:00:01");
    EXPECT_TRUE(rule->isEnabled());
    EXPECT_TRUE(attention().isEmpty()) << attention().toStdString();
    EXPECT_TRUE(listHas("Recording to \""));
    EXPECT_TRUE(QTest::qWaitFor([this] { return listHas("Recording ended. Frames: "); }, 30000));
    EXPECT_EQ(recordings(), std::vector<std::string>{"run.dat"});
    // 100 kHz over two channels; a board that runs by the clock gives whole halves of its ring.
    EXPECT_GT(frames("run"), 20000U);
    EXPECT_EQ(described("run"), static_cast<int64_t>(frames("run")));
    EXPECT_TRUE(nameField().starts_with(folder_.file("data/file_"))) << nameField();
}

TEST_F(WindowRecording, StopsByTheButtonAndStartsAnew) {
    open();
    click("StartButton");
    ASSERT_TRUE(waitForState(TextId::StatusRecording));
    ASSERT_TRUE(waitForBytes(40000));
    EXPECT_FALSE(find<QProgressBar>("ProgressBar")->isVisible()) << "no end is known";
    click("StopButton");
    EXPECT_EQ(stateWord(), "Stopped") << "the button waits for the files";
    EXPECT_EQ(described("run"), static_cast<int64_t>(frames("run")));

    record();
    ASSERT_TRUE(waitForBytes(1));
    form().StartButtonClick();
    EXPECT_EQ(stateWord(), "Recording") << "a start ends the recording that runs and begins the next";
    ASSERT_TRUE(waitForBytes(1));
    press(Qt::Key_F6);
    EXPECT_EQ(stateWord(), "Stopped");
    EXPECT_EQ(recordings().size(), 3U);
    const std::vector<std::string> lines = log();
    const auto again = std::find(lines.begin(), lines.end(), "Already run");
    ASSERT_NE(again, lines.end());
    EXPECT_EQ(*(again + 1), "StopButtonClick");
    EXPECT_NE(std::find(again, lines.end(), "Stop ok"), lines.end());
}

TEST_F(WindowRecording, AnEarlierRecordingIsKeptOrTheStartGivenUp) {
    folder_.write("keep", "");
    open();
    record();
    press(Qt::Key_F6);
    const std::string first = readFile(folder_.file("data/run.dat"));
    openPanel(3);
    type("FileNameEdit", QString::fromStdString(folder_.file("data/run")));
    answer(TextId::GoBack);
    press(Qt::Key_F5);
    EXPECT_EQ(stateWord(), "Stopped");
    EXPECT_EQ(asked_,
              QStringList(uiText(TextId::FileExistsQuestion, {QString::fromStdString(folder_.file("data/run.dat"))})));
    answer(TextId::KeepAndStart);
    record();
    press(Qt::Key_F6);
    EXPECT_TRUE(readFile(folder_.file("data/run_old1.dat")) == first);
    EXPECT_GT(frames("run"), 0U);
    EXPECT_TRUE(listHas("run_old1.dat"));
}

TEST_F(WindowRecording, ADiskThatIsTooSmallIsAskedAbout) {
    wanted_.wish.stopRule = StopRule::Size;
    wanted_.stopValue = 1e9;
    wanted_.stopPower = 2;
    open();
    answer(TextId::GoBack);
    press(Qt::Key_F5);
    ASSERT_EQ(asked_.size(), 1);
    EXPECT_TRUE(asked_.front().startsWith("The recording needs 976\u00A0562 GB, the disk has "))
        << asked_[0].toStdString();
    EXPECT_EQ(stateWord(), "Ready");
    EXPECT_TRUE(recordings().empty());
}

TEST_F(WindowRecording, AnUnpluggedBoardEndsIt) {
    const ScopedEnvironment fault("TARNO2_SIMULATOR", "UnplugAfter=8000");
    wanted_.wish.base = 4;
    open();
    press(Qt::Key_F5);
    ASSERT_TRUE(waitForState(TextId::StatusError));
    EXPECT_EQ(attention(), "Attention: The board was unplugged");
    EXPECT_TRUE(find<QLabel>("BoardStateLabel")->toolTip().contains("Unplug") ||
                find<QLabel>("BoardStateLabel")->text().contains("Unplug"));
    EXPECT_EQ(frames("run"), 4000U);
    EXPECT_EQ(described("run"), 4000);
    EXPECT_TRUE(find<QPushButton>("StartButton")->isEnabled());
    const std::vector<std::string> lines = log();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "Stop - By device unplug"), 1);
}

TEST_F(WindowRecording, AnOverflowIsALoss) {
    const ScopedEnvironment fault("TARNO2_SIMULATOR", "RealTime=0;OverflowAfter=100000");
    open();
    press(Qt::Key_F5);
    ASSERT_TRUE(waitForState(TextId::StatusError));
    EXPECT_EQ(attention(), "Attention: FIFO overflow");
    const QString losses = find("LossesCell")->findChildren<QLabel*>().last()->text();
    EXPECT_TRUE(losses.endsWith(" 1")) << losses.toStdString();
    EXPECT_EQ(described("run"), static_cast<int64_t>(frames("run"))) << "what came before is kept";
    EXPECT_GT(frames("run"), 0U);
}

TEST_F(WindowRecording, TheCycleMakesRecordingsWithNamesOfTheirOwn) {
    const ScopedEnvironment fast("TARNO2_SIMULATOR", "RealTime=0");
    wanted_.wish.stopRule = StopRule::Size;
    wanted_.stopValue = 400;
    wanted_.stopPower = 1;
    open();
    click("btnAutoStart");
    EXPECT_TRUE(find<QAbstractButton>("CycleStartBox")->isChecked());
    press(Qt::Key_F5);
    ASSERT_TRUE(QTest::qWaitFor([&] { return recordings().size() >= 3; }, 30000));
    click("btnAutoStart");
    ASSERT_TRUE(waitForState(TextId::StatusStopped));
    const std::vector<std::string> made = recordings();
    ASSERT_GE(made.size(), 3U);
    for (const std::string& name : made) {
        const std::string base = name.substr(0, name.size() - 4);
        EXPECT_EQ(frames(base), 102400U) << name;
        EXPECT_EQ(described(base), 102400) << name;
    }
    EXPECT_TRUE(listHas("The stop condition was met or the size was reached."));
}

// What is told, and offered, is the recording that ended: the next one runs already.
TEST_F(WindowRecording, TheCycleByTimeTellsOfTheRecordingThatEnded) {
    wanted_.wish.stopRule = StopRule::Time;
    wanted_.wish.cycleStart = true;
    wanted_.stopValue = 2;
    wanted_.stopPower = 0;
    open();
    const QString first = fromFileName(fileNameOf(nameField()));
    press(Qt::Key_F5);
    const auto* newest = find<QLabel>("NewestMessage");
    const auto tellsEnd = [&] {
        return newest->text().contains(first) && newest->text().contains(uiText(TextId::EndLosses, {"0"}));
    };
    ASSERT_TRUE(QTest::qWaitFor(tellsEnd, 30000)) << newest->text().toStdString();
    EXPECT_TRUE(form().control().running());
    click("OpenRecordedButton");
    EXPECT_TRUE(find<T_ShowForm>("T_ShowForm")->openedTitle().startsWith(first));
    EXPECT_TRUE(form().control().running());
    click("btnAutoStart");
    press(Qt::Key_F6);
    ASSERT_TRUE(waitForState(TextId::StatusStopped));
}

TEST_F(WindowRecording, TheLanguageChangesWhileItRuns) {
    open();
    record();
    openPanel(5);
    QTest::mouseClick(find<QRadioButton>("RussianChooseButton"), Qt::LeftButton, {}, QPoint(8, 8));
    EXPECT_EQ(stateWord(), QStringLiteral("Идёт запись"));
    EXPECT_TRUE(form().windowTitle().contains(QStringLiteral("Идёт запись"))) << form().windowTitle().toStdString();
    EXPECT_TRUE(find<QPushButton>("StopButton")->text().startsWith(QStringLiteral("С&топ")));
    EXPECT_TRUE(find<QAction>("RussianChoose")->isChecked());
    EXPECT_FALSE(find<QAction>("EnglishChoose")->isChecked());
    EXPECT_EQ(find<QComboBox>("DriverBox")->toolTip(), uiText(TextId::PanelLockedHint));
    ASSERT_TRUE(waitForBytes(form().control().session()->writer().totalBytes() + 1)) << "it goes on";
    find<QAction>("EnglishChoose")->trigger();
    EXPECT_EQ(stateWord(), "Recording");
    press(Qt::Key_F6);
    EXPECT_GT(frames("run"), 0U);
    const auto written = [this] { return find("WrittenCell")->findChildren<QLabel*>().last()->text(); };
    const QString before = written();
    find<QAction>("RussianChoose")->trigger();
    EXPECT_EQ(written().section(' ', 0, 0), before.section(' ', 0, 0));
    EXPECT_NE(written(), before) << "the units of what was recorded";
    const std::vector<std::string> lines = log();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "Russian"), 2);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "English"), 1);
}

TEST_F(WindowRecording, ClosingAsksAndStopsCleanly) {
    open();
    record();
    QSignalSpy closed(&form(), &T_MainForm::closed);
    answer(TextId::GoBack);
    EXPECT_FALSE(form().close());
    EXPECT_EQ(asked_, QStringList("The recording is running. Stop it and close the program?"));
    EXPECT_EQ(stateWord(), "Recording");
    EXPECT_EQ(closed.count(), 0);
    answer(TextId::StopAndClose);
    EXPECT_TRUE(form().close());
    EXPECT_EQ(closed.count(), 1);
    EXPECT_EQ(described("run"), static_cast<int64_t>(frames("run")));
    const std::vector<std::string> lines = log();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "Stop - By user"), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "WriteConfig not console"), 1);
}

TEST_F(WindowRecording, TheSystemsEndAsksNothing) {
    open();
    record();
    form().requestEnd();
    EXPECT_TRUE(form().isHidden());
    EXPECT_TRUE(asked_.isEmpty());
    EXPECT_EQ(described("run"), static_cast<int64_t>(frames("run")));
}

TEST_F(WindowRecording, BeginsByItselfWhenTheProgramIsLoaded) {
    wanted_.autoStartOnRun = true;
    open();
    ASSERT_TRUE(waitForState(TextId::StatusRecording));
    ASSERT_TRUE(waitForBytes(1));
    press(Qt::Key_F6);
    EXPECT_EQ(recordings(), std::vector<std::string>{"run.dat"});
}

TEST_F(WindowRecording, WaitsForItsConditionAndSaysSoBeforehand) {
    const ScopedEnvironment level("TARNO2_SIMULATOR", "Signal=Level");
    wanted_.wish.stopRule = StopRule::Manual;
    wanted_.wish.synchro.SynchroAnalogMode = 0;
    wanted_.wish.synchro.SynchroAnalogValue = 9.0;
    for (const int mode : {1, 2}) {
        wanted_.wish.synchro.SynchroAnalyzeMode = mode;
        wanted_.wish.synchro.AnalyzeAnalogStartMode = 0;
        wanted_.wish.synchro.startAnalogEnabled = true;
        wanted_.wish.synchro.AnalyzeAnalogStartValue = 9.0;
        wanted_.wish.fileName = folder_.file("data/run" + std::to_string(mode) + ".dat");
        open();
        auto* badge = find<QToolButton>("ConditionsButton");
        EXPECT_EQ(badge->accessibleName(),
                  mode == 1 ? "Analysis: start at channel 0 > 9 V" : "Trigger: channel 0 > 9 V");
        EXPECT_FALSE(badge->styleSheet().isEmpty());
        press(Qt::Key_F5);
        ASSERT_TRUE(waitForState(TextId::StatusWaitingForTrigger)) << stateWord().toStdString();
        ASSERT_TRUE(QTest::qWaitFor([this] { return form().control().session()->samplesRead() > 0; }, 30000));
        QTest::qWait(150);
        EXPECT_EQ(stateWord(), "Waiting for trigger");
        find<QAction>("RussianChoose")->trigger();
        EXPECT_EQ(stateWord(), QStringLiteral("Ожидание условия записи"));
        find<QAction>("EnglishChoose")->trigger();
        press(Qt::Key_F6);
        EXPECT_EQ(stateWord(), "Stopped");
        ASSERT_TRUE(close());
    }
    wanted_.wish.synchro.SynchroAnalyzeMode = 0;
    open();
    EXPECT_EQ(find("ConditionsButton")->accessibleName(), "Trigger: off");
    EXPECT_TRUE(find("ConditionsButton")->styleSheet().isEmpty());
}

TEST_F(WindowRecording, AStartLooksForTheBoardAnew) {
    {
        const ScopedEnvironment off("TARNO2_SIMULATOR", "RefuseBoard=1");
        open();
        EXPECT_EQ(stateWord(), "Error");
        press(Qt::Key_F5);
        EXPECT_EQ(attention(), "Attention: Init error");
        EXPECT_EQ(stateWord(), "Error");
    }
    // It was switched on meanwhile.
    record();
    EXPECT_EQ(attention(), QString());
    press(Qt::Key_F6);
    EXPECT_GT(frames("run"), 0U);
}

TEST_F(WindowRecording, ADriverThatTakesItsTimeDoesNotStopTheWindow) {
    FakeDevice mute;
    mute.numbers[kADCGetAbiVersion] = kADCAbiVersion;
    Event answers;
    open();
    std::string why;
    EXPECT_TRUE(form().selection().driver().attach(&mute, "Fake", folder_.path(), why)) << why;
    mute.afterGetCode = [&](uint32_t) { static_cast<void>(answers.wait(30000)); };
    form().BaseBoxChange(1);
    EXPECT_TRUE(form().looksForBoard());
    const size_t asked = mute.countCalls("Get");
    auto* facts = find<QLabel>("BoardFactsLabel");
    EXPECT_EQ(facts->text(), "Looking for the board...");
    EXPECT_FALSE(find("StartButton")->isEnabled());
    EXPECT_FALSE(find("FrequencyBox")->isEnabled());
    // Whatever asks the driver leaves it alone.
    find<QAction>("RussianChoose")->trigger();
    EXPECT_EQ(facts->text(), QStringLiteral("Поиск платы…"));
    form().HDDTestSpeedClick(false);
    find<QAction>("EnglishChoose")->trigger();
    EXPECT_EQ(mute.countCalls("Get"), asked);
    answers.set();
    EXPECT_TRUE(QTest::qWaitFor([this] { return !form().looksForBoard(); }, 30000));
    EXPECT_NE(facts->text(), "Looking for the board...");
    EXPECT_TRUE(find("StartButton")->isEnabled());
    EXPECT_EQ(stateWord(), "Ready");
    drop();
}

TEST_F(WindowRecording, WaitsForTheExternalStart) {
    const ScopedEnvironment never("TARNO2_SIMULATOR", "ExternalStartAfter=-1");
    wanted_.wish.setMode(kBoardExternalStart, true);
    open();
    press(Qt::Key_F5);
    ASSERT_TRUE(waitForState(TextId::StatusWaitingForStart));
    press(Qt::Key_F6);
    EXPECT_EQ(stateWord(), "Stopped");
    EXPECT_TRUE(recordings().empty()) << "no data, no file";
}

}  // namespace
}  // namespace tarno2::test

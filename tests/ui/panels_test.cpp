#include <QScrollArea>

#include "core/recording/recording_settings.h"
#include "tests/core/fake_device.h"
#include "tests/ui/widgets.h"
#include "ui/panels/board_panel.h"
#include "ui/panels/channels_panel.h"
#include "ui/panels/file_panel.h"
#include "ui/panels/measuring_panel.h"
#include "ui/panels/panel_stack.h"
#include "ui/panels/program_panel.h"

namespace tarno2::test {
namespace {

/// All panels in their stack, with the simulator's boards to choose from.
class Panels : public ::testing::Test {
protected:
    Panels() {
        languageTable().select(kLanguageEnglish);
        for (SettingsPanel* panel :
             std::initializer_list<SettingsPanel*>{board_, measuring_, file_, channels_, program_}) {
            stack_.add(panel);
        }
        stack_.resize(300, 700);
        stack_.show();
    }

    void chooseSimulated(uint32_t number) {
        ASSERT_TRUE(selection_.DriverBoxChange("Simulator")) << selection_.problem();
        ASSERT_TRUE(selection_.BaseBoxChange(number)) << selection_.problem();
        stack_.boardChanged(selection_);
    }
    /// A board of the fake device, which can do what its numbers say.
    void chooseFake() {
        fake_.numbers[kADCGetAbiVersion] = kADCAbiVersion;
        fake_.numbers[kADCGetChannelCount] = 4;
        std::string why;
        ASSERT_TRUE(selection_.driver().attach(&fake_, "Fake", folder_.path(), why)) << why;
        ASSERT_TRUE(selection_.BaseBoxChange(1)) << selection_.problem();
        stack_.boardChanged(selection_);
    }
    template <typename Widget>
    Widget* find(const char* name) {
        return findIn<Widget>(stack_, name);
    }
    [[nodiscard]] ProgramSettings stored() const {
        ProgramSettings settings;
        stack_.store(settings);
        return settings;
    }

    const TemporaryFolder folder_;
    const ScopedEnvironment registry_{"TARNO2_REGISTRY", std::string(TARNO2_BIN) + "/registry.d"};
    FakeDevice fake_;
    BoardSelection selection_{[](const std::string&) {}, folder_.path()};
    PanelStack stack_;
    BoardPanel* board_ = new BoardPanel;
    MeasuringPanel* measuring_ = new MeasuringPanel;
    FilePanel* file_ = new FilePanel;
    ChannelsPanel* channels_ = new ChannelsPanel;
    ProgramPanel* program_ = new ProgramPanel;
};

ProgramSettings changedEverywhere() {
    ProgramSettings s;
    s.wish.driver = "Simulator";
    s.frequencyList = {1234.0, 48000.0};
    s.wish.frequency = 48000.0;
    s.wish.packetFrequency = 250.5;
    s.wish.boardMode = 0xF;
    s.wish.useDigitalPort = s.wish.hardwareAverage = s.wish.cycleStart = s.autoStartOnRun = true;
    s.wish.cut = s.wish.automaticCut = s.stayOnTop = s.extendedChannelMode = true;
    s.checkDiskSpeed = false;
    s.wish.markLine = 1;
    s.wish.markEdge = 2;
    s.wish.stopRule = StopRule::Size;
    s.stopValue = 12.125;
    s.stopPower = 2;
    s.wish.cutMegabytes = 77;
    s.wish.decimation = 5;
    s.channelCount = 16;
    s.channels[3] = {0x123456, true, 5, {}};
    s.channels[150] = {0x654321, true, 10, {}};
    s.axisFontName = "Courier New";
    s.axisFontSize = 13;
    s.showSettingMember = 2;
    s.language = InterfaceLanguage::Russian;
    return s;
}

TEST_F(Panels, EveryControlGivesBackWhatWasLoaded) {
    const ProgramSettings s = changedEverywhere();
    QSignalSpy changed(&stack_, &PanelStack::changed);
    stack_.load(s);
    chooseSimulated(1);
    stack_.retranslate();
    const ProgramSettings t = stored();
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(t.wish.base, 1U);
    const auto values = [](const ProgramSettings& p) {
        return std::tuple(p.wish.driver, p.frequencyList, p.wish.frequency, p.wish.packetFrequency, p.wish.stopRule,
                          p.stopValue, p.stopPower, p.wish.cutMegabytes, p.wish.decimation, p.axisFontName,
                          p.axisFontSize, p.showSettingMember, p.language);
    };
    EXPECT_EQ(values(t), values(s));
    const auto flags = [](const ProgramSettings& p) {
        const RecordingWish& w = p.wish;
        return std::vector<bool>{w.useDigitalPort, w.hardwareAverage, w.cycleStart, w.cut,
                                 w.automaticCut,   p.autoStartOnRun,  p.stayOnTop,  p.extendedChannelMode,
                                 p.checkDiskSpeed};
    };
    EXPECT_EQ(t.wish.boardMode, s.wish.boardMode);
    EXPECT_EQ(flags(t), flags(s)) << "also of what this board does not offer";
    EXPECT_EQ(t.channelCount, 16);
    for (const size_t i : {0U, 3U, 150U}) {
        EXPECT_EQ(t.channels[i].active, s.channels[i].active) << i;
        EXPECT_EQ(t.channels[i].color, s.channels[i].color) << i;
        EXPECT_EQ(t.channels[i].gain, s.channels[i].gain) << i;
    }
}

TEST_F(Panels, WhatABoardLacksIsOffWithTheReasonAndKeptForTheNext) {
    stack_.load(changedEverywhere());
    fake_.numbers[kADCGetCutMode] = 0;
    fake_.format.m_nDigitalMask = 0;
    chooseFake();
    const QString reason = uiText(TextId::NotOfferedHint);
    const char* const options[] = {"DiffModeBox", "DigitalPortBox", "HardwareAverageBox", "PacketModeBox",
                                   "ExtFreqBox",  "ExtStartBox",    "CutModeBox"};
    for (const char* name : options) {
        auto* box = find<QCheckBox>(name);
        EXPECT_FALSE(box->isEnabled() || box->isChecked()) << name;
        EXPECT_EQ(box->toolTip(), reason) << name;
    }
    EXPECT_FALSE(find<QLineEdit>("PacketFrequencyEdit")->isEnabled());
    EXPECT_FALSE(find<QComboBox>("DrqBox")->isVisibleTo(board_));
    EXPECT_EQ(recordingWish(stored(), selection_.driver().facts()).boardMode, 0U);

    fake_.numbers[kADCGetBoardModes] = 0xF;
    fake_.numbers[kADCGetExtendedBlock] = fake_.numbers[kADCGetHardwareAverage] = fake_.numbers[kADCGetCutMode] = 1;
    fake_.format.m_nDigitalMask = 0xC000;
    fake_.drqNumbers = {5, 7};
    chooseFake();
    for (const char* name : options) {
        auto* box = find<QCheckBox>(name);
        EXPECT_TRUE(box->isEnabled() && box->isChecked()) << name;
        EXPECT_NE(box->toolTip(), reason) << name;
    }
    auto* drq = find<QComboBox>("DrqBox");
    EXPECT_TRUE(drq->isVisibleTo(board_));
    QSignalSpy chosen(board_, &BoardPanel::drqChosen);
    stack_.open(0);
    drq->setFocus();
    QTest::keyClick(drq, Qt::Key_Down);
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.front().front().toInt(), 7);
    EXPECT_EQ(stored().drqNumber, 7);
}

TEST_F(Panels, TheFrequencyIsAListOrAFieldAsTheBoardSays) {
    stack_.load({});
    chooseSimulated(1);
    auto* box = find<QComboBox>("FrequencyBox");
    auto* rate = find<QLabel>("FrequencyPerChannelLabel");
    EXPECT_TRUE(box->isEditable());
    EXPECT_EQ(box->currentText(), "100000");
    measuring_->setActiveChannels(4);
    EXPECT_EQ(rate->text(), "Per channel: 25000 Hz");

    stack_.open(1);
    box->setFocus();
    box->lineEdit()->selectAll();
    QTest::keyClicks(box, "44100,5");
    EXPECT_EQ(rate->text(), "Per channel: 11025.125 Hz");
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_EQ(stored().frequencyList, std::vector<double>{44100.5});
    box->lineEdit()->selectAll();
    QTest::keyClicks(box, "fast");
    EXPECT_EQ(measuring_->frequency(), 0.0) << "the start refuses it";
    EXPECT_TRUE(rate->text().contains("from 1 to 2000000 Hz")) << rate->text().toStdString();

    chooseSimulated(3);
    EXPECT_FALSE(box->isEditable());
    EXPECT_EQ(box->count(), 10);
    EXPECT_EQ(box->currentText(), "50000") << "the board's own, since it lacks what the field held";
    QTest::keyClick(box, Qt::Key_Up);
    EXPECT_EQ(stored().wish.frequency, 20000.0);
    chooseSimulated(1);
    EXPECT_TRUE(box->isEditable());
    EXPECT_EQ(box->currentText(), "100000");
    EXPECT_EQ(box->findText("44100.5"), 0);
}

TEST_F(Panels, TheNameIsCheckedWhenItsEditingEnds) {
    stack_.open(2);
    file_->setFileName("/tmp/one.dat");
    QSignalSpy edited(file_, &FilePanel::fileNameEdited);
    auto* edit = find<QLineEdit>("FileNameEdit");
    edit->setFocus();
    QTest::keyClicks(edit, "2");
    EXPECT_EQ(edited.count(), 0);
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(edited.count(), 1);
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(edited.count(), 1) << "nothing was typed since";
    EXPECT_EQ(file_->fileName(), "/tmp/one.dat2");
    QSignalSpy choose(file_, &FilePanel::chooseFileName);
    QTest::mouseClick(find<QPushButton>("ButtonSetFileName"), Qt::LeftButton);
    EXPECT_EQ(choose.count(), 1);
}

TEST_F(Panels, TheFilePanelTellsDiskAndNeed) {
    FileNameFindings findings;
    findings.disk = {7, "ext4", 1ULL << 40U, 10ULL << 30U};
    findings.speedCode = kDiskSpeedOk;
    findings.speed = 5.0;
    file_->showMeasuring();
    EXPECT_EQ(find<QLabel>("DiskSpeedLabel")->text(), uiText(TextId::DiskSpeedMeasuring));
    file_->showFindings(findings);
    file_->showNeed({6e6, 20e9, 3});
    EXPECT_EQ(find<QLabel>("FreeSpaceLabel")->text(), "ext4: 10.0 GB free");
    EXPECT_EQ(find<QLabel>("DiskSpeedLabel")->text(), "Disk speed: 4.77 MB/s");
    EXPECT_TRUE(find<QLabel>("NeedLabel")->text().endsWith("Will write 5.72 MB per second, 20.1 GB per hour"));
    EXPECT_TRUE(find<QLabel>("DiskLastsLabel")->text().endsWith("The disk will last for 00:29:49"));
    EXPECT_EQ(find<QLabel>("PiecesLabel")->text(), "Files: 3");
    EXPECT_TRUE(find<QLabel>("DiskWarningLabel")->text().contains("need 5.72 MB/s, the disk takes only 4.77 MB/s"));
    file_->showNeed({1e6, 0.0, 1});
    EXPECT_TRUE(find<QLabel>("DiskWarningLabel")->text().isEmpty());
    EXPECT_TRUE(find<QLabel>("NeedLabel")->text().startsWith("Will write")) << "no warning";
    findings.problem = TextId::NotLocalDrive;
    file_->showFindings(findings);
    EXPECT_TRUE(find<QLabel>("FileProblemLabel")->text().contains("Is not local drive"));
    EXPECT_TRUE(find<QLabel>("FreeSpaceLabel")->text().isEmpty());
}

TEST_F(Panels, StopValuesTakeAPointOrACommaAndAUnit) {
    stack_.load({});
    stack_.open(2);
    auto* value = find<QDoubleSpinBox>("StopValueBox");
    EXPECT_FALSE(value->isEnabled()) << "a stop by hand has no value";
    auto* rule = find<QComboBox>("StopModeBox");
    rule->setFocus();
    QTest::keyClick(rule, Qt::Key_Down);
    EXPECT_TRUE(value->isEnabled());
    value->setFocus();
    value->selectAll();
    QTest::keyClicks(value, "1,5");
    EXPECT_EQ(stored().stopValue, 1.5);
    auto* unit = find<QComboBox>("StopPowerBox");
    EXPECT_EQ(unit->currentText(), "Second");
    unit->setFocus();
    QTest::keyClick(unit, Qt::Key_Down);
    rule->setFocus();
    QTest::keyClick(rule, Qt::Key_Down);
    EXPECT_EQ(unit->currentText(), "KB");
    EXPECT_EQ(recordingWish(stored(), {}).stopBytes, 1536U);
}

TEST_F(Panels, ARecordingLocksWhatItDependsOn) {
    stack_.load({});
    chooseSimulated(1);
    const char* const locked[] = {"DriverBox",    "BaseBox",         "FrequencyBox",     "DecimationBox",
                                  "FileNameEdit", "StopModeBox",     "CutModeBox",       "HDDTestSpeedBox",
                                  "SameGainBox",  "SelectAllButton", "AutoStartOnRunBox"};
    const char* const open[] = {"RussianChooseButton", "CycleStartBox", "ExtendedChannelModeBox", "ChannelTable"};
    stack_.setLocked(SettingsLock::All);
    languageTable().select(kLanguageRussian);
    stack_.retranslate();
    for (const char* name : locked) {
        EXPECT_FALSE(find<QWidget>(name)->isEnabled()) << name;
        EXPECT_EQ(find<QWidget>(name)->toolTip(), uiText(TextId::PanelLockedHint)) << name;
    }
    for (const char* name : open) {
        EXPECT_TRUE(find<QWidget>(name)->isEnabled()) << name;
    }
    stack_.setLocked(SettingsLock::Board);
    EXPECT_FALSE(find<QWidget>("FrequencyBox")->isEnabled());
    EXPECT_TRUE(find<QWidget>("FileNameEdit")->isEnabled() && find<QWidget>("StopModeBox")->isEnabled());
    stack_.setLocked(SettingsLock::None);
    for (const char* name : locked) {
        EXPECT_TRUE(find<QWidget>(name)->isEnabled()) << name;
        EXPECT_NE(find<QWidget>(name)->toolTip(), uiText(TextId::PanelLockedHint)) << name;
    }
}

TEST_F(Panels, NoEnglishIsLeftInRussianAndAllFitTheColumn) {
    stack_.load({});
    chooseSimulated(2);
    const auto texts = [this] {
        QStringList all;
        for (const auto* button : stack_.findChildren<QAbstractButton*>()) {
            all << button->text() << button->toolTip();
        }
        for (const auto* label : stack_.findChildren<QLabel*>()) {
            all << label->text();
        }
        for (const auto* list : stack_.findChildren<QComboBox*>()) {
            all << list->toolTip();
        }
        return all;
    };
    const QStringList english = texts();
    languageTable().select(kLanguageRussian);
    stack_.retranslate();
    const QStringList russian = texts();
    ASSERT_EQ(russian.size(), english.size());
    for (qsizetype i = 0; i < russian.size(); ++i) {
        const bool hasWords = english[i].contains(QRegularExpression("[A-Za-z]{3}"));
        const bool sameInBoth = english[i] == "English" || english[i].contains('/');
        EXPECT_TRUE(!hasWords || sameInBoth || russian[i] != english[i]) << english[i].toStdString();
    }
    EXPECT_LE(stack_.minimumSizeHint().width(), 300 + find<QToolButton>("PanelHeader1")->sizeHint().width());
    languageTable().select(kLanguageEnglish);
    stack_.retranslate();
    EXPECT_EQ(texts(), english);
}

TEST_F(Panels, IconsOpenPanelsByKeyAsFarAsThereIsHeight) {
    stack_.resize(300, 500);
    stack_.load({});
    QSignalSpy opened(&stack_, &PanelStack::memberOpened);
    EXPECT_EQ(stack_.openMember(), 0);
    auto* third = find<QToolButton>("PanelHeader3");
    EXPECT_EQ(third->shortcut(), QKeySequence(Qt::ALT | Qt::Key_3));
    third->setFocus();
    QTest::keyClick(third, Qt::Key_Space);
    EXPECT_EQ(stack_.openMember(), 2);
    EXPECT_TRUE(file_->isVisible());
    EXPECT_FALSE(board_->isVisible());
    QTest::keyClick(third, Qt::Key_Space);
    EXPECT_FALSE(file_->isVisible());
    EXPECT_TRUE(board_->isVisible());
    QTest::keyClick(find<QToolButton>("PanelHeader1"), Qt::Key_Space);
    EXPECT_EQ(stored().showSettingMember, -1);
    EXPECT_FALSE(board_->isVisible());
    EXPECT_EQ(opened.count(), 3);
    stack_.open(0);
    stack_.open(2);
    stack_.resize(300, 1200);
    QApplication::processEvents();
    EXPECT_TRUE(file_->isVisible() && board_->isVisible());
    EXPECT_EQ(stored().panelsOpen, 0b101);
    stack_.setFolded(true);
    EXPECT_FALSE(file_->isVisible() || board_->isVisible());
    QTest::keyClick(third, Qt::Key_Space);
    EXPECT_TRUE(file_->isVisible() && board_->isVisible());
}

TEST_F(Panels, LanguageAndLogAreAskedForAndFollow) {
    stack_.load({});
    stack_.open(4);
    QSignalSpy russian(program_, &ProgramPanel::russianChosen);
    QTest::mouseClick(find<QRadioButton>("RussianChooseButton"), Qt::LeftButton, {}, QPoint(8, 8));
    EXPECT_EQ(russian.count(), 1);
    program_->setLanguage(InterfaceLanguage::English);
    EXPECT_EQ(russian.count(), 1);
    EXPECT_EQ(stored().language, InterfaceLanguage::English);
    QSignalSpy log(program_, &ProgramPanel::debugLogChanged);
    program_->setDebugLog(false, "/tmp/Tarno2.dbg");
    EXPECT_EQ(find<QLabel>("DebugLogPathLabel")->text(), "/tmp/Tarno2.dbg");
    QTest::keyClick(find<QCheckBox>("DebugModeBox"), Qt::Key_Space);
    ASSERT_EQ(log.count(), 1);
    EXPECT_TRUE(log.front().front().toBool());
}

}  // namespace
}  // namespace tarno2::test

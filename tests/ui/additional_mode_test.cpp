// The synchronisation window, driven with keys and mouse.

#include <QGroupBox>
#include <algorithm>
#include <set>

#include "config/logs/debug_log.h"
#include "tests/ui/additional_mode_fixture.h"
#include "ui/synchro_picture.h"

namespace tarno2::test {
namespace {

TEST_F(AdditionalMode, AnalysisOfChannelsByMouseAndKeyboard) {
    open();
    EXPECT_FALSE(find<QWidget>("Panel1")->isVisible() || find<QWidget>("Panel2")->isVisible());
    EXPECT_FALSE(find<QWidget>("StartValueEdit")->isEnabled() || find<QWidget>("BufferBar")->isEnabled());
    click("AnalyzeButton");
    EXPECT_TRUE(find<QWidget>("Panel1")->isVisible());
    EXPECT_FALSE(find<QWidget>("Panel2")->isVisible());
    choose("AnalogStartModeButton", 0);
    choose("AnalogWriteModeButton", 1);
    choose("AnalogStopModeButton", 1);
    choose("StartValueUnit", 1);
    choose("WriteValueUnit", 0);
    choose("StopValueUnit", 2);
    type("StartChannelBox", "7");
    type("WriteChannelBox", "3");
    type("StopChannelBox", "7");
    type("StartValueEdit", "250,5");
    type("WriteValueEdit", "-1e6");
    type("StopValueEdit", "-0.5");
    click("AcceptButton");
    EXPECT_FALSE(window_->isVisible());
    EXPECT_EQ(settings_.SynchroAnalyzeMode, 1);
    EXPECT_TRUE(settings_.analysisOnAnalog);
    EXPECT_TRUE(settings_.startAnalogEnabled && settings_.writeAnalogEnabled && settings_.stopAnalogEnabled);
    EXPECT_EQ(settings_.AnalyzeAnalogStartMode * 10 + settings_.AnalyzeAnalogStopMode, 1);
    EXPECT_EQ(settings_.AnalyzeAnalogStartChannel, 7);
    EXPECT_EQ(settings_.AnalyzeAnalogWriteChannel, 3);
    EXPECT_EQ(settings_.AnalyzeAnalogStartValue, 250.5);
    EXPECT_EQ(settings_.AnalyzeAnalogStartUnit, 1);
    EXPECT_EQ(settings_.AnalyzeAnalogWriteMode, 1);
    EXPECT_EQ(settings_.AnalyzeAnalogWriteValue, -1e6);
    EXPECT_EQ(settings_.AnalyzeAnalogWriteUnit, 2);
    EXPECT_EQ(settings_.AnalyzeAnalogStopChannel, 7);
    EXPECT_EQ(settings_.AnalyzeAnalogStopValue, -0.5);
    EXPECT_EQ(settings_.AnalyzeAnalogStopUnit, 0);
}

TEST_F(AdditionalMode, AnalysisOfThePort) {
    open();
    click("AnalyzeButton");
    click("PortRadio");
    EXPECT_FALSE(find<QWidget>("AnalogStartBox")->isVisible());
    choose("PortStartModeButton", 1);
    choose("PortWriteModeButton", 0);
    choose("PortStopModeButton", 0);
    choose("PortStopModeButton", 2);
    type("PortStartChannelBox", "2");
    type("PortWriteChannelBox", "3");
    type("PortStopChannelBox", "1");
    EXPECT_EQ(find<QComboBox>("PortStopChannelBox")->count(), 4);
    click("AcceptButton");
    EXPECT_TRUE(settings_.analysisOnPort && settings_.portStartEnabled && settings_.portWriteEnabled);
    EXPECT_FALSE(settings_.portStopEnabled);
    EXPECT_EQ(settings_.AnalyzePortStartMode, 1);
    EXPECT_EQ(settings_.AnalyzePortStartBit * 100 + settings_.AnalyzePortWriteBit * 10 + settings_.AnalyzePortStopBit,
              231);
    open();
    choose("PortStartModeButton", 2);
    choose("PortWriteModeButton", 2);
    click("AcceptButton");
    EXPECT_EQ(settings_.SynchroAnalyzeMode, 0) << "no condition is left";
    EXPECT_TRUE(find<QRadioButton>("OffButton")->isChecked());
}

TEST_F(AdditionalMode, Records) {
    open();
    click("SynchroButton");
    EXPECT_TRUE(find<QWidget>("Panel2")->isVisible());
    type("SynchroBufferSizeEdit", "2000", true);
    EXPECT_EQ(typed("SynchroPrehistoryLevelEdit"), "500");
    type("SynchroPrehistoryLevelEdit", "333", true);
    EXPECT_TRUE(window_->isVisible()) << "Enter in a size only applies it";
    click("StopAfterTrigged");
    QTest::keyClick(find<QWidget>("SynchroValueEdit"), Qt::Key_Return);
    EXPECT_FALSE(window_->isVisible()) << "Enter elsewhere accepts";
    EXPECT_EQ(sizes_.prehistory, 333);
    EXPECT_EQ(sizes_.history, 1667);

    open();
    click("SynchroPortRadio");
    choose("PortSynchroModeButton", 2);
    EXPECT_EQ(find<SynchroPicture>("SynchroPicture")->sketch().recordBegin, -1);
    click("AcceptButton");
    EXPECT_EQ(settings_.SynchroAnalyzeMode, 2) << "records without an edge: nothing will be recorded";
    EXPECT_FALSE(settings_.synchroOnPort || settings_.synchroOnAnalog);
}

TEST_F(AdditionalMode, BarsAndEditsOfTheSizes) {
    open();
    click("SynchroButton");
    EXPECT_EQ(find<QSlider>("BufferBar")->minimum(), 20);
    EXPECT_EQ(find<QSlider>("BufferBar")->maximum(), 2621440);
    EXPECT_EQ(bar("BufferBar"), 1000);
    EXPECT_EQ(bar("PrehistoryBar"), 25);
    QTest::keyClick(find<QSlider>("BufferBar"), Qt::Key_Right);
    EXPECT_EQ(typed("SynchroBufferSizeEdit"), "1001");
    EXPECT_EQ(typed("SynchroPrehistoryLevelEdit"), "250");
    QTest::keyClick(find<QSlider>("PrehistoryBar"), Qt::Key_End);
    EXPECT_EQ(typed("SynchroPrehistoryLevelEdit"), "1001");
    type("SynchroBufferSizeEdit", "100", true);
    EXPECT_EQ(bar("BufferBar"), 100);
    EXPECT_EQ(typed("SynchroPrehistoryLevelEdit"), "100");
    type("SynchroPrehistoryLevelEdit", "40", true);
    EXPECT_EQ(bar("PrehistoryBar"), 40);
    type("SynchroPrehistoryLevelEdit", "-3", true);
    EXPECT_EQ(typed("SynchroPrehistoryLevelEdit"), "0");
    type("SynchroBufferSizeEdit", "9999999", true);
    EXPECT_EQ(typed("SynchroBufferSizeEdit"), "2621440");
    click("AcceptButton");
    window_->setFacts(additionalModeFacts({}));
    open();
    EXPECT_EQ(bar("BufferBar"), 1000) << "as far as it goes without channels";
    EXPECT_EQ(typed("SynchroBufferSizeEdit"), "1000");
}

TEST_F(AdditionalMode, SizesTellWhatTheyMean) {
    open();
    click("SynchroButton");
    type("SynchroBufferSizeEdit", "20", true);
    auto* percentage = find<QSlider>("PrehistoryBar");
    QTest::keyClick(percentage, Qt::Key_Home);
    QTest::keyClick(percentage, Qt::Key_Right);
    EXPECT_EQ(typed("SynchroPrehistoryLevelEdit"), "0");
    EXPECT_EQ(find<QLabel>("PercentageLabel")->text(), "1 %");
    auto* length = find<QLabel>("RecordLengthLabel");
    EXPECT_EQ(length->text(), "One record: 0.002 s, 80 B");
    type("SynchroPrehistoryLevelEdit", "21");
    EXPECT_TRUE(length->text().endsWith(uiText(TextId::SynchroParametersMistake)));
    EXPECT_EQ(find<SynchroPicture>("SynchroPicture")->sketch().recordBegin, -1);
    type("SynchroPrehistoryLevelEdit", "?");
    EXPECT_TRUE(length->text().endsWith(uiText(TextId::SynchroValueMistake)));
    for (const char* name : {"BufferBar", "PrehistoryBar"}) {
        auto* slider = find<QSlider>(name);
        const int before = slider->value();
        QTest::mouseClick(slider, Qt::LeftButton, {}, QPoint(slider->width() - 3, slider->height() / 2));
        EXPECT_GT(slider->value(), before) << name;
    }
    EXPECT_EQ(typed("SynchroBufferSizeEdit").toInt(), bar("BufferBar"));
    EXPECT_EQ(typed("SynchroPrehistoryLevelEdit").toInt(), bar("BufferBar") * bar("PrehistoryBar") / 100);
}

TEST_F(AdditionalMode, ByKeyboardAlone) {
    open();
    press("AnalyzeButton");
    for (const char* name : {"StartChannelBox", "WriteChannelBox", "StopChannelBox"}) {
        QTest::keyClick(find<QComboBox>(name), Qt::Key_End);
        QTest::keyClick(find<QComboBox>(name), Qt::Key_Up);
        QTest::keyClick(find<QComboBox>(name), Qt::Key_Down);
        EXPECT_EQ(find<QComboBox>(name)->currentText(), "7") << "the last of the list";
    }
    press("SynchroButton");
    press("SynchroPortRadio");
    auto* mode = find<QWidget>("PortSynchroModeButton");
    QTest::keyClick(mode, Qt::Key_Space);
    auto* popup = QApplication::activePopupWidget();
    ASSERT_NE(popup, nullptr);
    QTest::keyClick(popup, Qt::Key_Down);
    QTest::keyClick(popup, Qt::Key_Return);
    window_->activateWindow();  // the offscreen platform leaves that to us after a popup
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    QTest::keyClick(find<QComboBox>("PortSynchroBitBox"), Qt::Key_Down);
    press("StopAfterTrigged");
    press("AcceptButton");
    EXPECT_FALSE(window_->isVisible());
    EXPECT_TRUE(settings_.synchroOnPort && settings_.StopAfterTrigged);
    EXPECT_EQ(settings_.SynchroPortMode * 10 + settings_.SynchroPortBit, 11);
    open();
    press("OffButton");
    press("AcceptButton");
    EXPECT_EQ(settings_.SynchroAnalyzeMode, 0);
}

TEST_F(AdditionalMode, MistakesKeepTheWindowOpen) {
    const struct {
        const char* mode;
        const char* source;
        const char* control;
    } cases[] = {
        {"AnalyzeButton", "AnalogRadio", "StartChannelBox"},
        {"AnalyzeButton", "AnalogRadio", "StartValueEdit"},
        {"AnalyzeButton", "AnalogRadio", "StopValueEdit"},
        {"AnalyzeButton", "PortRadio", "PortWriteChannelBox"},
        {"SynchroButton", "SynchroAnalogRadio", "SynchroBufferSizeEdit"},
        {"SynchroButton", "SynchroAnalogRadio", "SynchroPrehistoryLevelEdit"},
        {"SynchroButton", "SynchroAnalogRadio", "SynchroChannelBox"},
        {"SynchroButton", "SynchroAnalogRadio", "SynchroValueEdit"},
        {"SynchroButton", "SynchroPortRadio", "PortSynchroBitBox"},
    };
    for (const auto& mistaken : cases) {
        SCOPED_TRACE(mistaken.control);
        settings_.SynchroAnalyzeMode = 0;
        window_->setQuiet(false);
        window_->ReloadControls();
        open();
        click(mistaken.mode);
        click(mistaken.source);
        type(mistaken.control, "12,x");
        EXPECT_TRUE(find<SynchroPicture>("SynchroPicture")->sketch().lanes.empty());
        find<QWidget>("AcceptButton")->setFocus();
        click("AcceptButton");
        auto* message = window_->findChild<QMessageBox*>();
        ASSERT_NE(message, nullptr);
        EXPECT_EQ(message->text(), "Mistake at input of value");
        ASSERT_EQ(message->buttons().size(), 1);
        EXPECT_EQ(message->buttons()[0]->text(), "OK");
        QTest::mouseClick(message->buttons()[0], Qt::LeftButton);
        EXPECT_TRUE(window_->isVisible());
        EXPECT_EQ(window_->focusWidget(), find<QWidget>(mistaken.control));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        window_->setQuiet(true);
        click("AcceptButton");
        EXPECT_EQ(window_->findChild<QMessageBox*>(), nullptr);
        EXPECT_FALSE(window_->isVisible());
        EXPECT_EQ(settings_.SynchroAnalyzeMode, 0);
        EXPECT_FALSE(settings_.analysisOnAnalog || settings_.analysisOnPort);
        EXPECT_TRUE(find<QRadioButton>("OffButton")->isChecked());
    }
}

TEST_F(AdditionalMode, CancelTakesBackAndTheFramesButtonAccepts) {
    settings_.SynchroAnalyzeMode = 2;
    settings_.SynchroAnalogValue = 1.5;
    sizes_ = {4, 6};  // smaller than the bar goes
    window_->ReloadControls();
    open();
    EXPECT_EQ(typed("SynchroBufferSizeEdit"), "10");
    click("AnalyzeButton");
    type("StopValueEdit", "oh");
    click("AcceptButton");
    delete window_->findChild<QMessageBox*>();
    QTest::keyClick(window_.get(), Qt::Key_Escape);
    EXPECT_FALSE(window_->isVisible());
    EXPECT_EQ(settings_.SynchroAnalyzeMode, 2);
    EXPECT_TRUE(settings_.analysisOnAnalog);
    EXPECT_EQ(typed("StopValueEdit"), "0");
    open();
    EXPECT_TRUE(find<QWidget>("Panel2")->isVisible());
    type("SynchroValueEdit", "2");
    click("CancelButton");
    EXPECT_EQ(typed("SynchroValueEdit"), "1.5");
    open();
    type("SynchroValueEdit", "2");
    window_->close();
    EXPECT_FALSE(window_->isVisible());
    EXPECT_EQ(settings_.SynchroAnalogValue, 2.0);
    EXPECT_EQ(sizes_.prehistory, 4);
    EXPECT_EQ(sizes_.history, 6);
}

TEST_F(AdditionalMode, SwitchedOffFromOutside) {
    const TemporaryFolder folder;
    settings_.SynchroAnalyzeMode = 1;
    settings_.analysisOnAnalog = false;
    settings_.analysisOnPort = true;
    window_->ReloadControls();
    debugLog().open(folder.file("run.cfg"), 1);
    window_->SwitchOff();
    debugLog().close();
    EXPECT_EQ(settings_.SynchroAnalyzeMode, 0);
    EXPECT_FALSE(settings_.analysisOnAnalog || settings_.analysisOnPort);
    EXPECT_TRUE(find<QRadioButton>("OffButton")->isChecked());
    const std::string log = readFile(folder.file("run.dbg"));
    const size_t enter = log.find("T_AdditionalModeWindow::FormCloseQuery enter");
    const size_t exit = log.find("T_AdditionalModeWindow::FormCloseQuery exit status=NORMAL");
    EXPECT_TRUE(enter < exit && exit != std::string::npos) << log;
}

TEST_F(AdditionalMode, HintsFollowWhatIsTyped) {
    const auto shows = [this](const QString& text) {
        for (const auto* label : window_->findChildren<QLabel*>()) {
            if (label->isVisible() && label->text().contains(text)) {
                return true;
            }
        }
        return false;
    };
    open();
    click("SynchroButton");
    type("SynchroChannelBox", "7");
    EXPECT_TRUE(shows("Gain: 10, range: +-1 V"));
    type("SynchroValueEdit", "0.5");
    EXPECT_TRUE(shows("ADC code: 1010")) << "(0.5 + 10) * 4095 / 20 - 2048 is 101.875: cut, by 10";
    type("SynchroValueEdit", "1.5");
    EXPECT_TRUE(shows(uiText(TextId::SynchroThresholdOutside)));
    choose("SynchroValueUnit", 1);
    EXPECT_FALSE(shows(uiText(TextId::SynchroThresholdOutside)));
    EXPECT_TRUE(shows("One record: 0.1 s, 3.91 KB"));
    EXPECT_EQ(find<SynchroPicture>("SynchroPicture")->sketch().falling, false);
    choose("AnalogSynchroModeButton", 1);
    EXPECT_EQ(find<SynchroPicture>("SynchroPicture")->sketch().falling, true);
    type("SynchroChannelBox", "8");
    EXPECT_TRUE(shows(uiText(TextId::SynchroParametersMistake)));
    window_->setFacts(additionalModeFacts({{8, 2, 0.0F, 0.0, 10.0}}));
    EXPECT_TRUE(shows("Gain: 2, range: 0 ... 10 V"));
    EXPECT_FALSE(shows(uiText(TextId::SynchroThresholdOutside)));
    type("SynchroValueEdit", "-1");
    EXPECT_TRUE(shows(uiText(TextId::SynchroThresholdOutside)));
    click("SynchroPortRadio");
    EXPECT_FALSE(shows(uiText(TextId::SynchroPortNotUsed)));
    AdditionalModeFacts without = additionalModeFacts();
    without.board.useDigitalPort = false;
    window_->setFacts(without);
    EXPECT_TRUE(shows(uiText(TextId::SynchroPortNotUsed)));
}

TEST_F(AdditionalMode, EveryTextFollowsTheLanguageAndEveryLetterIsItsOwn) {
    for (const uint16_t language : {kLanguageRussian, kLanguageEnglish}) {
        languageTable().select(language);
        open();
        EXPECT_EQ(window_->windowTitle(), uiText(TextId::SynchroWindow));
        for (const char* mode : {"OffButton", "AnalyzeButton", "SynchroButton"}) {
            click(mode);
            std::multiset<QChar> letters;
            const auto note = [&letters](const QWidget* widget, const QString& text) {
                if (!widget->isVisible()) {
                    return;
                }
                EXPECT_FALSE(text.isEmpty()) << widget->objectName().toStdString();
                if (const qsizetype mark = text.indexOf('&'); mark >= 0) {
                    letters.insert(text[mark + 1].toUpper());
                }
            };
            for (const auto* button : window_->findChildren<QAbstractButton*>()) {
                note(button, button->text());
            }
            for (const auto* box : window_->findChildren<QGroupBox*>()) {
                note(box, box->title());
            }
            EXPECT_GE(letters.size(), 5U) << mode;
            EXPECT_EQ(std::set<QChar>(letters.begin(), letters.end()).size(), letters.size()) << mode;
        }
        EXPECT_EQ(find<TaggedButton>("SynchroValueUnit")->text(), uiText(TextId::Volts));
        EXPECT_LE(window_->sizeHint().width(), 1024);
        EXPECT_LE(window_->sizeHint().height(), 700);
        click("CancelButton");
    }
}

}  // namespace
}  // namespace tarno2::test

#include "ui/show_form.h"

#include <QScrollBar>
#include <thread>

#include "display/recorded.h"
#include "records/record_description.h"
#include "tests/display/signal_source.h"
#include "tests/ui/fake_scoper.h"
#include "tests/ui/widgets.h"
#include "ui/digital_signal_settings.h"
#include "ui/show_tools.h"

namespace tarno2::test {
namespace {

/// Two channels at 1000 frames a second above two digital lines; a screen is 50 frames long.
class ShowForm : public ::testing::Test {
protected:
    ShowForm() {
        languageTable().select(kLanguageEnglish);
        settings_.axisXUnit = 2;
        settings_.axisXValue = 50.0;
    }

    /// Code i of the first channel in frame i, its double of the second; line 0 is 1 in odd frames.
    static std::vector<int16_t> frames(int first, int count) {
        std::vector<int16_t> words;
        for (int i = first; i < first + count; ++i) {
            words.push_back(static_cast<int16_t>(i * 4 + i % 2));
            words.push_back(static_cast<int16_t>(i * 8));
        }
        return words;
    }
    void begin(T_ShowForm& form, const ChannelLabel& first = {}) {
        ASSERT_TRUE(form.tap().prepare(4, 4096, 4000.0));
        LiveRecording recording;
        recording.format = format16(2, 2);
        recording.format.channels[0].label = first;
        recording.channels = {3, 7};
        recording.everyFrameWritten = false;
        form.recordingStarted(std::move(recording));
    }
    /// Frames from a thread of their own, as a recording gives them; waits until the view has fetched them.
    void feed(T_ShowForm& form, int first, int count) {
        std::thread([&] { form.tap().put(bytesOf(frames(first, count))); }).join();
        ASSERT_TRUE(QTest::qWaitFor([&] { return form.frameCount() == static_cast<uint64_t>(first + count); }));
    }
    void expectX(double low, double high) {
        EXPECT_NEAR(scoper_.range[kScoperaAxisX].first, low, 1e-9);
        EXPECT_NEAR(scoper_.range[kScoperaAxisX].second, high, 1e-9);
    }
    void zoom(int32_t axis, double low, double high, int32_t cause = kScoperaCauseWheel) {
        scoper_.events.m_pRangeChanged(scoper_.events.m_pContext, axis, low, high, cause);
    }
    std::string recorded(int count) {
        std::vector<int16_t> words = frames(0, count);
        std::string name =
            folder_.write("signal.dat", {reinterpret_cast<const char*>(words.data()), words.size() * sizeof(int16_t)});
        RecordDescription description;
        description.setFrequency(2000.0);
        description.setSynchronousChannels(0);
        description.setDataCountPerChannel(static_cast<uint64_t>(count));
        description.setPacketMode(0, 0.0, 0);
        description.setBackwardOrder(0);
        description.setDataFormat({2, 2, 0x3FFF, 14, 0, 3, 2, 1});
        description.setCreateTime({2026, 2, 2, 3, 4, 5, 6, 0});
        description.addChannelRange(5.0, -5.0);
        description.addChannelRange(5.0, -5.0);
        EXPECT_TRUE(description.writeForDataFile(name));
        return name;
    }

    TemporaryFolder folder_;
    ProgramSettings settings_;
    FakeScoper scoper_;
};

TEST_F(ShowForm, FollowsTheNewestFramesOrStaysAndScrolls) {
    T_ShowForm form(settings_, &scoper_);
    form.show();
    auto* bar = form.findChild<QScrollBar*>("ScrollBar1");
    begin(form);
    settings_.followToData = 0;
    form.ScrollBar1KeyDown(34);
    EXPECT_EQ(bar->value(), 0) << "nothing was recorded";

    form.DoNotFolowForDataClick(1);
    feed(form, 0, 120);
    expectX(70.0, 120.0);
    EXPECT_FALSE(bar->isEnabled());
    EXPECT_EQ(scoper_.samples.front(), scoper_.frames.m_fFirstX) << "frame i shows code i at its millisecond i";
    EXPECT_EQ(scoper_.frames.m_fStepX, 1.0);
    QTest::keyClick(&form, Qt::Key_PageDown);
    expectX(70.0, 120.0);
    QTest::keyClick(&form, Qt::Key_PageUp);
    expectX(20.0, 70.0);
    EXPECT_TRUE(bar->isEnabled()) << "who looks back has held it";
    QTest::keyClick(&form, Qt::Key_End);
    expectX(70.0, 120.0);

    form.DoNotFolowForDataClick(2);
    expectX(0.0, 50.0);
    EXPECT_EQ(scoper_.samples.front() - scoper_.frames.m_fFirstX, 100) << "the third screen began with frame 100";

    form.DoNotFolowForDataClick(0);
    expectX(100.0, 150.0);
    EXPECT_TRUE(bar->isEnabled());
    feed(form, 120, 10);
    expectX(100.0, 150.0);
    QTest::keyClick(bar, Qt::Key_Left);
    expectX(84.0, 134.0);
    QTest::keyClick(bar, Qt::Key_PageUp);
    expectX(34.0, 84.0);
    QTest::keyClick(&form, Qt::Key_PageUp);
    expectX(0.0, 50.0);
    for (int i = 0; i < 4; ++i) {
        QTest::keyClick(bar, Qt::Key_PageDown);
    }
    expectX(130.0, 180.0);
    bar->setValue(20);
    expectX(20.0, 70.0);

    form.recordingStopped();
    expectX(20.0, 70.0);
}

TEST_F(ShowForm, AxesAndShowModesAreThoseOfTheSettings) {
    T_ShowForm form(settings_, &scoper_);
    form.show();
    begin(form);
    feed(form, 0, 50);
    EXPECT_EQ(scoper_.texts[kScoperaTextLabelX], "Milisecond");
    ASSERT_EQ(scoper_.columns.size(), 2U);
    EXPECT_EQ(scoper_.columns[1].name, "Channel 7");
    EXPECT_EQ(scoper_.columns[1].color, static_cast<uint32_t>(settings_.channels[7].color));
    EXPECT_EQ(scoper_.texts[kScoperaTextLabelY], "Millivolts") << "98 of 2047 codes are 240 mV";

    // The picture stays when the unit changes.
    const struct {
        int tag;
        double span;
    } units[] = {{0, 50.0}, {1, 50000.0}, {3, 0.05}, {4, 0.05 / 60}, {5, 0.05 / 3600}, {2, 50.0}};
    for (const auto& [tag, span] : units) {
        form.Samples1Click(tag);
        EXPECT_NEAR(settings_.axisXValue, span, span * 1e-9) << tag;
        expectX(0.0, span);
    }
    form.ADCCodes1Click(3);
    EXPECT_EQ(scoper_.columns[0].scale, 1.0);
    EXPECT_NEAR(scoper_.range[kScoperaAxisY].second, 98 * 1.1, 1e-6);
    form.ADCCodes1Click(2);
    EXPECT_NEAR(scoper_.columns[0].scale, 1e7 / 4095, 1e-6);

    auto* edit = form.findChild<QLineEdit*>("AxisXEdit");
    for (const char* typed : {"nonsense", "0", "-5"}) {
        edit->setText(typed);
        QTest::keyClick(edit, Qt::Key_Return);
        EXPECT_EQ(settings_.axisXValue, 50.0) << typed;
    }
    edit->setText("12,5");
    QTest::keyClick(edit, Qt::Key_Return);
    expectX(37.0, 50.0);
    EXPECT_EQ(settings_.axisXValue, 12.5);
    form.ADCCodes1Click(0);
    edit = form.findChild<QLineEdit*>("AxisYEdit");
    edit->setText("2.5");
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(scoper_.range[kScoperaAxisY], std::pair(-2.5, 2.5));
    EXPECT_FALSE(settings_.axisYAutoMode);

    form.ShowDigitalClick(true);
    ASSERT_EQ(scoper_.columns.size(), 4U);
    EXPECT_EQ(scoper_.columns[2].name, "Line 0");
    form.OnlyDigitalDataClick();
    ASSERT_EQ(scoper_.columns.size(), 2U);
    EXPECT_EQ(scoper_.columns[0].color, static_cast<uint32_t>(settings_.digitalLines[0].color));
    form.PixelModeClick(true);
    EXPECT_EQ(scoper_.options[kScoperaOptionPoints], 1);
    settings_.axisFontSize = 14;
    form.settingsChanged();
    EXPECT_EQ(scoper_.font, settings_.axisFontName + "14");
}

TEST_F(ShowForm, ChannelsAreToldByNameAndInTheirUnits) {
    settings_.axisYMode = 0;
    T_ShowForm form(settings_, &scoper_);
    form.show();
    begin(form, {"inlet", "bar", -100.0, 1000.0});
    feed(form, 0, 50);
    EXPECT_EQ(scoper_.columns[0].name, "inlet");
    EXPECT_EQ(scoper_.texts[kScoperaTextLabelY], "Volts");
    const auto volts = scoper_.columns[0];
    zoom(kScoperaAxisY, -0.1, 0.2);
    form.ADCCodes1Click(4);
    EXPECT_EQ(settings_.axisYLower, settings_.axisYUpper) << "a zoom in volts means nothing in units";
    EXPECT_NEAR(scoper_.columns[0].scale, -100.0 * volts.scale, 1e-9);
    EXPECT_NEAR(scoper_.columns[0].offset, -100.0 * volts.offset + 1000.0, 1e-9);
    EXPECT_NEAR(scoper_.columns[1].scale, volts.scale, 1e-9);
    EXPECT_EQ(scoper_.columns[0].name, "inlet [bar]") << "units differ";
    EXPECT_EQ(scoper_.texts[kScoperaTextLabelY], "bar, V");
    EXPECT_EQ(scoper_.texts[kScoperaTextUnitY], "bar, V");
    scoper_.events.m_pColumnSwitched(scoper_.events.m_pContext, 1, 0);
    form.settingsChanged();
    EXPECT_EQ(scoper_.texts[kScoperaTextLabelY], "bar") << "the other channel is not shown";
    zoom(kScoperaAxisY, 900.0, 1100.0);
    EXPECT_EQ(scoper_.range[kScoperaAxisY], std::pair(900.0, 1100.0));
    EXPECT_EQ(settings_.axisYUpper, 1100.0);
}

TEST_F(ShowForm, TheMouseHoldsThePictureAndADoubleClickLetsItGo) {
    T_ShowForm form(settings_, &scoper_);
    form.show();
    begin(form);
    feed(form, 0, 100);
    for (const int32_t cause : {int32_t{kScoperaCauseWheel}, int32_t{kScoperaCauseProgram}, 99}) {
        zoom(kScoperaAxisX, 60.0, 80.0, cause);
        expectX(80.0, 100.0);
        EXPECT_EQ(settings_.axisXValue, 20.0) << "the view goes on following";
    }
    for (const int32_t cause : {kScoperaCauseDrag, kScoperaCauseRectangle, kScoperaCauseKey}) {
        zoom(kScoperaAxisX, 30.0, 50.0, cause);
        expectX(30.0, 50.0);
        EXPECT_EQ(settings_.followToData, 1) << "it is held, and followed again after a restart";
        EXPECT_TRUE(form.findChild<QScrollBar*>("ScrollBar1")->isEnabled());
        feed(form, static_cast<int>(form.frameCount()), 10);
        expectX(30.0, 50.0);
        const auto end = static_cast<double>(form.frameCount());
        scoper_.events.m_pAutomaticWanted(scoper_.events.m_pContext);
        expectX(end - 50.0, end);
        EXPECT_TRUE(settings_.axisYAutoMode);
    }
}

// Whatever unit is shown, the setting keeps its own, and another run shows what this one did.
TEST_F(ShowForm, AZoomedScaleIsThereAfterARestart) {
    for (const int unit : {-1, 0, 1, 2}) {
        settings_.axisYMode = unit;
        settings_.axisYAutoMode = true;
        std::pair<double, double> shown;
        {
            T_ShowForm form(settings_, &scoper_);
            form.show();
            begin(form);
            feed(form, 0, 100);
            EXPECT_EQ(scoper_.texts[kScoperaTextUnitY], unit == 0 ? "Volts" : unit == 2 ? "Microvolts" : "Millivolts");
            const double volt = unit == 0 ? 1.0 : unit == 2 ? 1e6 : 1e3;
            zoom(kScoperaAxisY, -0.1 * volt, 0.2 * volt);
            EXPECT_FALSE(settings_.axisYAutoMode);
            EXPECT_NEAR(settings_.axisYValue, 0.2 * (unit == 1 ? 1e3 : unit == 2 ? 1e6 : 1.0), 1e-6);
            shown = scoper_.range[kScoperaAxisY];
            EXPECT_NEAR(shown.second / shown.first, -2.0, 1e-9);
        }
        T_ShowForm again(settings_, &scoper_);
        again.show();
        begin(again);
        feed(again, 0, 100);
        EXPECT_EQ(scoper_.range[kScoperaAxisY], shown) << unit;
        auto* edit = again.findChild<QLineEdit*>("AxisYEdit");
        edit->setText("0.5");
        QTest::keyClick(edit, Qt::Key_Return);
        EXPECT_NEAR(scoper_.range[kScoperaAxisY].second, 0.5, 1e-9);
    }
}

TEST_F(ShowForm, ThePlaceOfTheMouseFollowsThePictureWithItsUnitAndItsDigits) {
    settings_.axisYMode = 1;
    T_ShowForm form(settings_, &scoper_);
    form.resize(800, 500);
    form.show();
    begin(form);
    feed(form, 0, 100);
    const auto* status = form.findChild<QLabel*>("MousePlace");
    const auto move = [&](double x, bool inside) {
        scoper_.events.m_pMouseMoved(scoper_.events.m_pContext, x, scoper_.range[kScoperaAxisY].first, inside ? 1 : 0,
                                     -1);
    };
    move(75.0, true);
    EXPECT_TRUE(status->text().startsWith("X 75.0 ms  Y ")) << status->text().toStdString();
    EXPECT_TRUE(status->text().endsWith(" mV"));
    feed(form, 100, 40);
    ASSERT_TRUE(QTest::qWaitFor([&] { return scoper_.range[kScoperaAxisX].second == 140.0; })) << "glides there";
    EXPECT_TRUE(status->text().startsWith("X 115.0 ms  Y ")) << status->text().toStdString();
    zoom(kScoperaAxisX, 139.95, 140.0);
    languageTable().select(kLanguageRussian);
    form.Samples1Click(3);
    move(scoper_.range[kScoperaAxisX].first, true);
    EXPECT_TRUE(status->text().startsWith(QStringLiteral("X 0.138000 с  Y "))) << status->text().toStdString();
    languageTable().select(kLanguageEnglish);
    move(0.0, false);
    EXPECT_EQ(status->text(), QString());
}

TEST_F(ShowForm, TheFieldOfXShowsSixDigitsAndKeepsTheRest) {
    settings_.axisXValue = 123.456789;
    T_ShowForm form(settings_, &scoper_);
    form.show();
    auto* edit = form.findChild<QLineEdit*>("AxisXEdit");
    EXPECT_EQ(edit->text(), "123.457");
    EXPECT_EQ(edit->cursorPosition(), 0);
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(settings_.axisXValue, 123.456789);
}

TEST_F(ShowForm, AHiddenViewFetchesAndConvertsNothing) {
    T_ShowForm form(settings_, &scoper_);
    form.show();
    begin(form);
    EXPECT_TRUE(form.tap().watched());
    form.hide();
    EXPECT_FALSE(form.tap().watched());
    const int drawn = scoper_.drawn;
    form.Samples1Click(3);
    form.FormPaint();
    EXPECT_EQ(scoper_.drawn, drawn);
    form.show();
    EXPECT_TRUE(form.tap().watched());
    QSignalSpy readings(&form, &T_ShowForm::readings);
    feed(form, 0, 100);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !readings.isEmpty(); }));
    const auto given = readings[0][0].value<std::vector<ChannelReading>>();
    ASSERT_EQ(given.size(), 2U);
    EXPECT_EQ(given[1].channel, 7);
    EXPECT_NEAR(given[1].maximum, (2 * 99 + 2048) * 10.0 / 4095 - 5.0, 1e-9);
}

TEST_F(ShowForm, AFinishedRecordingIsShownWhole) {
    T_ShowForm form(settings_, &scoper_);
    form.show();
    QSignalSpy messages(&form, &T_ShowForm::message);
    EXPECT_FALSE(form.openRecording(folder_.file("missing.dat")));
    ASSERT_EQ(messages.size(), 1);
    EXPECT_EQ(messages[0][0].toString().toStdString(),
              "Recording \"" + folder_.file("missing.dat") + "\" has no description.");

    const std::string name = recorded(1000);
    const std::string text = name.substr(0, name.size() - 3) + "txt";
    EXPECT_EQ(dataFileOf(text), name);
    EXPECT_EQ(dataFileOf(folder_.file("other.txt")), folder_.file("other.txt"));
    const std::string otherEnding = name.substr(0, name.size() - 3) + "bin";
    ASSERT_TRUE(renameFile(name, otherEnding).ok());
    folder_.write("signal.png", "a picture of it");
    EXPECT_EQ(dataFileOf(text), otherEnding);
    ASSERT_TRUE(renameFile(otherEnding, name).ok());
    ASSERT_TRUE(form.openRecording(dataFileOf(text)));
    EXPECT_EQ(form.openedFile(), name);
    EXPECT_EQ(form.windowTitle(), "Signal: signal.dat, 2026-02-03 04:05:06");
    ASSERT_TRUE(QTest::qWaitFor([&] { return scoper_.samples.size() == 2000; }));
    expectX(0.0, 1000.0);
    EXPECT_EQ(scoper_.samples[1999], 2 * 999);
    zoom(kScoperaAxisX, 200.0, 210.0);
    expectX(200.0, 210.0);
    EXPECT_EQ(settings_.axisXValue, 50.0) << "the span of live signals stays";
    QTest::keyClick(&form, Qt::Key_PageDown);
    expectX(210.0, 220.0);
    scoper_.events.m_pAutomaticWanted(scoper_.events.m_pContext);
    expectX(0.0, 1000.0);

    auto* back = form.findChild<QWidget*>("BackToLive");
    EXPECT_TRUE(back->isVisible());
    begin(form);
    EXPECT_FALSE(back->isVisible());
    EXPECT_EQ(form.openedFile(), "");
    EXPECT_EQ(form.windowTitle(), "Signal");
    feed(form, 0, 60);
    expectX(10.0, 60.0);
}

}  // namespace
}  // namespace tarno2::test

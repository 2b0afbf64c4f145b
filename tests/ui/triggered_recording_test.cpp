// Recordings of the simulated board whose synchronisation is set up in the window by mouse and keyboard alone.

#include <array>
#include <cstring>
#include <gtest/gtest.h>

#include "records/key_value_file.h"
#include "records/record_description.h"
#include "tests/ui/main_window.h"
#include "ui/additional_mode_window.h"

namespace tarno2::test {
namespace {

constexpr int32_t kChannels = 2;

class TriggeredRecording : public MainWindow {
protected:
    /// Opens the main window for that board, and the window of the synchronisation.
    void open(int32_t board) {
        wanted_.wish.base = static_cast<uint32_t>(board);
        wanted_.wish.stopRule = StopRule::Size;
        wanted_.stopValue = 80000;
        wanted_.stopPower = 0;
        wanted_.wish.useDigitalPort = board == 1;
        MainWindow::open();
        window_ = form().findChild<T_AdditionalModeWindow*>();
        press(Qt::Key_F7);
        ASSERT_TRUE(QTest::qWaitForWindowActive(window_));
        click("SynchroButton");
    }
    /// In the window of the synchronisation.
    void click(const char* name) { clickIn(*window_, name); }
    void type(const char* name, const char* text, bool enter = true) { typeIn(*window_, name, text, enter); }
    /// Opens a popup with the mouse and goes to its item of that number with the keyboard.
    void choose(const char* name, int tag) {
        click(name);
        auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(popup, nullptr) << name;
        for (int i = 0; i < 3 && (popup->activeAction() == nullptr || popup->activeAction()->data() != tag); ++i) {
            QTest::keyClick(popup, Qt::Key_Down);
        }
        QTest::keyClick(popup, Qt::Key_Return);
    }
    /// Accepts, and presses the start button; the samples in the file when the recording has ended by itself.
    std::vector<int16_t> recorded() {
        click("AcceptButton");
        EXPECT_FALSE(window_->isVisible());
        MainWindow::click("StartButton");
        EXPECT_TRUE(QTest::qWaitFor([this] { return !form().control().running(); }, 60000));
        const std::string data = readFile(wanted_.wish.fileName);
        std::vector<int16_t> samples(data.size() / sizeof(int16_t));
        std::memcpy(samples.data(), data.data(), samples.size() * sizeof(int16_t));
        return samples;
    }
    std::vector<double> listed(const char* key) const {
        KeyValueFile description;
        EXPECT_TRUE(description.openForReading(RecordDescription::fileNameFor(wanted_.wish.fileName)));
        std::vector<double> values(1000);
        uint32_t count = 0;
        description.readDoubleArray(key, values, count);
        values.resize(count);
        return values;
    }

    /// The description lists that many equal records.
    void expectListed(size_t records, const std::array<double, 6>& values) const {
        const char* const keys[] = {"SynchroListPrehistory", "SynchroListHistory", "SynchroListMode",
                                    "SynchroListConditions", "SynchroListChannel", "SynchroListValue"};
        for (size_t i = 0; i < values.size(); ++i) {
            EXPECT_EQ(listed(keys[i]), std::vector<double>(records, values[i])) << keys[i];
        }
    }
    /// The strip tells what is in the file.
    void expectShown(size_t events, bool whole) {
        const auto* cell = form().findChild<QWidget*>(QStringLiteral("EventsCell"));
        EXPECT_EQ(cell->findChildren<QLabel*>().last()->text().toULongLong(), events);
        EXPECT_EQ(form().findChild<QProgressBar*>()->value() == 100, whole);
    }

    const ScopedEnvironment signal_{"TARNO2_SIMULATOR", "RealTime=0;Signal=Sine;SignalFrequency=200;DigitalPeriod=300"};
    T_AdditionalModeWindow* window_ = nullptr;
};

TEST_F(TriggeredRecording, HoldsTheRecordsThatTheWindowPromised) {
    open(2);  // 16-bit codes over -10 V to 10 V
    choose("AnalogSynchroModeButton", 1);
    type("SynchroChannelBox", "1", false);
    type("SynchroValueEdit", "-1500", false);
    choose("SynchroValueUnit", 1);
    type("SynchroBufferSizeEdit", "200");
    type("SynchroPrehistoryLevelEdit", "60");
    const std::vector<int16_t> samples = recorded();
    const size_t records = samples.size() / (200 * kChannels);
    ASSERT_EQ(samples.size(), 40000U) << "80000 bytes were asked for";
    const int32_t code = -4915;  // (-1.5 V + 10 V) * 65535 / 20 V - 32768, cut
    std::vector<double> points;
    for (size_t record = 0; record < records; ++record) {
        const auto level = [&](size_t frame) { return samples[(record * 200 + frame) * kChannels + 1]; };
        ASSERT_GT(level(59), code) << record;
        ASSERT_LE(level(60), code) << record;
        points.push_back(static_cast<double>((record + 1) * 60));
    }
    EXPECT_EQ(listed("SynchroListPoint"), points);
    expectShown(records, true);
    expectListed(records, {60, 140, 0, 1, 1, -1500});
}

TEST_F(TriggeredRecording, EndsAfterTheFirstRecordsWhenAskedTo) {
    open(2);
    type("SynchroChannelBox", "0", false);
    type("SynchroValueEdit", "2,5", false);
    type("SynchroBufferSizeEdit", "5000");
    click("StopAfterTrigged");
    const std::vector<int16_t> samples = recorded();
    ASSERT_GE(samples.size(), 10000U);
    EXPECT_LT(samples.size(), 40000U) << "not by the size";
    EXPECT_EQ(samples.size() % 10000, 0U);
    EXPECT_EQ(listed("SynchroListHistory"), std::vector<double>(samples.size() / 10000, 5000));
    expectShown(samples.size() / 10000, false);
}

TEST_F(TriggeredRecording, OfALineOfThePort) {
    open(1);  // two digital lines in the lowest bits
    click("SynchroPortRadio");
    choose("PortSynchroModeButton", 1);
    type("PortSynchroBitBox", "1", false);
    type("SynchroBufferSizeEdit", "100");
    type("SynchroPrehistoryLevelEdit", "30");
    const std::vector<int16_t> samples = recorded();
    ASSERT_EQ(samples.size(), 40000U);
    const size_t records = samples.size() / (100 * kChannels);
    for (size_t record = 0; record < records; ++record) {
        const auto line = [&](size_t frame) { return samples[(record * 100 + frame) * kChannels] >> 1 & 1; };
        ASSERT_EQ(line(29) * 10 + line(30), 10) << record;
    }
    expectListed(records, {30, 70, 1, 1, 1, 0});
}

TEST_F(TriggeredRecording, APortThatIsNotUsedSwitchesItOff) {
    open(2);
    click("SynchroPortRadio");
    EXPECT_EQ(recorded().size(), 40000U) << "every frame is written";
    EXPECT_EQ(form().programSettings().wish.synchro.SynchroAnalyzeMode, 0);
    EXPECT_TRUE(window_->findChild<QRadioButton*>("OffButton")->isChecked());
}

}  // namespace
}  // namespace tarno2::test

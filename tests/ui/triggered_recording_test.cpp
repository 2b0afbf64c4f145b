// Recordings of the simulated board whose synchronisation is set up in the window by mouse and keyboard alone.

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressBar>
#include <QRadioButton>
#include <QTest>
#include <cstring>
#include <gtest/gtest.h>

#include "config/settings/settings_file.h"
#include "language/language_table.h"
#include "records/key_value_file.h"
#include "records/record_description.h"
#include "tests/support/temporary_folder.h"
#include "ui/additional_mode_window.h"
#include "ui/main_form.h"

namespace tarno2::test {
namespace {

constexpr int32_t kChannels = 2;

class TriggeredRecording : public ::testing::Test {
protected:
    TriggeredRecording()
        : registry_("TARNO2_REGISTRY", std::string(TARNO2_BIN) + "/registry.d"),
          signal_("TARNO2_SIMULATOR", "RealTime=0;Signal=Sine;SignalFrequency=200;DigitalPeriod=300") {
        languageTable().select(kLanguageEnglish);
    }
    ~TriggeredRecording() override { form_->close(); }

    /// Opens the main window for that board.
    void open(uint32_t board) {
        ProgramSettings settings;
        settings.wish.driver = "Simulator";
        settings.wish.base = board;
        settings.wish.frequency = 100e3;
        settings.checkDiskSpeed = false;
        settings.wish.stopRule = StopRule::Size;
        settings.stopValue = 80000;
        settings.stopPower = 0;
        for (int32_t channel = 0; channel < kChannels; ++channel) {
            settings.channels[static_cast<size_t>(channel)].active = true;
        }
        settings.wish.fileName = folder_.file("run.dat");
        EXPECT_TRUE(WriteConfig(folder_.path(), settings));
        form_ = std::make_unique<T_MainForm>(folder_.path(), std::nullopt);
        form_->present();
        EXPECT_TRUE(QTest::qWaitForWindowActive(form_.get()));
        window_ = form_->findChild<T_AdditionalModeWindow*>();
    }
    void openWindow() {
        QTest::keyClick(form_.get(), Qt::Key_F7);
        ASSERT_TRUE(QTest::qWaitForWindowActive(window_));
    }

    static void click(QWidget* among, const char* name) {
        auto* button = among->findChild<QAbstractButton*>(QLatin1String(name));
        ASSERT_TRUE(button != nullptr && button->isVisible() && button->isEnabled()) << name;
        const bool small = button->isCheckable();
        QTest::mouseClick(button, Qt::LeftButton, {}, small ? QPoint(8, button->height() / 2) : QPoint());
    }
    /// Opens a popup with the mouse and goes to its item of that number with the keyboard.
    void choose(const char* name, int tag) {
        click(window_, name);
        auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(popup, nullptr) << name;
        for (int i = 0; i < 3 && (popup->activeAction() == nullptr || popup->activeAction()->data() != tag); ++i) {
            QTest::keyClick(popup, Qt::Key_Down);
        }
        QTest::keyClick(popup, Qt::Key_Return);
    }
    void type(const char* name, const char* text, bool enter = false) {
        auto* control = window_->findChild<QWidget*>(QLatin1String(name));
        if (const auto* box = qobject_cast<QComboBox*>(control)) {
            control = box->lineEdit();
        }
        ASSERT_TRUE(control != nullptr && control->isVisible() && control->isEnabled()) << name;
        QTest::mouseClick(control, Qt::LeftButton);
        QTest::keyClick(control, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(control, text);
        if (enter) {
            QTest::keyClick(control, Qt::Key_Return);
        }
    }
    /// Presses the start button; the samples that are in the file when the recording has ended by itself.
    std::vector<int16_t> record() {
        click(form_.get(), "StartButton");
        EXPECT_TRUE(QTest::qWaitFor([this] { return !form_->control().running(); }, 60000));
        const std::string data = readFile(folder_.file("run.dat"));
        std::vector<int16_t> samples(data.size() / sizeof(int16_t));
        std::memcpy(samples.data(), data.data(), samples.size() * sizeof(int16_t));
        return samples;
    }
    std::vector<double> listed(const char* key) const {
        KeyValueFile description;
        EXPECT_TRUE(description.openForReading(RecordDescription::fileNameFor(folder_.file("run.dat"))));
        std::vector<double> values(1000);
        uint32_t count = 0;
        description.readDoubleArray(key, values, count);
        values.resize(count);
        return values;
    }

    /// The strip tells what is in the file.
    void expectShown(size_t events, bool whole) {
        const auto* cell = form_->findChild<QWidget*>(QStringLiteral("EventsCell"));
        EXPECT_EQ(cell->findChildren<QLabel*>().last()->text().toULongLong(), events);
        EXPECT_EQ(form_->findChild<QProgressBar*>()->value() == 100, whole);
    }

    TemporaryFolder folder_;
    ScopedEnvironment registry_;
    ScopedEnvironment signal_;
    std::unique_ptr<T_MainForm> form_;
    T_AdditionalModeWindow* window_ = nullptr;
};

TEST_F(TriggeredRecording, HoldsTheRecordsThatTheWindowPromised) {
    open(2);  // 16-bit codes over -10 V to 10 V
    openWindow();
    click(window_, "SynchroButton");
    choose("AnalogSynchroModeButton", 1);
    type("SynchroChannelBox", "1");
    type("SynchroValueEdit", "-1500");
    choose("SynchroValueUnit", 1);
    type("SynchroBufferSizeEdit", "200", true);
    type("SynchroPrehistoryLevelEdit", "60", true);
    click(window_, "AcceptButton");
    ASSERT_FALSE(window_->isVisible());

    const std::vector<int16_t> samples = record();
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
    const struct {
        const char* key;
        double value;
    } same[] = {{"SynchroListPrehistory", 60}, {"SynchroListHistory", 140}, {"SynchroListMode", 0},
                {"SynchroListConditions", 1},  {"SynchroListChannel", 1},   {"SynchroListValue", -1500}};
    for (const auto& entry : same) {
        EXPECT_EQ(listed(entry.key), std::vector<double>(records, entry.value)) << entry.key;
    }
}

TEST_F(TriggeredRecording, EndsAfterTheFirstRecordsWhenAskedTo) {
    open(2);
    openWindow();
    click(window_, "SynchroButton");
    type("SynchroChannelBox", "0");
    type("SynchroValueEdit", "2,5");
    type("SynchroBufferSizeEdit", "5000", true);
    click(window_, "StopAfterTrigged");
    click(window_, "AcceptButton");
    const std::vector<int16_t> samples = record();
    ASSERT_GE(samples.size(), 10000U);
    EXPECT_LT(samples.size(), 40000U) << "not by the size";
    EXPECT_EQ(samples.size() % 10000, 0U);
    EXPECT_EQ(listed("SynchroListHistory"), std::vector<double>(samples.size() / 10000, 5000));
    expectShown(samples.size() / 10000, false);
}

TEST_F(TriggeredRecording, OfALineOfThePort) {
    open(1);  // two digital lines in the lowest bits
    click(form_.get(), "DigitalPortBox");
    openWindow();
    click(window_, "SynchroButton");
    click(window_, "SynchroPortRadio");
    choose("PortSynchroModeButton", 1);
    type("PortSynchroBitBox", "1");
    type("SynchroBufferSizeEdit", "100", true);
    type("SynchroPrehistoryLevelEdit", "30", true);
    click(window_, "AcceptButton");
    const std::vector<int16_t> samples = record();
    ASSERT_EQ(samples.size(), 40000U);
    const size_t records = samples.size() / (100 * kChannels);
    for (size_t record = 0; record < records; ++record) {
        const auto line = [&](size_t frame) { return samples[(record * 100 + frame) * kChannels] >> 1 & 1; };
        ASSERT_EQ(line(29) * 10 + line(30), 10) << record;
    }
    const struct {
        const char* key;
        double value;
    } same[] = {{"SynchroListPrehistory", 30}, {"SynchroListHistory", 70}, {"SynchroListMode", 1},
                {"SynchroListConditions", 1},  {"SynchroListChannel", 1},  {"SynchroListValue", 0}};
    for (const auto& entry : same) {
        EXPECT_EQ(listed(entry.key), std::vector<double>(records, entry.value)) << entry.key;
    }
}

TEST_F(TriggeredRecording, APortThatIsNotUsedSwitchesItOff) {
    open(2);
    openWindow();
    click(window_, "SynchroButton");
    click(window_, "SynchroPortRadio");
    click(window_, "AcceptButton");
    EXPECT_EQ(form_->programSettings().wish.synchro.SynchroAnalyzeMode, 2);
    EXPECT_EQ(record().size(), 40000U) << "every frame is written";
    EXPECT_EQ(form_->programSettings().wish.synchro.SynchroAnalyzeMode, 0);
    EXPECT_TRUE(window_->findChild<QRadioButton*>("OffButton")->isChecked());
}

}  // namespace
}  // namespace tarno2::test

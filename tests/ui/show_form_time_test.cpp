// The time of the picture, the trigger in it, and what of it can be saved.

#include <QAction>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QSignalSpy>
#include <QToolBar>
#include <QTreeWidget>
#include <fstream>
#include <thread>

#include "display/recorded.h"
#include "records/passport.h"
#include "records/record_description.h"
#include "tests/display/signal_source.h"
#include "tests/ui/fake_scoper.h"
#include "tests/ui/widgets.h"
#include "ui/recent_recordings.h"
#include "ui/show_form.h"
#include "ui/threshold_lines.h"

namespace tarno2::test {
namespace {

constexpr int64_t kSecond = 1'000'000;

class ShowFormTime : public ::testing::Test {
protected:
    ShowFormTime() {
        languageTable().select(kLanguageEnglish);
        settings_.axisXUnit = 3;
    }

    /// One channel at 100 frames a second, begun on 2026-02-02 at 04:05:06.
    std::string recorded(size_t count) {
        std::string bytes;
        for (size_t i = 0; i < count; ++i) {
            const auto code = static_cast<int16_t>(i % 1000);
            bytes.append(reinterpret_cast<const char*>(&code), sizeof code);
        }
        std::string name = folder_.write("signal.dat", bytes);
        RecordDescription description;
        description.setFrequency(100.0);
        description.setSynchronousChannels(0);
        description.setDataCountPerChannel(count);
        description.setPacketMode(0, 0.0, 0);
        description.setBackwardOrder(0);
        description.setDataFormat({2, 0, 0xFFFF, 16, 0, 0, 0, 1});
        description.setCreateTime({2026, 2, 1, 2, 4, 5, 6, 0});
        description.addChannelRange(5.0, -5.0);
        EXPECT_TRUE(description.writeForDataFile(name));
        return name;
    }
    /// So many records of so many frames, of which 10 come before the trigger, and a rest.
    std::string triggered(size_t records, uint32_t frames, size_t rest = 0) {
        const size_t count = records * frames + rest;
        Passport passport;
        passport.driver = "Simulator";
        passport.start = kSecond;
        passport.rate = {100.0, 100.0, 1, 100.0, false, {}, {}};
        passport.sample = {2, true, 16, 0, 0xFFFF, -32768, 32767, 0, 0, 0, false};
        passport.channels.push_back({0, "inlet", "V", 1, 5.0, -5.0, 1.0, 0.0});
        passport.synchronisation = {"records", 10, frames - 10, false, {}};
        passport.pieces.push_back({"signal.dat", count, 2 * count, static_cast<uint32_t>(records), ""});
        folder_.write("signal.json", passportText(passport));
        return recorded(count);
    }
    LiveRecording live() {
        LiveRecording recording;
        recording.format = format16(2, 0);
        recording.channels = {3, 7};
        recording.everyFrameWritten = false;
        return recording;
    }
    void feed(T_ShowForm& form, int count) {
        std::vector<int16_t> words(static_cast<size_t>(2 * count), 100);
        std::thread([&] { form.tap().put(bytesOf(words)); }).join();
        ASSERT_TRUE(QTest::qWaitFor([&] { return form.frameCount() >= static_cast<uint64_t>(count); }));
    }
    void goTo(T_ShowForm& form, const char* place) {
        problem_.clear();
        QTimer::singleShot(0, &form, [&, place] {
            auto* edit = form.findChild<QLineEdit*>("GoToPlace");
            ASSERT_NE(edit, nullptr);
            edit->setText(place);
            QTest::keyClick(edit, Qt::Key_Return);
            if (auto* label = form.findChild<QLabel*>("GoToProblem"); label != nullptr) {
                problem_ = label->text();
            }
            if (auto* dialog = qobject_cast<QDialog*>(edit->window())) {
                dialog->reject();
            }
        });
        form.GoToTimeClick();
    }

    TemporaryFolder folder_;
    ProgramSettings settings_;
    FakeScoper scoper_;
    QString problem_;
};

TEST_F(ShowFormTime, ALongRecordingBeginsWithTheTimeOfDay) {
    T_ShowForm form(settings_, &scoper_);
    form.show();
    const int64_t start = *timeOf({2026, 2, 1, 2, 4, 5, 6, 0});
    ASSERT_TRUE(form.openRecording(recorded(6000)));
    EXPECT_EQ(scoper_.clock.second, 0.0) << "a minute";
    form.ClockClick(true);
    EXPECT_EQ(scoper_.clock, std::pair(start, 1.0));
    EXPECT_EQ(scoper_.texts[kScoperaTextLabelX], "Time of day, 2026-02-02");
    ASSERT_TRUE(form.openRecording(recorded(70'000)));
    EXPECT_EQ(scoper_.clock, std::pair(start, 1.0)) << "over ten minutes";
    form.Samples1Click(2);
    EXPECT_EQ(scoper_.clock.second, 0.0) << "a unit was chosen";
    form.ClockClick(true);
    EXPECT_EQ(scoper_.clock, std::pair(start, 0.001));
    EXPECT_FALSE(settings_.viewClock) << "chosen for the opened recording alone";
}

TEST_F(ShowFormTime, GoesToATimeOrTellsWhyNot) {
    T_ShowForm form(settings_, &scoper_);
    form.show();
    ASSERT_TRUE(form.openRecording(recorded(60'000)));
    form.ZoomInClick();
    form.ZoomInClick();
    const auto middle = [&] { return (scoper_.range[0].first + scoper_.range[0].second) / 2.0; };
    goTo(form, "200.5");
    EXPECT_NEAR(middle(), 200.5, 1e-6);
    goTo(form, "#30000");
    EXPECT_NEAR(middle(), 300.0, 1e-6);
    goTo(form, "2026-02-02 04:10:06");
    EXPECT_NEAR(middle(), 300.0, 1e-6);
    form.ClockClick(true);
    goTo(form, "04:08:26");
    EXPECT_NEAR(middle(), 200.0, 1e-6);
    EXPECT_EQ(problem_, "");
    goTo(form, "noon");
    EXPECT_TRUE(problem_.contains("\"noon\" is no place")) << problem_.toStdString();
    goTo(form, "#60001");
    EXPECT_TRUE(problem_.contains("outside")) << problem_.toStdString();
    EXPECT_NEAR(middle(), 200.0, 1e-6);
}

TEST_F(ShowFormTime, ARunningSignalTellsTheTimeOfDayToo) {
    settings_.viewClock = true;
    settings_.followToData = 1;
    T_ShowForm form(settings_, &scoper_);
    form.show();
    ASSERT_TRUE(form.tap().prepare(4, 4096, 4000.0));
    form.recordingStarted(live());
    EXPECT_EQ(scoper_.clock.second, 0.0) << "nothing has come";
    feed(form, 500);
    const int64_t utc = utcMicroseconds();
    const int64_t now = utc + utcOffsetMinutes(utc) * 60 * kSecond;
    EXPECT_EQ(scoper_.clock.second, 1.0);
    EXPECT_NEAR(static_cast<double>(now - scoper_.clock.first), 0.5e6, 60e6);
}

TEST_F(ShowFormTime, AThresholdIsALineThatMovesTheSetting) {
    SynchroSettings& synchro = settings_.wish.synchro;
    synchro.SynchroAnalyzeMode = kModeSynchronisation;
    synchro.SynchroAnalogChannelNumber = 7;
    synchro.SynchroAnalogValue = 1500.0;
    synchro.SynchroAnalogUnit = 1;
    settings_.axisYMode = 0;
    T_ShowForm form(settings_, &scoper_);
    form.show();
    ASSERT_TRUE(form.tap().prepare(4, 4096, 4000.0));
    form.recordingStarted(live());
    feed(form, 100);
    ASSERT_EQ(scoper_.levels.size(), 1U);
    EXPECT_EQ(scoper_.levels[0].first, 1U);
    EXPECT_NEAR(scoper_.levels[0].second, 1.5, 1e-9);
    const QSignalSpy moved(&form, &T_ShowForm::thresholdMoved);
    const auto drag = [&](double y, int done) { scoper_.events.m_pLevelMoved(&form, 3, y, done); };
    form.setThresholdsLocked(true);
    drag(2.0, 1);
    EXPECT_EQ(synchro.SynchroAnalogValue, 1500.0) << "while a recording runs";
    form.setThresholdsLocked(false);
    drag(2.00012, 0);
    EXPECT_NEAR(synchro.SynchroAnalogValue, 2000.0, 1.0);
    EXPECT_NEAR(scoper_.levels[0].second, synchro.SynchroAnalogValue / 1000.0, 1e-9) << "line and setting agree";
    EXPECT_EQ(moved.count(), 0);
    drag(-1.0, 1);
    EXPECT_NEAR(synchro.SynchroAnalogValue, -1000.0, 1e-6);
    EXPECT_EQ(moved.count(), 1);
    synchro.SynchroAnalogMode = 2;
    form.settingsChanged();
    EXPECT_TRUE(scoper_.levels.empty());
}

TEST_F(ShowFormTime, RecordsLieOverEachOtherWithTheirTriggerAtOnePlace) {
    const std::string name = triggered(4, 50, 20);
    settings_.viewRecords = 10;
    T_ShowForm form(settings_, &scoper_);
    form.show();
    ASSERT_TRUE(form.openRecording(name));
    EXPECT_EQ(form.frameCount(), 50U) << "one record";
    EXPECT_NEAR(scoper_.range[0].first, -0.1, 1e-9) << "the trigger is the zero";
    EXPECT_NEAR(scoper_.range[0].second, 0.4, 1e-9);
    EXPECT_EQ(scoper_.samples.front(), 150) << "the newest whole record";
    ASSERT_EQ(scoper_.earlier.size(), 3U);
    EXPECT_EQ(*static_cast<const int16_t*>(scoper_.earlier[0].m_pSamples), 100);
    EXPECT_EQ(*static_cast<const int16_t*>(scoper_.earlier[2].m_pSamples), 0);
    EXPECT_EQ(scoper_.earlier[1].m_fFirstX, scoper_.frames.m_fFirstX);
    form.RecordsClick(1);
    EXPECT_TRUE(scoper_.earlier.empty());
    form.RecordsClick(0);
    EXPECT_EQ(form.frameCount(), 220U);
}

// Another part is asked for, and the view closed, while those of the first one are read.
TEST_F(ShowFormTime, LargeRecordsAreReadWithoutHoldingUpTheWindow) {
    constexpr uint32_t kFrames = 2'000'000;
    const std::string name = triggered(4, kFrames);
    settings_.viewRecords = 10;
    T_ShowForm form(settings_, &scoper_);
    form.show();
    ASSERT_TRUE(form.openRecording(name));
    form.ZoomInClick();
    // Those of the whole record may have come before; the part that was zoomed to begins later.
    const auto zoomed = [&] { return scoper_.earlier.size() == 3U && scoper_.earlier[0].m_fFirstX > 3900.0; };
    ASSERT_TRUE(QTest::qWaitFor(zoomed, 60000));
    EXPECT_NEAR(scoper_.earlier[0].m_fFirstX, scoper_.frames.m_fFirstX, 1e-9);
    form.FitClick();
    EXPECT_EQ(scoper_.earlier.size(), 3U) << "those of before stay";
    form.backToLive();
    EXPECT_TRUE(scoper_.earlier.empty());
}

TEST_F(ShowFormTime, APartIsSavedByItsFramesAndChannels) {
    T_ShowForm form(settings_, &scoper_);
    form.show();
    std::optional<FrameWish> wish;
    QObject::connect(&form, &T_ShowForm::savePartWanted,
                     [&](const std::string&, const FrameWish& wanted) { wish = wanted; });
    form.SavePartClick();
    EXPECT_FALSE(wish) << "nothing is opened";
    ASSERT_TRUE(form.openRecording(recorded(1000)));
    form.ZoomInClick();
    form.SavePartClick();
    ASSERT_TRUE(wish);
    EXPECT_EQ(wish->from, "250");
    EXPECT_EQ(wish->to, "750");
    EXPECT_EQ(wish->channels, "");
}

TEST_F(ShowFormTime, TheSheetOfKeysAndTheMenuHaveEveryCommandWithAKey) {
    T_ShowForm form(settings_, &scoper_);
    form.show();
    QMenu menu;
    form.fillMenu(menu);
    form.KeysClick();
    auto* sheet = form.findChild<QTreeWidget*>("KeySheet");
    ASSERT_NE(sheet, nullptr);
    for (const QAction* action : form.actions()) {
        EXPECT_FALSE(action->text().isEmpty()) << action->shortcut().toString().toStdString();
        EXPECT_TRUE(menu.actions().contains(const_cast<QAction*>(action))) << action->text().toStdString();
        EXPECT_FALSE(sheet->findItems(action->text(), Qt::MatchExactly | Qt::MatchRecursive, 1).isEmpty())
            << action->text().toStdString();
    }
}

TEST(RecentRecordings, KeepsTheLastTenOnce) {
    std::string list;
    for (int i = 0; i < 12; ++i) {
        list = withRecent(list, "run" + std::to_string(i));
    }
    EXPECT_EQ(list, "run11|run10|run9|run8|run7|run6|run5|run4|run3|run2");
    EXPECT_EQ(withRecent("a|b|c", "b"), "b|a|c");
    EXPECT_EQ(withRecent("a", "od|d"), "a");
    TemporaryFolder folder;
    const std::string there = folder.write("a&b.dat", "");
    QMenu menu;
    std::string opened;
    fillRecent(menu, there + "|" + folder.file("gone.dat"), [&](const std::string& name) { opened = name; });
    ASSERT_EQ(menu.actions().size(), 2);
    menu.actions()[1]->trigger();
    EXPECT_EQ(opened, folder.file("gone.dat"));
    menu.actions()[0]->trigger();
    EXPECT_EQ(opened, there);
}

}  // namespace
}  // namespace tarno2::test

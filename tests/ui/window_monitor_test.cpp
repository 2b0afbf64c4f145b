// A board that is looked at before anything is recorded, in the main window.

#include "platform/file.h"
#include "records/passport.h"
#include "tests/ui/main_window.h"
#include "ui/show_form.h"

namespace tarno2::test {
namespace {

class WindowMonitor : public MainWindow {
protected:
    /// Starts by key and waits until the view has frames.
    void monitor() {
        press(Qt::Key_F4);
        ASSERT_TRUE(waitForState(TextId::StatusMonitoring));
        auto* const view = form().findChild<T_ShowForm*>();
        ASSERT_TRUE(QTest::qWaitFor([view] { return view->frameCount() > 0; }, 30000));
    }
};

TEST_F(WindowMonitor, ShowsTheSignalWithoutAFile) {
    wanted_.showFormVisible = true;
    open();
    const std::string name = nameField();
    monitor();
    EXPECT_TRUE(listHas("frames are shown, none is kept"));
    EXPECT_TRUE(find<QPushButton>("MonitorButton")->isChecked());
    EXPECT_TRUE(find<QPushButton>("StartButton")->isEnabled());
    EXPECT_FALSE(find<QPushButton>("MarkButton")->isVisible());
    EXPECT_FALSE(find<QComboBox>("DriverBox")->isEnabled());
    EXPECT_TRUE(find<QComboBox>("StopModeBox")->isEnabled()) << "it does not touch the board";
    press(Qt::Key_F4);
    EXPECT_EQ(stateWord(), "Stopped");
    EXPECT_TRUE(QTest::qWaitFor([this] { return listHas("Monitoring ended. No frame was kept."); }, 30000));
    EXPECT_FALSE(find<QPushButton>("MonitorButton")->isChecked());
    EXPECT_TRUE(find<QComboBox>("DriverBox")->isEnabled());
    EXPECT_EQ(recordings(), std::vector<std::string>{});
    EXPECT_EQ(nameField(), name);
    click("MonitorButton");
    ASSERT_TRUE(waitForState(TextId::StatusMonitoring));
    click("StopButton");
    EXPECT_EQ(stateWord(), "Stopped");
    monitor();
    EXPECT_TRUE(close()) << "nobody is asked about what is not kept";
    EXPECT_EQ(recordings(), std::vector<std::string>{});
}

TEST_F(WindowMonitor, RecordsFromThereWithWhatWasSetMeanwhile) {
    wanted_.showFormVisible = true;
    open();
    monitor();
    openPanel(3);
    type("FileNameEdit", "");
    press(Qt::Key_F5);
    EXPECT_EQ(stateWord(), "Monitoring") << "a refusal ends nothing";
    EXPECT_TRUE(attention().contains("File name is empty")) << attention().toStdString();
    type("FileNameEdit", QString::fromStdString(folder_.file("data/other.dat")));
    type("CommentEdit", "seen before");
    press(Qt::Key_F5);
    ASSERT_TRUE(waitForState(TextId::StatusRecording));
    ASSERT_TRUE(waitForBytes(40000));
    EXPECT_FALSE(find<QPushButton>("MonitorButton")->isEnabled());
    EXPECT_FALSE(find<QLineEdit>("FileNameEdit")->isEnabled());
    EXPECT_TRUE(find<QPushButton>("MarkButton")->isVisible());
    EXPECT_TRUE(listHas("The recording begins with frame "));
    press(Qt::Key_F6);
    EXPECT_EQ(stateWord(), "Stopped");
    EXPECT_EQ(recordings(), std::vector<std::string>{"other.dat"});
    std::string problem;
    const auto passport = readPassport(readFile(folder_.file("data/other.json")), problem);
    ASSERT_TRUE(passport) << problem;
    EXPECT_GT(passport->end.monitoredFrames.value_or(0), 0U);
    EXPECT_EQ(passport->comment, "seen before");
    EXPECT_EQ(passport->frames() * 4, readFile(folder_.file("data/other.dat")).size());
    EXPECT_TRUE(passportContradictions(passportText(*passport), *passport).empty());
}

}  // namespace
}  // namespace tarno2::test

// What the window does about recordings that were cut off.

#include <QAction>

#include "platform/file.h"
#include "platform/paths.h"
#include "tests/ui/main_window.h"

namespace tarno2::test {
namespace {

class WindowRecovery : public MainWindow {
protected:
    /// Asks for the recordings of a folder to be recovered; an empty name gives the choice up.
    void recover(const std::string& folder) {
        chooseFile(form(), QString::fromStdString(folder));
        for (QAction* action : form().findChildren<QAction*>()) {
            if (action->text() == uiText(TextId::MenuRecover)) {
                return action->trigger();
            }
        }
        ADD_FAILURE() << "no such action";
    }
    /// What a computer leaves that fails right now, in another folder: files of the recording as they are on the disk.
    std::string cutOff() {
        static_cast<void>(createDirectory(folder_.file("crashed")));
        for (const char* name : {"run.dat", "run.tarno2-journal"}) {
            folder_.write(joinPath("crashed", name), readFile(folder_.file(joinPath("data", name))));
        }
        return folder_.file("crashed");
    }
};

TEST_F(WindowRecovery, FindsWhatWasCutOffAndLeavesWhatIsBeingWritten) {
    if (kPathSeparator != '/') {
        GTEST_SKIP() << "the journal of a recording that runs can't be copied there";
    }
    open();
    record();
    const std::string data = folder_.file("data/run.dat");
    ASSERT_TRUE(QTest::qWaitFor([&] { return readFile(data).size() > 4; }, 30000)) << "the disk gets it in time";
    const std::string crashed = cutOff();
    const size_t frames = readFile(joinPath(crashed, "run.dat")).size() / 4;

    recover("");
    EXPECT_TRUE(fileExists(joinPath(crashed, "run.tarno2-journal"))) << "nobody chose it";
    recover(crashed);
    ASSERT_TRUE(QTest::qWaitFor([&] { return listHas("was recovered. Frames: "); }, 30000));
    EXPECT_NE(readFile(joinPath(crashed, "run.txt")).find("DataCountPerChannel = " + std::to_string(frames)),
              std::string::npos);
    recover(crashed);
    EXPECT_TRUE(QTest::qWaitFor([&] { return listHas("There are no unfinished recordings in"); }, 30000));
    recover(folder_.file("data"));

    press(Qt::Key_F6);
    ASSERT_TRUE(waitForState(TextId::StatusStopped));
    EXPECT_EQ(recordings(), std::vector<std::string>{"run.dat"});
}

}  // namespace
}  // namespace tarno2::test

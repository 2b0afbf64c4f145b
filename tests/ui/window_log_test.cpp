// The debug log of a whole interactive recording, line for line.

#include <QRegularExpression>
#include <gmock/gmock.h>

#include "config/logs/version.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "tests/ui/main_window.h"

namespace tarno2::test {
namespace {

/// Lines that the acquisition thread writes; between them and the window's there is no order but within each.
bool ofThread(const std::string& line) {
    static const QRegularExpression pattern(QStringLiteral(
        "^(Thread (for|Exit)|Calculate data|INIT |CHECK |ADCParameters|\\*  |Max Buffer|$|DataSpeed|Time "
        "for check|Max Sleep|Set Event|Wait Start|Prepare for start|Worst load)"));
    return pattern.match(QString::fromStdString(line)).hasMatch();
}

std::vector<std::string> linesOf(const std::vector<std::string>& all, bool thread) {
    std::vector<std::string> lines;
    for (const std::string& line : all) {
        if (ofThread(line) == thread) {
            lines.push_back(line);
        }
    }
    return lines;
}

class WindowLog : public MainWindow {
protected:
    /// The lines of a file made by hand, with what differs from run to run in its places.
    [[nodiscard]] std::vector<std::string> golden(const char* file, const std::string& next) const {
        QString text = QString::fromStdString(readFile(joinPath(TARNO2_GOLDEN, file)));
        text.replace("%VERSION%", kVersionText);
        text.replace("%FILE%", QString::fromStdString(folder_.file("data/run.dat")));
        text.replace("%NEXT%", QString::fromStdString(next));
        std::vector<std::string> lines;
        for (const QString& line : text.chopped(1).split('\n')) {
            lines.push_back(line.toStdString());
        }
        return lines;
    }
};

TEST_F(WindowLog, OneRecordingFromTheProgramsStartToItsEnd) {
    wanted_.channels[1].gain = 2;
    wanted_.wish.stopRule = StopRule::Time;
    wanted_.stopValue = 1.0;
    open();
    record();
    ASSERT_TRUE(waitForState(TextId::StatusStopped));
    ASSERT_TRUE(QTest::qWaitFor([this] { return listHas("Recording ended"); }, 30000));
    // Who closes the window before is told that there are no checksums.
    const std::string sums = folder_.file("data/run.sha256");
    ASSERT_TRUE(QTest::qWaitFor([&sums] { return fileExists(sums); }, 30000));
    const std::string next = nameField();
    std::vector<std::string> all = log();
    // A board of the simulator and a computer give these as they are.
    std::erase_if(all, [](const std::string& line) {
        return line.starts_with("Thread priority: ") || line.starts_with("Worst load of the ring = ") ||
               line.starts_with("*         ") || line.starts_with("Scoper ") ||
               line.find("scopera") != std::string::npos || line.starts_with("!!!!! no \"path\"");
    });
    EXPECT_THAT(linesOf(all, false), testing::ElementsAreArray(golden("recording_window.txt", next)));
    EXPECT_THAT(linesOf(all, true), testing::ElementsAreArray(golden("recording_thread.txt", next)));
}

}  // namespace
}  // namespace tarno2::test

// The debug log of a whole interactive recording, line for line.

#include <QRegularExpression>

#include "config/logs/version.h"
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

class WindowLog : public MainWindow {};

TEST_F(WindowLog, OneRecordingFromTheProgramsStartToItsEnd) {
    wanted_.channels[1].gain = 2;
    wanted_.wish.stopRule = StopRule::Time;
    wanted_.stopValue = 1.0;
    open();
    record();
    ASSERT_TRUE(waitForState(TextId::StatusStopped));
    ASSERT_TRUE(QTest::qWaitFor([this] { return listHas("Recording ended"); }, 30000));
    const std::string next = nameField();
    std::vector<std::string> all = log();
    // A board of the simulator and a computer give these as they are.
    std::erase_if(all, [](const std::string& line) {
        return line.starts_with("Thread priority: ") || line.starts_with("Worst load of the ring = ") ||
               line.starts_with("*         ") || line.starts_with("Scoper ") ||
               line.find("scopera") != std::string::npos || line.starts_with("!!!!! no \"path\"");
    });
    const std::vector<std::string> window = {
        "***********************************",
        std::string("Debug start Tarno2 version = ") + kVersionText,
        "Config language = 1",
        "Config driver = Simulator",
        "LoadConfigOk",
        "Driver load \"Simulator\"",
        "Driver load OK",
        "Setup Base = 0x1 , DRQ = 0",
        "Driver Freq List = NULL",
        "Driver BoardMode accessible = 15",
        "Cut mode accesible",
        "RecalcChannelCount",
        "StartButtonClick",
        "Connect",
        "Check file",
        "Save to file \"" + folder_.file("data/run.dat") + "\"",
        "Active channel = 0, gain = 1",
        "Active channel = 1, gain = 2",
        "BoardMode = 0",
        "Frequency = 100000.000000",
        "CreateThread",
        "Uninitialize",
        "No Error",
        "CutNumber = 0",
        "CutMode disable",
        "Set parameters: ",
        "Freq = 100000.000000",
        "CutNumber = 0",
        "ChannelCount = 2",
        "DataSize = 0",
        "CutFlag = 0",
        "Resume start",
        "Create timer for stop: TimeStopValue = 1.000000",
        "Timer stop - Work",
        "StopButtonClick",
        "KillTimer",
        "Stoping",
        "Stoping by User",
        "Generate new file name",
        "New file = \"" + next + "\"",
        "Stop - By user",
        "FormCloseQuery",
        "WriteConfig not console",
        "Destructor",
        "Debug stop...",
    };
    const std::vector<std::string> thread = {
        "Thread for SHORT(2) - START",
        "Calculate data error state = 1",
        "INIT start",
        "CHECK to driver",
        "CHECK REZULT = OK",
        "INIT to driver",
        "ADCParametersDMA INIT structures:",
        "ADCParametersDMA INIT rezult = 1",
        "ADCParametersDMA INIT structures rezult:",
        "ADCParametersDMAEX INIT structures:",
        "ADCParametersDMAEX INIT rezult = 1",
        "ADCParametersDMAEX INIT structures rezult:",
        "INIT REZULT = OK",
        "Max Buffer Size = 50000",
        "",
        "DataSpeed = 0.190735",
        "Time for check = 20",
        "Max Sleep Time = 1",
        "Set Event for Main",
        "Wait Start",
        "Prepare for start - OK",
        "Thread Exit rezAdd = 0, Code = 1",
    };
    EXPECT_EQ(linesOf(all, false), window);
    EXPECT_EQ(linesOf(all, true), thread);
}

}  // namespace
}  // namespace tarno2::test

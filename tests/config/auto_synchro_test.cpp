#include "config/settings/auto_synchro.h"

#include <gtest/gtest.h>
#include <string>

#include "config/logs/console_log.h"
#include "records/key_value_text.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

/// Reads a text of keys; `log` gets what the console log holds after it.
bool read(const std::string& text, RecordingWish& wish, std::string& log) {
    const TemporaryFolder folder;
    consoleLog().open(folder.path());
    KeyValueFile file;
    file.readText(text);
    const bool usable = readAutoSynchro(file, normaliseKeyValueText(text), wish);
    consoleLog().close();
    log = readFile(folder.file("AutoLog.txt"));
    return usable;
}

TEST(AutoSynchro, IsOffWhenTheFileSaysNothing) {
    RecordingWish wish;
    std::string log;
    ASSERT_TRUE(read("Frequency = 1000\r\n", wish, log));
    EXPECT_EQ(log, "");
    EXPECT_EQ(wish.synchro.SynchroAnalyzeMode, 0);
    EXPECT_EQ(wish.synchro.AnalyzeAnalogStartMode, 2);
    EXPECT_EQ(wish.synchro.SynchroAnalogMode, 2);
    EXPECT_EQ(wish.synchro.SynchroPortMode, 2);
    EXPECT_FALSE(wish.synchro.startAnalogEnabled || wish.synchro.portStopEnabled);
    EXPECT_EQ(wish.synchroSizes.prehistory + wish.synchroSizes.history, 0);
    EXPECT_FALSE(wish.useDigitalPort);
}

TEST(AutoSynchro, TakesEveryKey) {
    const std::string text =
        "SynchroAnalyzeMode = 2\r\nAnalyzeMode = 1\r\n"
        "AnalyzeAnalogStartMode = 0\r\nAnalyzeAnalogWriteMode = 1\r\nAnalyzeAnalogStopMode = 2\r\n"
        "AnalyzeAnalogStartChannel = 3\r\nAnalyzeAnalogWriteChannel = 4\r\nAnalyzeAnalogStopChannel = 5\r\n"
        "AnalyzeAnalogStartValue = 1.5\r\nAnalyzeAnalogWriteValue = -2.5\r\nAnalyzeAnalogStopValue = 3\r\n"
        "AnalyzeAnalogStartUnit = 0\r\nAnalyzeAnalogWriteUnit = 1\r\nAnalyzeAnalogStopUnit = 2\r\n"
        "AnalyzePortStartMode = 1\r\nAnalyzePortWriteMode = 2\r\nAnalyzePortStopMode = 0\r\n"
        "AnalyzePortStartBit = 7\r\nAnalyzePortWriteBit = 8\r\nAnalyzePortStopBit = 15\r\n"
        "SynchroMode = 1\r\nSynchroAnalogMode = 1\r\nSynchroAnalogChannelNumber = 6\r\nSynchroAnalogValue = 12e1\r\n"
        "SynchroAnalogUnit = 1\r\nSynchroPortMode = 0\r\nSynchroPortBit = 9\r\n"
        "SynchroAllSize = 100\r\nSynchroPrehistorySize = 30\r\nStopAfterTrigged = 1\r\nUseDigitalPort = 1\r\n";
    RecordingWish wish;
    std::string log;
    ASSERT_TRUE(read(text, wish, log)) << log;
    const SynchroSettings& s = wish.synchro;
    EXPECT_EQ(s.SynchroAnalyzeMode, 2);
    EXPECT_TRUE(s.analysisOnPort && s.synchroOnPort && !s.analysisOnAnalog && !s.synchroOnAnalog);
    EXPECT_TRUE(s.startAnalogEnabled && s.writeAnalogEnabled && !s.stopAnalogEnabled);
    EXPECT_TRUE(s.portStartEnabled && !s.portWriteEnabled && s.portStopEnabled);
    EXPECT_EQ(s.AnalyzeAnalogWriteMode, 1);
    EXPECT_EQ(s.AnalyzeAnalogStartChannel * 100 + s.AnalyzeAnalogWriteChannel * 10 + s.AnalyzeAnalogStopChannel, 345);
    EXPECT_EQ(s.AnalyzeAnalogStartValue, 1.5);
    EXPECT_EQ(s.AnalyzeAnalogWriteValue, -2.5);
    EXPECT_EQ(s.AnalyzeAnalogStopValue, 3.0);
    EXPECT_EQ(s.AnalyzeAnalogStartUnit * 100 + s.AnalyzeAnalogWriteUnit * 10 + s.AnalyzeAnalogStopUnit, 12);
    EXPECT_EQ(s.AnalyzePortStartMode * 100 + s.AnalyzePortWriteMode * 10 + s.AnalyzePortStopMode, 120);
    EXPECT_EQ(s.AnalyzePortStartBit * 10000 + s.AnalyzePortWriteBit * 100 + s.AnalyzePortStopBit, 70815);
    EXPECT_EQ(s.SynchroAnalogMode, 1);
    EXPECT_EQ(s.SynchroAnalogChannelNumber, 6);
    EXPECT_EQ(s.SynchroAnalogValue, 120.0);
    EXPECT_EQ(s.SynchroAnalogUnit, 1);
    EXPECT_EQ(s.SynchroPortMode, 0);
    EXPECT_EQ(s.SynchroPortBit, 9);
    EXPECT_EQ(wish.synchroSizes.prehistory, 30);
    EXPECT_EQ(wish.synchroSizes.history, 70);
    EXPECT_TRUE(s.StopAfterTrigged && wish.useDigitalPort);
}

TEST(AutoSynchro, WrongValuesEndTheLoad) {
    for (const std::string line :
         {"SynchroAnalyzeMode = 3", "AnalyzeMode = 2", "AnalyzeAnalogStartMode = -1", "AnalyzeAnalogStopUnit = 3",
          "AnalyzeAnalogWriteChannel = -1", "AnalyzeAnalogStartValue = nan", "SynchroAnalogValue = 1e999",
          "AnalyzePortStopBit = 16", "SynchroPortMode = x", "SynchroPortBit =", "SynchroAllSize = -5",
          "SynchroPrehistorySize = 1", "SynchroMode = 99999999999", "StopAfterTrigged = 2", "UseDigitalPort = yes"}) {
        RecordingWish wish;
        std::string log;
        EXPECT_FALSE(read(line + "\r\n", wish, log)) << line;
        EXPECT_EQ(log, "Value " + line.substr(0, line.find(' ')) + " invalid... Program aborted\r\n");
    }
}

}  // namespace
}  // namespace tarno2::test

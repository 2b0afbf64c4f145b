#include <cmath>
#include <functional>
#include <gmock/gmock.h>
#include <limits>

#include "sync/synchro_check.h"
#include "tests/sync/analyzing.h"

namespace tarno2::test {

namespace {

/// 12 bits from -2048 to 2047 over -10 V to 10 V; the channels 3, 7 and 0, the second with gain 10; 5 goes from 0 to 10
/// V at its gain.
SynchroBoardFacts board() {
    SynchroBoardFacts facts;
    facts.channels = {{3, 1, 10.0F}, {7, 10, 10.0F}, {0, 0, 5.0F}, {5, 2, 0.0F, 0.0, 10.0}};
    facts.minimumCode = -2048;
    facts.maximumCode = 2047;
    facts.useDigitalPort = true;
    return facts;
}

SynchroSettings triggered(double value, int32_t unit, int32_t channel) {
    SynchroSettings settings;
    settings.SynchroAnalyzeMode = 2;
    settings.SynchroAnalogValue = value;
    settings.SynchroAnalogUnit = unit;
    settings.SynchroAnalogChannelNumber = channel;
    return settings;
}

SynchroSettings started(double value, int32_t channel) {
    SynchroSettings settings = analysis();
    settings.startAnalogEnabled = true;
    settings.AnalyzeAnalogStartMode = 0;
    settings.AnalyzeAnalogStartValue = value;
    settings.AnalyzeAnalogStartChannel = channel;
    return settings;
}

SynchroSettings portTriggered() {
    SynchroSettings settings;
    settings.SynchroAnalyzeMode = 2;
    settings.synchroOnAnalog = false;
    settings.synchroOnPort = true;
    return settings;
}

SynchroSettings onPort(bool write) {
    SynchroSettings settings = analysis();
    settings.analysisOnAnalog = false;
    settings.analysisOnPort = true;
    settings.portWriteEnabled = write;
    settings.AnalyzePortWriteMode = write ? 0 : 2;
    return settings;
}

constexpr SynchroSizes kSizes{10, 20};
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

}  // namespace

TEST(SynchroCheck, TurnsThresholdsIntoCodes) {
    // (volts + 10) * 4095 / 20 - 2048, cut towards 0.
    const struct {
        double value;
        int32_t unit;
        int32_t channel;
        int32_t code;
    } rows[] = {
        {0.0, 0, 3, 0},           // -0.5
        {1.0, 0, 3, 204},         // 204.25
        {-1.0, 0, 3, -205},       // -205.25
        {1000.0, 1, 3, 204},      // millivolts
        {1000000.0, 2, 3, 204},   // microvolts
        {1.5, 1, 3, 0},           // -0.193
        {0.1, 0, 7, 190},         // 19.975, then the gain: 19 * 10
        {-0.1, 0, 7, -200},       // -20.975
        {1.0, 0, 0, 409},         // R = 5, a gain of 0 is 1: 409.0
        {10.0, 0, 3, 2047},       //
        {11.0, 0, 3, 2047},       // beyond the range
        {-11.0, 0, 3, -2048},     //
        {1.0, 0, 7, 2040},        // 204 * 10
        {9.0, 0, 7, 2047},        // 1842 * 10
        {1e300, 0, 7, 2047},      // beyond 32 bits
        {-1e300, 0, 7, -2048},    //
        {kInfinity, 0, 3, 2047},  //
        {2.5, 0, 5, -1024},       // 2.5 * 4095 / 10 - 2048 = -1024.25
        {10.0, 0, 5, 2047},       //
        {-0.1, 0, 5, -2048},      //
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.value);
        SynchroFindings findings;
        ASSERT_TRUE(CheckSynchroParameters(triggered(row.value, row.unit, row.channel), kSizes, board(), findings));
        EXPECT_EQ(findings.settings.synchroCode, row.code);
        EXPECT_EQ(findings.settings.SynchroAnalogValue, row.value);
        EXPECT_EQ(findings.settings.SynchroAnalogChannelNumber, row.channel == 3   ? 0
                                                                : row.channel == 7 ? 1
                                                                : row.channel == 0 ? 2
                                                                                   : 3);
    }
    SynchroSettings all = started(1.0, 3);
    all.writeAnalogEnabled = all.stopAnalogEnabled = true;
    all.AnalyzeAnalogWriteMode = all.AnalyzeAnalogStopMode = 1;
    all.AnalyzeAnalogWriteChannel = 7;
    all.AnalyzeAnalogWriteValue = 0.1;
    all.AnalyzeAnalogStopChannel = 0;
    all.AnalyzeAnalogStopValue = 1000.0;
    all.AnalyzeAnalogStopUnit = 1;
    SynchroFindings findings;
    ASSERT_TRUE(CheckSynchroParameters(all, {}, board(), findings));
    const SynchroSettings& s = findings.settings;
    EXPECT_THAT((std::vector{s.startCode, s.writeCode, s.stopCode}), testing::ElementsAre(204, 190, 409));
    EXPECT_THAT((std::vector{s.AnalyzeAnalogStartChannel, s.AnalyzeAnalogWriteChannel, s.AnalyzeAnalogStopChannel}),
                testing::ElementsAre(0, 1, 2));
    EXPECT_TRUE(findings.detail.empty());
}

TEST(SynchroCheck, RefusesWhatCanNotBeDone) {
    SynchroBoardFacts noRange = board();
    noRange.channels[0].inputRange = 0.0F;
    SynchroBoardFacts noNumber = board();
    noNumber.channels[0].inputRange = std::nanf("");
    SynchroSettings stop = analysis();
    stop.stopAnalogEnabled = true;
    stop.AnalyzeAnalogStopChannel = 1;
    const struct {
        const char* name;
        SynchroSettings settings;
        SynchroSizes sizes;
        SynchroBoardFacts board;
        SynchroMistake mistake;
    } rows[] = {
        {"trigger's channel", triggered(1.0, 0, 1), kSizes, board(), SynchroMistake::ChannelNotActive},
        {"start's channel", started(1.0, 1), kSizes, board(), SynchroMistake::ChannelNotActive},
        {"stop's channel", stop, kSizes, board(), SynchroMistake::ChannelNotActive},
        {"no number", triggered(kNan, 0, 3), kSizes, board(), SynchroMistake::ThresholdNoNumber},
        {"no range", triggered(1.0, 0, 3), kSizes, noRange, SynchroMistake::InputRangeNotPositive},
        {"range no number", started(1.0, 3), kSizes, noNumber, SynchroMistake::InputRangeNotPositive},
        {"no buffer", triggered(1.0, 0, 3), {0, 0}, board(), SynchroMistake::BufferTooSmall},
        {"negative buffer", portTriggered(), {5, -5}, board(), SynchroMistake::BufferTooSmall},
        {"negative prehistory", triggered(1.0, 0, 3), {-1, 5}, board(), SynchroMistake::PrehistoryOutsideBuffer},
        {"prehistory above buffer", triggered(1.0, 0, 3), {5, -1}, board(), SynchroMistake::PrehistoryOutsideBuffer},
        {"no such memory", triggered(1.0, 0, 3), {INT32_MAX, INT32_MAX}, board(), SynchroMistake::BufferTooLarge},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        SynchroFindings findings;
        EXPECT_FALSE(CheckSynchroParameters(row.settings, row.sizes, row.board, findings));
        EXPECT_EQ(findings.mistake, row.mistake);
        EXPECT_FALSE(findings.detail.empty());
    }
}

TEST(SynchroCheck, LooksOnlyAtWhatIsUsed) {
    SynchroSettings unused = started(1.0, 3);
    unused.AnalyzeAnalogStopChannel = 99;
    unused.AnalyzeAnalogStopValue = kNan;
    unused.synchroOnAnalog = false;
    unused.synchroOnPort = true;
    SynchroSettings off = triggered(kNan, 0, 99);
    off.SynchroAnalyzeMode = 7;
    SynchroSettings notUsed = triggered(kNan, 0, 99);
    notUsed.SynchroAnalogMode = 2;
    SynchroBoardFacts withoutPort = board();
    withoutPort.useDigitalPort = false;
    const struct {
        SynchroSettings settings;
        int32_t mode;
    } rows[] = {{unused, 1}, {off, 0}, {notUsed, 2}};
    for (const auto& row : rows) {
        SynchroFindings findings;
        EXPECT_TRUE(CheckSynchroParameters(row.settings, kSizes, withoutPort, findings));
        EXPECT_EQ(findings.settings.SynchroAnalyzeMode, row.mode);
        EXPECT_EQ(findings.switchedOff, SynchroSwitchOff::None);
    }
}

TEST(SynchroCheck, SwitchesOffWhatWouldGateNothing) {
    const struct {
        const char* name;
        SynchroSettings settings;
        bool port;
        SynchroSwitchOff reason;
    } rows[] = {
        {"no analog condition", analysis(), true, SynchroSwitchOff::NoConditions},
        {"no condition on the port", onPort(false), true, SynchroSwitchOff::NoConditions},
        {"port not used", onPort(true), false, SynchroSwitchOff::PortNotUsed},
        {"port used", onPort(true), true, SynchroSwitchOff::None},
        {"trigger without the port", portTriggered(), false, SynchroSwitchOff::PortNotUsed},
        {"trigger with the port", portTriggered(), true, SynchroSwitchOff::None},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        SynchroBoardFacts facts = board();
        facts.useDigitalPort = row.port;
        SynchroFindings findings;
        EXPECT_TRUE(CheckSynchroParameters(row.settings, kSizes, facts, findings));
        EXPECT_EQ(findings.switchedOff, row.reason);
        const bool off = row.reason != SynchroSwitchOff::None;
        EXPECT_EQ(findings.settings.SynchroAnalyzeMode, off ? 0 : row.settings.SynchroAnalyzeMode);
        EXPECT_EQ(findings.detail.empty(), !off);
        EXPECT_FALSE(off && (findings.settings.analysisOnAnalog || findings.settings.analysisOnPort));
    }
}

}  // namespace tarno2::test

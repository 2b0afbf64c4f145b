// Recordings gated by synchronisation, from the autosettings file to data and description. What they have to hold is
// what the plain model of tests/sync makes of an ungated recording of the same signal.

#include <cstring>
#include <gtest/gtest.h>

#include "config/settings/auto_settings.h"
#include "sync/synchro_check.h"
#include "tests/apps/recording_rig.h"
#include "tests/sync/plain_model.h"

namespace tarno2::test {
namespace {

using Samples = std::vector<int32_t>;

struct Board {
    uint32_t number;
    uint32_t bytes;
    int32_t highestCode;
    float range;  // volts
    SampleFacts facts;
    bool packed;
};

constexpr Board kPackedBoard{1, 2, 8191, 5.0F, {0, 2, 0, false}, true};
constexpr Board kPlainBoard{2, 2, 32767, 10.0F, {0, 0, 0, false}, false};
constexpr Board kWideBoard{3, 4, 8388607, 2.5F, {1, 0, 24, false}, true};

/// The settings of these keys as the evaluator gets them.
RecordingWish settingsOf(const std::string& keys, const Board& board, uint32_t channels) {
    RecordingWish wish = readAutoSettings(
                             "DriverName = \"x\"\r\nChannelCount = 1\r\nChannelsNumber = 0\r\n"
                             "Frequency = 1\r\n" +
                             keys)
                             .value();
    SynchroBoardFacts facts;
    for (uint32_t i = 0; i < channels; ++i) {
        facts.channels.push_back({static_cast<int32_t>(i), 1, board.range});
    }
    facts.minimumCode = -board.highestCode - 1;
    facts.maximumCode = board.highestCode;
    facts.useDigitalPort = wish.useDigitalPort;
    SynchroFindings findings;
    EXPECT_TRUE(CheckSynchroParameters(wish.synchro, wish.synchroSizes, facts, findings)) << findings.detail;
    wish.synchro = findings.settings;
    return wish;
}

Samples samplesOf(const std::string& data, uint32_t bytes) {
    Samples samples(data.size() / bytes);
    for (size_t i = 0; i < samples.size(); ++i) {
        int16_t word = 0;
        std::memcpy(bytes == 2 ? static_cast<void*>(&word) : &samples[i], data.data() + i * bytes, bytes);
        samples[i] = bytes == 2 ? word : samples[i];
    }
    return samples;
}

/// What the model keeps of a stream that comes in blocks of so many samples, until it says stop.
Evaluated model(const Samples& stream, size_t blockSamples, const RecordingWish& wish, const Board& board,
                uint32_t channels) {
    PlainModel plain(wish.synchro, wish.synchroSizes, board.facts, board.bytes == 2 ? 16 : 32);
    Evaluated all;
    for (size_t begin = 0; begin + blockSamples <= stream.size() && all.result == 0; begin += blockSamples) {
        const auto from = stream.begin() + static_cast<std::ptrdiff_t>(begin);
        const Evaluated part =
            plain.evaluate({from, from + static_cast<std::ptrdiff_t>(blockSamples)}, channels, board.packed);
        all.samples.insert(all.samples.end(), part.samples.begin(), part.samples.end());
        all.events.insert(all.events.end(), part.events.begin(), part.events.end());
        all.result = part.result;
    }
    return all;
}

/// Values of an array in a description; empty when it has none of that name.
std::vector<double> listed(const std::string& dataName, const char* key) {
    KeyValueFile file;
    EXPECT_TRUE(file.openForReading(RecordDescription::fileNameFor(dataName))) << dataName;
    std::vector<double> values(100000);
    uint32_t count = 0;
    file.readDoubleArray(key, values, count);
    values.resize(count);
    return values;
}

void expectEvents(const std::string& dataName, const SynchroEvent* first, size_t count) {
    std::vector<std::vector<double>> expected(7);
    for (const SynchroEvent& event : std::span(first, count)) {
        const double values[] = {static_cast<double>(event.point),
                                 static_cast<double>(event.prehistory),
                                 static_cast<double>(event.history),
                                 static_cast<double>(event.mode),
                                 static_cast<double>(event.condition),
                                 static_cast<double>(event.channel),
                                 event.value};
        for (size_t i = 0; i < expected.size(); ++i) {
            expected[i].push_back(values[i]);
        }
    }
    const char* keys[] = {"SynchroListPoint",      "SynchroListPrehistory", "SynchroListHistory", "SynchroListMode",
                          "SynchroListConditions", "SynchroListChannel",    "SynchroListValue"};
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(listed(dataName, keys[i]), expected[i]) << keys[i];
    }
}

struct Gated {
    const char* name;
    Board board;
    uint32_t channels;
    std::string keys;
    uint64_t frames;  // ends at that size; 0: by its own condition
};

constexpr double kRate = 100e3;  // total Hz
constexpr size_t kHalf = 25000;  // samples that come at once: half of half a second
constexpr const char* kSignal = "RealTime=0;Signal=Sine;SignalFrequency=200;DigitalPeriod=300";

/// Records ungated, then gated; checks the second against the first and returns the model's events.
void checkGated(const Gated& gated) {
    SCOPED_TRACE(gated.name);
    const uint64_t frameBytes = uint64_t{gated.board.bytes} * gated.channels;
    Wish wish;
    wish.board = gated.board.number;
    wish.channels = gated.channels;
    wish.frequency = kRate;
    wish.bytes = 12 * kHalf * gated.board.bytes;
    const RecordingRig plain;
    plain.record(wish, kSignal);
    const Samples stream = samplesOf(readFile(plain.file("run.dat")), gated.board.bytes);
    ASSERT_EQ(stream.size(), 12 * kHalf) << plain.autoLog();

    wish.bytes = gated.frames * frameBytes;
    wish.more = gated.keys;
    const RecordingRig rig;
    rig.record(wish, kSignal);
    const Samples kept = samplesOf(readFile(rig.file("run.dat")), gated.board.bytes);
    const RecordingWish asked = settingsOf(gated.keys, gated.board, gated.channels);
    Evaluated expected = model(stream, kHalf, asked, gated.board, gated.channels);
    if (gated.frames != 0) {
        ASSERT_GE(expected.samples.size(), gated.frames * gated.channels);
        expected.samples.resize(gated.frames * gated.channels);
    }
    ASSERT_GT(kept.size(), 0U) << rig.autoLog();
    EXPECT_EQ(kept, expected.samples);
    EXPECT_NE(rig.autoLog().find("Stop - By stop measuring"), std::string::npos) << rig.autoLog();
    const auto record =
        static_cast<size_t>(asked.synchroSizes.prehistory) + static_cast<size_t>(asked.synchroSizes.history);
    const size_t records = asked.synchro.SynchroAnalyzeMode == 2 ? kept.size() / gated.channels / record : 0;
    expectEvents(rig.file("run.dat"), expected.events.data(), records);
}

const std::string kRecords = "SynchroAnalyzeMode = 2\r\nSynchroAllSize = 200\r\nSynchroPrehistorySize = 60\r\n";
const std::string kAnalysis = "SynchroAnalyzeMode = 1\r\n";
const std::string kPort = "UseDigitalPort = 1\r\nSynchroMode = 1\r\nAnalyzeMode = 1\r\n";

TEST(SynchroRecording, HoldsWhatTheModelKeeps) {
    const Gated cases[] = {
        {"leading edge of a sine", kPlainBoard, 1, kRecords + "SynchroAnalogMode = 0\r\nSynchroAnalogValue = 1.5\r\n",
         2000},
        {"falling edge, second channel, codes above lines", kPackedBoard, 2,
         kRecords + "SynchroAnalogMode = 1\r\nSynchroAnalogChannelNumber = 1\r\nSynchroAnalogValue = -500\r\n"
                    "SynchroAnalogUnit = 1\r\n",
         2000},
        {"line rises", kPackedBoard, 2, kRecords + kPort + "SynchroPortMode = 0\r\nSynchroPortBit = 1\r\n", 2000},
        {"line falls, 32 bits", kWideBoard, 2, kRecords + kPort + "SynchroPortMode = 1\r\nSynchroPortBit = 2\r\n",
         2000},
        {"stop after the first records", kPlainBoard, 1, kRecords + "SynchroAnalogMode = 0\r\nStopAfterTrigged = 1\r\n",
         0},
        {"start and stop by level", kPlainBoard, 1,
         kAnalysis + "AnalyzeAnalogStartMode = 0\r\nAnalyzeAnalogStartValue = 7\r\n"
                     "AnalyzeAnalogStopMode = 1\r\nAnalyzeAnalogStopValue = -7000000\r\nAnalyzeAnalogStopUnit = 2\r\n",
         0},
        {"write by level", kPlainBoard, 4, kAnalysis + "AnalyzeAnalogWriteMode = 0\r\nAnalyzeAnalogWriteValue = 2\r\n",
         20000},
        {"start, write and stop by lines, 32 bits", kWideBoard, 2,
         kAnalysis + kPort +
             "AnalyzePortStartMode = 0\r\nAnalyzePortStartBit = 1\r\n"
             "AnalyzePortWriteMode = 1\r\nAnalyzePortStopMode = 0\r\nAnalyzePortStopBit = 4\r\n",
         0},
        {"no condition: off, not a frame is lost", kPlainBoard, 2, kAnalysis, 30000},
    };
    for (const Gated& gated : cases) {
        checkGated(gated);
    }
}

TEST(SynchroRecording, WhatCanNotBeDoneIsRefusedAndLogged) {
    Wish wish;
    wish.bytes = 40000;
    wish.more = kRecords + "SynchroAnalogMode = 0\r\nSynchroAnalogChannelNumber = 9\r\n";
    const RecordingRig refused;
    refused.record(wish, kSignal);
    EXPECT_FALSE(refused.exists("run.dat"));
    EXPECT_NE(refused.debugLog().find("!!!!! Error in checked synchro parameters."), std::string::npos);
    EXPECT_NE(refused.autoLog().find("Attention: Mistake in the task of parameters of synchronization"),
              std::string::npos);
    EXPECT_NE(refused.autoLog().find("Channel 9 of the synchronisation condition is not active"), std::string::npos);

    wish.more = kRecords + "SynchroMode = 1\r\nSynchroPortMode = 0\r\n";
    const RecordingRig ungated;
    ungated.record(wish, kSignal);
    EXPECT_EQ(ungated.size("run.dat"), wish.bytes);
    for (const std::string& log : {ungated.autoLog(), ungated.debugLog()}) {
        EXPECT_NE(log.find("Synchronisation is switched off. The digital port is not in use"), std::string::npos);
    }
}

}  // namespace
}  // namespace tarno2::test

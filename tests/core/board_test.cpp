#include "core/recording/board.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

#include "core/recording/static_parameters.h"
#include "core/recording/synchro_preparation.h"
#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

/// The calls from the first look at the blocks on.
std::vector<std::string> handshake(FakeDevice& device) {
    auto calls = device.calls();
    calls.erase(calls.begin(), std::find(calls.begin(), calls.end(), "Get 70"));
    return calls;
}

TEST(Board, ChecksThenSetsUp) {
    using Calls = std::vector<std::string>;
    struct Case {
        const char* what;
        std::map<uint32_t, uint32_t> numbers;
        Calls calls;
        int32_t block;
    };
    const Case cases[] = {
        {"both blocks",
         {{70, 1000}, {48, 10}, {kADCGetExtendedBlock, 1}},
         {"Get 70", "Setup 0 1", "Setup 0 4", "Get 70", "Setup 1 1", "Setup 1 4", "Get 71"},
         1000},
        {"no extended block, the old code for the largest buffer",
         {{48, 900}},
         {"Get 70", "Get 48", "Setup 0 1", "Get 70", "Get 48", "Setup 1 1", "Get 71"},
         900},
        {"no largest buffer", {}, {"Get 70", "Get 48", "Setup 0 1", "Get 70", "Get 48", "Setup 1 1", "Get 71"}, 10000},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FakeDevice device;
        device.numbers = c.numbers;
        device.numbers[kADCGetAbiVersion] = kADCAbiVersion;
        ScopedDebugLog log;
        {
            SessionRig rig(device);
            ASSERT_TRUE(rig.prepare(2, 20000.0F));
            EXPECT_EQ(handshake(device), c.calls);
            EXPECT_EQ(int32_t{device.dmaBlocks().front().m_nDMABlockSize}, c.block);
            EXPECT_EQ(rig.board->maxBufferSamples(), static_cast<uint32_t>(c.block));
            rig.board->endThread();
        }
        EXPECT_EQ(
            firstMissing(log.finish(), {c.numbers.contains(kADCGetExtendedBlock) ? "ADCParametersDMAEX INIT rezult = 1"
                                                                                 : "ADCParametersDMAEX INIT - missing",
                                        "Max Buffer Size = " + std::to_string(c.block)}),
            "");
    }
}

TEST(Board, RefusalsOfTheDriver) {
    struct Case {
        const char* what;
        int32_t answers[2][2];
        const char* throwing;
        const char* line;
        size_t setups;
    };
    const Case cases[] = {
        {"check of the base block", {{0, 1}, {1, 1}}, "", "!!!!! CHECK error Rez1 = 1, Rez2 = 0", 2},
        {"check of the extended block", {{1, 0}, {1, 1}}, "", "!!!!! CHECK error Rez1 = 0, Rez2 = 1", 2},
        {"set-up of the base block", {{1, 1}, {0, 1}}, "", "!!!!! INIT error Rez1 = 1, Rez2 = 0", 4},
        {"set-up of the extended block", {{1, 1}, {1, 5}}, "", "!!!!! INIT error Rez1 = 5, Rez2 = 1", 4},
        {"throws", {{1, 1}, {1, 1}}, "Setup", "!!!!! CHECK error Rez1 = 0, Rez2 = 0", 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FakeDevice device;
        std::copy_n(&c.answers[0][0], 4, &device.setupAnswers[0][0]);
        ScopedDebugLog log;
        {
            SessionRig rig(device);
            device.throwing = c.throwing;
            EXPECT_FALSE(rig.prepare(2, 1000.0F));
            EXPECT_EQ(rig.board->failure().kind, StartFailure::Kind::Init);
            EXPECT_EQ(rig.board->failure().problem,
                      *c.throwing == '\0' ? "scripted" : "the driver threw an exception: thrown by the driver");
            const RecordingResult result = rig.end();
            EXPECT_EQ(result.code, StopCode::Error);
            EXPECT_EQ(result.detail, ErrorDetail::Init);
            EXPECT_EQ(device.countCalls("Setup"), c.setups);
            EXPECT_EQ(device.countCalls("Start"), 0U);
        }
        EXPECT_EQ(firstMissing(log.finish(), {c.line}), "");
    }
}

TEST(Board, TakesCorrectionsOver) {
    FakeDevice device;
    device.correctDma = [](int32_t apply, ADCParametersDMA& block) {
        block.m_fFreqStart = apply == 0 ? 640.0F : 600.0F;
        block.m_fFreqPack = apply == 0 ? 80.0F : 75.0F;
    };
    device.correctEx = [](int32_t apply, ADCParametersDMAEX& block) {
        block.m_nSize = 2;
        block.m_pnChannels[0] = apply == 0 ? 8 : 1;
        block.m_pnChannels[1] = apply == 0 ? 1 : 8;
        block.m_pnGains[apply] = 4;
    };
    SessionRig rig(device);
    rig.board->settings.packetMode = true;
    rig.board->settings.packetFrequency = 100.0F;
    ASSERT_TRUE(rig.prepare(3, 1000.0F));
    const BoardSettings& settings = rig.board->settings;
    EXPECT_EQ(settings.channels, (std::vector<int32_t>{1, 8}));
    EXPECT_EQ(settings.gains, (std::vector<int32_t>{4, 4}));
    EXPECT_EQ(settings.frequency, 600.0F);
    EXPECT_EQ(settings.packetFrequency, 75.0F);
    const ADCParametersDMA init = device.dmaBlocks().back();
    EXPECT_EQ(float{init.m_fFreqStart}, 640.0F);
    EXPECT_EQ(int32_t{init.m_nChannelNumber}, 2);
    EXPECT_EQ(int32_t{init.m_nFirstChannel}, 8);
    EXPECT_EQ(int32_t{init.m_nDMABlockSize}, 320);
}

TEST(Board, ExternalClockKeepsTheFrequencySetting) {
    FakeDevice device;
    device.correctDma = [](int32_t, ADCParametersDMA& block) { block.m_fFreqStart = 77.0F; };
    SessionRig rig(device);
    rig.board->settings.externalClock = true;
    ASSERT_TRUE(rig.prepare(1, 1000.0F));
    EXPECT_EQ(rig.board->settings.frequency, 1000.0F);
    EXPECT_EQ(float{device.dmaBlocks().front().m_fFreqStart}, 0.0F);
}

TEST(Board, WrongCorrectionsAreRefused) {
    struct Case {
        const char* what;
        int32_t channels;
        float frequency;
        int32_t pass = 0;
    };
    for (const Case& c :
         {Case{"longer list", 4, 1000.0F}, Case{"empty list", 0, 1000.0F}, Case{"negative", -1, 1000.0F},
          Case{"no frequency", 3, 0.0F}, Case{"below zero", 3, -5.0F}, Case{"no number", 3, NAN},
          Case{"shorter list at the set-up", 2, 1000.0F, 1}, Case{"no frequency at the set-up", 3, 0.0F, 1}}) {
        FakeDevice device;
        device.correctDma = [&](int32_t apply, ADCParametersDMA& block) {
            block.m_fFreqStart = apply == c.pass ? c.frequency : 1000.0F;
        };
        device.correctEx = [&](int32_t apply, ADCParametersDMAEX& block) {
            block.m_nSize = apply == c.pass ? c.channels : 3;
        };
        SessionRig rig(device);
        EXPECT_FALSE(rig.prepare(3, 1000.0F)) << c.what;
        EXPECT_EQ(rig.end().detail, ErrorDetail::Init) << c.what;
    }
}

TEST(Board, RingThatCannotBeToldOrChangesEndsTheStart) {
    struct Case {
        const char* what;
        uint32_t refusedFrom;
        void (*restate)(uint32_t&);
    };
    const Case cases[] = {{"never told", 0, nullptr},
                          {"not told at the start", 1, nullptr},
                          {"smaller at the start", FakeDevice::kNever, [](uint32_t& ring) { ring /= 2; }},
                          {"larger at the start", FakeDevice::kNever, [](uint32_t& ring) { ring *= 2; }}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FakeDevice device;
        device.ringRefusedFrom = c.refusedFrom;
        device.restate = c.restate;
        SessionRig rig(device);
        ASSERT_TRUE(rig.begin(2, 1000.0F));
        EXPECT_EQ(rig.end().code, StopCode::Incompatible);
        EXPECT_EQ(device.countCalls("Start"), 0U);
    }
}

// 0 to 10 V at gain 1, -5 to 5 V by the range that every board tells.
TEST(Board, LimitsOfAnInputGoIntoDescriptionAndThresholds) {
    for (const bool uneven : {false, true}) {
        SCOPED_TRACE(uneven);
        FakeDevice device;
        if (uneven) {
            device.inputLimits = {0.0, 10.0};
        }
        SessionRig rig(device);
        ASSERT_TRUE(rig.prepare(2, 1000.0F));
        rig.board->settings.gains = {1, 2};
        RecordingFacts facts;
        std::string missing;
        ASSERT_TRUE(calculateStaticParameters(rig.driver, *rig.board, facts, missing)) << missing;
        RecordDescription description;
        ASSERT_TRUE(facts.describe(description));
        ASSERT_TRUE(description.writeForDataFile(rig.folder.file("facts.dat")));
        const std::string text = readFile(rig.folder.file("facts.txt"));
        EXPECT_NE(
            text.find(uneven ? "ChannelsRange = 10.000000 , 0.000000 ,\\\r\n                5.000000 , 0.000000 "
                             : "ChannelsRange = 5.000000 , -5.000000 ,\\\r\n                2.500000 , -2.500000 "),
            std::string::npos)
            << text;
        RecordingWish wish;
        wish.synchro.SynchroAnalyzeMode = 2;
        wish.synchro.SynchroAnalogChannelNumber = 1;
        wish.synchro.SynchroAnalogValue = 1.25;
        wish.synchroSizes = {1, 1};
        SynchroFindings findings;
        ASSERT_TRUE(prepareSynchronisation(wish, facts, *rig.board, findings)) << findings.detail;
        // 1.25 * 16383 / 5 - 8192; with the range (1.25 + 5) * 16383 / 10 - 8192, cut, then times the gain
        EXPECT_EQ(findings.settings.synchroCode, uneven ? -4096 : 2047 * 2);
        device.inputLimits = {10.0, 0.0};
        EXPECT_FALSE(calculateStaticParameters(rig.driver, *rig.board, facts, missing));
        EXPECT_EQ(missing, "the input range of channel 0");
        rig.board->endThread();
    }
}

// A thread that fails after its board was set up must not change what was told of the start.
TEST(SessionLink, OnlyTheFirstAnswerCounts) {
    SessionLink link;
    for (const auto kind : {StartFailure::Kind::Memory, StartFailure::Kind::None}) {
        link.prepare(nullptr, {});
        link.answer({kind, "first"});
        link.answer({StartFailure::Kind::Thread, "second"});
        EXPECT_EQ(link.waitForAnswer().kind, kind);
        EXPECT_EQ(link.waitForAnswer().problem, "first");
        EXPECT_FALSE(link.stopRequested());
        link.requestStop();
        EXPECT_TRUE(link.waitForBegin()) << "a stop ends the wait for the start";
        EXPECT_TRUE(link.stopRequested());
    }
}

}  // namespace
}  // namespace tarno2::test

#include "core/devices/parameter_blocks.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

BoardSettings threeChannels() {
    BoardSettings settings;
    settings.channels = {5, 3, 9};
    settings.gains = {2, 1, 8};
    settings.frequency = 1000.5F;
    return settings;
}

TEST(ParameterBlocks, FieldsOfBothPasses) {
    struct Fields {
        const char* what;
        int32_t startOf[2];  // check, init
        int32_t control[2];
        float frequency;
        float packetFrequency;
        int32_t packetTimer;
    };
    struct Case : Fields {
        void (*change)(BoardSettings&);
    };
    constexpr int32_t kRing = 0x1000000;
    const Case cases[] = {{{"plain", {kRing | 2, kRing | 2}, {0, 0}, 1000.5F, 0.0F, -1}, [](BoardSettings&) {}},
                          {{"differential", {kRing | 2, kRing | 2}, {2, 2}, 1000.5F, 0, -1},
                           [](BoardSettings& s) { s.differential = true; }},
                          {{"external start", {kRing | 6, kRing | 6}, {16, 0}, 1000.5F, 0, -1},
                           [](BoardSettings& s) { s.externalStart = true; }},
                          {{"external clock", {kRing | 6, kRing | 4}, {0, 0}, 0.0F, 0, -1},
                           [](BoardSettings& s) { s.externalClock = true; }},
                          {{"both external, differential", {kRing | 6, kRing | 4}, {18, 2}, 0.0F, 0, -1},
                           [](BoardSettings& s) { s.externalStart = s.externalClock = s.differential = true; }},
                          {{"packets", {kRing | 2, kRing | 2}, {0, 0}, 1000.5F, 12.5F, 1},
                           [](BoardSettings& s) {
                               s.packetMode = true;
                               s.packetFrequency = 12.5F;
                           }},
                          {{"packet frequency without packets", {kRing | 2, kRing | 2}, {0, 0}, 1000.5F, 0.0F, -1},
                           [](BoardSettings& s) { s.packetFrequency = 12.5F; }}};
    for (const Case& c : cases) {
        BoardSettings settings = threeChannels();
        c.change(settings);
        for (const int pass : {0, 1}) {
            SCOPED_TRACE(std::string(c.what) + (pass == 0 ? ", check" : ", init"));
            ParameterBlocks blocks;
            blocks.build(settings, pass == 0 ? SetupPass::Check : SetupPass::Init, 0x7FFFFFFF);
            const ADCParametersDMA& dma = blocks.dma;
            EXPECT_EQ(int32_t{dma.m_nType}, 1);
            EXPECT_EQ(int32_t{dma.m_nSizeOf}, 52);
            EXPECT_EQ(int32_t{dma.m_nStartOf}, c.startOf[pass]);
            EXPECT_EQ(int32_t{dma.m_nIntOf}, -1);
            EXPECT_EQ(int32_t{dma.m_nDMABlockSize}, 500);
            EXPECT_EQ(int32_t{dma.m_nDMAMode}, 0x1000000);
            EXPECT_EQ(float{dma.m_fFreqStart}, c.frequency);
            EXPECT_EQ(int32_t{dma.m_nTimerStart}, 0);
            EXPECT_EQ(float{dma.m_fFreqPack}, c.packetFrequency);
            EXPECT_EQ(int32_t{dma.m_nTimerPack}, c.packetTimer);
            EXPECT_EQ(int32_t{dma.m_nFirstChannel}, 5);
            EXPECT_EQ(int32_t{dma.m_nChannelNumber}, 3);
            EXPECT_EQ(int32_t{dma.m_nGain}, 2);
            const ADCParametersDMAEX& extended = blocks.extended;
            EXPECT_EQ(int32_t{extended.m_nType}, 4);
            EXPECT_EQ(static_cast<size_t>(extended.m_nSizeOf), 24 + 2 * sizeof(void*));
            EXPECT_EQ(int32_t{extended.m_nSize}, 3);
            EXPECT_EQ(int32_t{extended.m_nControl}, c.control[pass]);
            EXPECT_EQ(int32_t{extended.m_nSyncLevel[0]} | int32_t{extended.m_nSyncLevel[1]}, 0);
            EXPECT_TRUE(std::equal(settings.channels.begin(), settings.channels.end(), extended.m_pnChannels + 0));
            EXPECT_TRUE(std::equal(settings.gains.begin(), settings.gains.end(), extended.m_pnGains + 0));
        }
    }
}

TEST(ParameterBlocks, BlockSizeIsHalfASecondWithinLimits) {
    struct Case {
        float frequency;
        uint32_t maximum;
        int32_t samples;
    };
    const Case cases[] = {
        {0.5F, 0x7FFFFFFF, 32}, {63.9F, 0x7FFFFFFF, 32},        {66.0F, 0x7FFFFFFF, 33},       {67.9F, 0x7FFFFFFF, 33},
        {1e6F, 1000, 1000},     {1e6F, 500000, 500000},         {1e6F, 499999, 499999},        {1000.0F, 16, 32},
        {1000.0F, 0, 32},       {8e9F, 0x7FFFFFFF, 0x7FFFFFFF}, {8e9F, 0xFFFFFFFF, 0x7FFFFFFF}};
    for (const Case& c : cases) {
        EXPECT_EQ(dmaBlockSize(c.frequency, c.maximum), c.samples) << c.frequency << " Hz, at most " << c.maximum;
    }
}

TEST(ParameterBlocks, RingsOfWholeFrames) {
    struct Case {
        uint32_t ring;
        uint32_t channels;
        uint32_t maximum;
        uint32_t fitting;
    };
    const Case cases[] = {{1000, 5, 2000, 1000},
                          {1001, 5, 2000, 1010},
                          {1001, 5, 1009, 1000},
                          {1001, 5, 1010, 1010},
                          {32, 160, 1000, 320},
                          {32, 160, 320, 320},
                          {32, 160, 319, 0},
                          {0, 3, 1000, 6},
                          {2, 1, 1000, 2},
                          {1, 1, 1000, 2},
                          {0x7FFFFFFF, 1, 0xFFFFFFFF, 0x7FFFFFFE}};
    for (const Case& c : cases) {
        EXPECT_EQ(ringOfWholeFrames(c.ring, c.channels, c.maximum), c.fitting)
            << c.ring << " samples, " << c.channels << " channels, at most " << c.maximum;
    }
}

TEST(ParameterBlocks, DumpHasAFieldALine) {
    ScopedDebugLog log;
    ParameterBlocks blocks;
    blocks.build(threeChannels(), SetupPass::Init, 0x7FFFFFFF);
    blocks.dumpDma();
    blocks.dumpExtended();
    const std::string text = log.finish();
    EXPECT_EQ(firstMissing(text, {"*         m_nStartOf = 16777218\r\n*         m_nIntOf = -1\r\n",
                                  "*         m_nDMABlockSize = 500\r\n*         m_nDMAMode = 16777216\r\n",
                                  "*         m_fFreqStart = 1000.5", "*         m_nTimerStart = 0\r\n",
                                  "*         m_fFreqPack = 0.0", "*         m_nTimerPack = -1\r\n",
                                  "*         m_nFirstChannel = 5\r\n*         m_nChannelNumber = 3\r\n",
                                  "*         m_nGain = 2\r\n*         m_nType = 1\r\n*         m_nSizeOf = 52\r\n",
                                  "*         m_nSize = 3\r\n*         m_pnChannels[0] = 5\r\n",
                                  "*         m_pnChannels[2] = 9\r\n*         m_pnGains[0] = 2\r\n",
                                  "*         m_pnGains[2] = 8\r\n*         m_nControl = 0\r\n",
                                  "*         m_nSyncLevel[0] = 0 , m_nSyncLevel[1] = 0\r\n*         m_nType = 4\r\n",
                                  "*         m_nSizeOf = "}),
              "")
        << text;
}

}  // namespace
}  // namespace tarno2::test

// What the simulator's boards say of themselves, and what they make of a wish.

#include <cmath>
#include <limits>

#include "tests/drivers/driver_rig.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

class SimulatorBoards : public testing::Test {
protected:
    TemporaryFolder folder_;
    ScopedEnvironment settings_{"TARNO2_SIMULATOR", "RealTime=0"};
    LoadedDriver driver_{SIMULATOR_LIBRARY, folder_.path()};
};

TEST_F(SimulatorBoards, CorrectsFrequencyAndRing) {
    struct Case {
        uint32_t board;
        float wished, got;
    };
    const Case cases[] = {{1, 0.25F, 1.0F},     {1, 3e6F, 2e6F},    {1, 12345.5F, 12345.5F}, {2, 20e6F, 20e6F},
                          {3, 14000.0F, 10e3F}, {3, 1.0F, 1000.0F}, {3, 1e9F, 800e3F},       {4, 1e6F, 200e3F}};
    for (const Case& c : cases) {
        ASSERT_EQ(driver_->SelectBoard(c.board), 1);
        ADCParametersDMA block = Wish::firstChannels(3, c.wished, 100).base();
        ASSERT_EQ(driver_->Setup(0, &block, 0), 1) << driver_.lastError();
        EXPECT_EQ(float{block.m_fFreqStart}, c.got) << "board " << c.board << ", " << c.wished;
        EXPECT_EQ(int32_t{block.m_nDMABlockSize}, 102);
    }
    ADCParametersDMA packets = Wish::firstChannels(4, 8000.0F, 100).base();
    packets.m_nTimerPack = 1;
    packets.m_fFreqPack = 5000.0F;
    ASSERT_EQ(driver_->SelectBoard(1), 1);
    ASSERT_EQ(driver_->Setup(0, &packets, 0), 1);
    EXPECT_EQ(float{packets.m_fFreqPack}, 2000.0F) << "a packet lasts as long as its samples";
    packets.m_nDMABlockSize = 4000;
    packets.m_fFreqPack = 50.0F;
    ASSERT_EQ(driver_->Setup(0, &packets, 0), 1);
    EXPECT_EQ(packets.m_nDMABlockSize, 104) << "half a second of the samples that come";
}

TEST_F(SimulatorBoards, RefusesWhatTheBoardHasNot) {
    struct Case {
        const char* what;
        uint32_t board;
        void (*spoil)(Wish&, ADCParametersDMA&);
        bool refusedByBase;
    };
    const Case cases[] = {
        {"type", 1, [](Wish&, ADCParametersDMA& b) { b.m_nType = 7; }, true},
        {"size", 1, [](Wish&, ADCParametersDMA& b) { b.m_nSizeOf = 48; }, true},
        {"no channels", 1, [](Wish&, ADCParametersDMA& b) { b.m_nChannelNumber = 0; }, true},
        {"many channels", 1, [](Wish&, ADCParametersDMA& b) { b.m_nChannelNumber = 17; }, true},
        {"first channel", 1, [](Wish&, ADCParametersDMA& b) { b.m_nFirstChannel = -1; }, true},
        {"gain", 1, [](Wish&, ADCParametersDMA& b) { b.m_nGain = 3; }, true},
        {"gain of a board without", 4, [](Wish&, ADCParametersDMA& b) { b.m_nGain = 2; }, true},
        {"no frequency", 1, [](Wish&, ADCParametersDMA& b) { b.m_fFreqStart = 0.0F; }, true},
        {"frequency NaN", 1,
         [](Wish&, ADCParametersDMA& b) { b.m_fFreqStart = std::numeric_limits<float>::quiet_NaN(); }, true},
        {"external start", 2, [](Wish&, ADCParametersDMA& b) { b.m_nStartOf |= kADCStartExternal; }, true},
        {"external clock", 3,
         [](Wish&, ADCParametersDMA& b) {
             b.m_nStartOf = kADCStartExternal;
             b.m_fFreqStart = 0.0F;
         },
         true},
        {"packets", 3, [](Wish&, ADCParametersDMA& b) { b.m_nTimerPack = 1; }, true},
        {"packet frequency", 1, [](Wish&, ADCParametersDMA& b) { b.m_nTimerPack = 1; }, true},
        {"listed channel", 1, [](Wish& w, ADCParametersDMA&) { w.channels[1] = 16; }, false},
        {"listed gain", 1, [](Wish& w, ADCParametersDMA&) { w.gains[1] = 7; }, false},
        {"count of the list", 1, [](Wish& w, ADCParametersDMA&) { w.channels.pop_back(); }, false},
        {"differential", 2, [](Wish& w, ADCParametersDMA&) { w.control = kADCControlDifferential; }, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_EQ(driver_->SelectBoard(c.board), 1);
        Wish wish = Wish::firstChannels(3, 1000.0F, 60);
        ADCParametersDMA base = wish.base();
        c.spoil(wish, base);
        ADCParametersDMAEX extended = wish.extended();
        EXPECT_EQ(driver_->Setup(1, &base, 0), c.refusedByBase ? 0 : 1);
        EXPECT_EQ(driver_->Setup(1, &extended, 0), 0);
        EXPECT_NE(driver_.lastError(), "");
    }
}

TEST_F(SimulatorBoards, ToleratesWhatNoHostShouldDo) {
    IADCDevice* device = driver_.device();
    uint32_t value = 77;
    int16_t sample = 0;
    ADCParametersDMA base = Wish().base();
    EXPECT_EQ(device->Setup(0, &base, 0), 0) << "no board is chosen";
    EXPECT_EQ(device->Start(), 0);
    EXPECT_EQ(device->GetData(kADCDataShort, &sample, 1, 0), kADCDataFailed);
    EXPECT_EQ(device->SelectBoard(0), 0);
    EXPECT_EQ(device->SelectBoard(5), 0);
    ASSERT_EQ(device->SelectBoard(1), 1);
    EXPECT_EQ(device->Setup(1, nullptr, 0), 0);
    EXPECT_EQ(device->Get(kADCGetRing, &value), 0) << "no ring yet";
    EXPECT_EQ(device->Get(kADCGetMaxBuffer, nullptr), 0);
    EXPECT_EQ(device->Get(0x12345678, &value), 0);
    EXPECT_EQ(value, 77U);
    EXPECT_EQ(device->Set(0x12345678, nullptr), 0);
    ASSERT_EQ(device->Setup(1, &base, 0), 1);
    EXPECT_EQ(device->GetData(kADCDataShort, nullptr, 1, 0), kADCDataFailed);
    EXPECT_EQ(device->GetData(kADCDataLong, &sample, 1, 0), kADCDataFailed);
    EXPECT_EQ(device->GetData(kADCDataShort, &sample, 1, 64), kADCDataFailed);
    EXPECT_EQ(device->GetData(kADCDataShort, &sample, 0xFFFFFFFF, 1), kADCDataFailed);
    char text[5];
    EXPECT_EQ(device->LastError(text, sizeof text), 1);
    EXPECT_EQ(text[4], 0);
    EXPECT_EQ(device->LastError(nullptr, 9), 0);
    EXPECT_EQ(device->QueryInterface(nullptr), nullptr);
    EXPECT_EQ(device->CloseBoard(), 1);
    EXPECT_EQ(device->CloseBoard(), 1);
    EXPECT_EQ(device->SetProgramDirectory(nullptr), 1);
    EXPECT_EQ(device->Get(kADCGetChannelCount, &value), 0) << "no board is chosen any more";
}

}  // namespace
}  // namespace tarno2::test

// The sigrok driver with the library's own demonstration device, whose signals are known.

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <thread>

#include "tests/drivers/driver_rig.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr size_t kPeriod = 20;  // samples of a period of each analog signal

class SigrokDriver : public testing::Test {
protected:
    void load(const std::string& devices, const std::string& more = "") {
        const ScopedEnvironment environment("TARNO2_SIGROK", "Devices=" + devices + ";" + more);
        driver_ = std::make_unique<LoadedDriver>(SIGROK_LIBRARY, folder_.path());
        ASSERT_NE(driver_->device(), nullptr);
        static_cast<void>(driver_->boards());
        uint32_t searching = 1;
        while ((*driver_)->Get(kADCGetBoardSearch, &searching) == 1 && searching != 0) {
            std::this_thread::yield();
        }
    }
    void choose(const std::string& devices, const std::string& more = "") {
        load(devices, more);
        ASSERT_EQ((*driver_)->SelectBoard(1), 1) << driver_->lastError();
    }
    /// At least so many samples, from the first on.
    std::vector<uint32_t> record(const Wish& wish, uint64_t samples) {
        RingReader reader(*driver_, wish);
        EXPECT_EQ(float{reader.accepted().m_fFreqStart}, wish.frequency);
        if (!reader.ok() || (*driver_)->Start() != 1 || !reader.record(samples)) {
            ADD_FAILURE() << driver_->lastError();
            return {};
        }
        EXPECT_EQ(driver_->get<ADCStreamEnd>(kADCGetStreamEnd).m_nCause, uint32_t{kADCEndNone}) << driver_->lastError();
        (*driver_)->Stop();
        return reader.words();
    }

    TemporaryFolder folder_;
    std::unique_ptr<LoadedDriver> driver_;
};

TEST_F(SigrokDriver, RecordsSixteenLinesInShortWords) {
    choose("demo:logic_channels=16:analog_channels=0", "Options=Logic:pattern=incremental");
    const auto format = driver_->get<ADCSampleFormat>(kADCGetSampleFormat);
    EXPECT_EQ(format.m_nBytes, 2U);
    EXPECT_EQ(format.m_nDigitalLines, 16U);
    EXPECT_EQ(format.m_nDigitalMask, 0xFFFFU);
    EXPECT_EQ(format.m_nCodeMask, 0xFFFFU);
    const std::vector<uint32_t> words = record(Wish::firstChannels(1, 4e6F, 2000000), 4000000);
    ASSERT_GE(words.size(), 4000000U);
    size_t wrong = 0;
    for (size_t i = 0; i < words.size(); ++i) {
        const size_t low = (words[0] % 256 + 2 * i) % 256;  // the bytes count
        wrong += words[i] != low + (low + 1) % 256 * 256 ? 1 : 0;
    }
    EXPECT_EQ(wrong, 0U) << "of " << words.size();
}

TEST_F(SigrokDriver, RecordsAnalogChannelsWithLines) {
    choose("demo:logic_channels=8:analog_channels=4", "Options=Logic:pattern=incremental");
    EXPECT_EQ(driver_->get<uint32_t>(kADCGetChannelCount), 4U);
    Wish wish = Wish::firstChannels(4, 1e6F, 2000000);
    wish.channels = {3, 1, 0, 2};
    const std::vector<uint32_t> words = record(wish, 4000000);
    const size_t frames = words.size() / 4;
    ASSERT_GE(frames, 1000000U);
    size_t wrongLines = 0;
    size_t wrongCodes = 0;
    const int32_t tolerance = 1 << 9;  // of 2^24: the device counts its time in floating point
    for (size_t i = 0; i < frames * 4; ++i) {
        wrongLines += (words[i] & 0xFF) != ((words[0] & 0xFF) + i / 4) % 256 ? 1 : 0;
        const size_t same = i / 4 % kPeriod * 4 + i % 4;
        // Where a saw falls, rounding puts it at either end of the range: the difference goes around.
        const auto difference = static_cast<int32_t>((words[i] & ~0xFFU) - (words[same] & ~0xFFU));
        wrongCodes += std::abs(difference / 256) > tolerance ? 1 : 0;
    }
    EXPECT_EQ(wrongLines, 0U) << "of " << frames;
    EXPECT_EQ(wrongCodes, 0U) << "of " << frames * 4;
    // A square, first in the device's order, goes from one end of the range to the other.
    const auto square = static_cast<int32_t>(words[2]) >> 8;
    EXPECT_NEAR(std::abs(square) / 8388608.0, 1.0, 1e-6);
}

TEST_F(SigrokDriver, TellsRangesAndRates) {
    choose("demo:logic_channels=0:analog_channels=2", "Range=2.5");
    const auto format = driver_->get<ADCSampleFormat>(kADCGetSampleFormat);
    EXPECT_EQ(format.m_nCodeMask, 0xFFFFFFFFU);
    EXPECT_EQ(format.m_nDigitalLines, 0U);
    const auto limits = driver_->get(kADCGetInputLimits, ADCInputLimits{1, 1, 0.0, 0.0});
    EXPECT_EQ(limits.m_fLower, -2.5);
    EXPECT_NEAR(limits.m_fUpper, 2.5, 1e-8);
    EXPECT_EQ(driver_->get<ADCFrequencyLimits>(kADCGetFrequencyLimits).m_fMinimum, 1.0F);
    const RingReader reader(*driver_, Wish::firstChannels(2, 1234.4F, 1000));
    EXPECT_EQ(float{reader.accepted().m_fFreqStart}, 1234.0F);
}

TEST_F(SigrokDriver, HoldsReadingsAtARateOfItsOwn) {
    choose("demo:logic_channels=8:analog_channels=2",
           "Hold=1;HoldRate=1000;Range=4;Options=A0:amplitude=0 A0:offset=1 A1:amplitude=0 A1:offset=-2");
    EXPECT_EQ(driver_->get<ADCSampleFormat>(kADCGetSampleFormat).m_nDigitalLines, 0U);
    EXPECT_EQ(driver_->get<ADCFrequencyLimits>(kADCGetFrequencyLimits).m_fMaximum, 1000.0F);
    const std::vector<uint32_t> words = record(Wish::firstChannels(2, 1000.0F, 400), 400);
    ASSERT_GE(words.size(), 400U);
    for (size_t i = 0; i < words.size(); ++i) {
        ASSERT_EQ(words[i], i % 2 == 0 ? 0x20000000U : 0xC0000000U) << i;
    }
}

TEST_F(SigrokDriver, EndsWhereTheDeviceWasLimited) {
    choose("demo:logic_channels=8:analog_channels=0", "Options=limit_samples=10000 Logic:pattern=incremental");
    RingReader reader(*driver_, Wish::firstChannels(1, 1e5F, 40000));
    ASSERT_EQ((*driver_)->Start(), 1) << driver_->lastError();
    ASSERT_GT(reader.waitForHalf(), 0U);
    const auto end = driver_->get<ADCStreamEnd>(kADCGetStreamEnd);
    EXPECT_EQ(end.m_nCause, uint32_t{kADCEndOfSource});
    EXPECT_EQ(end.m_nPosition, 10000U);
    EXPECT_EQ(reader.fetch(10000), 1);
    for (size_t i = 0; const uint32_t word : reader.words()) {
        ASSERT_EQ(word, i++ % 256);
    }
    (*driver_)->Stop();
}

TEST_F(SigrokDriver, SaysWhatIsWrongWithTheSettings) {
    struct Row {
        const char* devices;
        const char* options;
        const char* words;
    };
    const Row rows[] = {{"", "", "Name the sigrok devices to look for: Devices, for example fx2lafw."},
                        {"no-such", "", "sigrok has no driver \"no-such\"."},
                        {"demo:logic_channels=many", "", "\"logic_channels=many\" is no option of sigrok devices."},
                        {"fx2lafw:conn=250.250", "", "There is no device \"fx2lafw:conn=250.250\"."}};
    for (const Row& row : rows) {
        load(row.devices, row.options);
        EXPECT_THAT(driver_->boards(), IsEmpty()) << row.devices;
        EXPECT_EQ(driver_->lastError(), row.words);
    }
    for (const char* option : {"Nobody:pattern=incremental", "pattern=incremental", "Logic:pattern=plaid"}) {
        load("demo", std::string("Options=") + option);
        EXPECT_EQ((*driver_)->SelectBoard(1), 0);
        EXPECT_THAT(driver_->lastError(), testing::AnyOf(HasSubstr("does not take the option \"" + std::string(option)),
                                                         HasSubstr("has no group of channels \"Nobody\"")));
    }
    load("demo:broken");
    EXPECT_EQ(driver_->settingsTaken(), 0);
}

TEST_F(SigrokDriver, KeepsItsBoardsWhileOneIsInUse) {
    choose("demo:logic_channels=8:analog_channels=0 demo:logic_channels=0:analog_channels=1");
    const uint32_t again = 1;
    EXPECT_EQ((*driver_)->Set(kADCSetBoardSearch, &again), 1);
    uint32_t searching = 1;
    while ((*driver_)->Get(kADCGetBoardSearch, &searching) == 1 && searching != 0) {
        std::this_thread::yield();
    }
    EXPECT_EQ(driver_->boards().size(), 2U);
    EXPECT_EQ((*driver_)->SelectBoard(2), 1) << driver_->lastError();
    EXPECT_EQ(driver_->get<ADCSampleFormat>(kADCGetSampleFormat).m_nCodeBits, 32U);
}

TEST_F(SigrokDriver, StartsAndStopsAHundredTimes) {
    choose("demo:logic_channels=8:analog_channels=2", "Options=Logic:pattern=incremental");
    for (int i = 0; i < 100; ++i) {
        RingReader reader(*driver_, Wish::firstChannels(2, 1e6F, 4000));
        ASSERT_TRUE(reader.ok()) << driver_->lastError();
        ASSERT_EQ((*driver_)->Start(), 1) << driver_->lastError();
        ASSERT_TRUE(i % 10 != 0 || reader.record(20000));
        (*driver_)->Stop();
    }
}

}  // namespace
}  // namespace tarno2::test

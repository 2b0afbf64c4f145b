// The driver for sound cards as a host calls it.

#include <gmock/gmock.h>

#include "tests/drivers/driver_rig.h"
#include "tests/support/counter_bytes.h"
#include "tests/support/sound_card/sound_card.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kCard = "channels_min 2 channels_max 8 formats \"S16_LE S32_LE\" rates [ 48000 192000 ] ";

/// The driver, told to record from "card", in a library that knows that card alone.
class SoundDriver : public testing::Test {
protected:
    void load(const std::string& definition, const std::string& settings = "") {
        driver.reset();
        cards.reset();  // puts the environment back, before the next one changes it
        const std::vector<SoundCards::Card> known{{"card", definition}};
        cards = std::make_unique<SoundCards>(folder, known);
        const ScopedEnvironment told("TARNO2_SOUND", "Device=card;" + settings);
        driver = std::make_unique<LoadedDriver>(SOUND_LIBRARY, folder.path());
        while (driver->get<uint32_t>(kADCGetBoardSearch) == 1) {
        }
    }
    [[nodiscard]] LoadedDriver& sound() const { return *driver; }

    TemporaryFolder folder;
    std::unique_ptr<SoundCards> cards;
    std::unique_ptr<LoadedDriver> driver;
};

TEST_F(SoundDriver, TellsWhatTheSettingsMakeOfACard) {
    const struct {
        const char* settings;
        uint32_t bytes;
        int32_t highest;
        float range;
    } table[] = {{"", 4, 0x7FFFFFFF, 1.0F},
                 {"Bits=16;FullScale=2.5", 2, 32767, 2.5F},
                 {"Bits=32;FullScale=1e9", 4, 0x7FFFFFFF, 1e6F}};
    for (const auto& each : table) {
        SCOPED_TRACE(each.settings);
        load(kCard, each.settings);
        EXPECT_THAT(sound().boards(), ElementsAre("001 card"));
        ASSERT_EQ(sound()->SelectBoard(1), 1) << sound().lastError();
        EXPECT_EQ(sound().get<ADCSampleFormat>(kADCGetSampleFormat).m_nBytes + 0, each.bytes);
        EXPECT_EQ(sound().get<ADCCodeRange>(kADCGetCodeRange).m_nMaximum + 0, each.highest);
        EXPECT_EQ(sound().get<ADCInputRange>(kADCGetInputRange, {0, 1, 0.0F}).m_fRange + 0, each.range);
        EXPECT_EQ(sound().get<uint32_t>(kADCGetChannelCount), 8U);
        EXPECT_EQ(sound().get<uint32_t>(kADCGetPerChannelFrequency), 1U);
    }
}

TEST_F(SoundDriver, SaysWhyABoardCanNotBeUsed) {
    load(kCard, "Bits=24");
    EXPECT_EQ(sound().boards().size(), 1U);
    EXPECT_EQ(sound()->SelectBoard(1), 0);
    EXPECT_THAT(sound().lastError(), HasSubstr("no samples of 24 bits"));
    load("channels 2 rates [ 48000 ]");
    EXPECT_EQ(sound().boards().size(), 1U);
    EXPECT_EQ(sound()->SelectBoard(1), 0);
    EXPECT_THAT(sound().lastError(), HasSubstr("card can't be used: "));
    load(kCard, "Bits=20");
    EXPECT_EQ(sound().settingsTaken(), 0);
    EXPECT_THAT(sound().lastError(), HasSubstr("not \"20\""));
}

TEST_F(SoundDriver, PassesOnTheChannelsThatWereChosenInTheirOrder) {
    for (const bool wide : {false, true}) {
        load(kCard, wide ? "Bits=32" : "Bits=16");
        EXPECT_EQ(sound().boards().size(), 1U);
        ASSERT_EQ(sound()->SelectBoard(1), 1) << sound().lastError();
        Wish wish;
        wish.channels = {4, 1};
        wish.gains = {1, 1};
        wish.frequency = 44100.0F;  // which the card has not
        wish.ring = 4096;
        RingReader reader(sound(), wish);
        ASSERT_TRUE(reader.ok()) << sound().lastError();
        EXPECT_EQ(reader.accepted().m_fFreqStart + 0.0F, 48000.0F);
        ASSERT_EQ(sound()->Start(), 1) << sound().lastError();
        ASSERT_TRUE(reader.record(10'000));
        sound()->Stop();
        const std::vector<uint32_t> words = reader.words();
        for (size_t i = 0; i < words.size(); ++i) {
            const uint64_t index = i / 2 * 5 + (i % 2 == 0 ? 4 : 1);  // the card gives five channels for these two
            ASSERT_EQ(words[i], drivers::counterWord(index, wide ? 32 : 16)) << "sample " << i;
        }
    }
}

TEST_F(SoundDriver, StartsAndStopsAHundredTimes) {
    for (const char* card : {"", "silent_at 0"}) {
        load(kCard + std::string(card), "Bits=16");
        EXPECT_EQ(sound().boards().size(), 1U);
        ASSERT_EQ(sound()->SelectBoard(1), 1) << sound().lastError();
        for (uint32_t round = 0; round < 50; ++round) {
            RingReader reader(sound(), Wish::firstChannels(2, 48000.0F, 256));
            ASSERT_TRUE(reader.ok()) << sound().lastError();
            ASSERT_EQ(sound()->Start(), 1) << sound().lastError();
            if (*card == '\0') {
                ASSERT_TRUE(reader.record(round * 4));
            }
            sound()->Stop();
            ASSERT_EQ(reader.words(), counterWords(0, reader.words().size())) << "round " << round;
        }
    }
}

}  // namespace
}  // namespace tarno2::test

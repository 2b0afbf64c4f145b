// Sound input as drivers see it, from a card in user space.

#include "platform/sound_input.h"

#include <cstring>
#include <gmock/gmock.h>
#include <thread>

#include "drivers/simulator/counter_signal.h"
#include "tests/support/sound_card/sound_card.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Cards = std::vector<SoundCards::Card>;
using Kind = SoundRead::Kind;

constexpr uint32_t kLong = 60'000;  // milliseconds; what is tested comes far earlier

TEST(SoundInput, TellsWhatADeviceCanDo) {
    const TemporaryFolder folder;
    const SoundCards cards(folder,
                           Cards{{"four", "channels 4 formats \"S16_LE S24_3LE S32_LE\" rates [ 48000 192000 ]"},
                                 {"odd", "channels_min 2 channels_max 40 formats S24_LE rates [ 31250 ]"},
                                 {"float", "channels 2 formats FLOAT_LE rates [ 48000 ]"},
                                 {"default",
                                  "channels_min 1 channels_max 32 formats \"S16_LE S32_LE\" rates [ 8000 44100 ] title "
                                  "\"ALSA <-> PulseAudio PCM I/O Plugin\""}});
    const SoundDevice four = soundInput("four");
    EXPECT_EQ(four.problem, "");
    EXPECT_FALSE(four.throughServer);
    EXPECT_EQ(four.minimumChannels, 4U);
    EXPECT_EQ(four.maximumChannels, 4U);
    EXPECT_THAT(four.widths, ElementsAre(16, 24, 32));
    EXPECT_EQ(four.nativeWidth, 32U);
    EXPECT_THAT(four.rates, ElementsAre(48000, 192000));

    const SoundDevice odd = soundInput("odd");
    EXPECT_EQ(odd.maximumChannels, 32U) << "as many as a frame of ours takes from a card";
    EXPECT_THAT(odd.widths, ElementsAre(24));
    EXPECT_THAT(odd.rates, ElementsAre(31250));

    EXPECT_THAT(soundInput("float").problem, HasSubstr("16, 24 or 32 bits"));
    EXPECT_THAT(soundInput("absent").problem, HasSubstr("absent"));

    // This library knows no card of the machine: the list is the sound server's device alone.
    const std::vector<SoundDevice> all = soundInputs();
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all.front().id, "default");
    EXPECT_TRUE(all.front().throughServer);
    EXPECT_EQ(all.front().maximumChannels, 2U) << "more are remixed";
    EXPECT_THAT(all.front().rates, ElementsAre(8000, 44100));
}

TEST(SoundInput, GivesWhatIsNearestToTheWish) {
    const TemporaryFolder folder;
    const SoundCards cards(
        folder, Cards{{"card", "channels_min 2 channels_max 8 formats \"S16_LE S32_LE\" rates [ 48000 192000 ]"}});
    const struct {
        SoundFormat wished;
        SoundFormat given;
    } table[] = {{{3, 48000, 16}, {3, 48000, 16}},   {{1, 44100, 16}, {2, 48000, 16}},
                 {{8, 192000, 32}, {8, 192000, 32}}, {{8, 384000, 32}, {8, 192000, 32}},
                 {{8, 48000, 24}, {0, 0, 0}},        {{9, 48000, 16}, {0, 0, 0}}};
    for (const auto& each : table) {
        SCOPED_TRACE(testing::Message() << each.wished.channels << " x " << each.wished.rate << " x "
                                        << each.wished.width);
        std::string reason;
        const auto input = SoundInput::open("card", each.wished, reason);
        EXPECT_EQ(input == nullptr, each.given.channels == 0);
        EXPECT_EQ(reason.empty(), each.given.channels != 0);
        if (input != nullptr) {
            EXPECT_EQ(input->format(), each.given);
        }
    }
}

/// The word of the counter signal in so many bytes, with the sign of a 24-bit code extended.
int32_t expectedWord(uint64_t index, uint32_t width) {
    const uint32_t word = drivers::counterWord(index, width) << (32 - width);
    return static_cast<int32_t>(word) >> (32 - width);
}

int32_t wordAt(const std::byte* at, size_t bytes) {
    int16_t narrow = 0;
    int32_t wide = 0;
    std::memcpy(&narrow, at, sizeof narrow);
    if (bytes == sizeof wide) {
        std::memcpy(&wide, at, sizeof wide);
    }
    return bytes == sizeof wide ? wide : narrow;
}

TEST(SoundInput, EndsExactlyWhereTheDeviceDid) {
    constexpr uint64_t kFrames = 12'000;
    constexpr uint64_t kFirst = (1U << 23U) - 4000;  // so that codes of 24 bits become negative on the way
    const struct {
        const char* format;
        uint32_t width;
        const char* end;
        Kind kind;
        const char* words;
    } table[] = {{"S16_LE", 16, "overrun_at", Kind::Overrun, "lost samples"},
                 {"S24_LE", 24, "unplug_at", Kind::Gone, "pulled out"},
                 {"S24_3LE", 24, "overrun_at", Kind::Overrun, "lost samples"},
                 {"S32_LE", 32, "unplug_at", Kind::Gone, "pulled out"}};
    for (const auto& each : table) {
        SCOPED_TRACE(each.format);
        const TemporaryFolder folder;
        const SoundCards cards(
            folder, Cards{{"card", "channels 3 rates [ 96000 ] formats " + std::string(each.format) + ' ' + each.end +
                                       ' ' + std::to_string(kFrames) + " first " + std::to_string(kFirst)}});
        std::string reason;
        const auto input = SoundInput::open("card", {3, 96000, each.width}, reason);
        ASSERT_NE(input, nullptr) << reason;
        const size_t wordBytes = input->format().wordBytes();
        std::vector<std::byte> block(1000 * input->format().frameBytes());
        uint64_t position = kFirst;
        SoundRead got = input->read(block.data(), 1000, kLong);
        for (; got.kind == Kind::Frames; got = input->read(block.data(), 1000, kLong)) {
            ASSERT_LE(got.frames, 1000U);
            for (size_t i = 0; i < got.frames * 3; ++i, ++position) {
                ASSERT_EQ(wordAt(block.data() + i * wordBytes, wordBytes), expectedWord(position, each.width))
                    << position;
            }
        }
        EXPECT_EQ(position - kFirst, kFrames * 3);
        EXPECT_EQ(got.kind, each.kind);
        EXPECT_THAT(got.text, HasSubstr(each.words));
        EXPECT_EQ(input->read(block.data(), 1000, kLong).kind, each.kind) << "told again";
    }
}

TEST(SoundInput, AReadFromASilentDeviceEndsByTimeOrWhenItIsCancelled) {
    const TemporaryFolder folder;
    const SoundCards cards(folder, Cards{{"card", "channels 2 formats S16_LE rates [ 48000 ] silent_at 0"}});
    std::string reason;
    const auto input = SoundInput::open("card", {2, 48000, 16}, reason);
    ASSERT_NE(input, nullptr) << reason;
    std::vector<std::byte> block(4000);
    EXPECT_EQ(input->read(block.data(), 1000, 1).kind, Kind::Nothing);
    std::thread other([&] { input->cancel(); });
    EXPECT_EQ(input->read(block.data(), 1000, 0x7FFFFFFF).kind, Kind::Nothing);
    other.join();
    EXPECT_EQ(input->read(block.data(), 1000, 0x7FFFFFFF).kind, Kind::Nothing) << "also later";
}

}  // namespace
}  // namespace tarno2::test

// Recordings that tarno2-console makes from a card in user space.

#include <gmock/gmock.h>

#include "tests/apps/recording_rig.h"
#include "tests/support/sound_card/sound_card.h"

namespace tarno2::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// A recording of one card by its definition. A computer that is busy for half a second costs nothing of it.
class SoundRecording {
public:
    SoundRecording(uint32_t channels, uint32_t rate, uint32_t bits, const std::string& more)
        : cards_(rig.folder(),
                 std::vector<SoundCards::Card>{
                     {"card", "patient 1 formats \"S16_LE S32_LE\" rates [ 48000 192000 ] channels " +
                                  std::to_string(channels) + ' ' + more}}),
          settings_("TARNO2_SOUND", "Device=card;Bits=" + std::to_string(bits)) {
        wish.driver = expected.driver = "Sound";
        wish.board = 1;
        wish.channels = expected.channels = channels;
        wish.frequency = expected.frequencyPerChannel = rate;
        expected.bytesPerSample = bits / 8;
        expected.counterBits = bits;
    }
    /// Frames in the file, all of them the signal's.
    [[nodiscard]] uint64_t record() const {
        rig.record(wish);
        return checkRecording(rig.pieces(), expected) / wish.channels;
    }

    RecordingRig rig;
    Wish wish;
    Expected expected;

private:
    SoundCards cards_;
    ScopedEnvironment settings_;
};

TEST(SoundRecording, HoldsEverySampleOfTheCard) {
    const struct {
        uint32_t channels;
        uint32_t rate;
        uint32_t bits;
    } table[] = {{4, 48000, 16}, {4, 48000, 32}, {8, 192000, 16}, {8, 192000, 32}};
    for (const auto& each : table) {
        SCOPED_TRACE(testing::Message() << each.channels << " x " << each.rate << " x " << each.bits);
        SoundRecording recording(each.channels, each.rate, each.bits, "");
        recording.wish.bytes = uint64_t{each.channels} * each.rate * each.bits / 8;
        EXPECT_EQ(recording.record(), each.rate) << recording.rig.autoLog();
        EXPECT_FALSE(recording.rig.exists("run.log")) << "nothing was lost";
    }
}

TEST(SoundRecording, TellsTheRateThatTheCardTook) {
    SoundRecording recording(2, 96000, 16, "");
    recording.wish.bytes = 40'000;
    recording.expected.frequencyPerChannel = 48000;
    EXPECT_EQ(recording.record(), 10'000U) << recording.rig.autoLog();
}

TEST(SoundRecording, KeepsEveryFrameBeforeAnEndOfTheCard) {
    constexpr uint64_t kFrames = 30'001;
    const struct {
        const char* end;
        const char* words;
        const char* ledger;
    } table[] = {{"overrun_at", "The board lost samples.", "sample = 120004, count = 0, cause = board\r\n"},
                 {"unplug_at", "The sound card was pulled out.", ""}};
    for (const auto& each : table) {
        SCOPED_TRACE(each.end);
        SoundRecording recording(4, 192000, 16, each.end + (' ' + std::to_string(kFrames)));
        EXPECT_EQ(recording.record(), kFrames) << recording.rig.autoLog();
        EXPECT_THAT(recording.rig.autoLog(), HasSubstr(each.words));
        EXPECT_THAT(recording.rig.autoLog(), Not(HasSubstr("Stop - By user")));
        EXPECT_EQ(recording.rig.exists("run.log"), *each.ledger != '\0');
        if (recording.rig.exists("run.log")) {
            EXPECT_THAT(readFile(recording.rig.file("run.log")), HasSubstr(each.ledger));
        }
    }
}

}  // namespace
}  // namespace tarno2::test

#include "core/recording/recording_settings.h"

#include <gmock/gmock.h>
#include <tuple>

#include "core/devices/board_options.h"
#include "core/devices/board_selection.h"
#include "core/devices/input_limits.h"
#include "core/recording/recording_need.h"
#include "tests/core/fake_device.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;

constexpr uint32_t kEveryMode = kADCModeExternalStart | kADCModeDifferential | kADCModePacket | kADCModeExternalClock;

BoardFacts ableBoard() {
    BoardFacts board;
    board.formatKnown = true;
    board.format = {2, 14, 0, 0x3FFF, 14, 0xC000, 2, 1, 0, 1};
    board.channelCount = 4;
    board.gains = {2, 10};
    board.boardModes = kEveryMode;
    board.extendedBlock = true;
    board.hardwareAverage = true;
    return board;
}

TEST(BoardOptions, FollowWhatTheDriverTells) {
    BoardFacts plain;
    plain.cutMode = false;
    BoardFacts withoutList = ableBoard();
    withoutList.extendedBlock = false;
    for (const auto option :
         {BoardOption::ExternalStart, BoardOption::Differential, BoardOption::PacketMode, BoardOption::ExternalClock,
          BoardOption::CutMode, BoardOption::DigitalPort, BoardOption::HardwareAverage}) {
        EXPECT_FALSE(offers(plain, option)) << static_cast<int>(option);
        EXPECT_TRUE(offers(ableBoard(), option)) << static_cast<int>(option);
        EXPECT_EQ(offers(withoutList, option), option != BoardOption::Differential)
            << "differential inputs are told in the extended block";
    }
}

TEST(RecordingSettings, TakeWhatTheBoardHas) {
    ProgramSettings settings;
    for (const size_t i : {0U, 2U, 3U, 7U}) {
        settings.channels[i].active = true;
    }
    settings.channels[2].gain = 10;
    settings.channels[3].gain = 5;
    settings.wish.boardMode = kEveryMode;
    settings.wish.useDigitalPort = settings.wish.cut = settings.wish.cycleStart = true;
    settings.wish.cutMegabytes = 7;
    settings.wish.decimation = 3;
    settings.wish.synchroSizes.history = 99;
    RecordingWish recording = recordingWish(settings, ableBoard());
    EXPECT_THAT(recording.channels, ElementsAre(0, 2, 3)) << "the board has four";
    EXPECT_THAT(recording.gains, ElementsAre(2, 10, 2)) << "the first gain stands for one that the board lacks";
    EXPECT_EQ(recording.boardMode, kEveryMode);
    EXPECT_TRUE(recording.cut && recording.cycleStart && recording.useDigitalPort);
    EXPECT_EQ(recording.cutMegabytes, 7);
    EXPECT_EQ(recording.decimation, 3);
    EXPECT_EQ(recording.synchroSizes.history, 99);

    BoardFacts poor = ableBoard();
    poor.boardModes = 0;
    poor.cutMode = false;
    poor.format.m_nDigitalMask = 0;
    recording = recordingWish(settings, poor);
    EXPECT_EQ(recording.boardMode, 0U);
    EXPECT_FALSE(recording.cut || recording.useDigitalPort);
}

TEST(RecordingSettings, StopValuesHaveUnits) {
    struct {
        StopRule rule;
        double value;
        int32_t unit;
        double seconds;
        uint64_t bytes;
    } const cases[] = {
        {StopRule::Manual, 10, 1, 0, 0},
        {StopRule::Time, 10, 0, 10, 0},
        {StopRule::Time, 1.5, 1, 90, 0},
        {StopRule::Time, 2, 2, 7200, 0},
        {StopRule::Size, 100, 0, 0, 100},
        {StopRule::Size, 1.5, 1, 0, 1536},
        {StopRule::Size, 3, 2, 0, 3U << 20U},
        {StopRule::Size, 0, 2, 0, 0},
        {StopRule::Size, 1e30, 2, 0, 9000000000000000000U},
    };
    for (const auto& c : cases) {
        ProgramSettings settings;
        settings.wish.stopRule = c.rule;
        settings.stopValue = c.value;
        settings.stopPower = c.unit;
        const RecordingWish recording = recordingWish(settings, ableBoard());
        EXPECT_EQ(recording.stopRule, c.rule);
        EXPECT_EQ(recording.stopSeconds, c.seconds) << c.value;
        EXPECT_EQ(recording.stopBytes, c.bytes) << c.value;
    }
}

TEST(RecordingNeed, FollowsRateWidthAndModes) {
    struct {
        const char* what;
        uint32_t mode;
        bool perChannel;
        uint32_t width;
        size_t channels;
        int32_t decimation;
        double bytesPerSecond;
    } const cases[] = {
        {"the frequency is that of all channels", 0, false, 2, 4, 1, 20000},
        {"the frequency counts per channel", 0, true, 2, 4, 1, 80000},
        {"32-bit samples, every tenth frame", 0, true, 4, 4, 10, 16000},
        {"packets of four", kBoardPacketMode, false, 2, 4, 1, 800},
        {"nobody knows the external clock", kBoardExternalClock, false, 2, 4, 1, 0},
        {"no channel", 0, true, 2, 0, 1, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        BoardFacts board = ableBoard();
        board.perChannelFrequency = c.perChannel;
        board.format.m_nBytes = c.width;
        RecordingWish settings;
        settings.channels.resize(c.channels);
        settings.frequency = 10000;
        settings.boardMode = c.mode;
        settings.packetFrequency = 100;
        settings.decimation = c.decimation;
        EXPECT_DOUBLE_EQ(recordingNeed(settings, board, {}).bytesPerSecond, c.bytesPerSecond);
    }
}

TEST(RecordingNeed, KnowsEndPiecesAndDisk) {
    RecordingWish settings;
    settings.channels = {0, 1, 2};
    settings.frequency = 500000;
    DiskFacts disk;
    disk.maximumFileSize = 0xFFFFFFFF;
    RecordingNeed need = recordingNeed(settings, ableBoard(), disk);
    EXPECT_EQ(need.pieces, 1U);
    EXPECT_EQ(need.totalBytes, 0.0);
    EXPECT_FALSE(diskTooSmall(need, 0)) << "without an end nothing is too small";
    EXPECT_DOUBLE_EQ(diskLastsSeconds(need, 60'000'000), 60.0);
    EXPECT_TRUE(diskTooSlow(need, 0.9));
    EXPECT_FALSE(diskTooSlow(need, 1.1));
    EXPECT_FALSE(diskTooSlow(need, 0.0)) << "not measured";

    settings.cut = true;
    settings.cutMegabytes = 1;
    EXPECT_EQ(recordingNeed(settings, ableBoard(), disk).pieces, 0U) << "it grows on";
    settings.stopRule = StopRule::Time;
    settings.stopSeconds = 9.5;
    need = recordingNeed(settings, ableBoard(), disk);
    EXPECT_DOUBLE_EQ(need.totalBytes, 1e7) << "the timer counts whole seconds";
    EXPECT_EQ(need.pieces, 10U) << "a piece of 1 MiB holds whole frames of 6 bytes";
    EXPECT_TRUE(diskTooSmall(need, 9'999'999));
    EXPECT_FALSE(diskTooSmall(need, 10'000'000));

    settings.stopRule = StopRule::Size;
    settings.stopBytes = 5ULL << 32U;
    settings.automaticCut = true;
    EXPECT_EQ(recordingNeed(settings, ableBoard(), disk).pieces, 6U) << "as large as the volume holds";
    settings.frequency = 0;
    EXPECT_LT(diskLastsSeconds(recordingNeed(settings, ableBoard(), disk), 1), 0.0);
}

TEST(BoardSelectionFacts, TellsRangesAndDrqNumbersOfItsBoard) {
    FakeDevice device;
    device.numbers = {{kADCGetAbiVersion, kADCAbiVersion}, {kADCGetChannelCount, 2}};
    device.drqNumbers = {5, 7};
    const TemporaryFolder folder;
    BoardSelection selection([](const std::string&) {}, folder.path());
    std::string why;
    ASSERT_TRUE(selection.driver().attach(&device, "Fake", folder.path(), why)) << why;
    ASSERT_TRUE(selection.BaseBoxChange(1));
    EXPECT_EQ(selection.boardNumber(), 1U);
    const auto limits = [&](int32_t gain) {
        const InputLimits told = inputLimits(selection.driver().device(), 0, gain);
        return std::tuple(told.lower, told.upper, told.range, told.known());
    };
    EXPECT_EQ(limits(10), std::tuple(-0.5, 0.5, 5.0F, true));
    EXPECT_EQ(limits(0), std::tuple(-5.0, 5.0, 5.0F, true));
    EXPECT_THAT(selection.drqNumbers(), ElementsAre(5, 7));
    EXPECT_TRUE(selection.setHardwareAverage(false));
    EXPECT_FALSE(selection.setHardwareAverage(true)) << "the board has none";
    device.inputRange = 0.0F;
    EXPECT_EQ(limits(1), std::tuple(0.0, 0.0, 0.0F, false));
    device.inputLimits = {0.0, 10.0};
    EXPECT_EQ(limits(4), std::tuple(0.0, 2.5, 0.0F, true));
    device.inputLimits = {10.0, 10.0};
    device.inputRange = 5.0F;
    EXPECT_FALSE(std::get<3>(limits(1))) << "what a board says of its limits is not made up for";
}

}  // namespace
}  // namespace tarno2::test

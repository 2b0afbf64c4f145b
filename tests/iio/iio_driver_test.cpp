// The IIO driver against a server on the loopback: what it tells of boards, every sample, and every way to end.

#include <cmath>
#include <gmock/gmock.h>

#include "tests/drivers/driver_rig.h"
#include "tests/support/fake_iiod.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// s16 and u12 in 2-byte words, with scales and an offset.
FakeIioBoard mixedBoard() {
    FakeIioBoard board;
    board.elements = {{"voltage0", "le:s16/16>>0", "0.305176", ""},
                      {"voltage1", "be:u12/16>>4", "1.220703", "-2048"},
                      {"voltage2", "le:u12/16>>2", "", ""}};
    board.timestamp = true;
    return board;
}

FakeIioBoard wideBoard() {
    FakeIioBoard board;
    board.elements = {{"voltage0", "le:s24/32>>0", "0.01", ""},
                      {"voltage1", "be:s24/32>>8", "0.01", ""},
                      {"voltage2", "le:s16/16>>0", "0.01", ""}};
    board.timestamp = true;
    return board;
}

class IioDriver : public testing::Test {
protected:
    /// Loads the driver for a server with this board, and chooses the board.
    void serve(const FakeIioBoard& board, const std::string& settings = "") {
        server_ = std::make_unique<FakeIiod>(board);
        ASSERT_NE(server_->uri(), "");
        board_ = board;
        load(server_->uri(), settings);
        ASSERT_TRUE(searched());
        ASSERT_EQ((*driver_)->SelectBoard(1), 1) << driver_->lastError();
    }
    void load(const std::string& context, const std::string& settings = "") {
        const ScopedEnvironment environment("TARNO2_IIO", "Context=" + context + ";" + settings);
        driver_ = std::make_unique<LoadedDriver>(IIO_LIBRARY, folder_.path());
        ASSERT_NE(driver_->device(), nullptr);
    }
    [[nodiscard]] bool searched() const {
        static_cast<void>(driver_->boards());
        uint32_t searching = 1;
        while ((*driver_)->Get(kADCGetBoardSearch, &searching) == 1 && searching != 0) {
            std::this_thread::yield();
        }
        return true;
    }
    /// The words that samples from 0 on have to be, for channels of these numbers.
    [[nodiscard]] std::vector<uint32_t> expected(const std::vector<int32_t>& channels, size_t samples,
                                                 uint32_t bytes) const {
        std::vector<uint32_t> words;
        for (uint64_t frame = 0; words.size() < samples; ++frame) {
            for (const int32_t channel : channels) {
                const auto element = static_cast<size_t>(channel);
                const int64_t code = fakeCode(board_.elements[element].format, element, frame);
                words.push_back(static_cast<uint32_t>(code) & (bytes == 2 ? 0xFFFFU : 0xFFFFFFFFU));
            }
        }
        return words;
    }
    /// Starts, reads until the stream has ended, and compares every sample; where and why it ended.
    ADCStreamEnd recordToTheEnd(const Wish& wish, uint32_t bytes) {
        RingReader reader(*driver_, wish);
        EXPECT_TRUE(reader.ok()) << driver_->lastError();
        EXPECT_EQ((*driver_)->Start(), 1) << driver_->lastError();
        ADCStreamEnd end{};
        while (end.m_nCause == kADCEndNone && reader.waitForHalf() > 0) {
            end = driver_->get<ADCStreamEnd>(kADCGetStreamEnd);
            const uint64_t there = end.m_nCause != kADCEndNone ? uint64_t{end.m_nPosition} : reader.written();
            while (reader.position() < there) {
                const uint64_t left = reader.ring() - reader.position() % reader.ring();
                EXPECT_EQ(reader.fetch(static_cast<uint32_t>(std::min(left, there - reader.position()))), 1);
            }
        }
        (*driver_)->Stop();
        EXPECT_EQ(reader.position(), end.m_nPosition);
        EXPECT_EQ(reader.words(), expected(wish.channels, end.m_nPosition, bytes));
        return end;
    }

    TemporaryFolder folder_;
    std::unique_ptr<FakeIiod> server_;
    std::unique_ptr<LoadedDriver> driver_;
    FakeIioBoard board_;
};

TEST_F(IioDriver, TellsWhatTheBoardIs) {
    serve(mixedBoard(), "Range=2");
    EXPECT_THAT(driver_->boards(), ElementsAre("001 fakeadc (iio:device0)"));
    EXPECT_EQ(driver_->get<uint32_t>(kADCGetChannelCount), 3U);
    const auto format = driver_->get<ADCSampleFormat>(kADCGetSampleFormat);
    EXPECT_EQ(format.m_nBytes, 2U);
    EXPECT_EQ(format.m_nSignedCodes, 1U);
    const auto codes = driver_->get<ADCCodeRange>(kADCGetCodeRange);
    EXPECT_EQ(codes.m_nMinimum, -32768);
    EXPECT_EQ(codes.m_nMaximum, 32767);
    const double lower[] = {-32768 * 0.000305176, (-32768 - 2048) * 0.001220703, -32768 * 2.0 / 4096};
    const double upper[] = {32767 * 0.000305176, (32767 - 2048) * 0.001220703, 32767 * 2.0 / 4096};
    for (int32_t channel = 0; channel < 3; ++channel) {
        const auto limits = driver_->get(kADCGetInputLimits, ADCInputLimits{channel, 1, 0.0, 0.0});
        EXPECT_NEAR(limits.m_fLower, lower[channel], 1e-9) << channel;
        EXPECT_NEAR(limits.m_fUpper, upper[channel], 1e-9) << channel;
    }
    EXPECT_EQ(driver_->get<uint32_t>(kADCGetPerChannelFrequency), 1U);
    const auto limits = driver_->get<ADCFrequencyLimits>(kADCGetFrequencyLimits);
    EXPECT_EQ(limits.m_fMinimum, 1.0F);
    EXPECT_EQ(limits.m_fMaximum, 200000.0F);
}

TEST_F(IioDriver, TellsNamesAndUnitsOfItsChannels) {
    FakeIioBoard board;
    board.elements = {
        {"voltage0", "le:s16/16>>0", "1", ""}, {"temp", "le:s16/16>>0", "10", ""}, {"accel_x", "le:s16/16>>0", "", ""}};
    serve(board);
    const char* const names[] = {"voltage0", "temp", "accel_x"};
    for (int32_t channel = 0; channel < 3; ++channel) {
        EXPECT_STREQ(driver_->get(kADCGetChannelName, ADCChannelText{channel, {}}).m_sText, names[channel]);
    }
    EXPECT_STREQ(driver_->get(kADCGetChannelUnit, ADCChannelText{1, {}}).m_sText,
                 "\xC2\xB0"
                 "C");
    for (const int32_t channel : {0, 2}) {
        ADCChannelText unit{channel, {}};
        EXPECT_EQ(driver_->device()->Get(kADCGetChannelUnit, &unit), 0) << "volts, or a scale that nobody knows";
    }
}

TEST_F(IioDriver, RecordsEveryFormatInEveryChoiceOfChannels) {
    struct Row {
        FakeIioBoard board;
        std::vector<int32_t> channels;
        uint32_t bytes;
    };
    FakeIioBoard unsignedBoard;
    unsignedBoard.elements = {{"voltage0", "le:u16/16>>0", "1", ""}, {"voltage1", "be:u12/16>>4", "1", ""}};
    const Row rows[] = {{mixedBoard(), {0, 1, 2}, 2}, {mixedBoard(), {1}, 2}, {mixedBoard(), {2, 0}, 2},
                        {wideBoard(), {0, 1, 2}, 4},  {wideBoard(), {2}, 4},  {wideBoard(), {1, 2}, 4},
                        {unsignedBoard, {0, 1}, 2}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.channels));
        FakeIioBoard board = row.board;
        board.paced = false;
        board.goneAfter = 123457;
        serve(board);
        Wish wish = Wish::firstChannels(static_cast<int32_t>(row.channels.size()), 50000.0F, 1 << 20);
        wish.channels = row.channels;
        const ADCStreamEnd end = recordToTheEnd(wish, row.bytes);
        EXPECT_EQ(end.m_nCause, uint32_t{kADCEndUnplugged});
        EXPECT_EQ(end.m_nPosition, 123457 * row.channels.size());
        EXPECT_THAT(driver_->lastError(), HasSubstr("fakeadc (iio:device0) does not answer any more: No such device"));
        EXPECT_EQ(server_->kernelBuffers(), 4U);
    }
}

TEST_F(IioDriver, TellsWhereTheStreamEnded) {
    struct Row {
        const char* name;
        void (*spoil)(FakeIioBoard&);
        const char* settings;
        uint64_t frames;
        uint32_t cause;
        uint64_t lost;
        const char* words;
    };
    // A tenth of a second has 1000 frames; what was under way when the connection broke is not known.
    const Row rows[] = {
        {"cut", [](FakeIioBoard& board) { board.cutAfter = 5000; }, "", 5000, kADCEndUnplugged, 0,
         "does not answer any more"},
        {"loss", [](FakeIioBoard& board) { board.loseAt = 4321, board.loseFrames = 77; }, "", 4321, kADCEndLost, 154,
         "lost 154 samples"},
        {"loss between", [](FakeIioBoard& board) { board.loseAt = 4000, board.loseFrames = 1; }, "", 4000, kADCEndLost,
         2, "lost 2 samples"},
        {"silence", [](FakeIioBoard& board) { board.silentAfter = 2000; }, "Timeout=0.1", 2000, kADCEndError, 0,
         "fakeadc (iio:device0) sends no samples."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        FakeIioBoard board = mixedBoard();
        board.paced = false;
        row.spoil(board);
        serve(board, row.settings);
        const ADCStreamEnd end = recordToTheEnd(Wish::firstChannels(2, 10000.0F, 1 << 17), 2);
        EXPECT_EQ(end.m_nCause, row.cause) << driver_->lastError();
        EXPECT_EQ(end.m_nPosition, row.frames * 2);
        EXPECT_EQ(end.m_nLost, row.lost);
        EXPECT_THAT(driver_->lastError(), HasSubstr(row.words));
    }
}

TEST_F(IioDriver, TakesTheNearestRateThatTheBoardHas) {
    struct Row {
        const char* rates;
        float wished;
        float taken;
    };
    const Row rows[] = {{"8000 16000 48000", 44100.0F, 48000.0F}, {"8000 16000 48000", 1.0F, 8000.0F},
                        {"[10 1 20000]", 1e6F, 20000.0F},         {"[10 1 20000]", 12345.0F, 12345.0F},
                        {"[0.5 0.5 100]", 12.5F, 12.5F},          {"", 5.0F, 250.0F}};
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.rates << ": " << row.wished);
        FakeIioBoard board = mixedBoard();
        board.rates = row.rates;
        serve(board, "Rate=250");
        const RingReader reader(*driver_, Wish::firstChannels(2, row.wished, 1 << 16));
        ASSERT_TRUE(reader.ok()) << driver_->lastError();
        EXPECT_EQ(float{reader.accepted().m_fFreqStart}, row.taken);
        if (!board.rates.empty()) {
            EXPECT_EQ(static_cast<float>(server_->rate()), row.taken);
        }
    }
}

TEST_F(IioDriver, ConnectsTheTriggerThatABoardNeeds) {
    FakeIioBoard board = mixedBoard();
    board.needsTrigger = true;
    board.goneAfter = 1000;
    board.paced = false;
    serve(board);
    EXPECT_EQ(recordToTheEnd(Wish::firstChannels(3, 10000.0F, 3000), 2).m_nPosition, 3000U);
    EXPECT_EQ(server_->trigger(), "fakeadc-dev0");

    serve(board, "Trigger=none-such");
    const RingReader reader(*driver_, Wish::firstChannels(1, 10000.0F, 3000));
    EXPECT_EQ((*driver_)->Start(), 0);
    EXPECT_EQ(driver_->lastError(), "There is no trigger none-such.");
}

TEST_F(IioDriver, SaysWhyThereAreNoBoards) {
    FakeIioBoard empty;
    const FakeIiod server(empty);
    struct Row {
        std::string context;
        const char* words;
    };
    const Row rows[] = {{"ip:127.0.0.1:1", "The IIO context ip:127.0.0.1:1 can't be reached: Connection refused"},
                        {"carrier-pigeon:7", "The IIO library of this system knows no contexts \"carrier-pigeon\"."},
                        {server.uri(), "has no device that can be recorded."}};
    for (const Row& row : rows) {
        load(row.context);
        ASSERT_TRUE(searched());
        EXPECT_THAT(driver_->boards(), testing::IsEmpty()) << row.context;
        EXPECT_THAT(driver_->lastError(), HasSubstr(row.words));
    }
}

TEST_F(IioDriver, StartsAndStopsAHundredTimes) {
    FakeIioBoard board = mixedBoard();
    serve(board);
    for (int i = 0; i < 100; ++i) {
        RingReader reader(*driver_, Wish::firstChannels(3, 10000.0F, 600));
        ASSERT_TRUE(reader.ok()) << driver_->lastError();
        ASSERT_EQ((*driver_)->Start(), 1) << driver_->lastError();
        if (i % 10 == 0) {
            ASSERT_TRUE(reader.record(600));
            EXPECT_EQ(reader.words(), expected({0, 1, 2}, reader.words().size(), 2));
        }
        (*driver_)->Stop();
    }
    EXPECT_EQ(server_->opened(), 100U);
}

}  // namespace
}  // namespace tarno2::test

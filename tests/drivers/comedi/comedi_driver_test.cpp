// The driver of Comedi with a board in place of the library; scripts/kernel records from one of the kernel.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <comedilib.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "tests/drivers/streaming_rig.h"
#include "tests/support/counter_bytes.h"

struct comedi_t_struct {};

namespace {

constexpr size_t kSamples = 12'000;  // which a pipe holds
constexpr unsigned kStep = 1000;     // nanoseconds, of the board's clock

/// A board behind the library's functions. At a command it counts, to the middle of a frame, and keeps most of that to
/// itself until it is asked.
struct Board {
    explicit Board(unsigned bytes) : bytesPerSample(bytes) { EXPECT_EQ(pipe(ends), 0); }
    [[nodiscard]] unsigned flags() const { return SDF_CMD_READ | SDF_GROUND | (bytesPerSample == 4 ? SDF_LSAMPL : 0); }
    ~Board() { close(ends[0]); }
    void give(size_t bytes) {
        EXPECT_EQ(write(ends[1], held.data(), bytes), static_cast<ssize_t>(bytes));
        held.erase(0, bytes);
    }
    unsigned bytesPerSample;
    std::atomic<bool> present{true};
    int ends[2] = {-1, -1};
    std::string held;
    unsigned cancelled = 0;
};
Board* board = nullptr;
comedi_t handle;
comedi_range range = {-10, 10, UNIT_volt};

}  // namespace

#define ANSWER(result, function, parameters, answer) \
    result function parameters {                     \
        return answer;                               \
    }
extern "C" {
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the header abbreviates.
ANSWER(comedi_t*, comedi_open, (const char*), &handle)
ANSWER(int, comedi_close, (comedi_t*), 0)
ANSWER(int, comedi_errno, (), ENODEV)
ANSWER(int, comedi_fileno, (comedi_t*), board->ends[0])
ANSWER(const char*, comedi_get_driver_name, (comedi_t*), "fake")
ANSWER(const char*, comedi_get_board_name, (comedi_t*), "fake")
ANSWER(int, comedi_get_n_subdevices, (comedi_t*), 1)
ANSWER(int, comedi_get_read_subdevice, (comedi_t*), 0)
ANSWER(int, comedi_lock, (comedi_t*, unsigned), 0)
ANSWER(int, comedi_get_subdevice_type, (comedi_t*, unsigned), COMEDI_SUBD_AI)
ANSWER(int, comedi_find_subdevice_by_type, (comedi_t*, int, unsigned first), first == 0 ? 0 : -1)
ANSWER(int, comedi_get_subdevice_flags, (comedi_t*, unsigned), board->present ? static_cast<int>(board->flags()) : -1)
ANSWER(int, comedi_get_n_channels, (comedi_t*, unsigned), 8)
ANSWER(lsampl_t, comedi_get_maxdata, (comedi_t*, unsigned, unsigned), board->bytesPerSample == 4 ? 0xFFFFFF : 0xFFFF)
ANSWER(int, comedi_get_n_ranges, (comedi_t*, unsigned, unsigned), 1)
ANSWER(comedi_range*, comedi_get_range, (comedi_t*, unsigned, unsigned, unsigned), &range)
ANSWER(int, comedi_get_buffer_size, (comedi_t*, unsigned), 1 << 30)
ANSWER(int, comedi_poll, (comedi_t*, unsigned), (board->give(board->held.size()), 0))

int comedi_get_cmd_generic_timed(comedi_t*, unsigned, comedi_cmd* command, unsigned channels, unsigned nanoseconds) {
    *command = {};
    command->scan_begin_src = TRIG_FOLLOW;
    command->convert_src = TRIG_TIMER;
    command->chanlist_len = channels;
    command->convert_arg = std::max(nanoseconds / channels, kStep);
    return 0;
}
int comedi_command_test(comedi_t*, comedi_cmd* command) {
    const unsigned asked = command->convert_arg;
    command->convert_arg = (asked + kStep / 2) / kStep * kStep;
    return command->convert_arg == asked ? 0 : 4;
}
int comedi_command(comedi_t*, comedi_cmd*) {
    board->held = tarno2::test::counterBytes(0, kSamples + 2, board->bytesPerSample);
    board->held.pop_back();
    board->give(7 * board->bytesPerSample + 1);  // a frame, and a part of the next
    return 0;
}
int comedi_cancel(comedi_t*, unsigned) {
    std::string rest(1 << 16, '\0');
    while (read(board->ends[0], rest.data(), rest.size()) > 0) {
    }
    ++board->cancelled;
    return 0;
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
}

namespace tarno2::test {
namespace {

TEST(ComediDriver, StartsAndStopsAHundredTimesUntilTheBoardEnds) {
    for (const unsigned bytes : {2U, 4U}) {
        Board made(bytes);
        board = &made;
        StreamingRig rig(COMEDI_LIBRARY, "TARNO2_COMEDI", "Device=/dev/fake");
        const std::vector<uint32_t> expected = counterWords(0, kSamples, 8 * bytes);
        for (unsigned i = 0; i < 100; ++i) {
            ASSERT_TRUE(rig.start(Wish::firstChannels(4, 21'000.0F, 3000))) << rig.error();
            EXPECT_FLOAT_EQ(rig.reader().accepted().m_fFreqStart, 20'833.334F) << "the nearest that the board has";
            if (i % 11 == 0) {
                ASSERT_TRUE(rig.reader().record(kSamples));
                EXPECT_EQ(rig.reader().words(), expected);
            }
            if (i == 99) {  // the board stops by itself, or is taken away
                board->present = bytes == 4;
                close(board->ends[1]);
                EXPECT_EQ(rig.readToEnd(), expected);
            }
            rig.driver()->Stop();
            EXPECT_EQ(board->cancelled, i + 1) << "it would run on";
        }
        EXPECT_EQ(rig.end().m_nPosition, uint64_t{kSamples}) << "whole frames alone";
        EXPECT_EQ(rig.end().m_nCause, uint32_t{bytes == 4 ? kADCEndError : kADCEndUnplugged});
        EXPECT_EQ(rig.error(), bytes == 4 ? "The board has stopped by itself." : "The board is not there any more.");
    }
}

}  // namespace
}  // namespace tarno2::test

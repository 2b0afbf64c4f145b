#include "drivers/comedi/command.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarno2::drivers::comedi {

namespace {

constexpr double kNanoseconds = 1e9;
constexpr unsigned kLongestPeriod = 4'000'000'000U;  // below 2^32 by more than the library's rounding adds

/// Each test brings the arguments nearer to what the board takes; those that agree at all do so within two or three.
constexpr int kTests = 8;

/// Slower than this, a board that collects samples in a buffer of its own is asked to hand over each frame.
constexpr double kSlowFrames = 20.0;

constexpr double kBufferSeconds = 2.0;
constexpr double kLargestBuffer = 64.0 * 1024 * 1024;
constexpr double kPage = 4096.0;

unsigned periodOf(double framesPerSecond) {
    const double period = std::round(kNanoseconds / framesPerSecond);
    return period >= kLongestPeriod ? kLongestPeriod : static_cast<unsigned>(std::max(period, 1.0));
}

double rateOf(const comedi_cmd& command) {
    const double period = command.scan_begin_src == TRIG_TIMER
                              ? command.scan_begin_arg
                              : static_cast<double>(command.convert_arg) * command.chanlist_len;
    return period > 0.0 ? kNanoseconds / period : 0.0;
}

bool isTimed(const comedi_cmd& command) {
    return command.scan_begin_src == TRIG_TIMER ||
           (command.scan_begin_src == TRIG_FOLLOW && command.convert_src == TRIG_TIMER);
}

/// What the result of a command's test means.
const char* stageText(int stage) {
    switch (stage) {
        case 1:
        case 2:
            return "The board can't be triggered in this way.";
        case 5:
            return "The board does not take these channels with these gains in this order.";
        default:
            return "The board finds no timing near the frequency.";
    }
}

}  // namespace

bool Command::negotiate(comedi_t* device, const Input& input, std::vector<unsigned> entries, double framesPerSecond,
                        std::string& why) {
    entries_ = std::move(entries);
    const auto count = static_cast<unsigned>(entries_.size());
    if (comedi_get_cmd_generic_timed(device, input.subdevice, &command_, count, periodOf(framesPerSecond)) < 0) {
        why = "The board has no timed acquisition of " + std::to_string(count) + " channels: " + lastWords();
        return false;
    }
    command_.chanlist = entries_.data();
    command_.chanlist_len = count;
    command_.stop_src = TRIG_NONE;
    command_.stop_arg = 0;
    if (framesPerSecond < kSlowFrames) {
        command_.flags |= TRIG_WAKE_EOS;
    }
    return test(device, why);
}

bool Command::test(comedi_t* device, std::string& why) {
    int stage = -1;
    for (int i = 0; i < kTests && stage != 0; ++i) {
        stage = comedi_command_test(device, &command_);
        if (stage < 0) {
            why = "The board can't be asked: " + lastWords();
            return false;
        }
    }
    if (stage != 0 || !isTimed(command_) || command_.stop_src != TRIG_NONE) {
        why = stageText(stage == 0 ? 1 : stage);
        return false;
    }
    return true;
}

double Command::framesPerSecond() const {
    return rateOf(command_);
}

bool Command::start(comedi_t* device, std::string& why) {
    command_.chanlist = entries_.data();
    if (comedi_command(device, &command_) < 0) {
        why = lastWords();
        return false;
    }
    if (command_.start_src == TRIG_INT && comedi_internal_trigger(device, command_.subdev, command_.start_arg) < 0) {
        why = lastWords();
        comedi_cancel(device, command_.subdev);
        return false;
    }
    return true;
}

FrameRates frameRates(comedi_t* device, const Input& input, unsigned channels) {
    FrameRates rates;
    comedi_cmd command{};
    if (comedi_get_cmd_generic_timed(device, input.subdevice, &command, channels, 1) == 0 && isTimed(command)) {
        rates.fastest = rateOf(command);
    }
    command = {};
    if (comedi_get_cmd_generic_timed(device, input.subdevice, &command, channels, kLongestPeriod) == 0 &&
        isTimed(command)) {
        rates.slowest = rateOf(command);
    }
    return rates;
}

void enlargeBuffer(comedi_t* device, const Input& input, double bytesPerSecond) {
    const double wished = std::clamp(kPage * std::ceil(bytesPerSecond * kBufferSeconds / kPage), kPage, kLargestBuffer);
    const auto size = static_cast<int>(wished);
    if (comedi_get_buffer_size(device, input.subdevice) >= size) {
        return;
    }
    const int limit = comedi_get_max_buffer_size(device, input.subdevice);
    // Only an administrator may raise the limit.
    if (limit < size && comedi_set_max_buffer_size(device, input.subdevice, static_cast<unsigned>(size)) < size) {
        if (limit > comedi_get_buffer_size(device, input.subdevice)) {
            comedi_set_buffer_size(device, input.subdevice, static_cast<unsigned>(limit));
        }
        return;
    }
    comedi_set_buffer_size(device, input.subdevice, static_cast<unsigned>(size));
}

}  // namespace tarno2::drivers::comedi

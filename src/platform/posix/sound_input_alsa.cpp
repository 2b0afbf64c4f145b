#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>
#include <poll.h>
#include <utility>

#include "platform/clock.h"
#include "platform/event.h"
#include "platform/sound_input.h"

extern "C" {  // in which the library's headers leave out some of its functions
#include <alsa/asoundlib.h>
}

namespace tarno2 {

namespace {

constexpr uint32_t kMostChannels = 32;
/// A sound server remixes more channels than two as it likes.
constexpr uint32_t kMostServerChannels = 2;
constexpr unsigned kBufferMicroseconds = 500'000;
constexpr unsigned kPeriodMicroseconds = 20'000;
constexpr unsigned kRates[] = {8000,  11025, 12000, 16000,  22050,  24000,  32000,  44100, 48000,
                               64000, 88200, 96000, 128000, 176400, 192000, 352800, 384000};
/// The library's own conversions stay off: a name of its configuration gives what the card gives, or nothing.
constexpr int kOpenMode =
    SND_PCM_NONBLOCK | SND_PCM_NO_AUTO_RESAMPLE | SND_PCM_NO_AUTO_CHANNELS | SND_PCM_NO_AUTO_FORMAT;

struct FormatOfWidth {
    snd_pcm_format_t format;
    uint32_t width;
};
constexpr FormatOfWidth kFormats[] = {{SND_PCM_FORMAT_S16_LE, 16},
                                      {SND_PCM_FORMAT_S24_LE, 24},
                                      {SND_PCM_FORMAT_S24_3LE, 24},
                                      {SND_PCM_FORMAT_S32_LE, 32}};

/// The library writes its complaints to the standard error, as if the program had failed. Here they are kept, and the
/// last one explains an error number. No object: one that waits for its destruction would keep the driver loaded until
/// the program ends, when the library unloads its plugins, and with them whatever nobody needs any more: this code.
thread_local std::array<char, 256> lastComplaint{};

void keepComplaint(const char*, int, const char*, int, const char* format, va_list arguments) {
    std::vsnprintf(lastComplaint.data(), lastComplaint.size(), format, arguments);
}

class Complaints {
public:
    Complaints() : before_(snd_lib_error_set_local(keepComplaint)) { lastComplaint[0] = 0; }
    ~Complaints() { snd_lib_error_set_local(before_); }
    Complaints(const Complaints&) = delete;
    Complaints& operator=(const Complaints&) = delete;

    [[nodiscard]] static std::string explain(int error) {
        std::string text = error == -EBUSY ? "another program uses it" : snd_strerror(error);
        return lastComplaint[0] == 0 || error == -EBUSY ? text : text + " (" + lastComplaint.data() + ")";
    }

private:
    snd_local_error_handler_t before_;
};

struct ClosePcm {
    void operator()(snd_pcm_t* pcm) const { snd_pcm_close(pcm); }
};
using Pcm = std::unique_ptr<snd_pcm_t, ClosePcm>;

struct CloseControl {
    void operator()(snd_ctl_t* control) const { snd_ctl_close(control); }
};
using Control = std::unique_ptr<snd_ctl_t, CloseControl>;

struct FreeParameters {
    void operator()(snd_pcm_hw_params_t* parameters) const { snd_pcm_hw_params_free(parameters); }
};
using Parameters = std::unique_ptr<snd_pcm_hw_params_t, FreeParameters>;

int openPcm(const std::string& id, Pcm& pcm) {
    snd_pcm_t* opened = nullptr;
    const int error = snd_pcm_open(&opened, id.c_str(), SND_PCM_STREAM_CAPTURE, kOpenMode);
    pcm.reset(opened);
    return error;
}

/// All that the device can do, without conversion of rates.
int anyParameters(snd_pcm_t* pcm, Parameters& parameters) {
    snd_pcm_hw_params_t* made = nullptr;
    int error = snd_pcm_hw_params_malloc(&made);
    parameters.reset(made);
    if (error >= 0) {
        error = snd_pcm_hw_params_any(pcm, made);
    }
    if (error >= 0) {
        error = snd_pcm_hw_params_set_rate_resample(pcm, made, 0);
    }
    if (error >= 0) {
        error = snd_pcm_hw_params_set_access(pcm, made, SND_PCM_ACCESS_RW_INTERLEAVED);
    }
    return error;
}

/// A plugin that hands the samples of a server on has its name from that server.
bool isServer(snd_pcm_t* pcm) {
    snd_pcm_info_t* info = nullptr;
    if (snd_pcm_type(pcm) != SND_PCM_TYPE_IOPLUG || snd_pcm_info_malloc(&info) < 0) {
        return false;
    }
    const std::string name = snd_pcm_info(pcm, info) == 0 ? snd_pcm_info_get_name(info) : "";
    snd_pcm_info_free(info);
    const auto contains = [&name](const char* word) { return name.find(word) != std::string::npos; };
    return contains("PulseAudio") || contains("PipeWire") || contains("JACK");
}

void takeRates(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters, SoundDevice& device) {
    for (const unsigned rate : kRates) {
        if (snd_pcm_hw_params_test_rate(pcm, parameters, rate, 0) == 0) {
            device.rates.push_back(rate);
        }
    }
    unsigned rate = 0;
    int direction = 0;
    if (device.rates.empty() && snd_pcm_hw_params_get_rate_max(parameters, &rate, &direction) == 0 && rate > 0) {
        device.rates.push_back(rate);  // a card with a rate of its own
    }
}

void takeWidths(snd_pcm_t* pcm, snd_pcm_hw_params_t* parameters, SoundDevice& device) {
    for (const FormatOfWidth& each : kFormats) {
        const bool there = snd_pcm_hw_params_test_format(pcm, parameters, each.format) == 0;
        if (there && (device.widths.empty() || device.widths.back() != each.width)) {
            device.widths.push_back(each.width);
        }
    }
}

/// Asks the device what it can do; `problem` tells when that fails.
void ask(SoundDevice& device) {
    const Complaints complaints;
    Pcm pcm;
    Parameters parameters;
    int error = openPcm(device.id, pcm);
    if (error >= 0) {
        error = anyParameters(pcm.get(), parameters);
    }
    if (error >= 0) {
        error = snd_pcm_hw_params_get_channels_min(parameters.get(), &device.minimumChannels);
    }
    if (error >= 0) {
        error = snd_pcm_hw_params_get_channels_max(parameters.get(), &device.maximumChannels);
    }
    if (error < 0) {
        device.problem = Complaints::explain(error);
        return;
    }
    device.throughServer = device.throughServer || isServer(pcm.get());
    const uint32_t most = device.throughServer ? kMostServerChannels : kMostChannels;
    device.maximumChannels = std::min(device.maximumChannels, most);
    takeWidths(pcm.get(), parameters.get(), device);
    takeRates(pcm.get(), parameters.get(), device);
    if (device.widths.empty() || device.rates.empty()) {
        device.problem = "it has no samples of 16, 24 or 32 bits";
        return;
    }
    device.nativeWidth = device.widths.back();
}

/// The inputs of one card, in its own order.
void addCard(int card, std::vector<SoundDevice>& devices) {
    snd_ctl_t* opened = nullptr;
    const int error = snd_ctl_open(&opened, ("hw:" + std::to_string(card)).c_str(), SND_CTL_NONBLOCK);
    const Control control(opened);
    snd_ctl_card_info_t* cardInfo = nullptr;
    snd_ctl_card_info_alloca(&cardInfo);
    if (error < 0 || snd_ctl_card_info(control.get(), cardInfo) < 0) {
        return;
    }
    snd_pcm_info_t* info = nullptr;
    snd_pcm_info_alloca(&info);
    for (int number = -1; snd_ctl_pcm_next_device(control.get(), &number) == 0 && number >= 0;) {
        snd_pcm_info_set_device(info, static_cast<unsigned>(number));
        snd_pcm_info_set_subdevice(info, 0);
        snd_pcm_info_set_stream(info, SND_PCM_STREAM_CAPTURE);
        if (snd_ctl_pcm_info(control.get(), info) < 0) {
            continue;  // it only plays
        }
        SoundDevice device;
        device.id = std::string("hw:CARD=") + snd_ctl_card_info_get_id(cardInfo) + ",DEV=" + std::to_string(number);
        const std::string input = snd_pcm_info_get_name(info);
        device.name = snd_ctl_card_info_get_name(cardInfo);
        device.name += input.empty() || input == device.name ? std::string() : ", " + input;
        devices.push_back(std::move(device));
    }
}

/// The smallest number of channels from the wished one on, the nearest rate, half a second of memory.
int setParameters(snd_pcm_t* pcm, SoundFormat& format, snd_pcm_format_t& given, snd_pcm_uframes_t& period) {
    Parameters parameters;
    if (const int error = anyParameters(pcm, parameters); error < 0) {
        return error;
    }
    snd_pcm_hw_params_t* const wanted = parameters.get();
    const auto* const found = std::find_if(std::begin(kFormats), std::end(kFormats), [&](const FormatOfWidth& each) {
        return each.width == format.width && snd_pcm_hw_params_test_format(pcm, wanted, each.format) == 0;
    });
    if (found == std::end(kFormats)) {
        return -EINVAL;
    }
    given = found->format;
    int error = snd_pcm_hw_params_set_format(pcm, wanted, given);
    const auto then = [&error](int result) { error = error < 0 ? error : result; };
    then(snd_pcm_hw_params_set_channels_min(pcm, wanted, &format.channels));
    then(snd_pcm_hw_params_set_channels_first(pcm, wanted, &format.channels));
    then(snd_pcm_hw_params_set_rate_near(pcm, wanted, &format.rate, nullptr));
    unsigned time = kPeriodMicroseconds;
    then(snd_pcm_hw_params_set_period_time_near(pcm, wanted, &time, nullptr));
    time = kBufferMicroseconds;
    then(snd_pcm_hw_params_set_buffer_time_near(pcm, wanted, &time, nullptr));
    if (error < 0) {
        return error;
    }
    error = snd_pcm_hw_params(pcm, wanted);
    then(snd_pcm_hw_params_get_channels(wanted, &format.channels));
    then(snd_pcm_hw_params_get_rate(wanted, &format.rate, nullptr));
    then(snd_pcm_hw_params_get_period_size(wanted, &period, nullptr));
    return error;
}

/// A reader is woken once a period, and the device starts when it is told to.
int setWaking(snd_pcm_t* pcm, snd_pcm_uframes_t period) {
    snd_pcm_sw_params_t* wanted = nullptr;
    snd_pcm_sw_params_alloca(&wanted);
    int error = snd_pcm_sw_params_current(pcm, wanted);
    const auto then = [&error](int result) { error = error < 0 ? error : result; };
    then(snd_pcm_sw_params_set_avail_min(pcm, wanted, period));
    then(snd_pcm_sw_params_set_start_threshold(pcm, wanted, std::numeric_limits<int>::max()));
    then(snd_pcm_sw_params(pcm, wanted));
    return error;
}

SoundRead ended(int error) {
    switch (error) {
        case -EPIPE:
            return {SoundRead::Kind::Overrun, 0, "The sound card was not read fast enough and lost samples."};
        case -ESTRPIPE:
            return {SoundRead::Kind::Overrun, 0, "The computer slept, and the sound card lost samples."};
        case -ENODEV:
        case -EIO:
            return {SoundRead::Kind::Gone, 0, "The sound card was pulled out."};
        default:
            return {SoundRead::Kind::Failed, 0, std::string("The sound card failed: ") + snd_strerror(error)};
    }
}

/// Words of four bytes from samples whose lowest three bytes count.
void extendSigns(std::byte* words, size_t count) {
    for (size_t i = 0; i < count; ++i, words += 4) {
        uint32_t word = 0;
        std::memcpy(&word, words, sizeof word);
        const int32_t extended = static_cast<int32_t>(word << 8U) >> 8;
        std::memcpy(words, &extended, sizeof extended);
    }
}

/// Words of four bytes from samples of three.
void unpack(const std::byte* packed, std::byte* words, size_t count) {
    for (size_t i = 0; i < count; ++i, packed += 3, words += 4) {
        uint32_t word = 0;
        std::memcpy(reinterpret_cast<std::byte*>(&word) + 1, packed, 3);
        const int32_t extended = static_cast<int32_t>(word) >> 8;
        std::memcpy(words, &extended, sizeof extended);
    }
}

class AlsaInput final : public SoundInput {
public:
    AlsaInput(Pcm pcm, const SoundFormat& format, snd_pcm_format_t given, snd_pcm_uframes_t period)
        : SoundInput(format), pcm_(std::move(pcm)), given_(given) {
        if (given_ == SND_PCM_FORMAT_S24_3LE) {
            packed_.resize(period * format.channels * 3);
        }
        const int count = snd_pcm_poll_descriptors_count(pcm_.get());
        descriptors_.resize(1 + static_cast<size_t>(std::max(count, 0)));
    }

    [[nodiscard]] bool valid() const { return cancelled_.valid(); }

    SoundRead read(std::byte* destination, size_t frames, uint32_t milliseconds) override {
        const Complaints complaints;
        if (!started_) {
            started_ = true;
            end_ = std::min(snd_pcm_start(pcm_.get()), 0);
        }
        const uint64_t deadline = tickCount() + milliseconds;
        while (end_ == 0 && frames > 0) {
            const snd_pcm_sframes_t got = readNow(destination, frames);
            if (got > 0) {
                return {SoundRead::Kind::Frames, static_cast<size_t>(got), {}};
            }
            if (got < 0 && got != -EAGAIN && got != -EINTR) {
                end_ = static_cast<int>(got);
            } else if (!waitUntil(deadline)) {
                return {};
            }
        }
        return end_ == 0 ? SoundRead{} : ended(end_);
    }

    void cancel() noexcept override { cancelled_.set(); }

private:
    /// Frames that are there already; an error number when there are none.
    snd_pcm_sframes_t readNow(std::byte* destination, size_t frames) {
        if (given_ == SND_PCM_FORMAT_S24_3LE) {
            const size_t most = std::min(frames, packed_.size() / (size_t{format_.channels} * 3));
            const snd_pcm_sframes_t got = snd_pcm_readi(pcm_.get(), packed_.data(), most);
            if (got > 0) {
                unpack(packed_.data(), destination, static_cast<size_t>(got) * format_.channels);
            }
            return got;
        }
        const snd_pcm_sframes_t got = snd_pcm_readi(pcm_.get(), destination, frames);
        if (got > 0 && given_ == SND_PCM_FORMAT_S24_LE) {
            extendSigns(destination, static_cast<size_t>(got) * format_.channels);
        }
        return got;
    }

    /// False when the time is over or the wait was cancelled; `end_` is set when the device has an error to tell.
    bool waitUntil(uint64_t deadline) {
        const uint64_t now = tickCount();
        const auto count = static_cast<unsigned>(descriptors_.size() - 1);
        descriptors_.front() = {static_cast<int>(cancelled_.number()), POLLIN, 0};
        snd_pcm_poll_descriptors(pcm_.get(), descriptors_.data() + 1, count);
        const int ready =
            poll(descriptors_.data(), descriptors_.size(), now < deadline ? static_cast<int>(deadline - now) : 0);
        if (ready < 0) {
            end_ = errno == EINTR ? 0 : -errno;
            return true;
        }
        if (ready == 0 || descriptors_.front().revents != 0) {
            return false;
        }
        unsigned short events = 0;
        snd_pcm_poll_descriptors_revents(pcm_.get(), descriptors_.data() + 1, count, &events);
        if ((events & (POLLERR | POLLHUP | POLLNVAL)) != 0) {
            end_ = errorOfState();
        }
        return true;
    }

    [[nodiscard]] int errorOfState() const {
        switch (snd_pcm_state(pcm_.get())) {
            case SND_PCM_STATE_XRUN:
                return -EPIPE;
            case SND_PCM_STATE_SUSPENDED:
                return -ESTRPIPE;
            case SND_PCM_STATE_RUNNING:
                return 0;  // the next read tells
            default:
                return -ENODEV;
        }
    }

    Pcm pcm_;
    snd_pcm_format_t given_;
    std::vector<std::byte> packed_;
    std::vector<pollfd> descriptors_;
    Event cancelled_;
    bool started_ = false;
    int end_ = 0;  // the error that ended the stream
};

/// What the library has read of its configuration stays until it is told that nobody needs it any more: with a driver
/// that is unloaded it would be left behind, each time.
struct Configuration {
    Configuration() = default;
    Configuration(const Configuration&) = delete;
    Configuration& operator=(const Configuration&) = delete;
    ~Configuration() { snd_config_update_free_global(); }
};
const Configuration configuration;

}  // namespace

std::vector<SoundDevice> soundInputs() {
    const Complaints complaints;
    std::vector<SoundDevice> devices;
    for (int card = -1; snd_card_next(&card) == 0 && card >= 0;) {
        addCard(card, devices);
    }
    for (SoundDevice& device : devices) {
        ask(device);
    }
    for (const char* server : {"default", "pipewire", "pulse"}) {
        SoundDevice device;
        device.id = device.name = server;
        device.throughServer = true;
        ask(device);
        if (device.problem.empty()) {
            devices.push_back(std::move(device));
        }
    }
    return devices;
}

SoundDevice soundInput(const std::string& id) {
    SoundDevice device;
    device.id = device.name = id;
    ask(device);
    return device;
}

std::unique_ptr<SoundInput> SoundInput::open(const std::string& id, const SoundFormat& wished, std::string& reason) {
    const Complaints complaints;
    Pcm pcm;
    SoundFormat format = wished;
    snd_pcm_format_t given = SND_PCM_FORMAT_UNKNOWN;
    snd_pcm_uframes_t period = 0;
    int error = openPcm(id, pcm);
    if (error >= 0) {
        error = setParameters(pcm.get(), format, given, period);
    }
    if (error >= 0) {
        error = setWaking(pcm.get(), period);
    }
    if (error < 0) {
        reason = Complaints::explain(error);
        return nullptr;
    }
    auto input = std::make_unique<AlsaInput>(std::move(pcm), format, given, period);
    if (!input->valid()) {
        reason = OsError(EMFILE).text();
        return nullptr;
    }
    return input;
}

}  // namespace tarno2

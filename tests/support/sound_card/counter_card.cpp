// A sound card without a card: a plugin of the sound library whose input gives the counter signal at the pace of the
// clock, and loses samples, vanishes or falls silent where it is told to. A definition of it in the library's
// configuration:
//
//     pcm.NAME {
//         type tarno2_card
//         channels 4                    # or channels_min and channels_max
//         formats "S16_LE S32_LE"       # S24_LE and S24_3LE are the others
//         rates [ 48000 192000 ]
//         overrun_at 96000              # frames that come before samples are lost,
//         unplug_at 96000               # before the card is gone,
//         silent_at 0                   # before nothing more comes; left out: never
//         patient 1                     # what is not read in time waits instead of being lost; left out: 0
//         first 0                       # index in the counter signal with which it begins
//         title "counter card"          # what it says that it is
//     }
#include <algorithm>
#include <alsa/asoundlib.h>
#include <alsa/pcm_external.h>
#include <chrono>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <sys/timerfd.h>
#include <unistd.h>
#include <vector>

#include "drivers/simulator/counter_signal.h"

namespace {

constexpr long kNever = std::numeric_limits<long>::max();
constexpr long kTick = 5'000'000;  // nanoseconds between two looks at what came

class CounterCard {
public:
    CounterCard() { io_.poll_fd = -1; }
    int define(snd_config_t* definition);
    int create(const char* name, snd_pcm_stream_t stream, int mode);
    [[nodiscard]] snd_pcm_t* pcm() const { return io_.pcm; }
    ~CounterCard() {
        if (io_.poll_fd >= 0) {
            close(io_.poll_fd);
        }
    }

private:
    static CounterCard& of(snd_pcm_ioplug_t* io) { return *static_cast<CounterCard*>(io->private_data); }
    static const snd_pcm_ioplug_callback_t& callbacks();
    int limit();
    void start();
    void setTicks(bool on) const;
    snd_pcm_sframes_t pointer();
    void fill(const snd_pcm_channel_area_t* areas, snd_pcm_uframes_t offset, snd_pcm_uframes_t frames);
    unsigned short events();

    snd_pcm_ioplug_t io_{};
    std::string title_ = "counter card";
    std::vector<unsigned> formats_;
    std::vector<unsigned> rates_;
    long channelsMin_ = 1;
    long channelsMax_ = 1;
    long overrunAt_ = kNever;
    long unplugAt_ = kNever;
    long silentAt_ = kNever;
    long patient_ = 0;
    long first_ = 0;
    std::chrono::steady_clock::time_point begin_;
    uint64_t taken_ = 0;  // frames that were read
};

int CounterCard::define(snd_config_t* definition) {
    snd_config_iterator_t each = nullptr;
    snd_config_iterator_t next = nullptr;
    snd_config_for_each(each, next, definition) {
        snd_config_t* const entry = snd_config_iterator_entry(each);
        const char* id = nullptr;
        const char* text = nullptr;
        long number = 0;
        snd_config_get_id(entry, &id);
        const std::string key = id;
        if (snd_config_get_type(entry) == SND_CONFIG_TYPE_COMPOUND) {
            snd_config_iterator_t rate = nullptr;
            snd_config_iterator_t nextRate = nullptr;
            snd_config_for_each(rate, nextRate, entry) {
                snd_config_get_integer(snd_config_iterator_entry(rate), &number);
                rates_.push_back(static_cast<unsigned>(number));
            }
        } else if (snd_config_get_string(entry, &text) == 0) {
            if (key == "title") {
                title_ = text;
            } else if (key == "formats") {
                std::istringstream names(text);
                for (std::string name; names >> name;) {
                    formats_.push_back(static_cast<unsigned>(snd_pcm_format_value(name.c_str())));
                }
            }
        } else if (snd_config_get_integer(entry, &number) == 0) {
            const struct {
                const char* name;
                long& value;
            } numbers[] = {{"channels", channelsMin_},     {"channels", channelsMax_}, {"channels_min", channelsMin_},
                           {"channels_max", channelsMax_}, {"overrun_at", overrunAt_}, {"unplug_at", unplugAt_},
                           {"silent_at", silentAt_},       {"patient", patient_},      {"first", first_}};
            for (const auto& known : numbers) {
                if (key == known.name) {
                    known.value = number;
                }
            }
        }
    }
    return formats_.empty() || rates_.empty() ? -EINVAL : 0;
}

const snd_pcm_ioplug_callback_t& CounterCard::callbacks() {
    static const snd_pcm_ioplug_callback_t table = [] {
        snd_pcm_ioplug_callback_t t{};
        t.start = [](snd_pcm_ioplug_t* io) {
            of(io).start();
            return 0;
        };
        t.stop = [](snd_pcm_ioplug_t* io) {
            of(io).setTicks(false);
            return 0;
        };
        t.pointer = [](snd_pcm_ioplug_t* io) { return of(io).pointer(); };
        t.transfer = [](snd_pcm_ioplug_t* io, const snd_pcm_channel_area_t* areas, snd_pcm_uframes_t offset,
                        snd_pcm_uframes_t frames) {
            of(io).fill(areas, offset, frames);
            return static_cast<snd_pcm_sframes_t>(frames);
        };
        t.close = [](snd_pcm_ioplug_t* io) {
            delete &of(io);
            return 0;
        };
        t.poll_revents = [](snd_pcm_ioplug_t* io, pollfd*, unsigned, unsigned short* events) {
            *events = of(io).events();
            return 0;
        };
        return t;
    }();
    return table;
}

int CounterCard::create(const char* name, snd_pcm_stream_t stream, int mode) {
    io_.version = SND_PCM_IOPLUG_VERSION;
    io_.name = title_.c_str();
    io_.callback = &callbacks();
    io_.private_data = this;
    io_.poll_fd = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    io_.poll_events = POLLIN;
    if (io_.poll_fd < 0) {
        return -errno;
    }
    const int error = snd_pcm_ioplug_create(&io_, name, stream, mode);
    return error < 0 ? error : limit();
}

int CounterCard::limit() {
    const unsigned access[] = {SND_PCM_ACCESS_RW_INTERLEAVED};
    int error = snd_pcm_ioplug_set_param_list(&io_, SND_PCM_IOPLUG_HW_ACCESS, 1, access);
    const auto list = [&](int what, const std::vector<unsigned>& values) {
        const int result =
            snd_pcm_ioplug_set_param_list(&io_, what, static_cast<unsigned>(values.size()), values.data());
        error = std::min(error, result);
    };
    const auto range = [&](int what, long least, long most) {
        const int result =
            snd_pcm_ioplug_set_param_minmax(&io_, what, static_cast<unsigned>(least), static_cast<unsigned>(most));
        error = std::min(error, result);
    };
    list(SND_PCM_IOPLUG_HW_FORMAT, formats_);
    list(SND_PCM_IOPLUG_HW_RATE, rates_);
    range(SND_PCM_IOPLUG_HW_CHANNELS, channelsMin_, channelsMax_);
    range(SND_PCM_IOPLUG_HW_PERIOD_BYTES, 64, 1L << 20U);
    range(SND_PCM_IOPLUG_HW_BUFFER_BYTES, 1024, 1L << 24U);
    range(SND_PCM_IOPLUG_HW_PERIODS, 2, 64);
    return error;
}

void CounterCard::setTicks(bool on) const {
    const timespec tick{0, on ? kTick : 0};
    const itimerspec ticks{tick, tick};
    timerfd_settime(io_.poll_fd, 0, &ticks, nullptr);
}

void CounterCard::start() {
    begin_ = std::chrono::steady_clock::now();
    taken_ = 0;
    setTicks(true);
}

/// How far the card has come in its memory, after what it was told to do there.
snd_pcm_sframes_t CounterCard::pointer() {
    if (io_.state != SND_PCM_STATE_RUNNING) {
        return static_cast<snd_pcm_sframes_t>(taken_ % io_.buffer_size);
    }
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin_;
    const auto last = static_cast<uint64_t>(std::min({overrunAt_, unplugAt_, silentAt_}));
    const uint64_t most = patient_ != 0 ? std::min(last, taken_ + io_.buffer_size - 1) : last;
    const auto made = std::min(static_cast<uint64_t>(passed.count() * io_.rate), most);
    if (taken_ == last && silentAt_ != static_cast<long>(last)) {
        if (overrunAt_ == static_cast<long>(last)) {
            return -EPIPE;
        }
        snd_pcm_ioplug_set_state(&io_, SND_PCM_STATE_DISCONNECTED);
    } else if (made - taken_ >= io_.buffer_size) {
        return -EPIPE;  // whoever reads is too slow
    }
    return static_cast<snd_pcm_sframes_t>(made % io_.buffer_size);
}

void CounterCard::fill(const snd_pcm_channel_area_t* areas, snd_pcm_uframes_t offset, snd_pcm_uframes_t frames) {
    const auto bits = static_cast<uint32_t>(snd_pcm_format_width(io_.format));
    const auto bytes = static_cast<size_t>(snd_pcm_format_physical_width(io_.format)) / 8;
    for (unsigned channel = 0; channel < io_.channels; ++channel) {
        const size_t step = areas[channel].step / 8;
        auto* to = static_cast<std::byte*>(areas[channel].addr) + areas[channel].first / 8 + offset * step;
        for (snd_pcm_uframes_t i = 0; i < frames; ++i, to += step) {
            const uint64_t index = static_cast<uint64_t>(first_) + (taken_ + i) * io_.channels + channel;
            const uint32_t word = tarno2::drivers::counterWord(index, bits);
            std::memcpy(to, &word, bytes);
        }
    }
    taken_ += frames;
}

unsigned short CounterCard::events() {
    uint64_t ticks = 0;
    (void)!read(io_.poll_fd, &ticks, sizeof ticks);
    return snd_pcm_avail_update(io_.pcm) != 0 ? POLLIN : 0;
}

}  // namespace

extern "C" {

SND_PCM_PLUGIN_DEFINE_FUNC(tarno2_card) {
    (void)root;
    auto card = std::make_unique<CounterCard>();
    int error = card->define(conf);
    if (error == 0) {
        error = card->create(name, stream, mode);
    }
    if (error < 0) {
        if (card->pcm() != nullptr) {
            snd_pcm_close(card.release()->pcm());  // deletes the card
        }
        return error;
    }
    *pcmp = card.release()->pcm();
    return 0;
}

SND_PCM_PLUGIN_SYMBOL(tarno2_card);
}

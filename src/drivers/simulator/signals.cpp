#include "drivers/simulator/signals.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "drivers/simulator/counter_signal.h"
#include "drivers/simulator/sine_table.h"

namespace tarno2::drivers {

namespace {

constexpr uint64_t kLongestTable = uint64_t{1} << 20;  // samples of a period that are computed in advance

/// Bits of a word that carry code or lines, counted from bit 0.
uint32_t usedBits(const ADCSampleFormat& format) {
    uint32_t bits = 0;
    for (uint32_t used = format.m_nCodeMask | format.m_nDigitalMask; used != 0; used >>= 1) {
        ++bits;
    }
    return bits;
}

/// The counter in words of 16 bits: stretches of a table of all words, which is far faster than computing each.
class ShortCounterSource final : public SampleSource {
public:
    ShortCounterSource(uint32_t bits, size_t channels) : bits_(bits), channels_(channels), table_(size_t{1} << bits) {
        for (size_t i = 0; i < table_.size(); ++i) {
            table_[i] = static_cast<uint16_t>(i);
        }
    }

    uint64_t fill(uint64_t first, std::byte* destination, uint64_t frames) override {
        uint64_t index = first * channels_;
        const uint64_t end = index + frames * channels_;
        while (index < end) {
            // As long as the upper part of the index stays, the words count up by one.
            const uint64_t stays = ((index >> bits_) + 1) << bits_;
            const uint32_t word = counterWord(index, bits_);
            const uint64_t run = std::min({end - index, stays - index, table_.size() - word});
            std::memcpy(destination, table_.data() + word, run * sizeof(uint16_t));
            destination += run * sizeof(uint16_t);
            index += run;
        }
        return frames;
    }

private:
    uint32_t bits_;
    uint64_t channels_;
    std::vector<uint16_t> table_;
};

/// The counter in words of 32 bits.
class LongCounterSource final : public SampleSource {
public:
    explicit LongCounterSource(size_t channels) : channels_(channels) {}

    uint64_t fill(uint64_t first, std::byte* destination, uint64_t frames) override {
        auto* out = reinterpret_cast<uint32_t*>(destination);
        const uint64_t begin = first * channels_;
        for (uint64_t i = 0; i < frames * channels_; ++i) {
            out[i] = counterWord(begin + i, 32);
        }
        return frames;
    }

private:
    uint64_t channels_;
};

int32_t sine(uint32_t phase) {
    const uint32_t quarter = phase >> 30;
    const uint32_t along = phase & 0x3FFFFFFFU;
    const uint32_t way = (quarter & 1U) != 0 ? 0x40000000U - along : along;
    const uint32_t step = way >> 22;
    const int64_t low = kQuarterSine[step];
    const int64_t high = kQuarterSine[std::min(step + 1, 256U)];
    const auto value = static_cast<int32_t>(low + (((high - low) * static_cast<int64_t>(way & 0x3FFFFFU)) >> 22));
    return quarter < 2 ? value : -value;
}

/// A number that looks random but follows from frame and channel.
int32_t noise(uint64_t frame, int32_t channel) {
    uint64_t x = frame * 0x9E3779B97F4A7C15U + static_cast<uint64_t>(channel) * 0xC2B2AE3D27D4EB4FU;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9U;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBU;
    return static_cast<int32_t>(static_cast<uint32_t>(x >> 33)) - 0x40000000;
}

template <typename Word>
class WaveformSource final : public SampleSource {
public:
    WaveformSource(const SignalSettings& settings, const sdk::Board& board, const sdk::Measurement& measurement)
        : settings_(settings), format_(board.format), codes_(board.codes) {
        const double period = measurement.framesPerSecond() / std::max(settings.frequency, 1e-9);
        period_ = static_cast<uint64_t>(std::clamp(std::round(period), 2.0, 2147483648.0));
        for (size_t i = 0; i < measurement.channels.size(); ++i) {
            const int32_t number = measurement.channels[i];
            const Signal kinds[] = {Signal::Sine, Signal::Square, Signal::Ramp, Signal::Noise};
            const Signal kind = settings.signal == Signal::Mixed ? kinds[number % 4] : settings.signal;
            const auto shift = static_cast<uint32_t>((static_cast<uint64_t>(number) << 32) / 160);
            channels_.push_back({kind, number, shift, int64_t{settings.amplitude} * measurement.gains[i]});
        }
        if (period_ * channels_.size() <= kLongestTable) {
            std::vector<Word> table(period_ * channels_.size());
            render(0, table.data(), period_, false);
            table_ = std::move(table);
        }
    }

    uint64_t fill(uint64_t first, std::byte* destination, uint64_t frames) override {
        auto* out = reinterpret_cast<Word*>(destination);
        if (table_.empty()) {
            render(first, out, frames, false);
        } else {
            copyPeriods(first, out, frames);
            render(first, out, frames, true);
        }
        if (format_.m_nDigitalMask != 0) {
            addLines(first, out, frames);
        }
        return frames;
    }

    [[nodiscard]] bool still() const override {
        return settings_.signal == Signal::Level && format_.m_nDigitalMask == 0;
    }

private:
    struct Channel {
        Signal kind;
        int32_t number;
        uint32_t shift;  // of the phase
        int64_t scale;   // percent of the range, with the gain
    };

    void copyPeriods(uint64_t first, Word* out, uint64_t frames) const {
        const uint64_t channels = channels_.size();
        for (uint64_t done = 0; done < frames;) {
            const uint64_t from = (first + done) % period_;
            const uint64_t part = std::min(frames - done, period_ - from);
            std::memcpy(out + done * channels, table_.data() + from * channels, part * channels * sizeof(Word));
            done += part;
        }
    }

    /// Computes the samples one by one, all or just the noise, which has no period.
    void render(uint64_t first, Word* out, uint64_t frames, bool noiseOnly) const {
        const size_t channels = channels_.size();
        for (size_t c = 0; c < channels; ++c) {
            if (noiseOnly && channels_[c].kind != Signal::Noise) {
                continue;
            }
            uint64_t inPeriod = first % period_;
            for (uint64_t frame = 0; frame < frames; ++frame) {
                out[frame * channels + c] = word(channels_[c], inPeriod, first + frame);
                inPeriod = inPeriod + 1 == period_ ? 0 : inPeriod + 1;
            }
        }
    }

    [[nodiscard]] Word word(const Channel& channel, uint64_t inPeriod, uint64_t frame) const {
        const uint32_t phase = static_cast<uint32_t>((inPeriod << 32) / period_) + channel.shift;
        const int64_t wave = waveform(channel.kind, phase, frame, channel.number);
        const int64_t middle = (int64_t{codes_.m_nMinimum} + codes_.m_nMaximum + 1) / 2;
        const int64_t code = middle + wave * channel.scale / 100 * (codes_.m_nMaximum - middle) / 0x40000000;
        const auto held = std::clamp<int64_t>(code, codes_.m_nMinimum, codes_.m_nMaximum);
        return static_cast<Word>(packSample(format_, static_cast<int32_t>(held), 0));
    }

    void addLines(uint64_t first, Word* out, uint64_t frames) const {
        const uint64_t step = settings_.digitalPeriod;
        for (uint64_t done = 0; done < frames;) {
            const uint64_t count = (first + done) / step;
            const uint64_t part = std::min(frames - done, (count + 1) * step - (first + done));
            const auto lines = static_cast<Word>(packSample(format_, 0, static_cast<uint32_t>(count)));
            for (uint64_t i = 0; i < part * channels_.size(); ++i) {
                out[i] = static_cast<Word>(out[i] | lines);
            }
            out += part * channels_.size();
            done += part;
        }
    }

    SignalSettings settings_;
    ADCSampleFormat format_;
    ADCCodeRange codes_;
    std::vector<Channel> channels_;
    uint64_t period_ = 2;      // frames
    std::vector<Word> table_;  // one period; empty when it is too long for that
};

}  // namespace

int32_t waveform(Signal signal, uint32_t phase, uint64_t frame, int32_t channel) {
    switch (signal) {
        case Signal::Square:
            return phase < 0x80000000U ? 0x40000000 : -0x40000000;
        case Signal::Ramp:
            return static_cast<int32_t>(phase >> 1) - 0x40000000;
        case Signal::Noise:
            return noise(frame, channel);
        case Signal::Level:
            return (channel % 16 - 8) * 0x8000000;
        default:
            return sine(phase);
    }
}

std::unique_ptr<SampleSource> makeSignal(const SignalSettings& settings, const sdk::Board& board,
                                         const sdk::Measurement& measurement) {
    const bool narrow = board.format.m_nBytes == 2;
    const size_t channels = measurement.channels.size();
    if (settings.signal != Signal::Counter) {
        if (narrow) {
            return std::make_unique<WaveformSource<uint16_t>>(settings, board, measurement);
        }
        return std::make_unique<WaveformSource<uint32_t>>(settings, board, measurement);
    }
    if (narrow) {
        return std::make_unique<ShortCounterSource>(usedBits(board.format), channels);
    }
    return std::make_unique<LongCounterSource>(channels);
}

}  // namespace tarno2::drivers

#include "measure/spectrum.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <memory>
#include <mutex>
#include <span>

#include "measure/codes.h"
#include "measure/transform.h"

namespace tarno2 {

namespace {

constexpr size_t kSampleBytes = size_t{64} << 20;  // of the channels that are read together
constexpr double kLeastPower = 1e-40;              // below what any code can show; its logarithm is finite

using WindowSamples = std::shared_ptr<const std::vector<double>>;

/// The window made last is kept: a running signal asks for the same one a few times a second.
WindowSamples windowOf(SpectrumWindow window, size_t length) {
    static std::mutex mutex;
    static SpectrumWindow madeWindow{};
    static WindowSamples made;
    const std::lock_guard lock(mutex);
    if (!made || madeWindow != window || made->size() != length) {
        made = std::make_shared<const std::vector<double>>(windowSamples(window, length));
        madeWindow = window;
    }
    return made;
}

/// Blocks of a span, and how they are transformed.
class Blocks {
public:
    Blocks(FrameSource& source, const SignalFormat& format, FrameSpan span, const SpectrumWish& wish,
           WorkProgress& progress, Spectrum& out)
        : source_(source),
          format_(format),
          wish_(wish),
          progress_(progress),
          out_(out),
          length_(spectrumLength(wish.length, span.count())),
          first_(wish.averaged ? span.first : span.end - length_) {
        out.length = length_;
        out.window = wish.window;
        out.binWidth = (format.framesPerSecond > 0.0 ? format.framesPerSecond : 1.0) / static_cast<double>(out.length);
        out.blocks = wish.averaged ? (span.count() - out.length) / (out.length / 2) + 1 : 1;
        out.powers.assign(wish.channels.size(), std::vector<double>(out.length / 2 + 1, 0.0));
        window_ = windowOf(wish.window, out.length);
        together_ = std::clamp<size_t>(kSampleBytes / (out.length * sizeof(double)), 1,
                                       std::max<size_t>(wish.channels.size(), 1));
        samples_.resize(together_ * out.length);
        transform_ = RealTransform::create(out.length);
    }

    [[nodiscard]] bool ready() const { return transform_ != nullptr; }

    [[nodiscard]] SpectrumEnd run() {
        const size_t readings = (wish_.channels.size() + together_ - 1) / together_;
        progress_.begin(out_.blocks * (readings + wish_.channels.size()) * out_.length);
        for (uint64_t block = 0; block < out_.blocks; ++block) {
            const uint64_t first = first_ + block * (out_.length / 2);
            for (size_t i = 0; i < wish_.channels.size(); i += together_) {
                const auto channels =
                    std::span(wish_.channels).subspan(i, std::min(together_, wish_.channels.size() - i));
                if (const ReadEnd end = read(first, channels); end != ReadEnd::Whole) {
                    return end == ReadEnd::NotRead ? SpectrumEnd::NotRead : SpectrumEnd::Cancelled;
                }
                for (size_t k = 0; k < channels.size(); ++k) {
                    if (progress_.cancelled()) {
                        return SpectrumEnd::Cancelled;
                    }
                    add(std::span(samples_).subspan(k * out_.length, out_.length), out_.powers[i + k]);
                    progress_.add(out_.length);
                }
            }
        }
        scale();
        return SpectrumEnd::Whole;
    }

private:
    [[nodiscard]] ReadEnd read(uint64_t first, std::span<const SpectrumWish::Channel> channels) {
        const auto use = [&](size_t, uint64_t from, const std::byte* frames, uint64_t count) {
            for (size_t k = 0; k < channels.size(); ++k) {
                double* out = &samples_[k * out_.length + (from - first)];
                if (format_.word.sampleWidth == 4) {
                    pick<int32_t>(frames, count, channels[k], out);
                } else {
                    pick<int16_t>(frames, count, channels[k], out);
                }
            }
        };
        return readParts(source_, {{first, first + out_.length}}, progress_, use);
    }

    template <typename Word>
    void pick(const std::byte* frames, uint64_t count, const SpectrumWish::Channel& channel, double* out) const {
        const MeasuredCodes<Word> code(format_.word);
        const auto bias = static_cast<double>(code.bias());
        const Word* words = reinterpret_cast<const Word*>(frames) + channel.column;
        for (uint64_t i = 0; i < count; ++i, words += format_.channelCount()) {
            out[i] = channel.scale.of(static_cast<double>(code.of(*words)) + bias);
        }
    }

    void add(std::span<const double> samples, std::vector<double>& powers) {
        const std::span<double> into = transform_->samples();
        const std::vector<double>& window = *window_;
        for (size_t i = 0; i < samples.size(); ++i) {
            into[i] = samples[i] * window[i];
        }
        const auto bins = transform_->run();
        for (size_t i = 0; i < powers.size(); ++i) {
            powers[i] += std::norm(bins[i]);
        }
    }

    // A sine is in two bins of the whole transform, of which one is kept; its mean square is half its amplitude's.
    void scale() {
        const double amplitude = static_cast<double>(out_.length) * coherentGain(wish_.window);
        const double single = 1.0 / (amplitude * amplitude * static_cast<double>(out_.blocks));
        for (std::vector<double>& powers : out_.powers) {
            for (size_t i = 0; i < powers.size(); ++i) {
                powers[i] *= i == 0 || i + 1 == powers.size() ? single : 2.0 * single;
            }
        }
    }

    FrameSource& source_;
    const SignalFormat& format_;
    const SpectrumWish& wish_;
    WorkProgress& progress_;
    Spectrum& out_;
    size_t length_;
    uint64_t first_;       ///< frame
    size_t together_ = 1;  ///< channels that are read at once
    WindowSamples window_;
    std::vector<double> samples_;  ///< of those channels, one after the other
    std::unique_ptr<RealTransform> transform_;
};

}  // namespace

size_t spectrumLength(size_t asked, uint64_t frames) {
    const uint64_t fits = std::bit_floor(frames);
    return static_cast<size_t>(
        std::min<uint64_t>(std::bit_floor(std::clamp(asked, kLeastSpectrum, kMostSpectrum)), fits));
}

SpectrumEnd spectrumOf(FrameSource& source, const SignalFormat& format, FrameSpan span, const SpectrumWish& wish,
                       WorkProgress& progress, Spectrum& out) {
    out = {};
    if (!RealTransform::available()) {
        return SpectrumEnd::Missing;
    }
    if (span.count() < kLeastSpectrum) {
        return SpectrumEnd::TooShort;
    }
    Blocks blocks(source, format, span, wish, progress, out);
    return blocks.ready() ? blocks.run() : SpectrumEnd::Missing;
}

double spectrumValue(double power, SpectrumScale scale, double fullScale, const Spectrum& spectrum) {
    switch (scale) {
        case SpectrumScale::DbFs:
            return 10.0 * std::log10(std::max(power / (fullScale * fullScale / 2.0), kLeastPower));
        case SpectrumScale::Volts:
            return std::sqrt(power);
        case SpectrumScale::VoltsSquaredPerHz:
            return power / (noiseBandwidth(spectrum.window) * spectrum.binWidth);
        default:
            return 10.0 * std::log10(std::max(power, kLeastPower));
    }
}

}  // namespace tarno2

#include "scopera/pixel_spans.h"

#include <algorithm>
#include <cmath>

#include "platform/thread.h"

namespace tarno2 {

namespace {

/// Samples that are compared side by side: several frames of few columns make one row that fills vector registers.
constexpr size_t kRowSamples = 256;

/// How far ahead samples are asked for while earlier ones are compared: a screen of raw frames is larger than any
/// cache, and the processor by itself does not look beyond a page of memory.
constexpr size_t kAheadBytes = 1024;
constexpr size_t kCacheLine = 64;

/// From so many bytes on two threads, which get more out of the memory than one, gain more than the second one costs.
constexpr size_t kWorthAThread = size_t{16} << 20;

void fetchAhead(const void* begin, size_t bytes) {
    const char* const first = static_cast<const char*>(begin) + kAheadBytes;
    for (size_t i = 0; i < bytes; i += kCacheLine) {
        __builtin_prefetch(first + i);
    }
}

// By value, which the compiler turns into vector instructions.
template <typename Sample>
Sample least(Sample a, Sample b) {
    return b < a ? b : a;
}
template <typename Sample>
Sample greatest(Sample a, Sample b) {
    return a < b ? b : a;
}

}  // namespace

/// Extremes of the columns of interleaved frames.
template <typename Sample>
class FrameExtremes {
public:
    explicit FrameExtremes(size_t columns)
        : columns_(columns), low_(std::max(kRowSamples, columns)), high_(std::max(kRowSamples, columns)) {}

    /// The results stand in `low` and `high` of the first `columns` entries. There is at least one frame.
    void find(const Sample* frames, size_t count) {
        const size_t together = std::min(std::max<size_t>(kRowSamples / columns_, 1), count);
        const size_t row = together * columns_;
        std::copy_n(frames, row, low_.begin());
        std::copy_n(frames, row, high_.begin());
        const Sample* next = frames + row;
        const Sample* const end = frames + count * columns_;
        for (; static_cast<size_t>(end - next) >= 4 * row; next += 4 * row) {
            fetchAhead(next, 4 * row * sizeof(Sample));
            takeInFour(next, row);
        }
        for (; next != end; next += std::min(row, static_cast<size_t>(end - next))) {
            takeIn(next, next, std::min(row, static_cast<size_t>(end - next)));
        }
        for (size_t left = together; left > 1;) {
            const size_t half = (left + 1) / 2;
            takeIn(low_.data() + half * columns_, high_.data() + half * columns_, (left - half) * columns_);
            left = half;
        }
    }
    [[nodiscard]] Sample low(size_t column) const { return low_[column]; }
    [[nodiscard]] Sample high(size_t column) const { return high_[column]; }

private:
    /// Four rows at a time: the results so far are read and written a fourth as often.
    void takeInFour(const Sample* rows, size_t row) {
        Sample* const low = low_.data();
        Sample* const high = high_.data();
        for (size_t i = 0; i < row; ++i) {
            const Sample a = rows[i];
            const Sample b = rows[i + row];
            const Sample c = rows[i + 2 * row];
            const Sample d = rows[i + 3 * row];
            low[i] = least(low[i], least(least(a, b), least(c, d)));
            high[i] = greatest(high[i], greatest(greatest(a, b), greatest(c, d)));
        }
    }
    void takeIn(const Sample* lows, const Sample* highs, size_t count) {
        Sample* const low = low_.data();
        Sample* const high = high_.data();
        for (size_t i = 0; i < count; ++i) {
            low[i] = least(low[i], lows[i]);
            high[i] = greatest(high[i], highs[i]);
        }
    }

    size_t columns_;
    std::vector<Sample> low_;
    std::vector<Sample> high_;
};

namespace {

/// Left border of a pixel, on the X axis.
double border(double lower, double upper, size_t pixel, size_t pixels) {
    return lower + (upper - lower) * (static_cast<double>(pixel) / static_cast<double>(pixels));
}

}  // namespace

void PixelSpans::clear() {
    columns_ = 0;
    firstFrames_.clear();
    spans_.clear();
    whole_.clear();
}

void PixelSpans::build(const SCOPERAFrames& frames, double lower, double upper, size_t pixels, bool joined) {
    clear();
    if (frames.m_nFrames == 0 || pixels == 0) {
        return;
    }
    columns_ = frames.m_nColumns;
    spans_.resize(pixels * columns_);
    whole_.resize(columns_);
    findFrames(frames, lower, upper, pixels);
    withSamples(frames, [&](const auto* samples) {
        reduce(samples);
        if (joined) {
            join(samples, frames, lower, upper);
        }
    });
}

void PixelSpans::findFrames(const SCOPERAFrames& frames, double lower, double upper, size_t pixels) {
    // A hair of tolerance, in frames: a frame that lies on a border by intention does so in spite of rounding.
    constexpr double kHair = 1e-6;
    const auto count = static_cast<double>(frames.m_nFrames);
    firstFrames_.resize(pixels + 1);
    for (size_t i = 0; i < pixels; ++i) {
        const double place = (border(lower, upper, i, pixels) - frames.m_fFirstX) / frames.m_fStepX;
        firstFrames_[i] = static_cast<size_t>(std::clamp(std::ceil(place - kHair), 0.0, count));
    }
    // The range's end belongs to the last pixel.
    const double last = (upper - frames.m_fFirstX) / frames.m_fStepX;
    firstFrames_[pixels] = static_cast<size_t>(std::clamp(std::floor(last + kHair) + 1.0, 0.0, count));
    for (size_t i = 1; i <= pixels; ++i) {
        firstFrames_[i] = std::max(firstFrames_[i], firstFrames_[i - 1]);
    }
}

template <typename Sample>
void PixelSpans::reduce(const Sample* samples) {
    const size_t bytes = (firstFrames_.back() - firstFrames_.front()) * columns_ * sizeof(Sample);
    const size_t middle = pixels() / 2;
    FrameExtremes<Sample> extremes(columns_);
    FrameExtremes<Sample> otherExtremes(columns_);
    std::vector<CodeSpan> otherWhole(columns_);
    Thread other;
    const bool shared = bytes >= kWorthAThread &&
                        other.create([&] { reducePixels(samples, middle, pixels(), otherExtremes, otherWhole); });
    if (shared) {
        other.resume();
    }
    reducePixels(samples, 0, shared ? middle : pixels(), extremes, whole_);
    other.join();
    for (size_t column = 0; column < columns_; ++column) {
        if (!otherWhole[column].empty()) {
            whole_[column].include(otherWhole[column].low);
            whole_[column].include(otherWhole[column].high);
        }
    }
}

template <typename Sample>
void PixelSpans::reducePixels(const Sample* samples, size_t begin, size_t end, FrameExtremes<Sample>& extremes,
                              std::vector<CodeSpan>& whole) {
    for (size_t pixel = begin; pixel < end; ++pixel) {
        const size_t first = firstFrames_[pixel];
        const size_t count = firstFrames_[pixel + 1] - first;
        if (count == 0) {
            continue;
        }
        extremes.find(samples + first * columns_, count);
        CodeSpan* const spans = spans_.data() + pixel * columns_;
        for (size_t column = 0; column < columns_; ++column) {
            spans[column] = {static_cast<double>(extremes.low(column)), static_cast<double>(extremes.high(column))};
            whole[column].include(spans[column].low);
            whole[column].include(spans[column].high);
        }
    }
}

template <typename Sample>
void PixelSpans::join(const Sample* samples, const SCOPERAFrames& frames, double lower, double upper) {
    for (size_t i = 0; i <= pixels(); ++i) {
        const size_t next = firstFrames_[i];
        if (next == 0 || next >= frames.m_nFrames) {
            continue;
        }
        const double before = frames.m_fFirstX + static_cast<double>(next - 1) * frames.m_fStepX;
        const double part = (border(lower, upper, i, pixels()) - before) / frames.m_fStepX;
        const Sample* const left = samples + (next - 1) * columns_;
        const Sample* const right = left + columns_;
        CodeSpan* const spans = spans_.data() + i * columns_;
        for (size_t column = 0; column < columns_; ++column) {
            const auto from = static_cast<double>(left[column]);
            const double code = from + (static_cast<double>(right[column]) - from) * part;
            if (i > 0) {
                (spans - columns_)[column].include(code);
            }
            if (i < pixels()) {
                spans[column].include(code);
            }
        }
    }
}

}  // namespace tarno2

#include "display/convert_for_display.h"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "display/sample_code.h"

namespace tarno2 {

namespace {

constexpr double kThousandth = 0.001;

// The digital lines of a frame as display values: one for 0 and one for 1 each.
template <typename Word>
struct LineValues {
    std::array<std::array<Word, 2>, ProgramSettings::kDigitalLineCount> values{};
    size_t count = 0;
};

// The amplitude's product is a signed 16-bit number.
double truncated16(double value) {
    return static_cast<int16_t>(static_cast<uint16_t>(static_cast<int64_t>(value)));
}

template <typename Word>
Word lineValue(const DigitalLineSettings& line, double fullScale, bool signedCodes, int bit) {
    const double rise = truncated16(line.amplitude * kThousandth * fullScale * bit);
    const double zero = signedCodes ? line.zeroLevel * kThousandth * fullScale
                                    : (line.zeroLevel + 1000.0) * kThousandth * fullScale * 0.5;
    return static_cast<Word>(static_cast<int64_t>(zero + rise));
}

template <typename Word>
LineValues<Word> lineValues(const SampleWordFormat& word, const DigitalSettings& digital) {
    LineValues<Word> result;
    result.count = word.digitalLines();
    for (size_t line = 0; line < result.count; ++line) {
        for (const int bit : {0, 1}) {
            result.values[line][static_cast<size_t>(bit)] =
                lineValue<Word>(digital.lines[line], digital.fullScaleCode, word.signedCodes, bit);
        }
    }
    return result;
}

template <typename Word>
void convertAnalog(const SampleCode<Word>& code, const Word* in, size_t count, Word* out) {
    code.with([=](auto codeOf) {
        for (size_t i = 0; i < count; ++i) {
            out[i] = codeOf(in[i]);
        }
    });
}

// `kept`: analog columns of a display frame, all or none.
template <typename Word>
void convertFrames(const SampleCode<Word>& code, const LineValues<Word>& lines, const Word* in, size_t frames,
                   size_t channels, size_t kept, Word* out) {
    code.with([&](auto codeOf) {
        for (size_t frame = 0; frame < frames; ++frame, in += channels) {
            for (size_t i = 0; i < kept; ++i) {
                out[i] = codeOf(in[i]);
            }
            out += kept;
            const auto bits = code.lines(in[0]);
            for (size_t line = 0; line < lines.count; ++line) {
                out[line] = lines.values[line][(bits >> line) & 1U];
            }
            out += lines.count;
        }
    });
}

template <typename Word>
Word* roomFor(std::vector<Word>& scratch, size_t size) {
    if (scratch.size() < size) {
        scratch.clear();
        scratch.resize(size);
    }
    return scratch.data();
}

void setColors(std::vector<int32_t>& colors, size_t analog, std::span<const int32_t> channelColors, size_t lines,
               const DigitalSettings& digital) {
    colors.assign(analog + lines, 0);
    std::copy_n(channelColors.begin(), std::min(analog, channelColors.size()), colors.begin());
    for (size_t line = 0; line < lines; ++line) {
        colors[analog + line] = digital.lines[line].color;
    }
}

template <typename Word>
struct Outputs {
    const Word** samples;
    size_t* count;
    size_t* columns;
    std::vector<int32_t>* colors;

    [[nodiscard]] bool missing() const {
        return samples == nullptr || count == nullptr || columns == nullptr || colors == nullptr;
    }
    void set(const Word* newSamples, size_t newCount, size_t newColumns) const {
        *samples = newSamples;
        *count = newCount;
        *columns = newColumns;
    }
};

template <typename Word>
void convert(const DisplayConverter& converter, std::vector<Word>& scratch, std::span<const Word> raw, size_t channels,
             int32_t showMode, const DigitalSettings& digital, std::span<const int32_t> channelColors,
             const Outputs<Word>& out) {
    if (!converter.enabled) {
        setColors(*out.colors, channels, channelColors, 0, digital);
        out.set(raw.data(), raw.size(), channels);
        return;
    }
    const bool onlyLines = showMode == static_cast<int32_t>(ShowMode::Digital);
    const bool withLines = onlyLines || showMode == static_cast<int32_t>(ShowMode::AnalogAndDigital);
    const size_t analog = onlyLines ? 0 : channels;
    const auto lines = withLines ? lineValues<Word>(converter.word, digital) : LineValues<Word>{};
    const size_t columns = analog + lines.count;
    const size_t frames = raw.size() / channels;
    setColors(*out.colors, analog, channelColors, lines.count, digital);
    Word* display = roomFor(scratch, frames * columns);
    const SampleCode<Word> code(converter.word);
    if (lines.count == 0) {
        convertAnalog(code, raw.data(), frames * analog, display);
    } else {
        convertFrames(code, lines, raw.data(), frames, channels, analog, display);
    }
    out.set(display, frames * columns, columns);
}

template <typename Word>
int32_t tryToConvert(const DisplayConverter& converter, std::vector<Word>& scratch, std::span<const Word> raw,
                     size_t channels, int32_t showMode, const DigitalSettings& digital,
                     std::span<const int32_t> channelColors, const Outputs<Word>& out) {
    if (out.missing()) {
        return -1;
    }
    out.set(nullptr, 0, 0);
    if (raw.data() == nullptr || raw.empty() || channels == 0) {
        return -2;
    }
    try {
        convert(converter, scratch, raw, channels, showMode, digital, channelColors, out);
    } catch (const std::bad_alloc&) {
        return -3;
    } catch (const std::length_error&) {
        return -3;
    }
    return 1;
}

}  // namespace

int32_t ConvertForDisplay16(DisplayConverter& converter, const int16_t* samples, size_t sampleCount,
                            const int16_t** displaySamples, size_t* displayCount, size_t channels, size_t* columns,
                            int32_t showMode, const DigitalSettings& digital, std::span<const int32_t> channelColors,
                            std::vector<int32_t>* columnColors) {
    return tryToConvert<int16_t>(converter, converter.samples16, {samples, sampleCount}, channels, showMode, digital,
                                 channelColors, {displaySamples, displayCount, columns, columnColors});
}

int32_t ConvertForDisplay32(DisplayConverter& converter, const int32_t* samples, size_t sampleCount,
                            const int32_t** displaySamples, size_t* displayCount, size_t channels, size_t* columns,
                            int32_t showMode, const DigitalSettings& digital, std::span<const int32_t> channelColors,
                            std::vector<int32_t>* columnColors) {
    return tryToConvert<int32_t>(converter, converter.samples32, {samples, sampleCount}, channels, showMode, digital,
                                 channelColors, {displaySamples, displayCount, columns, columnColors});
}

int32_t digitalLineValue(const SampleWordFormat& word, const DigitalSettings& digital, size_t line, bool bit) {
    const auto value = [&]<typename Word>(Word /*kind*/) {
        return static_cast<int32_t>(
            lineValue<Word>(digital.lines[line], digital.fullScaleCode, word.signedCodes, bit ? 1 : 0));
    };
    return word.sampleWidth == 4 ? value(int32_t{}) : word.signedCodes ? value(int16_t{}) : value(uint16_t{});
}

}  // namespace tarno2

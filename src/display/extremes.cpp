#include "display/extremes.h"

#include <algorithm>
#include <type_traits>
#include <vector>

#include "display/sample_code.h"

namespace tarno2 {

namespace {

/// `Code` is the word as a signed or unsigned number, as the board's codes are.
template <typename Word, typename Code>
class ExtremesOf final : public Extremes {
public:
    explicit ExtremesOf(const SignalFormat& format)
        : Extremes(format.frameBytes(), sizeof(Word) * rowWords(format) * 2),
          code_(format.word),
          channels_(format.channelCount()),
          lines_(format.word.digitalLines() > 0),
          row_(rowWords(format)),
          lanes_(lanesFor(channels_)),
          low_(lanes_),
          high_(lanes_) {}

    void reduce(const std::byte* frames, size_t framesPerEntry, size_t count, std::byte* entries) override {
        const Word* words = wordsOf(frames);
        for (size_t i = 0; i < count; ++i, words += framesPerEntry * channels_, entries += entryBytes()) {
            Code* entry = codesOf(entries);
            reduceCodes(words, framesPerEntry, entry);
            if (lines_) {
                reduceLines(words, framesPerEntry, entry);
            }
        }
    }

    void merge(std::byte* entry, const std::byte* other) const override {
        Code* low = codesOf(entry);
        Code* high = low + row_;
        const Code* otherLow = codesOf(other);
        const Code* otherHigh = otherLow + row_;
        for (size_t i = 0; i < channels_; ++i) {
            low[i] = std::min(low[i], otherLow[i]);
            high[i] = std::max(high[i], otherHigh[i]);
        }
        if (lines_) {
            low[channels_] = static_cast<Code>(low[channels_] & otherLow[channels_]);
            high[channels_] = static_cast<Code>(high[channels_] | otherHigh[channels_]);
        }
    }

    void toFrames(const std::byte* entry, std::byte* twoFrames) const override {
        const Code* codes = codesOf(entry);
        Word* out = reinterpret_cast<Word*>(twoFrames);
        for (int row = 0; row < 2; ++row, codes += row_, out += channels_) {
            const auto lines = lines_ ? static_cast<Bits>(codes[channels_]) : Bits{0};
            for (size_t i = 0; i < channels_; ++i) {
                out[i] = code_.pack(static_cast<Word>(codes[i]), lines);
            }
        }
    }

    [[nodiscard]] int32_t minimum(const std::byte* entry, size_t channel) const override {
        return static_cast<int32_t>(codesOf(entry)[channel]);
    }
    [[nodiscard]] int32_t maximum(const std::byte* entry, size_t channel) const override {
        return static_cast<int32_t>(codesOf(entry)[row_ + channel]);
    }

private:
    using Bits = std::make_unsigned_t<Word>;

    static size_t rowWords(const SignalFormat& format) {
        return format.channelCount() + (format.word.digitalLines() > 0 ? 1 : 0);
    }
    // Codes that are looked at together: whole frames, enough for the widest registers.
    static size_t lanesFor(size_t channels) {
        constexpr size_t kWide = 64;
        return channels >= kWide ? channels : kWide / channels * channels;
    }
    static const Word* wordsOf(const std::byte* bytes) { return reinterpret_cast<const Word*>(bytes); }
    static const Code* codesOf(const std::byte* bytes) { return reinterpret_cast<const Code*>(bytes); }
    static Code* codesOf(std::byte* bytes) { return reinterpret_cast<Code*>(bytes); }

    void reduceCodes(const Word* words, size_t frames, Code* entry) {
        const size_t total = frames * channels_;
        const size_t lanes = std::min(lanes_, total);
        Code* low = low_.data();
        Code* high = high_.data();
        code_.with([&](auto codeOf) {
            for (size_t i = 0; i < lanes; ++i) {
                low[i] = high[i] = static_cast<Code>(codeOf(words[i]));
            }
            size_t place = lanes;
            for (; place + lanes <= total; place += lanes) {
                widen(words + place, lanes, low, high, codeOf);
            }
            widen(words + place, total - place, low, high, codeOf);
        });
        for (size_t i = 0; i < channels_; ++i) {
            entry[i] = low[i];
            entry[row_ + i] = high[i];
        }
        for (size_t place = channels_; place < lanes; place += channels_) {
            for (size_t i = 0; i < channels_; ++i) {
                entry[i] = std::min(entry[i], low[place + i]);
                entry[row_ + i] = std::max(entry[row_ + i], high[place + i]);
            }
        }
    }

    template <typename CodeOf>
    static void widen(const Word* words, size_t count, Code* low, Code* high, CodeOf codeOf) {
        for (size_t i = 0; i < count; ++i) {
            const auto code = static_cast<Code>(codeOf(words[i]));
            low[i] = std::min(low[i], code);
            high[i] = std::max(high[i], code);
        }
    }

    void reduceLines(const Word* words, size_t frames, Code* entry) {
        Bits all = static_cast<Bits>(~Bits{0});
        Bits any = 0;
        for (size_t i = 0; i < frames; ++i) {
            const auto bits = static_cast<Bits>(words[i * channels_]);
            all = static_cast<Bits>(all & bits);
            any = static_cast<Bits>(any | bits);
        }
        entry[channels_] = static_cast<Code>(code_.lines(static_cast<Word>(all)));
        entry[row_ + channels_] = static_cast<Code>(code_.lines(static_cast<Word>(any)));
    }

    SampleCode<Word> code_;
    size_t channels_;
    bool lines_;
    size_t row_;
    size_t lanes_;
    std::vector<Code> low_;
    std::vector<Code> high_;
};

}  // namespace

std::unique_ptr<Extremes> Extremes::create(const SignalFormat& format) {
    if (format.word.sampleWidth == 4) {
        if (format.word.signedCodes) {
            return std::make_unique<ExtremesOf<int32_t, int32_t>>(format);
        }
        return std::make_unique<ExtremesOf<int32_t, uint32_t>>(format);
    }
    if (format.word.signedCodes) {
        return std::make_unique<ExtremesOf<int16_t, int16_t>>(format);
    }
    return std::make_unique<ExtremesOf<int16_t, uint16_t>>(format);
}

}  // namespace tarno2

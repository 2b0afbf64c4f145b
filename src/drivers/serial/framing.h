#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "drivers/common/sample_codec.h"
#include "drivers/serial/checksum.h"

namespace tarno2::drivers {

/// What the bytes of a serial line came to.
struct Parsed {
    enum class Kind { More, Frame, Damaged };
    Kind kind = Kind::More;
    uint64_t lost = 0;  ///< `Damaged`: so many frames, before the next good one
};

/// Finds frames of samples in bytes that were cut anywhere, and damaged on their way.
class FrameParser {
public:
    FrameParser() = default;
    virtual ~FrameParser() = default;
    FrameParser(const FrameParser&) = delete;
    FrameParser& operator=(const FrameParser&) = delete;

    void feed(std::span<const std::byte> bytes);
    /// Nothing more will come: what waited for it is decided.
    void end() { ended_ = true; }
    /// The next thing in the bytes that were fed. A frame's sample words, of all channels, go to `words`; `More`: feed
    /// some, or after `end` that was all.
    [[nodiscard]] virtual Parsed next(std::byte* words) = 0;
    /// Damage within a frame is seen, so that the line's own counts need not be heeded.
    [[nodiscard]] virtual bool seesDamage() const = 0;
    /// Bytes that are kept.
    [[nodiscard]] size_t held() const { return bytes_.size() - head_; }

protected:
    [[nodiscard]] std::span<const std::byte> view() const { return std::span(bytes_).subspan(head_); }
    void drop(size_t bytes) { head_ += bytes; }
    [[nodiscard]] bool ended() const { return ended_; }

private:
    std::vector<std::byte> bytes_;
    size_t head_ = 0;
    bool ended_ = false;
};

/// Samples one after another. Nothing tells where a frame begins: it is taken for the first byte.
class PlainFrames final : public FrameParser {
public:
    PlainFrames(const SampleDecoder& decoder, uint32_t channels);
    Parsed next(std::byte* words) override;
    [[nodiscard]] bool seesDamage() const override { return false; }

private:
    SampleDecoder decoder_;
    uint32_t channels_;
    size_t frameBytes_;
};

/// Frames with start bytes: start bytes, a counter if there is one, the samples, a checksum.
class MarkedFrames final : public FrameParser {
public:
    struct Layout {
        std::vector<std::byte> start;  ///< at least one
        bool hasCounter = false;       ///< a byte that counts the frames
        Checksum check = Checksum::None;
        bool checksStart = false;  ///< the checksum is of the start bytes too
    };
    MarkedFrames(Layout layout, const SampleDecoder& decoder, uint32_t channels);
    Parsed next(std::byte* words) override;
    [[nodiscard]] bool seesDamage() const override { return layout_.check != Checksum::None; }
    [[nodiscard]] size_t frameBytes() const { return frameBytes_; }

private:
    enum class Look { Good, Bad, TooShort };
    [[nodiscard]] bool startsAt(size_t place) const;
    [[nodiscard]] Look followedAt(size_t place) const;
    [[nodiscard]] Look frameAt(size_t place) const;
    [[nodiscard]] Look look() const;
    [[nodiscard]] bool isExpected() const { return anyGood_ && skipped_ % frameBytes_ == 0; }
    void skip(size_t bytes);
    Parsed accept(std::byte* words);
    Parsed atRest();
    [[nodiscard]] uint64_t framesSkipped() const;

    Layout layout_;
    SampleDecoder decoder_;
    uint32_t channels_;
    size_t frameBytes_;
    uint64_t skipped_ = 0;  ///< bytes since the last good frame that belong to none
    bool anyGood_ = false;
    uint8_t counter_ = 0;  ///< of the last good frame
    bool told_ = false;    ///< of the damage before the frame that comes next
};

/// Lines of numbers.
class TextFrames final : public FrameParser {
public:
    struct Layout {
        char delimiter = ',';  ///< a blank stands for any number of them
        bool volts = true;     ///< the numbers; else codes of the decoder's format
    };
    TextFrames(Layout layout, const SampleDecoder& decoder, uint32_t channels);
    Parsed next(std::byte* words) override;
    [[nodiscard]] bool seesDamage() const override { return false; }

private:
    [[nodiscard]] bool parseLine(std::string_view line, std::byte* words) const;
    [[nodiscard]] bool parseNumber(std::string_view field, std::byte* word) const;

    Layout layout_;
    WireFormat format_;
    SampleDecoder::Scale scale_;
    uint32_t channels_;
    bool inStep_ = false;   ///< a line end was seen: the first line may lack its beginning
    bool tooLong_ = false;  ///< the rest of a line that was given up follows
};

}  // namespace tarno2::drivers

#include "drivers/serial/framing.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

namespace tarno2::drivers {

namespace {

constexpr size_t kLongestLine = 16384;

std::string_view trimmed(std::string_view text) {
    const size_t begin = text.find_first_not_of(" \t");
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

}  // namespace

void FrameParser::feed(std::span<const std::byte> bytes) {
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(head_));
    head_ = 0;
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

// --- plain ---

PlainFrames::PlainFrames(const SampleDecoder& decoder, uint32_t channels)
    : decoder_(decoder), channels_(channels), frameBytes_(size_t{channels} * decoder.format().bytes) {}

Parsed PlainFrames::next(std::byte* words) {
    if (held() < frameBytes_) {
        return {};
    }
    decoder_.decode(view().data(), words, channels_);
    drop(frameBytes_);
    return {Parsed::Kind::Frame, 0};
}

// --- with start bytes ---

MarkedFrames::MarkedFrames(Layout layout, const SampleDecoder& decoder, uint32_t channels)
    : layout_(std::move(layout)),
      decoder_(decoder),
      channels_(channels),
      frameBytes_(layout_.start.size() + (layout_.hasCounter ? 1 : 0) + size_t{channels} * decoder.format().bytes +
                  checksumBytes(layout_.check)) {}

bool MarkedFrames::startsAt(size_t place) const {
    return std::equal(layout_.start.begin(), layout_.start.end(), view().begin() + static_cast<std::ptrdiff_t>(place));
}

/// Whether another frame begins there. At the end of the source nothing has to.
MarkedFrames::Look MarkedFrames::followedAt(size_t place) const {
    if (held() < place + layout_.start.size()) {
        return ended() ? Look::Good : Look::TooShort;
    }
    return startsAt(place) ? Look::Good : Look::Bad;
}

/// Whether a good frame lies there. Without a checksum one whose length is not what it should be is known by what
/// follows it.
MarkedFrames::Look MarkedFrames::frameAt(size_t place) const {
    if (held() < place + frameBytes_) {
        return Look::TooShort;
    }
    if (!startsAt(place)) {
        return Look::Bad;
    }
    if (layout_.check == Checksum::None) {
        return followedAt(place + frameBytes_);
    }
    const size_t start = layout_.checksStart ? 0 : layout_.start.size();
    const size_t size = frameBytes_ - checksumBytes(layout_.check) - start;
    const auto checked = view().subspan(place + start, size);
    return checksumFits(layout_.check, checked, checked.data() + size) ? Look::Good : Look::Bad;
}

/// The same for the first byte held. A check of 8 bits fits by chance too easily to believe in a frame that does not
/// lie where one is expected.
MarkedFrames::Look MarkedFrames::look() const {
    const Look frame = frameAt(0);
    return frame == Look::Good && !isExpected() && checksumBytes(layout_.check) == 1 ? followedAt(frameBytes_) : frame;
}

void MarkedFrames::skip(size_t bytes) {
    drop(bytes);
    skipped_ += bytes;
}

Parsed MarkedFrames::next(std::byte* words) {
    for (;;) {
        const Look here = look();
        if (here == Look::Good) {
            return accept(words);
        }
        if (here == Look::TooShort) {
            return ended() ? atRest() : Parsed{};
        }
        if (!isExpected()) {
            skip(1);
            continue;
        }
        // Damage. The place where the next frame is if only contents were hurt comes first, so that what merely looks
        // like a frame inside of one does not.
        const Look following = frameAt(frameBytes_);
        if (following == Look::TooShort && !ended()) {
            return {};
        }
        skip(following == Look::Good ? frameBytes_ : 1);
    }
}

/// How many frames lay in the bytes that were skipped. Before the first good frame only those that were whole count.
uint64_t MarkedFrames::framesSkipped() const {
    if (!anyGood_ || skipped_ == 0) {
        return skipped_ / frameBytes_;
    }
    return std::max<uint64_t>((skipped_ + frameBytes_ / 2) / frameBytes_, 1);
}

/// A good frame: first how many are missing before it, then the frame itself.
Parsed MarkedFrames::accept(std::byte* words) {
    const std::byte* place = view().data() + layout_.start.size();
    const auto counter = static_cast<uint8_t>(*place);
    uint64_t lost = framesSkipped();
    if (layout_.hasCounter && anyGood_) {
        // The counter knows the number but for multiples of 256, which the bytes tell.
        constexpr uint64_t kTurn = 256;
        const uint64_t counted = static_cast<uint8_t>(counter - counter_ - 1);
        lost = lost <= counted ? counted : counted + (lost - counted + kTurn / 2) / kTurn * kTurn;
    }
    if (lost > 0 && !told_) {
        told_ = true;
        return {Parsed::Kind::Damaged, lost};
    }
    counter_ = counter;
    decoder_.decode(place + (layout_.hasCounter ? 1 : 0), words, channels_);
    drop(frameBytes_);
    skipped_ = 0;
    anyGood_ = true;
    told_ = false;
    return {Parsed::Kind::Frame, 0};
}

/// The source has ended in the middle of a frame, or of damage.
Parsed MarkedFrames::atRest() {
    skip(held());
    const uint64_t lost = framesSkipped();
    skipped_ = 0;
    return lost > 0 ? Parsed{Parsed::Kind::Damaged, lost} : Parsed{};
}

// --- text ---

TextFrames::TextFrames(Layout layout, const SampleDecoder& decoder, uint32_t channels)
    : layout_(layout), format_(decoder.format()), scale_(decoder.scale()), channels_(channels) {}

Parsed TextFrames::next(std::byte* words) {
    for (;;) {
        const std::string_view text(reinterpret_cast<const char*>(view().data()), held());
        const size_t end = text.find_first_of("\r\n");
        if (end == std::string_view::npos) {
            if (held() > kLongestLine) {
                drop(held());
                tooLong_ = true;
            }
            return {};
        }
        const std::string_view line = text.substr(0, end);
        const bool begun = std::exchange(inStep_, true);
        const bool cut = std::exchange(tooLong_, false);
        const bool good = begun && !cut && parseLine(line, words);
        const bool counts = cut || (begun && !trimmed(line).empty());
        drop(end + 1);
        if (good) {
            return {Parsed::Kind::Frame, 0};
        }
        if (counts) {
            return {Parsed::Kind::Damaged, 1};
        }
    }
}

bool TextFrames::parseLine(std::string_view line, std::byte* words) const {
    const size_t step = wordBytes(format_);
    line = trimmed(line);
    for (uint32_t channel = 0; channel < channels_; ++channel) {
        const bool isLast = channel + 1 == channels_;
        const size_t end = layout_.delimiter == ' ' ? line.find_first_of(" \t") : line.find(layout_.delimiter);
        if ((end == std::string_view::npos) != isLast || !parseNumber(trimmed(line.substr(0, end)), words)) {
            return false;
        }
        words += step;
        if (!isLast) {
            line = layout_.delimiter == ' ' ? trimmed(line.substr(end)) : line.substr(end + 1);
        }
    }
    return true;
}

/// A number that fills its field. With another delimiter a comma may stand for the point.
bool TextFrames::parseNumber(std::string_view field, std::byte* word) const {
    std::array<char, 64> text{};
    if (field.starts_with('+')) {
        field.remove_prefix(1);
    }
    if (field.empty() || field.size() > text.size() || field.starts_with('+')) {
        return false;
    }
    std::transform(field.begin(), field.end(), text.begin(),
                   [this](char c) { return c == ',' && layout_.delimiter != ',' ? '.' : c; });
    const char* const end = text.data() + field.size();
    if (layout_.volts) {
        double volts = 0.0;
        const auto [stop, error] = std::from_chars(text.data(), end, volts);
        if (error != std::errc() || stop != end || !std::isfinite(volts)) {
            return false;
        }
        const int32_t code = codeOfFraction((volts - scale_.middle) * scale_.factor);
        std::memcpy(word, &code, sizeof code);
        return true;
    }
    int64_t code = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, code);
    const std::optional<uint32_t> stored = wordOfCode(format_, code);
    if (error != std::errc() || stop != end || !stored) {
        return false;
    }
    std::memcpy(word, &*stored, wordBytes(format_));
    return true;
}

}  // namespace tarno2::drivers

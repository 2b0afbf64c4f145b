#include "drivers/iio/scan_layout.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace tarno2::drivers {

namespace {

constexpr uint32_t kMostBits = 32;

/// Bits that a signed word needs for the codes; an unsigned one needs one less.
uint32_t signedBits(const ScanFormat& format) {
    return format.isSigned ? format.bits : format.bits + 1;
}

/// Whether 2^31 is taken away from the codes.
bool isOffset(const ScanFormat& format) {
    return !format.isSigned && format.bits >= kMostBits;
}

uint32_t droppedBits(const ScanFormat& format) {
    return format.bits > kMostBits ? format.bits - kMostBits : 0;
}

template <typename Field>
Field swapBytes(Field value) {
    Field swapped = 0;
    for (size_t i = 0; i < sizeof(Field); ++i) {
        swapped =
            static_cast<Field>(static_cast<uint64_t>(swapped) << 8 | (static_cast<uint64_t>(value) >> 8 * i & 0xFF));
    }
    return swapped;
}

template <typename Field, typename Word>
void convert(const ScanFormat& format, const std::byte* source, size_t step, size_t frames, std::byte* destination,
             size_t destinationStep) {
    const uint32_t shift = format.shift;
    const uint32_t unused = 64 - format.bits;
    const uint32_t dropped = droppedBits(format);
    const uint64_t flip = isOffset(format) ? uint64_t{1} << 31 : 0;
    for (size_t i = 0; i < frames; ++i, source += step, destination += destinationStep) {
        Field field;
        std::memcpy(&field, source, sizeof field);
        if (format.bigEndian) {
            field = swapBytes(field);
        }
        const uint64_t high = (uint64_t{field} >> shift) << unused;
        const uint64_t code = format.isSigned ? static_cast<uint64_t>(static_cast<int64_t>(high) >> (unused + dropped))
                                              : high >> (unused + dropped);
        const auto word = static_cast<Word>(code ^ flip);
        std::memcpy(destination, &word, sizeof word);
    }
}

}  // namespace

bool isReadable(const ScanFormat& format) {
    const bool whole = format.length == 8 || format.length == 16 || format.length == 32 || format.length == 64;
    return whole && format.bits > 0 && format.bits + format.shift <= format.length;
}

ScanWord wordFor(const std::vector<ScanFormat>& formats) {
    ScanWord word{.bytes = 2, .isSigned = false, .minimum = 0, .maximum = 0};
    uint32_t bits = 1;
    for (const ScanFormat& format : formats) {
        word.isSigned = word.isSigned || format.isSigned || isOffset(format);
    }
    for (const ScanFormat& format : formats) {
        bits = std::max(bits, word.isSigned ? signedBits(format) : format.bits);
    }
    bits = std::min(bits, kMostBits);
    word.bytes = bits <= 16 ? 2 : 4;
    const int64_t span = int64_t{1} << (word.isSigned ? bits - 1 : bits);
    word.minimum = word.isSigned ? static_cast<int32_t>(-span) : 0;
    word.maximum = static_cast<int32_t>(span - 1);
    return word;
}

double deviceCode(const ScanFormat& format, double code) {
    const double whole = isOffset(format) ? code + 2147483648.0 : code;
    return whole * static_cast<double>(uint64_t{1} << droppedBits(format));
}

void convertChannel(const ScanFormat& format, const std::byte* source, size_t step, size_t frames, uint32_t wordBytes,
                    std::byte* destination, size_t destinationStep) {
    const auto pick = [&]<typename Field>(Field) {
        if (wordBytes == 2) {
            convert<Field, uint16_t>(format, source, step, frames, destination, destinationStep);
        } else {
            convert<Field, uint32_t>(format, source, step, frames, destination, destinationStep);
        }
    };
    switch (format.length) {
        case 8:
            return pick(uint8_t{});
        case 16:
            return pick(uint16_t{});
        case 32:
            return pick(uint32_t{});
        default:
            return pick(uint64_t{});
    }
}

void readTimes(bool bigEndian, const std::byte* source, size_t step, std::span<int64_t> times) {
    for (size_t i = 0; i < times.size(); ++i, source += step) {
        uint64_t field = 0;
        std::memcpy(&field, source, sizeof field);
        times[i] = static_cast<int64_t>(bigEndian ? swapBytes(field) : field);
    }
}

std::optional<ScanRates> readRates(std::string_view text) {
    const bool limits = text.find('[') != std::string_view::npos;
    std::vector<double> numbers;
    for (size_t at = 0; (at = text.find_first_not_of(" \t\r\n[]", at)) != std::string_view::npos;) {
        double number = 0.0;
        const auto [end, error] = std::from_chars(text.data() + at, text.data() + text.size(), number);
        if (error != std::errc{} || number <= 0.0) {
            return std::nullopt;
        }
        numbers.push_back(number);
        at = static_cast<size_t>(end - text.data());
    }
    if (numbers.empty() || (limits && (numbers.size() != 3 || numbers[0] > numbers[2]))) {
        return std::nullopt;
    }
    if (limits) {
        return ScanRates{.values = {}, .minimum = numbers[0], .maximum = numbers[2]};
    }
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return ScanRates{.values = numbers, .minimum = numbers.front(), .maximum = numbers.back()};
}

}  // namespace tarno2::drivers

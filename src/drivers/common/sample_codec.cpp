#include "drivers/common/sample_codec.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <type_traits>

namespace tarno2::drivers {

namespace {

using Kind = WireFormat::Kind;

static_assert(std::endian::native == std::endian::little, "sample words are little-endian");

/// The bytes of one sample as an unsigned number. The loops vanish: the size is known.
template <size_t kBytes, bool kBigEndian>
auto loadRaw(const std::byte* in) {
    using Raw = std::conditional_t<(kBytes > 4), uint64_t, uint32_t>;
    Raw raw = 0;
    for (size_t i = 0; i < kBytes; ++i) {
        const size_t shift = 8 * (kBigEndian ? kBytes - 1 - i : i);
        raw |= static_cast<Raw>(static_cast<Raw>(in[i]) << shift);
    }
    return raw;
}

template <size_t kBytes, bool kBigEndian, bool kSigned, uint32_t kFlipped = 0>
void decodeIntegers(const std::byte* in, std::byte* out, size_t samples, const SampleDecoder::Scale&) {
    using Word = std::conditional_t<(kBytes > 2), uint32_t, uint16_t>;
    constexpr int kUnused = static_cast<int>(32 - 8 * kBytes);
    for (size_t i = 0; i < samples; ++i, in += kBytes, out += sizeof(Word)) {
        uint32_t raw = loadRaw<kBytes, kBigEndian>(in);
        if constexpr (kSigned) {
            raw = static_cast<uint32_t>(static_cast<int32_t>(raw << kUnused) >> kUnused);
        }
        const auto word = static_cast<Word>(raw ^ kFlipped);
        std::memcpy(out, &word, sizeof word);
    }
}

template <typename Float, bool kBigEndian>
void decodeFloats(const std::byte* in, std::byte* out, size_t samples, const SampleDecoder::Scale& scale) {
    for (size_t i = 0; i < samples; ++i, in += sizeof(Float), out += sizeof(int32_t)) {
        const auto volts = std::bit_cast<Float>(loadRaw<sizeof(Float), kBigEndian>(in));
        const int32_t code = codeOfFraction((static_cast<double>(volts) - scale.middle) * scale.factor);
        std::memcpy(out, &code, sizeof code);
    }
}

template <size_t kBytes, bool kSigned>
auto integers(bool bigEndian) {
    return bigEndian ? &decodeIntegers<kBytes, true, kSigned> : &decodeIntegers<kBytes, false, kSigned>;
}

template <size_t kBytes>
auto integers(const WireFormat& format) {
    return format.kind == Kind::Signed ? integers<kBytes, true>(format.bigEndian)
                                       : integers<kBytes, false>(format.bigEndian);
}

/// Unsigned codes that use the highest bit of a 32-bit word.
bool isMovedDown(const WireFormat& format) {
    return format.kind == Kind::Unsigned && format.bits == 32;
}

constexpr uint32_t kTopBit = 0x80000000U;

}  // namespace

const std::vector<WireFormat>& wireFormats() {
    static const std::vector<WireFormat> formats = {
        {"s16le", Kind::Signed, 2, false, 16},   {"s16be", Kind::Signed, 2, true, 16},
        {"u16le", Kind::Unsigned, 2, false, 16}, {"u16be", Kind::Unsigned, 2, true, 16},
        {"s8", Kind::Signed, 1, false, 8},       {"u8", Kind::Unsigned, 1, false, 8},
        {"s24le", Kind::Signed, 3, false, 24},   {"s24be", Kind::Signed, 3, true, 24},
        {"u24le", Kind::Unsigned, 3, false, 24}, {"u24be", Kind::Unsigned, 3, true, 24},
        {"s32le", Kind::Signed, 4, false, 32},   {"s32be", Kind::Signed, 4, true, 32},
        {"u32le", Kind::Unsigned, 4, false, 32}, {"u32be", Kind::Unsigned, 4, true, 32},
        {"f32le", Kind::Float, 4, false, 32},    {"f32be", Kind::Float, 4, true, 32},
        {"f64le", Kind::Float, 8, false, 32},    {"f64be", Kind::Float, 8, true, 32},
    };
    return formats;
}

std::vector<std::string> wireFormatNames() {
    std::vector<std::string> names;
    for (const WireFormat& format : wireFormats()) {
        names.emplace_back(format.name);
    }
    return names;
}

const WireFormat* findWireFormat(std::string_view name) {
    for (const WireFormat& format : wireFormats()) {
        if (format.name == name) {
            return &format;
        }
    }
    return nullptr;
}

WireFormat WireFormat::withBits(uint32_t wanted) const {
    WireFormat narrower = *this;
    if (kind != Kind::Float && wanted > 0 && wanted < bits) {
        narrower.bits = wanted;
    }
    return narrower;
}

uint32_t wordBytes(const WireFormat& format) {
    return format.bytes <= 2 ? 2 : 4;
}

ADCSampleFormat sampleFormat(const WireFormat& format) {
    ADCSampleFormat words{};
    words.m_nBytes = wordBytes(format);
    words.m_nCodeBits = format.bits;
    words.m_nCodeMask = 0xFFFFFFFFU >> (32 - format.bits);
    words.m_nSignedCodes = format.kind == Kind::Unsigned && !isMovedDown(format) ? 0 : 1;
    return words;
}

ADCCodeRange codeRange(const WireFormat& format) {
    if (sampleFormat(format).m_nSignedCodes != 0) {
        const auto highest = static_cast<int32_t>(0x7FFFFFFFU >> (32 - format.bits));
        return {-highest - 1, highest};
    }
    return {0, static_cast<int32_t>(0xFFFFFFFFU >> (32 - format.bits))};
}

std::optional<uint32_t> wordOfCode(const WireFormat& format, int64_t code) {
    const ADCCodeRange codes = codeRange(format);
    const int64_t moved = isMovedDown(format) ? code - int64_t{kTopBit} : code;
    if (moved < codes.m_nMinimum || moved > codes.m_nMaximum) {
        return std::nullopt;
    }
    return static_cast<uint32_t>(moved);
}

int32_t codeOfFraction(double fraction) {
    constexpr double kHalf = 2147483647.5;  // half of the distance between the lowest and the highest code
    const double code = std::floor(fraction * kHalf);
    if (code >= 2147483647.0) {
        return 2147483647;
    }
    return code >= -2147483648.0 ? static_cast<int32_t>(code) : -2147483647 - 1;
}

SampleDecoder::SampleDecoder(const WireFormat& format, double lower, double upper)
    : format_(format), scale_{(lower + upper) / 2, 2 / (upper - lower)}, decode_(decodeFor(format)) {}

SampleDecoder::Decode SampleDecoder::decodeFor(const WireFormat& format) {
    if (format.kind == Kind::Float && format.bytes == 4) {
        return format.bigEndian ? &decodeFloats<float, true> : &decodeFloats<float, false>;
    }
    if (format.kind == Kind::Float) {
        return format.bigEndian ? &decodeFloats<double, true> : &decodeFloats<double, false>;
    }
    if (isMovedDown(format)) {
        return format.bigEndian ? &decodeIntegers<4, true, false, kTopBit> : &decodeIntegers<4, false, false, kTopBit>;
    }
    switch (format.bytes) {
        case 1:
            return integers<1>(format);
        case 2:
            return integers<2>(format);
        case 3:
            return integers<3>(format);
        default:
            return integers<4>(format);
    }
}

}  // namespace tarno2::drivers

#include "exports/sample_codes.h"

#include <bit>
#include <cstring>

namespace tarno2 {

namespace {

static_assert(std::endian::native == std::endian::little, "sample words are little-endian");

constexpr uint32_t kByteBits = 8;

/// `Word`: as wide as a sample, and signed where the codes are. A code goes up to the top of its word and down again.
template <class Word, class Code>
void shiftCodes(const uint8_t* words, size_t count, uint32_t left, uint32_t right, uint32_t half, Code* codes) {
    for (size_t i = 0; i < count; ++i) {
        Word word = 0;
        std::memcpy(&word, words + i * sizeof word, sizeof word);
        const auto top = static_cast<Word>(static_cast<uint32_t>(word) << left);
        codes[i] = static_cast<Code>(static_cast<uint32_t>(top >> right) - half);
    }
}

}  // namespace

SampleCodes::SampleCodes(const ConversionInputs& inputs, bool centred)
    : bytes_(inputs.bytesPerSample),
      signed_(inputs.codeSigned),
      left_(inputs.bytesPerSample * kByteBits - inputs.codeShift - inputs.codeBits),
      right_(inputs.bytesPerSample * kByteBits - inputs.codeBits),
      half_(centred && !inputs.codeSigned ? int64_t{1} << (inputs.codeBits - 1) : 0) {}

template <class Code>
void SampleCodes::convert(const uint8_t* words, size_t count, Code* codes) const {
    const auto half = static_cast<uint32_t>(half_);
    if (bytes_ == 2) {
        signed_ ? shiftCodes<int16_t>(words, count, left_, right_, half, codes)
                : shiftCodes<uint16_t>(words, count, left_, right_, half, codes);
    } else {
        signed_ ? shiftCodes<int32_t>(words, count, left_, right_, half, codes)
                : shiftCodes<uint32_t>(words, count, left_, right_, half, codes);
    }
}

void SampleCodes::to16(const uint8_t* words, size_t count, int16_t* codes) const {
    convert(words, count, codes);
}

void SampleCodes::to32(const uint8_t* words, size_t count, int32_t* codes) const {
    convert(words, count, codes);
}

}  // namespace tarno2

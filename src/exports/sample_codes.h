#pragma once

#include <cstddef>
#include <cstdint>

#include "records/conversion_inputs.h"

namespace tarno2 {

/// Takes the codes out of sample words, many at once. Immutable.
class SampleCodes {
public:
    /// `centred`: from codes without a sign half of their span is taken, so that they lie evenly around 0.
    SampleCodes(const ConversionInputs& inputs, bool centred);

    /// The words are the codes, 16 bits wide: nothing need be done.
    [[nodiscard]] bool areWords16() const { return bytes_ == 2 && isPlain(); }
    [[nodiscard]] bool areWords32() const { return bytes_ == 4 && isPlain(); }
    /// What was taken from each code.
    [[nodiscard]] int64_t subtracted() const { return half_; }

    /// Codes of at most 16 bits; those without a sign as the same bits of an unsigned number.
    void to16(const uint8_t* words, size_t count, int16_t* codes) const;
    /// Likewise of at most 32 bits.
    void to32(const uint8_t* words, size_t count, int32_t* codes) const;

private:
    template <class Code>
    void convert(const uint8_t* words, size_t count, Code* codes) const;
    [[nodiscard]] bool isPlain() const { return left_ == 0 && right_ == 0 && half_ == 0; }

    uint32_t bytes_;
    bool signed_;
    uint32_t left_;  ///< bits of the word above the code
    uint32_t right_;
    int64_t half_;
};

}  // namespace tarno2

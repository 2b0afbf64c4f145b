#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace tarno2::drivers {

/// How a device lays a sample of one channel out: "be:u12/16>>4" is bigEndian, bits 12, length 16, shift 4.
struct ScanFormat {
    uint32_t bits = 16;    ///< of the code
    uint32_t length = 16;  ///< of the whole field: 8, 16, 32 or 64
    uint32_t shift = 0;    ///< right shift that brings the code's lowest bit to bit 0
    bool isSigned = true;
    bool bigEndian = false;
};

/// The one word that a board's channels share, though their formats differ, and the codes that occur in it. Codes stay
/// those of the device, but for what 32 bits with a sign can't hold: of longer ones the highest 32 bits are kept, and
/// of unsigned ones of 32 bits and more 2^31 is taken away.
struct ScanWord {
    uint32_t bytes = 2;  ///< 2 or 4
    bool isSigned = true;
    int32_t minimum = -32768;
    int32_t maximum = 32767;
};

/// Whether samples of this format can be read at all.
[[nodiscard]] bool isReadable(const ScanFormat& format);

/// The word for channels of these formats: 2 bytes when all codes fit.
[[nodiscard]] ScanWord wordFor(const std::vector<ScanFormat>& formats);

/// What the device itself says for a code of the word: the inverse of the changes that `ScanWord` names.
[[nodiscard]] double deviceCode(const ScanFormat& format, double code);

/// Reads one channel of `frames` frames, whose fields lie `step` bytes apart from `source` on, and writes words of
/// `wordBytes`, `destinationStep` bytes apart. The format has to be readable.
void convertChannel(const ScanFormat& format, const std::byte* source, size_t step, size_t frames, uint32_t wordBytes,
                    std::byte* destination, size_t destinationStep);

/// Reads signed 64-bit fields likewise: the times of frames.
void readTimes(bool bigEndian, const std::byte* source, size_t step, std::span<int64_t> times);

/// Rates as a device lists them: "8000 16000 48000", or a minimum, a step and a maximum, "[1 1 1000]".
struct ScanRates {
    std::vector<double> values;  ///< ascending; empty: any within the limits
    double minimum = 0.0;        ///< 0: not told
    double maximum = 0.0;
};
/// Nothing when the text is neither.
[[nodiscard]] std::optional<ScanRates> readRates(std::string_view text);

}  // namespace tarno2::drivers

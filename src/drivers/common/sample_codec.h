#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <tarno2/IADCDevice.h>

namespace tarno2::drivers {

/// How samples look on a line or in a packet: the name that users give it, and what it means.
struct WireFormat {
    enum class Kind : uint8_t { Unsigned, Signed, Float };
    std::string_view name;  ///< "s16le"
    Kind kind = Kind::Signed;
    uint32_t bytes = 2;
    bool bigEndian = false;
    uint32_t bits = 16;  ///< of the code, from bit 0 on; of floating-point numbers those of the code that they become

    /// The same with codes of so many bits, as a converter of 10 or 12 bits sends them in two bytes. 0, or as many as
    /// there are or more: all.
    [[nodiscard]] WireFormat withBits(uint32_t wanted) const;
};

/// All formats, in the order in which they are offered.
[[nodiscard]] const std::vector<WireFormat>& wireFormats();
[[nodiscard]] std::vector<std::string> wireFormatNames();
/// The format of that name, null when there is none.
[[nodiscard]] const WireFormat* findWireFormat(std::string_view name);

/// Sample words hold the codes that came: of formats up to 16 bits in two bytes, of others in four, negative ones with
/// their sign to the top of the word. Two become signed 32-bit codes over the input range: floating-point numbers,
/// which are volts, and unsigned codes of all 32 bits, which the host can't tell, by moving them down by half.
[[nodiscard]] uint32_t wordBytes(const WireFormat& format);
[[nodiscard]] ADCSampleFormat sampleFormat(const WireFormat& format);
[[nodiscard]] ADCCodeRange codeRange(const WireFormat& format);

/// The word of a code as the source counts it; nothing when the format has no such code.
[[nodiscard]] std::optional<uint32_t> wordOfCode(const WireFormat& format, int64_t code);

/// The 32-bit code of a voltage, the range being +-1: saturated at its ends; what is no number gives the lowest code.
[[nodiscard]] int32_t codeOfFraction(double fraction);

/// Makes sample words of bytes, one after another. Keeps nothing.
class SampleDecoder {
public:
    /// `lower` and `upper`: the voltages of the lowest and the highest code, for formats of floating-point numbers.
    SampleDecoder(const WireFormat& format, double lower, double upper);

    [[nodiscard]] const WireFormat& format() const { return format_; }
    /// `samples` words to `out`, from as many samples at `in`. The two don't overlap.
    void decode(const std::byte* in, std::byte* out, size_t samples) const { decode_(in, out, samples, scale_); }

    /// From a voltage to the fraction of the range: (volts - middle) x factor.
    struct Scale {
        double middle = 0.0;
        double factor = 1.0;
    };
    [[nodiscard]] const Scale& scale() const { return scale_; }

private:
    using Decode = void (*)(const std::byte*, std::byte*, size_t, const Scale&);
    static Decode decodeFor(const WireFormat& format);

    WireFormat format_;
    Scale scale_;
    Decode decode_;
};

}  // namespace tarno2::drivers

#include "records/column_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace tarno2 {

namespace {

__extension__ using Wide = unsigned __int128;

constexpr int kMantissaBits = 52;
constexpr uint64_t kHiddenBit = uint64_t{1} << kMantissaBits;
constexpr int kExponentMask = 0x7FF;
constexpr int kExponentOfLastBit = 1075;  ///< a double is its mantissa / 2^(1075 - exponent field)
constexpr int kSignBit = 63;

constexpr std::array<uint32_t, ExportFormat::kMaximumPrecision + 1> kPowersOfTen = {
    1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000, 1000000000};

constexpr std::array<char, 200> makeDigitPairs() {
    std::array<char, 200> pairs{};
    for (size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}
constexpr auto kDigitPairs = makeDigitPairs();

/// |value| x 10^precision, rounded to the nearest whole number and a half to the even one, from the bits of the value.
/// False when it is too large for that (then it is no number of volts) or no number.
bool scaledWhole(uint64_t bits, int precision, uint64_t& whole) {
    const int shift = kExponentOfLastBit - static_cast<int>((bits >> kMantissaBits) & kExponentMask);
    if (shift <= 0) {
        return false;
    }
    // The product has at most 53 + 30 bits, so after a longer shift less than a half is left.
    constexpr int kProductBits = 83;
    if (shift > kProductBits) {
        whole = 0;
        return true;
    }
    const uint64_t mantissa = (bits & (kHiddenBit - 1)) | kHiddenBit;
    const Wide product = Wide{mantissa} * kPowersOfTen[static_cast<size_t>(precision)];
    Wide quotient = product >> shift;
    const Wide rest = product - (quotient << shift);
    const Wide half = Wide{1} << (shift - 1);
    if (rest > half || (rest == half && (quotient & 1U) != 0)) {
        ++quotient;
    }
    whole = static_cast<uint64_t>(quotient);
    return quotient <= std::numeric_limits<uint64_t>::max();
}

char* writeWhole(char* out, uint64_t value) {
    constexpr size_t kLongest = 20;
    constexpr uint64_t kTwoDigits = 10;
    if (value < kTwoDigits) {
        *out = static_cast<char>('0' + value);
        return out + 1;
    }
    return std::to_chars(out, out + kLongest, value).ptr;
}

/// `scaled` / 10^Precision. With the precision known beforehand its divisions are multiplications.
template <size_t Precision>
char* writeScaled(char* out, uint64_t scaled, char decimal) {
    constexpr uint32_t kPower = kPowersOfTen[Precision];
    out = writeWhole(out, scaled / kPower);
    if constexpr (Precision > 0) {
        *out++ = decimal;
        auto fraction = static_cast<uint32_t>(scaled % kPower);
        size_t digits = Precision;
        for (; digits >= 2; digits -= 2) {
            std::memcpy(out + digits - 2, &kDigitPairs[size_t{fraction % 100} * 2], 2);
            fraction /= 100;
        }
        if (digits == 1) {
            *out = static_cast<char>('0' + fraction);
        }
    }
    return out + Precision;
}

using ScaledWriter = char* (*)(char*, uint64_t, char);

template <size_t... Precisions>
constexpr std::array<ScaledWriter, sizeof...(Precisions)> scaledWriters(std::index_sequence<Precisions...>) {
    return {writeScaled<Precisions>...};
}
constexpr auto kScaledWriters = scaledWriters(std::make_index_sequence<kPowersOfTen.size()>());

char* writeAnyFixed(char* out, double value, int precision, char decimal) {
    char* const end = std::to_chars(out, out + kLongestNumber, value, std::chars_format::fixed, precision).ptr;
    std::replace(out, end, '.', decimal);
    return end;
}

/// The whole part as printf's "%d" can show it.
int32_t wholePart(double value) {
    constexpr double kMost = std::numeric_limits<int32_t>::max();
    return std::isnan(value) ? 0 : static_cast<int32_t>(std::clamp(value, -kMost, kMost));
}

char* writeClockPart(char* out, int32_t part) {
    if (part < 0) {
        *out++ = '-';
    }
    out = writeWhole(out, static_cast<uint64_t>(std::abs(int64_t{part})));
    *out++ = ':';
    return out;
}

char* writeClock(char* out, double seconds, char decimal) {
    constexpr double kHour = 3600.0;
    constexpr double kMinute = 60.0;
    constexpr double kMillisecondsPerSecond = 1000.0;
    constexpr int kMillisecondDecimals = 6;
    const int32_t hours = wholePart(seconds / kHour);
    const int32_t minutes = wholePart((seconds - kHour * hours) / kMinute);
    const int32_t whole = wholePart(seconds - kHour * hours - kMinute * minutes);
    const double milliseconds = (seconds - kHour * hours - kMinute * minutes - whole) * kMillisecondsPerSecond;
    out = writeClockPart(out, hours);
    out = writeClockPart(out, minutes);
    out = writeClockPart(out, whole);
    return writeFixed(out, milliseconds, kMillisecondDecimals, decimal);
}

}  // namespace

char* writeFixed(char* out, double value, int precision, char decimal) {
    const auto bits = std::bit_cast<uint64_t>(value);
    uint64_t whole = 0;
    if (!scaledWhole(bits, precision, whole)) {
        return writeAnyFixed(out, value, precision, decimal);
    }
    if ((bits >> kSignBit) != 0) {
        *out++ = '-';
    }
    return kScaledWriters[static_cast<size_t>(precision)](out, whole, decimal);
}

char* writeFirstColumn(char* out, const ExportFormat& format, uint64_t line, double seconds) {
    switch (format.firstColumn) {
        case FirstColumn::Absent:
            break;
        case FirstColumn::Samples:
            return writeWhole(out, line);
        case FirstColumn::Seconds:
            return writeFixed(out, seconds, format.timePrecision, format.decimal);
        case FirstColumn::Clock:
            return writeClock(out, seconds, format.decimal);
    }
    return out;
}

}  // namespace tarno2

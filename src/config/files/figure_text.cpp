#include "config/files/figure_text.h"

#include <array>

#include "language/language_table.h"
#include "platform/c_locale.h"

namespace tarno2 {

namespace {

constexpr double kThreeDigits = 999.5;
constexpr char kHardBlank = '\xA0';  // of code page 1251

}  // namespace

std::string formatDuration(uint64_t seconds) {
    return formatText("%02llu:%02u:%02u", static_cast<unsigned long long>(seconds / 3600),
                      static_cast<unsigned>(seconds / 60 % 60), static_cast<unsigned>(seconds % 60));
}

std::string formatCount(uint64_t count) {
    std::string digits = std::to_string(count);
    for (size_t place = digits.size(); place > 3;) {
        place -= 3;
        digits.insert(place, 1, kHardBlank);
    }
    return digits;
}

std::string formatSize(uint64_t bytes) {
    constexpr std::array kUnits = {TextId::SizeBytes, TextId::SizeKilobytes, TextId::SizeMegabytes,
                                   TextId::SizeGigabytes};
    constexpr double kStep = 1024.0;
    auto size = static_cast<double>(bytes);
    size_t unit = 0;
    // What would be shown as a thousand and more of a unit is told in the next one.
    while (size >= kThreeDigits && unit + 1 < kUnits.size()) {
        size /= kStep;
        ++unit;
    }
    if (size >= kThreeDigits) {
        return formatText(text(kUnits.back()).c_str(), formatCount(static_cast<uint64_t>(size)).c_str());
    }
    const int digits = unit == 0 || size >= 99.95 ? 0 : size >= 9.995 ? 1 : 2;
    return formatText(text(kUnits.at(unit)).c_str(), formatText("%.*f", digits, size).c_str());
}

std::string formatRate(double bytesPerSecond) {
    const double rate = bytesPerSecond > 0.0 ? bytesPerSecond : 0.0;
    return formatText(text(TextId::PerSecond).c_str(), formatSize(static_cast<uint64_t>(rate)).c_str());
}

}  // namespace tarno2

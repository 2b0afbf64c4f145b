#include "config/files/figure_text.h"

#include "config/files/disk_info.h"
#include "language/language_table.h"
#include "platform/c_locale.h"

namespace tarno2 {

namespace {

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

std::string formatRate(double bytesPerSecond) {
    const double rate = bytesPerSecond > 0.0 ? bytesPerSecond : 0.0;
    return formatText(text(TextId::PerSecond).c_str(), formatFreeSpace(static_cast<uint64_t>(rate)).c_str());
}

}  // namespace tarno2

#include "platform/c_locale.h"

#include <array>
#include <cstdio>

namespace tarno2 {

std::string formatTextV(const char* format, va_list arguments) {
    const CNumericLocale locale;
    std::array<char, 512> buffer{};
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(buffer.data(), buffer.size(), format, arguments);
    std::string text;
    if (length > 0) {
        const auto size = static_cast<size_t>(length);
        if (size < buffer.size()) {
            text.assign(buffer.data(), size);
        } else {
            text.resize(size);
            std::vsnprintf(text.data(), size + 1, format, again);
        }
    }
    va_end(again);
    return text;
}

std::string formatText(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    std::string text = formatTextV(format, arguments);
    va_end(arguments);
    return text;
}

}  // namespace tarno2

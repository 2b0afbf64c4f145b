#include "platform/locale.h"

#include <array>
#include <windows.h>

namespace tarno2 {

std::string userLanguage() {
    std::array<char, 16> code{};
    const int length =
        GetLocaleInfoA(GetThreadLocale(), LOCALE_SISO639LANGNAME, code.data(), static_cast<int>(code.size()));
    return length == 3 ? std::string(code.data()) : std::string();
}

}  // namespace tarno2

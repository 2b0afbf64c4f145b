#include "platform/utf.h"

#include <windows.h>

namespace tarno2 {

std::string utf16ToSystem(std::u16string_view utf16) {
    const std::wstring wide(utf16.begin(), utf16.end());
    const int units = static_cast<int>(wide.size());
    const DWORD flags = GetACP() == CP_UTF8 ? 0 : WC_NO_BEST_FIT_CHARS;
    const int size = WideCharToMultiByte(CP_ACP, flags, wide.data(), units, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, flags, wide.data(), units, text.data(), size, nullptr, nullptr);
    return text;
}

}  // namespace tarno2

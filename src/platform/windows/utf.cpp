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

std::string systemToUtf8(const std::string& text) {
    const int bytes = static_cast<int>(text.size());
    const int units = MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, nullptr, 0);
    std::wstring wide(static_cast<size_t>(units), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, wide.data(), units);
    return utf16ToUtf8(std::u16string(wide.begin(), wide.end()));
}

}  // namespace tarno2

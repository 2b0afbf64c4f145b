#include "platform/utf.h"

namespace tarno2 {

std::string utf16ToSystem(std::u16string_view utf16) {
    return utf16ToUtf8(utf16);
}

std::string systemToUtf8(const std::string& text) {
    if (utf8ToUtf16(text)) {
        return text;
    }
    std::string readable;
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < 0x80U) {
            readable += c;
        } else {
            readable += "\xEF\xBF\xBD";
        }
    }
    return readable;
}

}  // namespace tarno2

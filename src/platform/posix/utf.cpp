#include "platform/utf.h"

namespace tarno2 {

std::string utf16ToSystem(std::u16string_view utf16) {
    return utf16ToUtf8(utf16);
}

}  // namespace tarno2

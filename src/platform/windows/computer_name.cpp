#include "platform/computer_name.h"

#include <array>
#include <windows.h>

#include "platform/utf.h"

namespace tarno2 {

std::string computerName() {
    std::array<wchar_t, 256> name{};
    DWORD length = static_cast<DWORD>(name.size());
    if (GetComputerNameExW(ComputerNameDnsHostname, name.data(), &length) == 0) {
        return {};
    }
    return utf16ToUtf8(std::u16string(name.begin(), name.begin() + length));
}

}  // namespace tarno2

#include "platform/computer_name.h"

#include <array>
#include <unistd.h>

#include "platform/utf.h"

namespace tarno2 {

std::string computerName() {
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? systemToUtf8(name.data()) : std::string();
}

}  // namespace tarno2

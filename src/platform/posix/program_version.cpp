#include "platform/program_version.h"

namespace tarno2 {

std::optional<std::string> executableVersion() {
    return std::nullopt;
}

}  // namespace tarno2

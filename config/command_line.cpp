#include "config/command_line.h"

namespace tarno2 {

CommandLine parseCommandLine(std::string_view argumentText) {
    if (argumentText.empty()) {
        return {};
    }
    constexpr size_t kSwitchLength = 3;
    if (argumentText.starts_with("/c ") || argumentText.starts_with("/C ")) {
        return {CommandLine::Console, std::string(argumentText.substr(kSwitchLength))};
    }
    return {argumentText == "--version" ? CommandLine::Version : CommandLine::Usage, {}};
}

}  // namespace tarno2

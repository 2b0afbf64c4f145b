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
    return {CommandLine::Usage, {}};
}

std::string joinArguments(int argc, const char* const* argv) {
    std::string text;
    for (int i = 1; i < argc; ++i) {
        if (i > 1) {
            text += ' ';
        }
        text += argv[i];
    }
    return text;
}

}  // namespace tarno2

#include "config/settings/command_line.h"

namespace tarno2 {

CommandLine parseCommandLine(std::string_view argumentText) {
    if (argumentText.empty()) {
        return {};
    }
    constexpr std::string_view kStatus = "--status ";
    if (argumentText.starts_with(kStatus)) {
        CommandLine line = parseCommandLine(argumentText.substr(kStatus.size()));
        line.mode = line.mode == CommandLine::Console ? CommandLine::Console : CommandLine::Usage;
        line.status = true;
        return line;
    }
    constexpr size_t kSwitchLength = 3;
    if (argumentText.starts_with("/c ") || argumentText.starts_with("/C ")) {
        return {CommandLine::Console, std::string(argumentText.substr(kSwitchLength))};
    }
    return {argumentText == "--version" ? CommandLine::Version : CommandLine::Usage, {}};
}

}  // namespace tarno2

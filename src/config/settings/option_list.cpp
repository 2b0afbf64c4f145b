#include "config/settings/option_list.h"

#include <algorithm>

namespace tarno2 {

std::string optionLine(std::string_view command, std::string_view name, std::string_view value, std::string_view what) {
    std::string line(command);
    for (const std::string_view field : {name, value, what}) {
        line.append("\t").append(field);
    }
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line + '\n';
}

std::string optionList(std::span<const ProgramOption> options) {
    std::string text;
    for (const ProgramOption& option : options) {
        text += optionLine("", option.name, option.value, option.what);
    }
    return text;
}

}  // namespace tarno2

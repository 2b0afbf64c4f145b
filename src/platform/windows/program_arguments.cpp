#include "platform/program_arguments.h"

#include <string_view>
#include <windows.h>

namespace tarno2 {

std::string argumentText(int /*argc*/, const char* const* /*argv*/) {
    const std::string_view line = GetCommandLineA();
    // The program's name ends at the first blank outside double quotes.
    bool quoted = false;
    size_t end = 0;
    while (end < line.size() && (quoted || (line[end] != ' ' && line[end] != '\t'))) {
        if (line[end] == '"') {
            quoted = !quoted;
        }
        ++end;
    }
    const size_t begin = line.find_first_not_of(" \t", end);
    return begin == std::string_view::npos ? std::string() : std::string(line.substr(begin));
}

}  // namespace tarno2

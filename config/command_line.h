#pragma once

#include <string>
#include <string_view>

namespace tarno2 {

/// What the program is asked to do.
struct CommandLine {
    enum Mode { Interactive, Console, Version, Usage };
    Mode mode = Interactive;
    std::string path;  ///< of the autosettings file, in console mode; as it was typed, quotes included
};

/// Nothing is interactive mode, "/c " or "/C " and a path is console mode, "--version" asks for the version; anything
/// else asks how to use the program.
[[nodiscard]] CommandLine parseCommandLine(std::string_view argumentText);

}  // namespace tarno2

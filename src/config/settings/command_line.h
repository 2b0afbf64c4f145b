#pragma once

#include <string>
#include <string_view>

namespace tarno2 {

/// What the program is asked to do.
struct CommandLine {
    enum Mode { Interactive, Console, Version, Usage };
    Mode mode = Interactive;
    std::string path;     ///< of the autosettings file, in console mode; as it was typed, quotes included
    bool status = false;  ///< the exit status tells what came of it
};

/// Nothing is interactive mode, "/c " or "/C " and a path is console mode, "--status " before it asks for an exit
/// status, "--version" for the version; anything else asks how to use the program.
[[nodiscard]] CommandLine parseCommandLine(std::string_view argumentText);

}  // namespace tarno2

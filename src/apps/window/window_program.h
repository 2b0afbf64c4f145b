#pragma once

#include <string>

#include "config/settings/command_line.h"

namespace tarno2 {

/// Whether a window can be shown: a toolkit that is given none would end the program. Before any thread is started.
[[nodiscard]] bool displayCanBeOpened();

/// The program with its window: interactive, perhaps with a recording shown, or console mode with a minimised one, or
/// the text that tells how to use it. Returns the exit status, which is 0. `program` is its name as it was called.
int runWindowProgram(std::string program, const CommandLine& line);

}  // namespace tarno2

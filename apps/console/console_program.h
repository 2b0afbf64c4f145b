#pragma once

#include <string>

#include "config/command_line.h"

namespace tarno2 {

/// Console mode as a program: reads the autosettings file at `path`, records once, ends. Everything it finds is a line
/// in AutoLog.txt of the program directory. A signal that asks the program to end stops the recording like the stop
/// button does.
void runConsoleProgram(const std::string& path);

/// All that a program does without a window: console mode, or the text that tells its version or how to use it. Returns
/// the exit status.
int runWithoutWindow(const CommandLine& line);

/// The last lines of both logs, which are closed.
void logConsoleExit();

}  // namespace tarno2

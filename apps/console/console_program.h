#pragma once

#include <string>

namespace tarno2 {

/// Console mode as a program: reads the autosettings file at `path`, records once, ends. Everything it finds is a line
/// in AutoLog.txt of the program directory. A signal that asks the program to end stops the recording like the stop
/// button does.
void runConsoleProgram(const std::string& path);

/// The last lines of both logs, which are closed.
void logConsoleExit();

}  // namespace tarno2

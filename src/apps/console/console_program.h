#pragma once

#include "config/settings/command_line.h"
#include "core/recording/run_end.h"

namespace tarno2 {

/// The exit status of a recording program: 0, or what came of the recording when the command line asks for it, which is
/// then told in a line on the standard error too.
int exitStatus(const CommandLine& line, RecordingOutcome outcome, const RecordingResult& result);

/// All that a program does without a window: console mode, or the text that tells its version or how to use it. Returns
/// the exit status.
///
/// `withWindow`: the program can show windows, where there is a display.
///
/// Console mode reads the autosettings file, records once, ends. Everything it finds is a line in AutoLog.txt of the
/// program directory. A signal that asks the program to end stops the recording like the stop button does.
int runWithoutWindow(const CommandLine& line, bool withWindow = false);

/// The last lines of both logs, which are closed.
void logConsoleExit();

}  // namespace tarno2

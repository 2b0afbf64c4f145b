#pragma once

#include <functional>

namespace tarno2 {

/// Runs a program: every `main` consists of it. Before `body`, descriptors 0 to 2 are open, so that no file of a
/// recording ever takes the place of an output, and neither a reader that went away nor a size limit of the system ends
/// the program by a signal: the write fails. What `body` throws is a line on the standard error under `name`, and the
/// exit status is `failed`. Returns the exit status. Before any thread is started.
[[nodiscard]] int runProgram(const char* name, int failed, const std::function<int()>& body);

/// The first part of it, the system's.
void prepareProcess();

}  // namespace tarno2

#pragma once

#include <cstdint>

namespace tarno2 {

/// The main window could not be made: a code that no board state has.
inline constexpr int32_t kWindowNotMade = -100;

/// The program can not go on: tells why, in the log and in a message box (in console mode only in the logs). The codes
/// are those of the board's states; another one is shown as it is. The caller ends the program. Window thread.
void exitWithCriticalError(int32_t code);

}  // namespace tarno2

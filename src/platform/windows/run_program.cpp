#include "platform/run_program.h"

namespace tarno2 {

// Handles are no small numbers that a file could take, and there are no such signals.
void prepareProcess() {}

}  // namespace tarno2

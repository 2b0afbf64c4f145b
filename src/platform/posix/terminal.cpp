#include "platform/terminal.h"

#include <unistd.h>

namespace tarno2 {

bool errorOutputIsTerminal() {
    return isatty(STDERR_FILENO) != 0;
}

}  // namespace tarno2

#include "platform/terminal.h"

#include <windows.h>

namespace tarno2 {

bool errorOutputIsTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

}  // namespace tarno2

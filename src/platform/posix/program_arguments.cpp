#include "platform/program_arguments.h"

namespace tarno2 {

std::string argumentText(int argc, const char* const* argv) {
    std::string text;
    for (int i = 1; i < argc; ++i) {
        if (i > 1) {
            text += ' ';
        }
        text += argv[i];
    }
    return text;
}

}  // namespace tarno2

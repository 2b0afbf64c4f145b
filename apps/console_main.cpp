#include <cstdio>

#include "apps/console/console_program.h"
#include "config/command_line.h"
#include "config/language_choice.h"
#include "language/language_table.h"
#include "platform/program_arguments.h"

// Without a window a command line that asks for it gets the same text as one that is wrong.
int main(int argc, char** argv) {
    using namespace tarno2;
    selectLanguage(languageFromLocale());
    const CommandLine line = parseCommandLine(argumentText(argc, argv));
    if (line.mode == CommandLine::Mode::Console) {
        runConsoleProgram(line.path);
        return 0;
    }
    std::fprintf(stderr, "%s\n", languageTable().loadUtf8(static_cast<int32_t>(TextId::Usage)).c_str());
    return 0;
}

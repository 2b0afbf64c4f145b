#include <cstdio>

#include "apps/console/console_program.h"
#include "apps/window/window_program.h"
#include "config/settings/command_line.h"
#include "config/settings/language_choice.h"
#include "language/language_table.h"
#include "platform/program_arguments.h"
#include "platform/run_program.h"

// Console mode has a window, minimised, where a display is available. A missing one is no error: a program that starts
// unattended may meet a screen, a stale one, or none.
int main(int argc, char** argv) {
    using namespace tarno2;
    return runProgram("Tarno2", 0, [&] {
        selectLanguage(languageFromLocale());
        const CommandLine line = parseCommandLine(argumentText(argc, argv));
        const bool answersOnly = line.mode == CommandLine::Version || line.mode == CommandLine::Options;
        if (!answersOnly && displayCanBeOpened()) {
            return runWindowProgram(argv[0], line);
        }
        if (line.mode == CommandLine::Interactive || line.mode == CommandLine::Open) {
            std::fprintf(stderr, "%s\n", languageTable().loadUtf8(static_cast<int32_t>(TextId::NoDisplay)).c_str());
        }
        return runWithoutWindow(line, true);
    });
}

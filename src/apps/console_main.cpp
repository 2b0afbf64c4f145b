#include "apps/console/console_program.h"
#include "config/settings/command_line.h"
#include "config/settings/language_choice.h"
#include "platform/program_arguments.h"
#include "platform/run_program.h"

int main(int argc, char** argv) {
    using namespace tarno2;
    return runProgram("tarno2-console", 0, [&] {
        selectLanguage(languageFromLocale());
        return runWithoutWindow(parseCommandLine(argumentText(argc, argv)));
    });
}

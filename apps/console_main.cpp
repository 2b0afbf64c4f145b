#include "apps/console/console_program.h"
#include "config/command_line.h"
#include "config/language_choice.h"
#include "platform/program_arguments.h"

int main(int argc, char** argv) {
    using namespace tarno2;
    selectLanguage(languageFromLocale());
    return runWithoutWindow(parseCommandLine(argumentText(argc, argv)));
}

#include "config/settings/command_line.h"

#include <gtest/gtest.h>

namespace tarno2::test {
namespace {

TEST(CommandLine, ModeAndPath) {
    struct {
        const char* text;
        CommandLine::Mode mode;
        const char* path;
        bool status = false;
    } const cases[] = {
        {"", CommandLine::Interactive, ""},
        {"/c auto.cfg", CommandLine::Console, "auto.cfg"},
        {"/C auto.cfg", CommandLine::Console, "auto.cfg"},
        {"/c  my file.cfg ", CommandLine::Console, " my file.cfg "},
        {"/c \"auto.cfg\"", CommandLine::Console, "\"auto.cfg\""},
        {"/c ", CommandLine::Console, ""},
        {"/c", CommandLine::Usage, ""},
        {"/cauto.cfg", CommandLine::Usage, ""},
        {" /c auto.cfg", CommandLine::Usage, ""},
        {"/?", CommandLine::Usage, ""},
        {"--version", CommandLine::Version, ""},
        {"--version ", CommandLine::Usage, ""},
        {"auto.cfg", CommandLine::Usage, ""},
        {"--status /c auto.cfg", CommandLine::Console, "auto.cfg", true},
        {"--status", CommandLine::Usage, ""},
        {"--status auto.cfg", CommandLine::Usage, "", true},
        {"--status ", CommandLine::Usage, "", true},
        {"--open run.dat", CommandLine::Open, "run.dat"},
        {"--open my run.dat", CommandLine::Open, "my run.dat"},
        {"--open \"C:\\my run.dat\"", CommandLine::Open, "C:\\my run.dat"},
        {"--open", CommandLine::Interactive, ""},
        {"--status --open run.dat", CommandLine::Usage, "run.dat", true},
        {"run.dat", CommandLine::Usage, ""},
        {"--list-options", CommandLine::Options, ""},
        {"/c --status auto.cfg", CommandLine::Console, "--status auto.cfg"},
    };
    for (const auto& c : cases) {
        const CommandLine line = parseCommandLine(c.text);
        EXPECT_EQ(line.mode, c.mode) << c.text;
        EXPECT_EQ(line.path, c.path) << c.text;
        EXPECT_EQ(line.status, c.status) << c.text;
    }
}

}  // namespace
}  // namespace tarno2::test

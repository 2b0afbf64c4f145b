#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "platform/paths.h"
#include "tests/support/temporary_folder.h"

namespace tarno2 {
namespace {

using test::readFile;
using test::ScopedEnvironment;
using test::TemporaryFolder;

// Runs one of the built programs; its output goes to a file. Returns the exit status.
int runProgram(const std::string& name, const std::string& arguments, const std::string& output) {
    const std::string command = joinPath(TARNO2_BIN, name) + " " + arguments + " > " + output + " 2>&1";
    return std::system(command.c_str());
}

TEST(Programs, WrongCommandLinesSayHowToUseThem) {
    const TemporaryFolder folder;
    const ScopedEnvironment home("TARNO2_HOME", folder.path());
    for (const char* arguments : {"", "/?", "/cfile", "-c file"}) {
        EXPECT_EQ(runProgram("tarno2-console", arguments, folder.file("out.txt")), 0) << arguments;
        EXPECT_NE(readFile(folder.file("out.txt")).find("Usage program: "), std::string::npos) << arguments;
    }
}

}  // namespace
}  // namespace tarno2

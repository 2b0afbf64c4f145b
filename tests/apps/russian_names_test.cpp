// Folders and files with Russian names: settings, logs, recordings, descriptions and texts made of them.

#include <gmock/gmock.h>

#include "platform/codepage1251.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "platform/utf.h"
#include "tests/apps/recording_rig.h"

namespace tarno2::test {
namespace {

using testing::HasSubstr;

TEST(RussianNames, LeadToTheSameFilesEverywhere) {
    const std::string name = utf16ToSystem(u"Мои записи");
    if (!isPossiblePath(name)) {
        GTEST_SKIP() << "the code page of this process has no Russian letters; another run has them";
    }
    const RecordingRig rig;
    const std::string home = rig.file(name);
    ASSERT_TRUE(createDirectory(home).ok());
    const std::string data = joinPath(joinPath(home, utf16ToSystem(u"Насос № 2")), utf16ToSystem(u"давление.dat"));
    const std::string settings = joinPath(home, utf16ToSystem(u"задание.txt"));
    ASSERT_TRUE(
        replaceWholeFile(settings,
                         "DebugMode = 1\r\nDriverName = \"Simulator\"\r\nBaseNumber = 2\r\nFileName = " + quoted(data) +
                             "\r\nChannelCount = 2\r\nChannelsNumber = 0, 1\r\nFrequency = 1000000\r\n"
                             "MeasureFileMode = 2\r\nSizeNeedLow = 4000\r\n")
            .ok());
    const ScopedEnvironment simulator("TARNO2_SIMULATOR", "RealTime=0;Signal=Counter");
    const auto run = [&](const char* program, const std::vector<std::string>& arguments) {
        const ScopedEnvironment own("TARNO2_HOME", home);
        ChildProcess process(builtFile(program), arguments, rig.file("output.txt"));
        EXPECT_EQ(process.waitForEnd(kGuard), 0) << program << readFile(rig.file("output.txt"));
    };
    for (const char* program : {"tarno2-console", "Tarno2"}) {
        run(program, {"/c", settings});
        const std::string log = readFile(joinPath(home, "AutoLog.txt"));
        EXPECT_EQ(checkRecording({data}, {}), 2000U) << program << log;
        const std::string line = "Save to file \"" + systemTextToCp1251(data) + "\"\r\n";
        EXPECT_THAT(log, HasSubstr(line)) << program;
        EXPECT_THAT(readFile(joinPath(home, "AutoLog.dbg")), HasSubstr(line)) << program;
    }
    const std::string earlier = joinPath(parentFolder(data), utf16ToSystem(u"давление_old1.dat"));
    EXPECT_EQ(checkRecording({earlier}, {}), 2000U) << "moved aside by the second run";

    const std::string text = joinPath(home, utf16ToSystem(u"давление.csv"));
    const std::string quote = kPathSeparator == '\\' ? "\"" : "";  // arguments are typed there, and given here
    run("tarno2-export", {quote + data + quote, "-o", quote + text + quote});
    EXPECT_TRUE(fileExists(text));
}

TEST(RussianNames, AreRefusedWhereTheCodePageLacksThem) {
    const RecordingRig rig;
    Wish wish;
    wish.bytes = 4000;
    wish.fileName = rig.file(utf16ToSystem(u"\u0561\u0562.dat"));  // Armenian, which code page 1251 lacks
    const bool possible = isPossiblePath(wish.fileName);
    rig.record(wish);
    EXPECT_EQ(fileExists(wish.fileName), possible);
    EXPECT_NE(rig.autoLog().find("\r\n" + systemTextToCp1251(wish.fileName) + "\r\n") == std::string::npos, !possible)
        << rig.autoLog();
}

}  // namespace
}  // namespace tarno2::test

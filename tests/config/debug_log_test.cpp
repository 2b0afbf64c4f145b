#include "config/logs/debug_log.h"

#include <array>
#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "config/logs/program_version.h"
#include "platform/c_locale.h"
#include "platform/file.h"
#include "tests/config/masked.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

using testing::EndsWith;
using testing::StartsWith;

const std::string kStamp = "##:##:## ##.##.#### line = ";

TEST(DebugLog, LinesFollowThoseOfEarlierRuns) {
    const TemporaryFolder folder;
    for (int run = 0; run < 2; ++run) {
        DebugLog log;
        log.open(folder.file("Tarno2.cfg"), 1);
        ASSERT_TRUE(log.isOpen());
        log.line = 82;
        log.log("value = %f", 0.5);
        log.log("*** bare %d", 7);
        log.close();
        log.log("not written");
    }
    std::vector<std::string> lines;
    std::istringstream contents(readFile(folder.file("Tarno2.dbg")));
    for (std::string line; std::getline(contents, line);) {
        lines.push_back(line);
    }
    ASSERT_EQ(lines.size(), 10U);
    for (size_t run = 0; run < 10; run += 5) {
        EXPECT_EQ(lines[run], std::string(35, '*') + "\r");
        EXPECT_THAT(masked(lines[run + 1]), StartsWith(kStamp));
        EXPECT_THAT(lines[run + 1], EndsWith(std::string(" --- Debug start Tarno2 version = ") + versionText() + "\r"));
        EXPECT_EQ(masked(lines[run + 2]), kStamp + "## --- value = #.######\r");
        EXPECT_THAT(lines[run + 2], EndsWith(" line = 82 --- value = 0.500000\r"));
        EXPECT_EQ(lines[run + 3], "*** bare 7\r");
        EXPECT_THAT(lines[run + 4], EndsWith(" --- Debug stop...\r"));
    }
}

TEST(DebugLog, StaysSilentWhenOffOrTaken) {
    const TemporaryFolder folder;
    DebugLog log;
    log.open(folder.file("off.cfg"), 0);
    log.log("nothing");
    EXPECT_FALSE(fileExists(folder.file("off.dbg")));

    log.open("ab", 1);
    EXPECT_FALSE(log.isOpen());

    File other;
    ASSERT_TRUE(other.open(folder.file("taken.dbg"), FileMode::CreateNew, FileAccess::Write, FileShare::None).ok());
    log.open(folder.file("taken.cfg"), 1);
    log.log("nothing");
    log.close();
    other.close();
    EXPECT_EQ(readFile(folder.file("taken.dbg")), "");
}

TEST(DebugLog, LongMessagesAreCut) {
    const TemporaryFolder folder;
    DebugLog log;
    log.open(folder.file("long.cfg"), 1);
    log.log("*%s", std::string(100000, 'x').c_str());
    log.close();
    EXPECT_THAT(readFile(folder.file("long.dbg")), testing::HasSubstr("\r\n*" + std::string(2998, 'x') + "\r\n"));
}

TEST(DebugLog, ThreadsNeverMixTheirLines) {
    const TemporaryFolder folder;
    DebugLog log;
    log.open(folder.file("two.cfg"), 1);
    constexpr int kLines = 200;
    constexpr std::array kTexts = {"this thread", "a longer line of the other thread"};
    const auto writer = [&log](const char* text) {
        for (int i = 0; i < kLines; ++i) {
            log.line = i;
            log.log("%s %d end", text, i);
        }
    };
    std::thread other(writer, kTexts[1]);
    writer(kTexts[0]);
    other.join();
    log.close();

    std::ifstream in(folder.file("two.dbg"), std::ios::binary);
    std::map<std::string, int> counts;
    for (std::string line; std::getline(in, line);) {
        EXPECT_THAT(line, EndsWith("\r"));
        const bool stamped = masked(line).starts_with(kStamp);
        const std::string message = stamped ? line.substr(line.find(" --- ") + 5) : line;
        for (const char* writerText : kTexts) {
            int& next = counts[writerText];
            next += message == formatText("%s %d end\r", writerText, next) ? 1 : 0;
        }
        ++counts["all"];
    }
    for (const char* writerText : kTexts) {
        EXPECT_EQ(counts[writerText], kLines);
    }
    EXPECT_EQ(counts["all"], 2 * kLines + 3);
}

}  // namespace
}  // namespace tarno2::test

#include "records/checksum_list.h"

#include <gtest/gtest.h>

namespace tarno2 {
namespace {

const std::string kDigits = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

TEST(ChecksumList, IsReadBackAsItWasWritten) {
    struct Case {
        const char* file;
        std::string line;
    };
    const std::vector<Case> cases = {{"run.dat", kDigits + "  run.dat\n"},
                                     {"two words.dat", kDigits + "  two words.dat\n"},
                                     {"line\nend.dat", '\\' + kDigits + "  line\\nend.dat\n"},
                                     {"a\rb.dat", '\\' + kDigits + "  a\\rb.dat\n"},
                                     {"back\\slash.dat", '\\' + kDigits + "  back\\\\slash.dat\n"}};
    std::vector<FileChecksum> files;
    std::string text;
    for (const Case& c : cases) {
        files.push_back({c.file, kDigits});
        text += c.line;
    }
    EXPECT_EQ(checksumListText(files), text);
    EXPECT_EQ(readChecksumList(text), files);
    EXPECT_EQ(readChecksumList("BA" + kDigits.substr(2) + " *run.dat\r\n"),
              (std::vector<FileChecksum>{{"run.dat", kDigits}}));
}

TEST(ChecksumList, NothingElseIsTakenForOne) {
    for (const std::string& text :
         {std::string(), std::string("\n"), kDigits, kDigits + "  ", kDigits + " run.dat\n",
          kDigits.substr(1) + "  run.dat\n", 'g' + kDigits.substr(1) + "  run.dat\n", '\\' + kDigits + "  run\\x.dat\n",
          '\\' + kDigits + "  run\\", kDigits + "  run.dat\nsamples\n"}) {
        EXPECT_FALSE(readChecksumList(text)) << text;
    }
}

}  // namespace
}  // namespace tarno2

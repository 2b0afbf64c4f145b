// Recordings that are checked, as they were made and with one thing wrong.

#include <functional>
#include <gmock/gmock.h>

#include "platform/file.h"
#include "platform/paths.h"
#include "tests/apps/recording_rig.h"

namespace tarno2::test {
namespace {

using testing::HasSubstr;

/// Puts `to` for the first `from` in a file.
void change(const RecordingRig& rig, const std::string& name, const std::string& from, const std::string& to) {
    std::string text = readFile(rig.file(name));
    const size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << name << " has no " << from;
    text.replace(at, from.size(), to);
    rig.folder().write(name, text);
}

void recordPieces(const RecordingRig& rig) {
    Wish wish;
    wish.cut = 1;
    wish.bytes = 2 * kMebibyte + 4000;
    rig.record(wish, "RealTime=0;Signal=Counter;MarkEvery=100000");
}

TEST(Verify, FindsTheOneThingThatIsWrong) {
    struct Case {
        const char* what;
        std::function<void(const RecordingRig&)> spoil;
        int status;
        const char* said;
    };
    const auto remove = [](const char* name) {
        return [name](const RecordingRig& rig) { ASSERT_TRUE(removeFile(rig.file(name)).ok()); };
    };
    const auto put = [](const char* name, const char* from, const char* to) {
        return [=](const RecordingRig& rig) { change(rig, name, from, to); };
    };
    const std::vector<Case> cases = {
        {"nothing", [](const RecordingRig&) {}, 0, "run_2.dat: checksum"},
        {"nothing in the marks", [](const RecordingRig&) {}, 0, "run.marks.csv: checksum"},
        {"no marks", remove("run.marks.csv"), 1, "run.marks.csv is missing"},
        {"a mark less", put("run.marks.csv", "\r\n3,", "\r\n9,"), 1, "mark 3 is missing"},
        {"another word", put("run.marks.csv", "Mark 2", "Mark X"), 1,
         "run.marks.csv has another checksum than run.sha256 tells"},
        {"marks that are none", put("run.marks.csv", "driver", "nobody"), 1, "line 2 is no mark"},
        {"another count", put("run.json", "\"count\": ", "\"count\": 9"), 1, " marks, the passport tells of 9"},
        {"no passport", remove("run.json"), 0, "there is no passport"},
        {"no list", remove("run.sha256"), 0, "run_1.dat: checksum"},
        {"a list that lies", put("run.sha256", "  run_1.dat", "  run_3.dat"), 1, "run_3.dat is missing"},
        {"a foreign list", [](const RecordingRig& rig) { rig.folder().write("run.sha256", "hello\n"); }, 1,
         "it is no list of checksums"},
        {"another sample",
         [](const RecordingRig& rig) {
             std::string data = readFile(rig.file("run_1.dat"));
             data[1000] = static_cast<char>(data[1000] ^ 1);
             rig.folder().write("run_1.dat", data);
         },
         1, "run_1.dat has another checksum than run.json tells"},
        {"a short piece",
         [](const RecordingRig& rig) {
             rig.folder().write("run_2.dat", readFile(rig.file("run_2.dat")).substr(0, 3999));
         },
         1, "run_2.dat has 3999 bytes, the passport tells of 4000"},
        {"a gap", remove("run_1.dat"), 1, "run_1.dat is missing: the recording has a gap there"},
        {"no description", remove("run_1.txt"), 1, "run_1.txt: "},
        {"another description", put("run_2.txt", "DataCountPerChannel", "DataKountPerChannel"), 1, "run_2.txt: "},
        {"a count that lies", put("run.json", "\"frames\": 525", "\"frames\": 625"), 1, "run.json: frames is 625"},
        {"no passport at all", put("run.json", "Tarno2 passport", "a poem"), 1, "it is no passport of this version"},
        {"a range that lies", put("run.json", "\"lower\": -", "\"lower\": 1"), 1, "its range has no width"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const RecordingRig rig;
        recordPieces(rig);
        c.spoil(rig);
        const std::string said = rig.run("tarno2-verify", {rig.file("run.dat")}, c.status);
        EXPECT_THAT(said, HasSubstr(c.said));
        EXPECT_EQ(said.find("WRONG") != std::string::npos, c.status == 1) << said;
        EXPECT_EQ(rig.run("tarno2-verify", {"--quiet", rig.path()}, c.status).empty(), c.status == 0);
    }
}

TEST(Verify, OnlyASizeLimitEndsWithinAFrame) {
    const RecordingRig rig;
    Wish wish;
    wish.bytes = 4001;
    rig.record(wish, "RealTime=0;Signal=Counter");
    ASSERT_EQ(readFile(rig.file("run.dat")).size(), 4001U);
    EXPECT_THAT(readFile(rig.file("run.txt")), HasSubstr("\r\nDataCountPerChannel = 1000\r\n"));
    EXPECT_THAT(rig.run("tarno2-verify", {rig.file("run.dat")}), HasSubstr("run.dat ends within a frame"));
    change(rig, "run.json", "\"reason\": \"size\"", "\"reason\": \"user\"");
    EXPECT_THAT(rig.run("tarno2-verify", {rig.file("run.dat")}, 1), HasSubstr("run.dat ends with a torn frame"));
}

TEST(Verify, KnowsRecordingsByAnyOfTheirFiles) {
    const RecordingRig rig;
    recordPieces(rig);
    recordPieces(rig);
    for (const char* name : {"run_2.dat", "run_1.txt", "run.json", "run.sha256", "run.txt"}) {
        EXPECT_THAT(rig.run("tarno2-verify", {rig.file(name)}), HasSubstr("run.dat: run_2.dat: checksum")) << name;
    }
    const std::string all = rig.run("tarno2-verify", {rig.path()});
    EXPECT_THAT(all, HasSubstr("run_old1.dat: it was recorded as \"run.dat\""));
    EXPECT_THAT(all, HasSubstr("run_old1.dat: run_old1_2.dat: checksum"));
    EXPECT_THAT(all, HasSubstr("run.dat: run_2.dat: checksum"));
    EXPECT_THAT(rig.run("tarno2-verify", {rig.file("none.dat")}, 2), HasSubstr("there is no such file or folder"));
    EXPECT_THAT(rig.run("tarno2-verify", {}, 2), HasSubstr("required"));
}

TEST(Verify, ARecordingWithoutChecksums) {
    const RecordingRig rig;
    Wish wish;
    wish.bytes = 4000;
    wish.more = "Checksums = 0\r\n";
    rig.record(wish);
    EXPECT_FALSE(rig.exists("run.sha256"));
    EXPECT_THAT(rig.run("tarno2-verify", {rig.file("run.dat")}), HasSubstr("there are no checksums"));
}

}  // namespace
}  // namespace tarno2::test

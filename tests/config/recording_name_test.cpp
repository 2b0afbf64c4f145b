#include "config/files/recording_name.h"

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "records/file_extensions.h"

namespace tarno2::test {
namespace {

const bool kBackslashes = kPathSeparator == '\\';

TEST(RecordingName, KnowsItsFiles) {
    const struct {
        const char* typed;
        const char* data;
        const char* secondPiece;
        const char* description;
        const char* old;
    } cases[] = {
        {"run", "run.dat", "run_2.dat", "run_2.txt", "run_old7.dat"},
        {"run.bin", "run.bin", "run_2.bin", "run_2.txt", "run_old7.bin"},
        {"run.", "run.dat", "run_2.dat", "run_2.txt", "run_old7.dat"},
        {"a.b/run", "a.b/run.dat", "a.b/run_2.dat", "a.b/run_2.txt", "a.b/run_old7.dat"},
        {"a.b/.run", "a.b/.run.dat", "a.b/.run_2.dat", "a.b/.run_2.txt", "a.b/.run_old7.dat"},
        {"a/run.1.dat", "a/run.1.dat", "a/run.1_2.dat", "a/run.1_2.txt", "a/run.1_old7.dat"},
        {"run.Data456789012345", "run.Data456789012345", "run_2.Data456789012345", "run_2.txt",
         "run_old7.Data456789012345"},
        {"run.\xD0\xB4\xD0\xB0\xD1\x82", "run.\xD0\xB4\xD0\xB0\xD1\x82", "run_2.\xD0\xB4\xD0\xB0\xD1\x82", "run_2.txt",
         "run_old7.\xD0\xB4\xD0\xB0\xD1\x82"},
        {"motor 12.5 V", "motor 12.5 V.dat", "motor 12.5 V_2.dat", "motor 12.5 V_2.txt", "motor 12.5 V_old7.dat"},
        {"x.0123456789abcdefg", "x.0123456789abcdefg.dat", "x.0123456789abcdefg_2.dat", "x.0123456789abcdefg_2.txt",
         "x.0123456789abcdefg_old7.dat"},
        {"run.txt", "run.txt", "run_2.txt", "run_2.txt", "run_old7.txt"},  // to be refused, not to become another name
    };
    for (const auto& c : cases) {
        const RecordingName name = RecordingName::typed(c.typed);
        EXPECT_EQ(name.data(), c.data);
        EXPECT_EQ(name.base() + name.extension(), c.data);
        EXPECT_EQ(name.piece(0), c.data);
        EXPECT_EQ(name.piece(2), c.secondPiece);
        EXPECT_EQ(name.description(2), c.description);
        EXPECT_EQ(name.old(7).data(), c.old);
        EXPECT_EQ(name.losses(), name.base() + ".log");
        EXPECT_EQ(name.description(), name.base() + ".txt");
        EXPECT_EQ(name.journal(), name.base() + ".tarno2-journal");
        EXPECT_EQ(name.earlierJournal(), name.base() + ".journal");
        EXPECT_EQ(RecordingName::ofJournal(name.journal(), name.extension()).piece(2), c.secondPiece);
        EXPECT_EQ(name.old(7).old(3).base(), name.base() + "_old7_old3");
    }
    EXPECT_EQ(RecordingName::typed("a/").data(), "a/");
    EXPECT_EQ(RecordingName::typed("a.b\\run").data(), "a.b\\run.dat");
    EXPECT_EQ(RecordingName::typed("a.b\\c d").folder(), kBackslashes ? "a.b" : "");
    for (const char* other : {"", ".", "dat", ".txt", ".LOG", ".journal", ".Tarno2-Journal", ".a/b", ".a b", ".a-b"}) {
        EXPECT_FALSE(isDataExtension(other)) << other;
    }
}

TEST(RecordingName, WhichPieceAFileBelongsTo) {
    constexpr int64_t kNone = -1;
    const struct {
        const char* name;
        const char* file;
        int64_t piece;
    } cases[] = {
        {"run.dat", "run.dat", 0},
        {"run.dat", "run.txt", 0},
        {"run.dat", "run", 0},
        {"run.dat", "RUN.DAT", 0},
        {"run.dat", "run_1.dat", 1},
        {"run.dat", "Run_4294967295.txt", 4294967295},
        {"run.dat", "run_4294967296.txt", kNone},
        {"run.dat", "run_0.dat", kNone},
        {"run.dat", "run_01.dat", kNone},
        {"run.dat", "run_+1.dat", kNone},
        {"run.dat", "run_1_2.dat", kNone},
        {"run.dat", "run_old1.dat", kNone},
        {"run.dat", "run_.dat", kNone},
        {"run.dat", "runner.dat", kNone},
        {"run.dat", "run.1.dat", kNone},
        {"run.1.dat", "run.1_3.dat", 3},
        {"run_1.dat", "run_1_3.dat", 3},
        {"a/run.dat", "run_3.dat", 3},
        {"a\\run.dat", "run_3.dat", kBackslashes ? 3 : kNone},
    };
    for (const auto& c : cases) {
        const auto piece = RecordingName(c.name).pieceOf(c.file);
        EXPECT_EQ(piece ? int64_t{*piece} : kNone, c.piece) << c.name << ' ' << c.file;
    }
}

TEST(RecordingName, WhichMayShareFiles) {
    const struct {
        const char* name;
        const char* other;
        bool share;
        const char* whole;  // of `other`
    } cases[] = {
        {"run.dat", "run.dat", true, ""},
        {"run.dat", "run.bin", true, ""},
        {"run.dat", "run_2.dat", true, "run"},
        {"run.dat", "RUN_2.bin", true, "RUN"},
        {"run.dat", "run_02.dat", false, ""},
        {"run.dat", "run_2_3.dat", false, "run_2"},
        {"run_2.dat", "run_2_3.dat", true, "run_2"},
        {"run_2.dat", "run_3.dat", false, "run"},
        {"run.dat", "run_old1.dat", false, ""},
        {"run.dat", "runner.dat", false, ""},
        {"run.1.dat", "run.2.dat", false, ""},
        {"run.1.dat", "run.1_2.dat", true, "run.1"},
        {"a/run.dat", "a/run_2.dat", true, "a/run"},
        {"run.dat", "_2.dat", false, ""},
    };
    for (const auto& c : cases) {
        const RecordingName name(c.name);
        const RecordingName other(c.other);
        EXPECT_EQ(name.mayShareFilesWith(other), c.share) << c.name << ' ' << c.other;
        EXPECT_EQ(other.mayShareFilesWith(name), c.share) << c.name << ' ' << c.other;
        const auto whole = other.whole();
        EXPECT_EQ(whole ? whole->base() : "", c.whole) << c.other;
    }
}

TEST(RecordingName, OnlyTheWholePatternIsAGeneratedOne) {
    LocalTime day;
    day.year = 2026;
    day.month = 3;
    day.day = 14;
    const RecordingName generated = RecordingName::generated("a", day, 12);
    EXPECT_EQ(fileNameOf(generated.data()), "file_2026_3_14_n12.dat");
    EXPECT_EQ(generated.folder(), "a");
    EXPECT_TRUE(generated.isGenerated());
    for (const char* chosen :
         {"file_motor.dat", "file_2026_3_14_n12.bin", "file_2026_3_14_n12_1.dat", "file_2026_03_14_n12.dat",
          "file_2026_3_14_n.dat", "file_2026_13_14_n1.dat", "file_2026_3_0_n1.dat", "my file_2026_3_14_n12.dat",
          "file_2026_3_14.dat", "file_2026_3_14_n12", "file_2026_3_14_n12_old1.dat", "file_2026_3_14_nx.dat", "file_",
          ""}) {
        EXPECT_FALSE(RecordingName(chosen).isGenerated()) << chosen;
    }
    EXPECT_EQ(RecordingName("b\\file_2026_3_14_n0.dat").isGenerated(), kBackslashes);
}

}  // namespace
}  // namespace tarno2::test

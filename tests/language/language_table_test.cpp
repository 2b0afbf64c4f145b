#include "language/language_table.h"

#include <gtest/gtest.h>

namespace tarno2 {
namespace {

TEST(LanguageTable, GivesBothLanguagesById) {
    LanguageTable table;
    EXPECT_EQ(table.load(1), "") << "nothing is chosen yet";
    for (int round = 0; round < 2; ++round) {
        table.select(kLanguageEnglish);
        EXPECT_EQ(table.load(174), "FIFO overflow");
        EXPECT_EQ(table.load(302), "Mistake in the task of parameters of synchronization");
        table.select(kLanguageRussian);
        table.select(kLanguageRussian);
        EXPECT_EQ(table.load(205), " \xC1") << "code page 1251";
        EXPECT_EQ(table.loadUtf8(205), " Б");
        EXPECT_EQ(table.load(1), "Tarno2");
    }
    EXPECT_EQ(table.selected(), kLanguageRussian);
}

TEST(LanguageTable, GivesEmptyTextsForWhatItDoesNotHold) {
    LanguageTable table;
    table.select(kLanguageEnglish);
    for (const int32_t id : {0, -1, -16, -174, INT32_MIN, 496, 512, INT32_MAX}) {
        EXPECT_EQ(table.load(id), "") << id;
        EXPECT_EQ(table.loadUtf8(id), "") << id;
    }
    table.select(1031);
    EXPECT_EQ(table.load(174), "");
    table.select(kLanguageEnglish);
    EXPECT_EQ(table.load(174), "FIFO overflow");
}

// Every text that the table shows reaches a single-byte window or log whole.
TEST(LanguageTable, ConvertsEveryTextToTheCodePage) {
    LanguageTable table;
    for (const uint16_t language : {kLanguageEnglish, kLanguageRussian}) {
        table.select(language);
        int texts = 0;
        for (int32_t id = 1; id <= 495; ++id) {
            const bool there = !table.loadUtf8(id).empty();
            EXPECT_EQ(there, !table.load(id).empty()) << id;
            texts += there ? 1 : 0;
        }
        EXPECT_GT(texts, 50);
    }
}

TEST(LanguageTable, NamesFollowTheProgramsLanguage) {
    const uint16_t before = languageTable().selected();
    languageTable().select(kLanguageEnglish);
    EXPECT_EQ(text(TextId::PacketModeOneChannel), "Enabled packet mode, but channels count = 1.");
    languageTable().select(0);
    EXPECT_EQ(text(TextId::PacketModeOneChannel), "");
    languageTable().select(before);
}

}  // namespace
}  // namespace tarno2

#include "language/language_table.h"

#include <cctype>
#include <gtest/gtest.h>
#include <set>
#include <vector>

#include "platform/codepage1251.h"

namespace tarno2 {
namespace {

constexpr int32_t kHighestId = 495;

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
    for (int32_t id = 0; id <= kHighestId; ++id) {
        EXPECT_EQ(table.load(id), "") << id;
    }
    table.select(kLanguageEnglish);
    EXPECT_EQ(table.load(174), "FIFO overflow");
}

// Every text reaches a single-byte window or log whole, and no block of 16 is missing: a reader that finds texts by the
// count of blocks would take the wrong one from there on.
TEST(LanguageTable, HoldsAllTextsInBothLanguages) {
    LanguageTable table;
    for (const uint16_t language : {kLanguageEnglish, kLanguageRussian}) {
        table.select(language);
        int texts = 0;
        std::set<int32_t> blocks;
        for (int32_t id = 0; id <= kHighestId; ++id) {
            const std::string utf8 = table.loadUtf8(id);
            EXPECT_EQ(utf8ToCp1251(utf8), table.load(id)) << id;
            EXPECT_EQ(systemTextToCp1251(table.load(id)), table.load(id)) << id << ": is none of the system's words";
            if (!utf8.empty()) {
                ++texts;
                blocks.insert(id / 16);
            }
        }
        EXPECT_EQ(texts, 491);
        EXPECT_EQ(blocks.size(), 31U);
    }
}

// Ids that other programs and old settings files know.
TEST(LanguageTable, KeepsFixedTextsAtTheirIds) {
    const std::pair<int32_t, const char*> fixed[] = {
        {4, "Select language"},   {293, "By leading edge"},
        {294, "By falling edge"}, {409, "Digital line settings"},
        {428, "Save as text..."}, {431, "Absent"},
        {434, "HH:MM:SS:ms"},     {446, "Volts"},
        {447, "ADC code"},        {450, "Tab"},
    };
    LanguageTable table;
    table.select(kLanguageEnglish);
    for (const auto& [id, english] : fixed) {
        EXPECT_EQ(table.load(id), english) << id;
    }
}

/// The letter that a menu text or a caption underlines, in lower case; 0 when it has none.
char32_t mnemonic(const std::string& text) {
    const size_t at = text.find('&');
    if (at == std::string::npos || at + 1 == text.size()) {
        return 0;
    }
    const auto letter = static_cast<unsigned char>(text[at + 1]);
    return letter >= 0xC0 && letter < 0xE0 ? letter + 0x20U : static_cast<char32_t>(std::tolower(letter));
}

TEST(LanguageTable, UnderlinesEachLetterOnceInAMenu) {
    using enum TextId;
    const std::vector<std::vector<TextId>> menus = {
        {MenuFile, MenuRecording, MenuView, MenuSettings, MenuHelp, CommandMonitor, CommandStart, CommandStop},
        {MenuOpenRecording, MenuChooseFile, MenuSaveAsText, MenuRecover, MenuExit},
        {CommandMonitor, CommandStart, CommandStop, CommandCycleStart, CommandMark, MenuSynchronisation},
        {MenuShowSignal, MenuDetachSignal, MenuShowPanels, MenuShowMessages, MenuExtendedChannels, MenuChannelTable},
        {MenuSetups, MenuAutoSettings},
        {MenuManual, MenuAbout},
        {KeepAndStart, GoBack},
        {StartAnyway, GoBack},
        {StopAndClose, GoBack},
        {ExportSave, ExportCancel},
        {CopyMessages, ButtonClose},
    };
    LanguageTable table;
    for (const uint16_t language : {kLanguageEnglish, kLanguageRussian}) {
        table.select(language);
        for (const auto& menu : menus) {
            std::set<char32_t> letters;
            for (const TextId id : menu) {
                const std::string text = table.load(static_cast<int32_t>(id));
                EXPECT_NE(mnemonic(text), 0U) << text;
                EXPECT_TRUE(letters.insert(mnemonic(text)).second) << cp1251ToUtf8(text);
            }
        }
    }
}

}  // namespace
}  // namespace tarno2

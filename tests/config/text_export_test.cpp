#include "config/settings/text_export.h"

#include <gtest/gtest.h>

#include "language/language_table.h"

namespace tarno2 {
namespace {

TEST(TextExport, PutsRightWhatIsOutOfRange) {
    TextExportSettings wild{4, 2, 10, 99, 7, -1, ';', 200, -5};
    const TextExportSettings kept = withinLimits(wild);
    EXPECT_EQ(kept.firstColumnMode, 0);
    EXPECT_EQ(kept.dataColumnMode, 0);
    EXPECT_EQ(kept.timePrecision, 9);
    EXPECT_EQ(kept.voltagePrecision, 9);
    EXPECT_EQ(kept.fractionalDivider, 0);
    EXPECT_EQ(kept.columnDividerMode, 0);
    EXPECT_EQ(kept.columnDividerCount, 99);
    EXPECT_EQ(kept.maxLineCount, 0);
    wild.columnDividerCount = 0;
    EXPECT_EQ(exportFormat(wild).divider, "\t");
}

TEST(TextExport, TurnsSettingsIntoAFormat) {
    const TextExportSettings settings{3, 1, 2, 4, 1, 1, 0xF9, 2, 250};
    const ExportFormat format = exportFormat(settings);
    EXPECT_EQ(format.firstColumn, FirstColumn::Clock);
    EXPECT_TRUE(format.volts);
    EXPECT_EQ(format.timePrecision, 2);
    EXPECT_EQ(format.voltagePrecision, 4);
    EXPECT_EQ(format.decimal, ',');
    EXPECT_EQ(format.divider, "\xF9\xF9");
    EXPECT_EQ(format.maximumLines, 250U);
}

TEST(TextExport, TellsItsProgress) {
    languageTable().select(kLanguageEnglish);
    ConversionProgress progress;
    EXPECT_EQ(progressTexts(ConversionState(progress), 3000).time, "0:00:03 / -:-:-");
    progress.totalLines = 1000;
    progress.totalFiles = 10;
    EXPECT_EQ(progressTexts(ConversionState(progress), 0).size, "0 b / 0 b");
    progress.lines = 250;
    progress.files = 3;
    progress.bytes = 3 * 1024;
    const ConversionState state(progress);
    const ProgressTexts texts = progressTexts(state, 61000);
    EXPECT_EQ(texts.files, "3 / 10");
    EXPECT_EQ(texts.size, "3.0 Kb / 12.0 Kb");
    EXPECT_EQ(texts.lines, "250 / 1000");
    EXPECT_EQ(texts.time, "0:01:01 / 0:03:03");
    EXPECT_EQ(state.thousandths(), 250);
}

}  // namespace
}  // namespace tarno2

#include <gtest/gtest.h>
#include <vector>

#include "config/files/figure_text.h"
#include "config/settings/text_export.h"
#include "config/settings/window_place.h"
#include "language/language_table.h"

namespace tarno2 {
namespace {

TEST(TextExport, PutsRightWhatIsOutOfRange) {
    TextExportSettings wild{4, 3, 10, 99, 7, -1, ';', 200, -5};
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

TEST(TextExport, HasTheMeaningsOfItsNumbers) {
    for (const auto& [number, column] : {std::pair(0, FirstColumn::Absent),
                                         {1, FirstColumn::Samples},
                                         {2, FirstColumn::Seconds},
                                         {3, FirstColumn::Clock}}) {
        EXPECT_EQ(exportFormat({number, 0, 6, 6, 0, 0, ';', 1, 0}).firstColumn, column);
    }
    const ExportFormat codes = exportFormat({0, 0, 4, 5, 0, 0, ';', 2, 150});
    EXPECT_FALSE(codes.volts || codes.units);
    EXPECT_EQ(codes.timePrecision, 4);
    EXPECT_EQ(codes.voltagePrecision, 5);
    EXPECT_EQ(codes.decimal, '.');
    EXPECT_EQ(codes.divider, "\t\t");
    EXPECT_EQ(codes.maximumLines, 150U);
    const ExportFormat volts = exportFormat({0, 1, 6, 6, 1, 1, ';', 2, 0});
    EXPECT_TRUE(volts.volts && !volts.units);
    EXPECT_EQ(volts.decimal, ',');
    EXPECT_EQ(volts.divider, ";;");
    EXPECT_TRUE(exportFormat({0, 2, 6, 6, 0, 0, ';', 1, 0}).units);
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

TEST(WindowPlace, CanAlwaysBeGrasped) {
    const std::vector<WindowPlace> one = {{0, 30, 1024, 738}};
    const std::vector<WindowPlace> two = {{0, 0, 1920, 1080}, {1920, 0, 1280, 1024}};
    const struct {
        const char* what;
        WindowPlace saved;
        const std::vector<WindowPlace>& screens;
        WindowPlace expected;
    } cases[] = {
        {"on the screen", {10, 40, 900, 600}, one, {10, 40, 900, 600}},
        {"partly beside it", {-700, 40, 900, 600}, one, {-700, 40, 900, 600}},
        {"on the second screen", {2000, 100, 900, 600}, two, {2000, 100, 900, 600}},
        {"the second screen is gone", {2000, 100, 900, 600}, one, {124, 100, 900, 600}},
        {"only an edge is left", {-890, 40, 900, 600}, one, {0, 40, 900, 600}},
        {"the title above the screen", {10, -20, 900, 600}, one, {10, 30, 900, 600}},
        {"far below", {10, 5000, 900, 600}, one, {10, 168, 900, 600}},
        {"larger than the screen", {0, 30, 3000, 2000}, one, {0, 30, 1024, 738}},
        {"no size", {10, 40, 0, -5}, one, {10, 40, 900, 600}},
        {"no screen known", {5000, 5000, 900, 600}, {}, {5000, 5000, 900, 600}},
    };
    for (const auto& c : cases) {
        const WindowPlace place = placeOnScreens(c.saved, c.screens);
        EXPECT_TRUE(place == c.expected) << c.what << ": " << place.left << ' ' << place.top << ' ' << place.width
                                         << ' ' << place.height;
    }
}

TEST(FigureText, ReadsLikeAClockAndGroupsDigits) {
    languageTable().select(kLanguageEnglish);
    EXPECT_EQ(formatDuration(0), "00:00:00");
    EXPECT_EQ(formatDuration(3600 * 100 + 59 * 60 + 7), "100:59:07");
    EXPECT_EQ(formatCount(999), "999");
    EXPECT_EQ(formatCount(62345678), "62\240345\240678");
    EXPECT_EQ(formatRate(2.5 * 1024 * 1024), "2.50 MB/s");
    EXPECT_EQ(formatRate(-1.0), "0 B/s");
}

}  // namespace
}  // namespace tarno2

#include "config/settings/text_export.h"

#include <algorithm>

#include "config/files/disk_info.h"
#include "platform/c_locale.h"

namespace tarno2 {

namespace {

constexpr int32_t kLastFirstColumn = static_cast<int32_t>(FirstColumn::Clock);

int32_t modeOrFirst(int32_t mode, int32_t last) {
    return mode >= 0 && mode <= last ? mode : 0;
}

std::string pairText(const std::string& done, const std::string& all) {
    return done + " / " + all;
}

}  // namespace

TextExportSettings withinLimits(TextExportSettings settings) {
    settings.firstColumnMode = modeOrFirst(settings.firstColumnMode, kLastFirstColumn);
    settings.dataColumnMode = modeOrFirst(settings.dataColumnMode, 2);
    settings.timePrecision = std::clamp(settings.timePrecision, 0, ExportFormat::kMaximumPrecision);
    settings.voltagePrecision = std::clamp(settings.voltagePrecision, 0, ExportFormat::kMaximumPrecision);
    settings.fractionalDivider = modeOrFirst(settings.fractionalDivider, 1);
    settings.columnDividerMode = modeOrFirst(settings.columnDividerMode, 1);
    settings.columnDividerCount =
        static_cast<uint8_t>(std::clamp<uint32_t>(settings.columnDividerCount, 1, ExportFormat::kMaximumDividerCount));
    settings.maxLineCount = std::max(settings.maxLineCount, 0);
    settings.header = modeOrFirst(settings.header, 1);
    settings.marks = modeOrFirst(settings.marks, 1);
    return settings;
}

ExportFormat exportFormat(const TextExportSettings& settings) {
    const TextExportSettings kept = withinLimits(settings);
    ExportFormat format;
    format.firstColumn = static_cast<FirstColumn>(kept.firstColumnMode);
    format.volts = kept.dataColumnMode != 0;
    format.units = kept.dataColumnMode == 2;
    format.headings = kept.header == 1;
    format.marks = kept.marks == 1;
    format.timePrecision = kept.timePrecision;
    format.voltagePrecision = kept.voltagePrecision;
    format.decimal = kept.fractionalDivider == 1 ? ',' : '.';
    const char symbol = kept.columnDividerMode == 1 ? static_cast<char>(kept.columnDivider) : '\t';
    format.divider = std::string(kept.columnDividerCount, symbol);
    format.maximumLines = static_cast<uint64_t>(kept.maxLineCount);
    return format;
}

ExportFields usedFields(const TextExportSettings& settings) {
    const bool symbol = settings.columnDividerMode == 1;
    ExportFields fields;
    fields.timePrecision = settings.firstColumnMode == static_cast<int32_t>(FirstColumn::Seconds);
    fields.tabCount = !symbol;
    fields.symbol = symbol;
    fields.symbolCount = symbol;
    return fields;
}

ConversionState::ConversionState(const ConversionProgress& progress)
    : lines(progress.lines),
      totalLines(progress.totalLines),
      files(progress.files),
      totalFiles(progress.totalFiles),
      bytes(progress.bytes) {}

std::optional<uint64_t> ConversionState::totalBytes() const {
    if (lines == 0) {
        return std::nullopt;
    }
    return static_cast<uint64_t>(static_cast<double>(bytes) / static_cast<double>(lines) *
                                 static_cast<double>(totalLines));
}

std::optional<uint64_t> ConversionState::remaining(uint64_t elapsed) const {
    if (lines == 0) {
        return std::nullopt;
    }
    const uint64_t left = totalLines - std::min(lines, totalLines);
    return static_cast<uint64_t>(static_cast<double>(elapsed) / static_cast<double>(lines) * static_cast<double>(left));
}

int ConversionState::thousandths() const {
    constexpr int kAll = 1000;
    if (totalLines == 0) {
        return files > 0 ? kAll : 0;
    }
    return static_cast<int>(static_cast<double>(std::min(lines, totalLines)) / static_cast<double>(totalLines) * kAll);
}

std::string durationText(uint64_t milliseconds) {
    const uint64_t seconds = milliseconds / 1000;
    return formatText("%llu:%02u:%02u", static_cast<unsigned long long>(seconds / 3600),
                      static_cast<unsigned>(seconds / 60 % 60), static_cast<unsigned>(seconds % 60));
}

ProgressTexts progressTexts(const ConversionState& state, uint64_t elapsedMilliseconds) {
    const auto size = state.totalBytes();
    const auto left = state.remaining(elapsedMilliseconds);
    return {pairText(std::to_string(state.files), std::to_string(state.totalFiles)),
            pairText(formatFreeSpace(state.bytes), formatFreeSpace(size.value_or(0))),
            pairText(std::to_string(state.lines), std::to_string(state.totalLines)),
            pairText(durationText(elapsedMilliseconds), left ? durationText(*left) : "-:-:-")};
}

}  // namespace tarno2

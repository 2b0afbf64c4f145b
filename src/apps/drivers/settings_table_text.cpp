#include "apps/drivers/settings_table_text.h"

#include <algorithm>
#include <array>

#include "platform/c_locale.h"

namespace tarno2 {

namespace {

constexpr size_t kWidestChoices = 40;
using Row = std::array<std::string, 5>;

const char* typeWord(DriverSetting::Type type) {
    switch (type) {
        case DriverSetting::Type::Integer:
            return "integer";
        case DriverSetting::Type::Real:
            return "real";
        case DriverSetting::Type::Choice:
            return "choice";
        case DriverSetting::Type::File:
            return "file";
        case DriverSetting::Type::Folder:
            return "folder";
        case DriverSetting::Type::Text:
            break;
    }
    return "text";
}

/// Bounds or choices, over as many lines as they take.
std::vector<std::string> takes(const DriverSetting& setting) {
    if (setting.bounded) {
        return {formatText("%.15g to %.15g", setting.minimum, setting.maximum)};
    }
    std::vector<std::string> choices = setting.choices;
    if (setting.free) {
        choices.emplace_back("others");
    }
    std::vector<std::string> lines(1);
    for (size_t i = 0; i < choices.size(); ++i) {
        const std::string word = choices[i] + (i + 1 < choices.size() ? ", " : "");
        if (!lines.back().empty() && lines.back().size() + word.size() > kWidestChoices) {
            lines.emplace_back();
        }
        lines.back() += word;
    }
    return lines;
}

/// Characters of a text, which is UTF-8 in the main.
size_t widthOf(const std::string& text) {
    return static_cast<size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

}  // namespace

std::string settingsTableText(const std::vector<DriverSetting>& settings) {
    std::vector<Row> rows = {{"KEY", "TYPE", "TAKES", "VALUE", "CAPTION"}};
    for (const DriverSetting& setting : settings) {
        const std::vector<std::string> lines = takes(setting);
        rows.push_back({setting.key, typeWord(setting.type), lines.front(), setting.value,
                        setting.caption + (setting.fixed ? " (fixed by the environment or the driver)" : "")});
        for (size_t i = 1; i < lines.size(); ++i) {
            rows.push_back({"", "", lines[i], "", ""});
        }
    }
    std::array<size_t, std::tuple_size_v<Row>> widths{};
    for (const Row& row : rows) {
        for (size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], widthOf(row[i]));
        }
    }
    std::string text;
    for (const Row& row : rows) {
        std::string line;
        for (size_t i = 0; i < row.size(); ++i) {
            line += row[i] + std::string(widths[i] - widthOf(row[i]) + 2, ' ');
        }
        text += line.substr(0, line.find_last_not_of(' ') + 1) + '\n';
    }
    return text;
}

}  // namespace tarno2

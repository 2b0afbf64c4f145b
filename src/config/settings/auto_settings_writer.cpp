#include "config/settings/auto_settings_writer.h"

#include <string_view>
#include <variant>
#include <vector>

#include "config/settings/program_settings.h"
#include "config/settings/settings_table.h"
#include "platform/c_locale.h"
#include "platform/file.h"
#include "records/channel_label.h"
#include "records/number_text.h"

namespace tarno2 {

namespace {

/// As a reader takes it back: a backslash and a quote have a backslash before them.
std::string quoted(std::string_view value) {
    std::string text = "\"";
    for (const char c : value) {
        if (c == '\\' || c == '"') {
            text += '\\';
        }
        text += c;
    }
    return text + '"';
}

/// What stands behind the "=" of a key; empty where the key is left out.
class ValueText {
public:
    ValueText(const AutoRule& rule, ProgramSettings& settings) : rule_(rule), settings_(settings) {}

    std::string operator()(const IntegerSetting& setting) {
        const int32_t value = setting.get(settings_);
        if (setting.rare && value == setting.usual) {
            return {};
        }
        switch (rule_.number) {
            case AutoNumber::Hexadecimal:
                return formatText("0x%x", static_cast<unsigned>(value));
            case AutoNumber::Unsigned:
                return std::to_string(static_cast<uint32_t>(value));
            case AutoNumber::Decimal:
                break;
        }
        return std::to_string(value);
    }

    std::string operator()(const RealSetting& setting) { return exactNumberText(setting.at(settings_)); }

    std::string operator()(const TextSetting& setting) {
        const std::string& value = setting.at(settings_);
        return value.empty() ? std::string() : quoted(value);
    }

    std::string operator()(const IntegerListSetting& setting) {
        return joined(setting.count(settings_), [&](size_t i) { return std::to_string(setting.get(settings_, i)); });
    }

    std::string operator()(const RealListSetting& /*setting*/) { return {}; }  // only the settings file has some

    std::string operator()(const ExactListSetting& setting) {
        bool usual = true;
        std::string list = joined(setting.count(settings_), [&](size_t i) {
            usual = usual && setting.at(settings_, i) == setting.usual;
            return exactNumberText(setting.at(settings_, i));
        });
        return usual ? std::string() : list;
    }

    std::string operator()(const NameListSetting& setting) {
        std::vector<std::string> names(setting.most(settings_));
        for (size_t i = 0; i < names.size(); ++i) {
            names[i] = setting.get(settings_, i);
        }
        const std::string list = labelList(names);
        return list.empty() ? std::string() : quoted(list);
    }

private:
    template <typename TextOf>
    static std::string joined(size_t count, TextOf textOf) {
        std::string list;
        for (size_t i = 0; i < count; ++i) {
            list += (i == 0 ? "" : ",") + textOf(i);
        }
        return list;
    }

    const AutoRule& rule_;
    ProgramSettings& settings_;
};

}  // namespace

std::string autoSettingsText(const RecordingWish& wish) {
    ProgramSettings settings;
    settings.wish = wish;
    settings.wish.gains.resize(wish.channels.size(), 1);
    settings.wish.labels.resize(wish.channels.size());
    // The end is told in seconds or bytes.
    settings.stopPower = 0;
    settings.stopValue = wish.stopSeconds;
    std::string text;
    for (const SettingRow* row : autoSettingsRows()) {
        if (row->rule.asked != nullptr && !row->rule.asked(settings.wish)) {
            continue;
        }
        if (const std::string value = std::visit(ValueText(row->rule, settings), row->place); !value.empty()) {
            text.append(row->autoKey()).append(" = ").append(value).append("\r\n");
        }
    }
    return text;
}

OsError writeAutoSettings(const std::string& path, const RecordingWish& wish) {
    return replaceWholeFile(path, autoSettingsText(wish));
}

}  // namespace tarno2

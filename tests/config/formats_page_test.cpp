// What docs/formats.md tells of the keys of both settings files is what the program knows of them.

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <set>
#include <variant>

#include "config/settings/auto_settings.h"
#include "config/settings/settings_table.h"
#include "tests/config/settings_file_fixture.h"

namespace tarno2::test {
namespace {

using testing::ContainerEq;

using KeySet = std::set<std::string>;
using Cells = std::vector<std::string>;

/// The page from one text to another one.
std::string pagePart(const std::string& from, const std::string& to) {
    const std::string page = readFile(FORMATS_PAGE);
    const size_t begin = page.find(from);
    const size_t end = page.find(to, begin);
    EXPECT_TRUE(begin != std::string::npos && end != std::string::npos) << from;
    return end == std::string::npos ? std::string() : page.substr(begin, end - begin);
}

/// The rows of the tables in a part of the page whose first cells name something.
std::vector<Cells> rowsOf(const std::string& part) {
    std::vector<Cells> rows;
    for (size_t at = part.find("\n| `"); at != std::string::npos; at = part.find("\n| `", at + 1)) {
        std::string line = part.substr(at + 2, part.find('\n', at + 1) - at - 2);
        Cells& cells = rows.emplace_back();
        for (size_t end = line.find(" |"); end != std::string::npos; end = line.find(" |")) {
            cells.push_back(end == 0 ? "" : line.substr(1, end - 1));
            line.erase(0, end + 2);
        }
    }
    return rows;
}

/// The keys that a cell names; `first` … `last` are all of `order` from one to the other.
Cells keysIn(const std::string& cell, const Cells& order) {
    Cells keys;
    bool range = false;
    for (size_t begin = cell.find('`'); begin != std::string::npos;) {
        const size_t end = cell.find('`', begin + 1);
        const std::string key = cell.substr(begin + 1, end - begin - 1);
        if (range) {
            const auto first = std::ranges::find(order, keys.back());
            const auto last = std::ranges::find(order, key);
            EXPECT_TRUE(first < last && last < order.end()) << cell;
            keys.insert(keys.end(), first + 1, last);
        }
        keys.push_back(key);
        begin = cell.find('`', end + 1);
        range = begin != std::string::npos && cell.substr(end, begin - end).find("…") != std::string::npos;
    }
    return keys;
}

const std::string kAutoFrom = "## The autosettings file";
const std::string kAutoTo = "## The settings file";

/// Keys of the rows from `kAutoFrom` on, in their order.
Cells autoKeys() {
    Cells keys;
    for (const Cells& row : rowsOf(pagePart(kAutoFrom, kAutoTo))) {
        const Cells more = keysIn(row[0], {});
        keys.insert(keys.end(), more.begin(), more.end());
    }
    return keys;
}

/// The start value of a setting that is a number.
std::optional<double> numberOf(const SettingRow& row, ProgramSettings& settings) {
    if (const auto* integer = std::get_if<IntegerSetting>(&row.place)) {
        return integer->get(settings);
    }
    const auto* real = std::get_if<RealSetting>(&row.place);
    return real != nullptr ? std::optional(real->at(settings)) : std::nullopt;
}

TEST(FormatsPage, HasEveryKeyOfAnAutosettingsFileAndItsDefault) {
    const Cells told = autoKeys();
    KeySet known = {"DebugMode"};
    std::map<std::string, const SettingRow*> rows;
    for (const SettingRow* row : autoSettingsRows()) {
        known.insert(row->autoKey());
        rows[row->autoKey()] = row;
    }
    EXPECT_THAT(KeySet(told.begin(), told.end()), ContainerEq(known));
    EXPECT_EQ(told.size(), known.size()) << "none is told of twice";

    ProgramSettings settings;
    settings.wish =
        readAutoSettings("DriverName = \"x\"\nChannelCount = 1\nChannelsNumber = 0\nFrequency = 1\n").value();
    size_t compared = 0;
    for (const Cells& row : rowsOf(pagePart(kAutoFrom, kAutoTo))) {
        const std::string& standard = row.back();
        double number = 0.0;
        const auto [end, error] = std::from_chars(standard.data(), standard.data() + standard.size(), number);
        if (error != std::errc() || end != standard.data() + standard.size()) {
            continue;
        }
        for (const std::string& key : keysIn(row[0], {})) {
            // These are made of what another key says too, or of the log alone.
            const bool apart = key == "DebugMode" || key.starts_with("SizeNeed") || key == "SynchroAllSize";
            const auto value = rows.contains(key) && !apart ? numberOf(*rows[key], settings) : std::nullopt;
            EXPECT_EQ(value.value_or(number), number) << key;
            compared += value ? 1 : 0;
        }
    }
    EXPECT_GT(compared, 40U);
}

TEST_F(SettingsFile, HasTheKeysOfThePageAndTheRareOnesOnlyWhenTheyAreSet) {
    const std::string plain = saved({});
    KeySet told;
    for (const Cells& row : rowsOf(pagePart(kAutoTo, "**Example**, the beginning"))) {
        const std::string& meaning = row.back();
        const bool rare =
            std::ranges::any_of(std::initializer_list<const char*>{"ritten only", "only there when", "Only there when",
                                                                   "not written", "no list when", "put in by hand"},
                                [&](const char* words) { return meaning.find(words) != std::string::npos; });
        for (const std::string& key : keysIn(row[0], autoKeys())) {
            EXPECT_TRUE(told.insert(key).second) << key << " is told of twice";
            const bool partly = key == "FrequencyListCount";  // stands in one row with the list
            EXPECT_EQ(plain.find("\r\n" + key + " = ") != std::string::npos, !rare || partly) << key;
        }
    }
    KeySet known = {"DebugMode"};
    for (const SettingRow& row : settingsTable()) {
        known.insert(row.key());
    }
    EXPECT_THAT(told, ContainerEq(known));
}

TEST_F(SettingsFile, IsWrittenAsTheExampleOfThePage) {
    languageTable().select(kLanguageEnglish);
    ProgramSettings settings = goldenSettings();
    settings.language = InterfaceLanguage::English;
    for (size_t i = 0; i < 10; ++i) {
        settings.channels[i].gain = i < 8 ? 1 : 10;
    }
    const std::string written = saved(settings);
    const std::string part = pagePart("//0 - Russian", "```");
    size_t entries = 0;
    for (size_t at = 0; at < part.size(); ++entries) {
        const size_t end = part.find("\n\n", at) + 2;
        std::string entry;
        for (const char c : part.substr(at, end - at)) {
            entry += c == '\n' ? "\r\n" : std::string(1, c);
        }
        EXPECT_NE(written.find(entry), std::string::npos) << entry;
        EXPECT_TRUE(at > 0 || written.starts_with(entry));
        at = end;
    }
    EXPECT_EQ(entries, 3U);
}

}  // namespace
}  // namespace tarno2::test

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "config/settings/program_settings.h"
#include "language/text_ids.h"

namespace tarno2 {

// How one key of a file reaches its place in the settings. What the settings file says outside of `lowest`..`highest`
// is not taken.

/// An integer, a flag (0 or 1) or a choice.
struct IntegerSetting {
    int32_t lowest;
    int32_t highest;
    bool byte;  ///< an 8-bit value
    int32_t (*get)(const ProgramSettings&);
    void (*set)(ProgramSettings&, int32_t);
    bool rare = false;  ///< written only when it is not `usual`, which it starts with
    int32_t usual = 0;
};

struct RealSetting {
    double lowest;
    double& (*at)(ProgramSettings&);
    bool rare = false;  ///< written only when it is not 0, which it starts with
};

struct TextSetting {
    std::string& (*at)(ProgramSettings&);
    bool rare = false;  ///< written only when it is not empty, as which it starts; may be long
};

/// A list of integers or flags whose length the settings tell.
struct IntegerListSetting {
    int32_t lowest;
    int32_t highest;
    bool byte;
    bool hex;  ///< written in hexadecimal
    size_t (*count)(const ProgramSettings&);
    int32_t (*get)(const ProgramSettings&, size_t);
    void (*set)(ProgramSettings&, size_t, int32_t);
    bool rare = false;  ///< written only when one of them is not `usual`, which all start with
    int32_t usual = 0;
};

/// A list of positive numbers; the ones that are none are dropped.
struct RealListSetting {
    std::vector<double>& (*at)(ProgramSettings&);
};

/// A list of numbers whose length the settings tell, each kept to its last digit. Written only when one of them is not
/// `usual`, with which they start.
struct ExactListSetting {
    double usual;
    bool (*takes)(double);
    size_t (*count)(const ProgramSettings&);
    double& (*at)(ProgramSettings&, size_t);
};

/// A list of names in one text, as `labelList` makes it; at most as many as the settings tell. Written only when there
/// is one.
struct NameListSetting {
    size_t (*most)(const ProgramSettings&);
    std::string (*get)(const ProgramSettings&, size_t);
    void (*set)(ProgramSettings&, size_t, const std::string&);
};

using SettingPlace = std::variant<IntegerSetting, RealSetting, TextSetting, IntegerListSetting, RealListSetting,
                                  ExactListSetting, NameListSetting>;

/// When the reader of an autosettings file comes to a key. Keys of one turn are read in the order of the table.
enum class AutoTurn : uint8_t {
    Never,  ///< it is no key of that file
    Board,
    Channels,
    Rates,
    StopRule,
    StopValue,
    BoardMode,
    Others,
    SynchroNumbers,
    SynchroValues,
    SynchroRest
};

/// How an autosettings file writes an integer. Only decimal ones have bounds.
enum class AutoNumber : uint8_t { Decimal, Unsigned, Hexadecimal };

/// How a setting stands in an autosettings file, and what the console log says when it doesn't. In these lines "{key}",
/// "{value}", "{start}" and "{highest}" stand for what the file has, the start value and the bound. A line that ends
/// with "Program aborted" ends the load; after any other, and without one (null), the setting keeps its start value.
struct AutoRule {
    AutoTurn turn = AutoTurn::Never;
    const char* key = nullptr;     ///< null: as in the settings file
    const char* absent = nullptr;  ///< no such key, or what it has is no number; an empty text that may be left out
    const char* odd = nullptr;     ///< out of bounds; for a list: of another length, of names: too long
    const char* tooLow = nullptr;  ///< below the lowest; for a list: an element that can't be; null: as `odd`
    bool strict = false;           ///< what is no number is odd
    bool anyFromZero = false;      ///< bounds of its own: what is not negative
    AutoNumber number = AutoNumber::Decimal;
    bool (*asked)(const RecordingWish&) = nullptr;  ///< when it counts; null: always
};

/// One setting that a file keeps.
struct SettingRow {
    TextId comment;          ///< its comment in the settings file; `kAutoOnly`: it is not there
    const char* literalKey;  ///< its key, or null when that is the text before the comment's
    SettingPlace place;
    AutoRule rule = {};

    [[nodiscard]] std::string key() const;
    [[nodiscard]] std::string autoKey() const { return rule.key != nullptr ? rule.key : key(); }
};
inline constexpr TextId kAutoOnly{-1};

/// The entries of the settings file in the order in which they are written and read.
[[nodiscard]] std::span<const SettingRow> settingsTable();
/// The keys of an autosettings file in the order in which they are read.
[[nodiscard]] std::vector<const SettingRow*> autoSettingsRows();

}  // namespace tarno2

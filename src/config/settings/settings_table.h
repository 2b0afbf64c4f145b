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

// How one entry of the settings file reaches its place in the settings. What the file says outside of
// `lowest`..`highest` is not taken.

/// An integer, a flag (0 or 1) or a choice.
struct IntegerSetting {
    int32_t lowest;
    int32_t highest;
    bool byte;  ///< an 8-bit value
    int32_t (*get)(const ProgramSettings&);
    void (*set)(ProgramSettings&, int32_t);
    bool rare = false;  ///< written only when it is not the lowest value, which it starts with
};

struct RealSetting {
    double lowest;
    double& (*at)(ProgramSettings&);
    bool rare = false;  ///< written only when it is not 0, which it starts with
};

struct TextSetting {
    std::string& (*at)(ProgramSettings&);
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
};

/// A list of positive numbers; the ones that are none are dropped.
struct RealListSetting {
    std::vector<double>& (*at)(ProgramSettings&);
};

using SettingPlace = std::variant<IntegerSetting, RealSetting, TextSetting, IntegerListSetting, RealListSetting>;

/// One entry of the settings file.
struct SettingRow {
    TextId comment;          ///< its comment
    const char* literalKey;  ///< its key, or null when that is the text before the comment's
    SettingPlace place;

    [[nodiscard]] std::string key() const;
};

/// The entries in the order in which they are written and read.
[[nodiscard]] std::span<const SettingRow> settingsTable();

}  // namespace tarno2

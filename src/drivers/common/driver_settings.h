#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "records/key_value_file.h"

namespace tarno2::drivers {

/// Settings of a driver: a key/value file in the program's folder, and a variable of the environment,
/// "Key=Value;Key=Value", whose values win. In the file words and paths stand between double quotes; in the variable
/// they need none.
class DriverSettings {
public:
    /// Reads the variable alone.
    void readEnvironment(const char* variable);
    /// Reads the file too, when there is one. False when it is there but can't be read.
    bool readFile(const std::string& path);

    [[nodiscard]] int64_t integer(std::string_view key, int64_t defaultValue) const;
    [[nodiscard]] double number(std::string_view key, double defaultValue) const;
    [[nodiscard]] bool flag(std::string_view key, bool defaultValue) const;
    /// `misread` is set when the key is there without a text between double quotes.
    [[nodiscard]] std::string text(std::string_view key, std::string_view defaultValue, bool& misread) const;

private:
    KeyValueFile environment_;
    KeyValueFile file_;
};

}  // namespace tarno2::drivers

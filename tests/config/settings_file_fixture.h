#pragma once

#include <cstdint>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "config/settings/program_settings.h"
#include "config/settings/settings_file.h"
#include "language/language_table.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {

/// The settings file that was made by hand, with comments in that language.
[[nodiscard]] std::string goldenFile(InterfaceLanguage language);
/// What the golden files hold.
[[nodiscard]] ProgramSettings goldenSettings();
/// Every value of the settings, a list's elements one by one.
[[nodiscard]] std::vector<std::string> valuesOf(ProgramSettings settings);

/// A folder for a settings file.
class SettingsFile : public testing::Test {
protected:
    ~SettingsFile() override;

    ProgramSettings loaded(const std::string& text, ProgramSettings settings = {});
    [[nodiscard]] std::string saved(const ProgramSettings& settings) const;

    TemporaryFolder folder_;

private:
    uint16_t before_ = languageTable().selected();
};

}  // namespace tarno2::test

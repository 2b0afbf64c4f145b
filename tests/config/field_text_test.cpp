#include "config/settings/field_text.h"

#include <gtest/gtest.h>
#include <optional>

namespace tarno2::test {
namespace {

TEST(FieldText, NumbersTakeAPointOrAComma) {
    struct {
        const char* text;
        std::optional<double> value;
    } const cases[] = {
        {"100000", 100000.0},
        {" 12.5\t", 12.5},
        {"12,5", 12.5},
        {"1e6", 1e6},
        {"-3", -3.0},
        {"+3", 3.0},
        {"+-3", std::nullopt},
        {"", std::nullopt},
        {"  ", std::nullopt},
        {"12 kHz", std::nullopt},
        {"1.2.3", std::nullopt},
        {"inf", std::nullopt},
        {"nan", std::nullopt},
        {"1e999", std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parseNumberField(c.text), c.value) << c.text;
    }
}

TEST(FieldText, FrequenciesAreNoLongerThanTheyMust) {
    EXPECT_EQ(frequencyText(44100.0), "44100");
    EXPECT_EQ(frequencyText(10e6), "10000000");
    EXPECT_EQ(frequencyText(100e3 / 3.0), "33333.332");
    EXPECT_EQ(frequencyText(0.5), "0.5");
}

}  // namespace
}  // namespace tarno2::test

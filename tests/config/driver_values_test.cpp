#include "config/settings/driver_values.h"

#include <gmock/gmock.h>

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using Values = std::vector<DriverValue>;

TEST(DriverValues, OfOneDriver) {
    const struct {
        const char* text;
        std::optional<Values> values;
    } cases[] = {
        {"", Values{}},
        {"File=run.wav;Loop=1", Values{{"File", "run.wav"}, {"Loop", "1"}}},
        {" File = a b ; Loop=1; ", std::nullopt},
        {"File=a b; Loop=1;", Values{{"File", "a b"}, {"Loop", "1"}}},
        {"Divider=;;;Next=a;;b;;;;", Values{{"Divider", ";"}, {"Next", "a;b;;"}}},
        {"Address=tcp://127.0.0.1:5000;Filter=a=b", Values{{"Address", "tcp://127.0.0.1:5000"}, {"Filter", "a=b"}}},
        {"Empty=;Loop=1", Values{{"Empty", ""}, {"Loop", "1"}}},
        {"File", std::nullopt},
        {"=run.wav", std::nullopt},
        {"My file=run.wav", std::nullopt},
        {"Replay/File=run.wav", std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parseDriverValues(c.text), c.values) << c.text;
    }
}

TEST(DriverValues, OfAllDriversStayTogether) {
    std::string text;
    const struct {
        const char* driver;
        DriverValue value;
        const char* text;
    } steps[] = {
        {"Replay", {"File", "run;1.wav"}, "Replay/File=run;;1.wav"},
        {"Replay", {"Loop", "1"}, "Replay/File=run;;1.wav;Replay/Loop=1"},
        {"A/B;", {"Loop", "2"}, "Replay/File=run;;1.wav;Replay/Loop=1;A/B;;/Loop=2"},
        {"Replay", {"File", "2.wav"}, "Replay/File=2.wav;Replay/Loop=1;A/B;;/Loop=2"},
        {"A", {"Loop", "3"}, "Replay/File=2.wav;Replay/Loop=1;A/B;;/Loop=2;A/Loop=3"},
        {"Replay", {"File", ""}, "Replay/Loop=1;A/B;;/Loop=2;A/Loop=3"},
        {"A", {"Loop", " "}, "Replay/Loop=1;A/B;;/Loop=2;A/Loop= ;"},
        {"Replay", {"Loop", ""}, "A/B;;/Loop=2;A/Loop= ;"},
    };
    for (const auto& step : steps) {
        text = withDriverValue(text, step.driver, step.value);
        EXPECT_EQ(text, step.text);
    }
    EXPECT_THAT(driverValuesOf(text, "A/B;"), ElementsAre(DriverValue{"Loop", "2"}));
    EXPECT_THAT(driverValuesOf(text, "A"), ElementsAre(DriverValue{"Loop", " "}));
    EXPECT_THAT(driverValuesOf(text, "Replay"), ElementsAre());
    EXPECT_EQ(withDriverValue("what nobody knows;Loop=1", "A", {"Loop", "2"}), "what nobody knows;Loop=1;A/Loop=2");
}

}  // namespace
}  // namespace tarno2::test

#include "core/devices/driver_settings.h"

#include <algorithm>
#include <cstring>
#include <gmock/gmock.h>
#include <limits>

#include "core/devices/board_selection.h"
#include "tests/core/fake_device.h"
#include "tests/core/settings_driver.h"

namespace tarno2::test {
namespace {

using testing::ElementsAre;
using testing::SizeIs;
using Type = DriverSetting::Type;

ADCSetting told(const char* key, uint32_t type = kADCSettingText) {
    ADCSetting setting{};
    std::strncpy(setting.m_sKey, key, sizeof setting.m_sKey - 1);
    setting.m_nType = type;
    return setting;
}

/// A driver that gives these settings and says that there are so many.
std::vector<DriverSetting> settingsOf(const std::vector<ADCSetting>& given, uint32_t count) {
    FakeDevice fake;
    fake.answer = [&](uint32_t code, void* result) {
        if (code != kADCGetSettings) {
            return 0;
        }
        auto& list = *static_cast<ADCSettingList*>(result);
        list.m_nCount = count;
        std::copy_n(given.begin(), std::min<size_t>(list.m_nCapacity, given.size()), list.m_pEntries);
        return 1;
    };
    Device device(&fake);
    return readDriverSettings(device);
}

TEST(DriverSettings, ListsOfBadDriversAreReadAsFarAsTheyGo) {
    ADCSetting endless;
    std::memset(&endless, 'x', sizeof endless);
    ADCSetting bounds = told("Bounds", kADCSettingReal);
    bounds.m_fMinimum = std::numeric_limits<double>::quiet_NaN();
    bounds.m_fMaximum = 5;
    ADCSetting choice = told("Choice", kADCSettingChoice);
    std::strcpy(choice.m_sChoices, "a\nb\n\nc");
    std::strcpy(choice.m_sChoiceTexts, "first\nsecond\n");
    const auto settings = settingsOf(
        {endless, told("Key"), told("Key", kADCSettingFile), told(""), told("a;b"), bounds, choice, told("New", 99)},
        8);
    ASSERT_THAT(settings, SizeIs(5));
    EXPECT_THAT(settings[0].key, SizeIs(sizeof endless.m_sKey - 1));
    EXPECT_EQ(settings[0].type, Type::Text) << "of an unknown type";
    EXPECT_THAT(settings[0].value, SizeIs(sizeof endless.m_sValue - 1));
    EXPECT_EQ(settings[1].caption, "Key");
    EXPECT_EQ(settings[1].type, Type::Text) << "the first of that key";
    EXPECT_FALSE(settings[2].bounded);
    EXPECT_THAT(settings[3].choices, ElementsAre("a", "b", "", "c"));
    EXPECT_THAT(settings[3].choiceTexts, ElementsAre("first", "second", "", "c"));
    EXPECT_EQ(settings[4].type, Type::Text);
    EXPECT_THAT(settingsOf({told("Key")}, 4000000000U), SizeIs(0)) << "more than anybody can mean";
    EXPECT_THAT(settingsOf({}, 0), SizeIs(0));
}

/// The name of the only board tells what its driver was told: "." for the program's folder, then the values.
std::string boardOf(const BoardSelection& selection) {
    return selection.boards().empty() ? "none" : selection.boards().front().m_sName;
}

TEST(DriverSettings, AreGivenBeforeTheBoardsAreAskedFor) {
    const InstalledSettingsDriver installed;
    BoardSelection selection([](const std::string&) {}, ".");
    selection.setDriverSettings("Other/File=x;Settings/File=missing.wav;Settings/Label=L;Settings/Host=home");
    EXPECT_EQ(selection.apply("Settings", 1), ApplyOutcome::Done);
    EXPECT_EQ(boardOf(selection), "001 .L");
    ASSERT_THAT(selection.refusals(), SizeIs(2));
    EXPECT_EQ(selection.refusals()[0].why, "missing.wav: no such file");
    EXPECT_EQ(selection.refusals()[1].kind, DriverRefusal::Kind::Fixed);

    EXPECT_EQ(selection.changeSetting({"Rate", "9000"}), ApplyOutcome::SettingRefused);
    EXPECT_EQ(selection.refusal(), "Rate: from 0.5 to 5000");
    EXPECT_EQ(selection.changeSetting({"Label", "a\nb"}), ApplyOutcome::SettingRefused);
    EXPECT_TRUE(selection.driver().startAllowed()) << "all is as before";
    EXPECT_EQ(selection.changeSetting({"Label", "M"}), ApplyOutcome::Done);
    EXPECT_EQ(boardOf(selection), "001 .LM");
    EXPECT_EQ(selection.driverSettings(), "Other/File=x;Settings/File=missing.wav;Settings/Label=M;Settings/Host=home");
}

TEST(DriverSettings, ASearchIsFollowedToItsEnd) {
    const InstalledSettingsDriver installed;
    BoardSelection selection([](const std::string&) {}, ".");
    selection.setDriverSettings("Settings/Asks=2");
    for (const bool byName : {true, false}) {
        const ApplyOutcome outcome = byName ? selection.apply("Settings", 1) : selection.choose("Settings");
        EXPECT_EQ(outcome, ApplyOutcome::Searching);
        EXPECT_FALSE(selection.driver().startAllowed());
        EXPECT_TRUE(selection.followSearch());
        EXPECT_FALSE(selection.followSearch());
        EXPECT_EQ(selection.chooseFound(), ApplyOutcome::Done);
        EXPECT_EQ(selection.boardNumber(), 1U);
    }
    EXPECT_EQ(selection.searchAgain(), ApplyOutcome::Searching);
    EXPECT_EQ(boardOf(selection), "none");
    EXPECT_FALSE(selection.driver().startAllowed()) << "the board may be gone";
    while (selection.followSearch()) {
    }
    EXPECT_EQ(selection.chooseFound(), ApplyOutcome::Done);
}

}  // namespace
}  // namespace tarno2::test

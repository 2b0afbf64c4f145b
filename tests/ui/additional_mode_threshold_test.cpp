// Thresholds in the synchronisation window, in the units of their channels.

#include "tests/ui/additional_mode_fixture.h"

namespace tarno2::test {
namespace {

TEST_F(AdditionalMode, AThresholdIsInTheUnitOfItsChannelAndKeptInVolts) {
    AdditionalModeFacts labelled = additionalModeFacts();
    labelled.board.channels[0].label = {"inlet", "bar", -2.5, 0.5};  // channel 3
    settings_.SynchroAnalogValue = -1000.0;
    settings_.SynchroAnalogUnit = 1;
    settings_.SynchroAnalogMode = 0;
    settings_.SynchroAnalyzeMode = 2;
    settings_.synchroOnAnalog = true;
    window_->setFacts(labelled);
    window_->ReloadControls();
    open();
    EXPECT_EQ(find<TaggedButton>("AnalogSynchroModeButton")->tag(), 1) << "falling bar are rising volts";
    const auto* unit = find<QPushButton>("SynchroValueUnit");
    EXPECT_EQ(typed("SynchroValueEdit"), "3");
    EXPECT_EQ(unit->text(), "bar");
    EXPECT_FALSE(unit->isEnabled());
    window_->close();
    EXPECT_EQ(settings_.SynchroAnalogValue, -1000.0) << "as it was given";
    EXPECT_EQ(settings_.SynchroAnalogMode, 0);
    EXPECT_EQ(settings_.SynchroAnalogUnit, 1);

    open();
    type("SynchroValueEdit", "5,5");
    choose("AnalogSynchroModeButton", 0);
    click("AcceptButton");
    EXPECT_EQ(settings_.SynchroAnalogMode, 1);
    EXPECT_EQ(settings_.SynchroAnalogValue, -2.0);
    // Another scale shows other numbers of the same volts.
    labelled.board.channels[0].label = {"", "K", 1000.0, 0.0};
    window_->setFacts(labelled);
    EXPECT_EQ(typed("SynchroValueEdit"), "-2000");
    EXPECT_EQ(unit->text(), "K");
    // A level stays as it was typed when another channel is chosen, as with another unit.
    open();
    type("SynchroChannelBox", "7");
    EXPECT_EQ(typed("SynchroValueEdit"), "-2000");
    EXPECT_TRUE(unit->isEnabled());
    EXPECT_NE(unit->text(), "K");
    type("SynchroValueEdit", "x");
    type("SynchroChannelBox", "3");
    QTest::keyClick(window_.get(), Qt::Key_Escape);
    EXPECT_EQ(typed("SynchroValueEdit"), "-2000") << "as it was shown";
    EXPECT_EQ(settings_.SynchroAnalogValue, -2.0);
    window_->setFacts(additionalModeFacts());
    EXPECT_EQ(typed("SynchroValueEdit"), "-2");
    EXPECT_TRUE(unit->isEnabled());
}

}  // namespace
}  // namespace tarno2::test

#include "config/settings/auto_settings_writer.h"

#include <gtest/gtest.h>

#include "config/settings/auto_settings.h"

namespace tarno2::test {
namespace {

RecordingWish everythingAsked() {
    RecordingWish wish;
    wish.driver = "Simulator";
    wish.base = 0x1F;
    wish.driverSettings = "File=a;;b.wav;Speed=0.5";
    wish.fileName = "C:\\data\\my \"run\".dat";
    wish.channels = {7, 0, 159};
    wish.gains = {1, 10, 2};
    wish.labels = {{"Inlet", "bar", 2.5, -0.1}, {}, {"Motor", "", 1.0, 0.0}};
    wish.lineNames = {"", "valve"};
    wish.frequency = 33333.332;
    wish.boardMode = kBoardPacketMode | kBoardDifferential;
    wish.packetFrequency = 12.5;
    wish.stopRule = StopRule::Size;
    wish.stopBytes = (uint64_t{3} << 32U) + 4000000000U;
    wish.cut = true;
    wish.cutMegabytes = 77;
    wish.comment = "a; b";
    wish.checksums = wish.passport = false;
    wish.decimation = 5;
    wish.synchro.SynchroAnalyzeMode = kModeSynchronisation;
    wish.synchro.SynchroAnalogValue = -0.1;
    wish.synchroSizes = {200, 800};
    wish.markLine = 3;
    wish.hardwareAverage = true;
    wish.drqNumber = 5;
    return wish;
}

TEST(AutoSettingsWriter, WhatItWritesIsReadBackAsTheSameWish) {
    for (const StopRule rule : {StopRule::Manual, StopRule::Time, StopRule::Size}) {
        RecordingWish wish = everythingAsked();
        wish.stopRule = rule;
        wish.stopSeconds = 0.1;
        const std::string text = autoSettingsText(wish);
        const auto read = readAutoSettings(text);
        ASSERT_TRUE(read.has_value()) << text;
        EXPECT_EQ(autoSettingsText(*read), text);
        EXPECT_EQ(read->fileName, wish.fileName);
        EXPECT_EQ(read->driverSettings, wish.driverSettings);
        EXPECT_EQ(read->channels, wish.channels);
        EXPECT_EQ(read->labels, wish.labels);
        EXPECT_EQ(read->lineNames, wish.lineNames);
        EXPECT_EQ(read->stopBytes, rule == StopRule::Size ? wish.stopBytes : 0U);
        EXPECT_EQ(read->stopSeconds, rule == StopRule::Time ? wish.stopSeconds : 0.0);
        EXPECT_EQ(read->boardMode, wish.boardMode);
        EXPECT_EQ(read->synchroSizes.history, 800);
        EXPECT_FALSE(read->passport || read->checksums);
        EXPECT_TRUE(read->hardwareAverage);
        EXPECT_EQ(read->drqNumber, 5);
    }
}

TEST(AutoSettingsWriter, PiecesAsLargeAsTheVolumeHoldsAreNoPiecesOfTheFieldsSize) {
    RecordingWish wish = everythingAsked();
    wish.automaticCut = true;
    wish.hardwareAverage = false;
    wish.drqNumber = -1;
    const std::string text = autoSettingsText(wish);
    EXPECT_NE(text.find("CutMode = 0\r\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("HardwareAverage"), std::string::npos);
    EXPECT_EQ(text.find("DrqNumber"), std::string::npos);
}

}  // namespace
}  // namespace tarno2::test

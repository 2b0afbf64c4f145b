#include <QAction>
#include <QLabel>
#include <thread>

#include "tests/display/signal_source.h"
#include "tests/ui/fake_scoper.h"
#include "tests/ui/widgets.h"
#include "ui/show_form.h"

namespace tarno2::test {
namespace {

/// Six channels with the numbers 10 to 15 above two digital lines, at 1000 frames a second: channel 10 + c runs from 0
/// to 100 * (c + 1) codes.
class ShowFormLanes : public ::testing::Test {
protected:
    static constexpr size_t kChannels = 6;

    ShowFormLanes() {
        languageTable().select(kLanguageEnglish);
        settings_.axisXUnit = 0;
        settings_.axisXValue = 101.0;
        settings_.axisYMode = 3;
    }
    void begin() {
        form_.show();
        ASSERT_TRUE(form_.tap().prepare(kChannels * 2, 65536, 100000.0));
        LiveRecording recording;
        recording.format = format16(kChannels, 2);
        for (size_t i = 0; i < kChannels; ++i) {
            recording.channels.push_back(static_cast<int32_t>(10 + i));
        }
        recording.everyFrameWritten = false;
        form_.recordingStarted(std::move(recording));
        std::vector<int16_t> words;
        for (int frame = 0; frame <= 100; ++frame) {
            for (size_t channel = 0; channel < kChannels; ++channel) {
                words.push_back(static_cast<int16_t>(frame * static_cast<int>(channel + 1) * 4));
            }
        }
        std::thread([&] { form_.tap().put(bytesOf(words)); }).join();
        ASSERT_TRUE(QTest::qWaitFor([&] { return form_.frameCount() == 101; }));
    }
    template <typename... Arguments>
    void tell(void(TARNO2_CALL* event)(void*, Arguments...), Arguments... values) {
        event(scoper_.events.m_pContext, values...);
    }
    [[nodiscard]] std::vector<int> visible() const {
        std::vector<int> visible;
        for (const FakeScoper::Column& column : scoper_.columns) {
            visible.push_back(column.visible ? 1 : 0);
        }
        return visible;
    }

    ProgramSettings settings_;
    FakeScoper scoper_;
    T_ShowForm form_{settings_, &scoper_};
};

TEST_F(ShowFormLanes, ManyChannelsLieInLanesOfTheirOwnScale) {
    begin();
    ASSERT_EQ(scoper_.lanes.size(), kChannels);
    for (uint32_t i = 0; i < kChannels; ++i) {
        EXPECT_EQ(scoper_.columns[i].lane, i);
        // A tenth of margin on both sides.
        EXPECT_NEAR(scoper_.lanes[i].m_fLower, -10.0 * (i + 1), 1e-9);
        EXPECT_NEAR(scoper_.lanes[i].m_fUpper, 110.0 * (i + 1), 1e-9);
    }
    const std::vector<std::string> newest{"100", "200", "300", "400", "500", "600"};
    EXPECT_TRUE(QTest::qWaitFor([&] { return scoper_.readings == newest; }));
    form_.CommonScaleClick(true);
    EXPECT_NEAR(scoper_.lanes[0].m_fUpper, 660.0, 1e-9);
    form_.CommonScaleClick(false);
    tell(scoper_.events.m_pHeadDropped, 1U, 0U);
    ASSERT_EQ(scoper_.lanes.size(), kChannels - 1);
    EXPECT_EQ(scoper_.columns[1].lane, 0U);
    EXPECT_EQ(scoper_.columns[2].lane, 1U);
    tell(scoper_.events.m_pLaneResized, 0U, 90U);
    tell(scoper_.events.m_pLaneRangeChanged, 0U, 5.0, 25.0, static_cast<int32_t>(kScoperaCauseWheel));
    EXPECT_EQ(scoper_.lanes[0].m_nHeight, 90U);
    EXPECT_EQ(scoper_.lanes[0].m_fUpper, 25.0);
    tell(scoper_.events.m_pLaneResized, 0U, 80U);
    form_.ZoomBackClick();
    EXPECT_NEAR(scoper_.lanes[0].m_fUpper, 220.0, 1e-9);
    EXPECT_EQ(scoper_.lanes[0].m_nHeight, 80U) << "is no zoom";
    form_.ShowDigitalClick(true);
    EXPECT_EQ(scoper_.lanes.back().m_nLow, 1U);
    form_.LanesClick(false);
    EXPECT_TRUE(scoper_.lanes.empty());
    EXPECT_EQ(settings_.viewLanes, 0);
}

TEST_F(ShowFormLanes, ChannelsAreHiddenAloneAndKeptSo) {
    begin();
    std::vector<std::pair<int, bool>> told;
    QObject::connect(&form_, &T_ShowForm::channelShown, [&](int channel, bool on) { told.emplace_back(channel, on); });
    tell(scoper_.events.m_pColumnSwitched, 2U, 0);
    EXPECT_EQ(told, (std::vector<std::pair<int, bool>>{{12, false}}));
    EXPECT_FALSE(settings_.channels[12].shown);
    EXPECT_EQ(scoper_.lanes.size(), kChannels - 1);
    tell(scoper_.events.m_pSoloWanted, 4U);
    EXPECT_EQ(visible(), (std::vector<int>{0, 0, 0, 0, 1, 0}));
    tell(scoper_.events.m_pSoloWanted, 4U);
    EXPECT_EQ(visible(), (std::vector<int>{1, 1, 0, 1, 1, 1})) << "what was hidden before stays hidden";
    form_.recordingStopped();
    begin();
    EXPECT_EQ(visible(), (std::vector<int>{1, 1, 0, 1, 1, 1}));
    settings_.channels[12].shown = true;
    settings_.channels[10].shown = false;
    form_.shownChannelsChanged();
    EXPECT_EQ(visible(), (std::vector<int>{0, 1, 1, 1, 1, 1}));
    form_.ShowAllClick();
    EXPECT_TRUE(settings_.channels[10].shown);
    tell(scoper_.events.m_pHeadClicked, 3U);
    EXPECT_TRUE(scoper_.columns[3].marked);
}

TEST_F(ShowFormLanes, KeysZoomAndTheWayBackIsKept) {
    begin();
    const auto expectX = [this](double low, double high) {
        EXPECT_NEAR(scoper_.range[kScoperaAxisX].first, low, 1e-9);
        EXPECT_NEAR(scoper_.range[kScoperaAxisX].second, high, 1e-9);
    };
    auto* held = form_.findChild<QLabel*>("HeldChip");
    form_.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form_));
    expectX(0, 101);
    QTest::keyClick(&form_, Qt::Key_Plus);
    expectX(50, 101);
    EXPECT_TRUE(held->isHidden()) << "it is followed still";
    QTest::keyClick(&form_, Qt::Key_Home);
    expectX(0, 50.5);
    EXPECT_FALSE(held->isHidden());
    EXPECT_TRUE(held->text().contains("End")) << held->text().toStdString();
    QTest::keyClick(&form_, Qt::Key_Plus);
    EXPECT_NEAR(scoper_.range[kScoperaAxisX].second - scoper_.range[kScoperaAxisX].first, 25.0, 1.0);
    QTest::keyClick(&form_, Qt::Key_End);
    EXPECT_TRUE(held->isHidden());
    // A click on the strip brings that part of the whole into the picture.
    auto* strip = form_.findChild<QWidget*>("OverviewStrip");
    QTest::mouseClick(strip, Qt::LeftButton, {}, QPoint(strip->width() / 4, 5));
    EXPECT_FALSE(held->isHidden());
    EXPECT_NEAR(scoper_.range[kScoperaAxisX].first + scoper_.range[kScoperaAxisX].second, 101.0 / 2, 3.0);
    QTest::keyClick(&form_, Qt::Key_1);
    EXPECT_NEAR(scoper_.range[kScoperaAxisX].second - scoper_.range[kScoperaAxisX].first, 500.0, 1e-9);
    while (scoper_.range[kScoperaAxisX].second - scoper_.range[kScoperaAxisX].first != 101.0) {
        const auto before = scoper_.range[kScoperaAxisX];
        QTest::keyClick(&form_, Qt::Key_Backspace);
        ASSERT_NE(scoper_.range[kScoperaAxisX], before) << "the first part was lost";
    }
}

}  // namespace
}  // namespace tarno2::test

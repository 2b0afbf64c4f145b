#include <QApplication>
#include <QClipboard>
#include <QTest>
#include <gtest/gtest.h>
#include <limits>

#include "scopera/axis_ticker.h"
#include "tests/scopera/scoper_fixture.h"
#include "tests/support/temporary_folder.h"

namespace tarno2 {
namespace {

TEST(ScoperFactory, KnowsOneInterface) {
    const SCOPERAStaticFactory factory = scoperFactory();
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(factory("IADCDevice", 0), nullptr);
    EXPECT_EQ(factory(nullptr, 0), nullptr);
    EXPECT_EQ(factory(TARNO2_SCOPERA_INTERFACE, 1), nullptr);
}

TEST(ScoperFactory, AnObjectWithoutAViewRefusesAndSurvives) {
    const SCOPERAStaticFactory factory = scoperFactory();
    ASSERT_NE(factory, nullptr);
    const std::unique_ptr<ISCOPERA, ReleaseScoper> scoper(static_cast<ISCOPERA*>(factory(TARNO2_SCOPERA_INTERFACE, 0)));
    EXPECT_EQ(scoper->AbiVersion(), kScoperaAbiVersion);
    EXPECT_EQ(scoper->SetRange(kScoperaAxisX, 0, 1), 0);
    EXPECT_EQ(scoper->Render(), 0);
    {
        QWidget parent;
        EXPECT_NE(scoper->CreateView(&parent), nullptr);
        EXPECT_EQ(parent.children().size(), 1);
        EXPECT_EQ(scoper->Render(), 1);
    }
    EXPECT_EQ(scoper->View(), nullptr);
    EXPECT_EQ(scoper->Render(), 0);
}

using PlotViewTest = ScoperFixture;

TEST_F(PlotViewTest, RefusesWhatCanNotBeDrawn) {
    const int16_t samples[4] = {};
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const SCOPERAFrames wrong[] = {
        {nullptr, 4, 1, kScoperaSigned16, 0, 1},
        {samples, 4, 0, kScoperaSigned16, 0, 1},
        {samples, 4, 256, kScoperaSigned16, 0, 1},
        {samples, 4, 1, 4, 0, 1},
        {samples, 4, 1, kScoperaSigned16, 0, 0},
        {samples, 4, 1, kScoperaSigned16, nan, 1},
        {reinterpret_cast<const char*>(samples) + 1, 2, 1, kScoperaSigned16, 0, 1},
    };
    for (const SCOPERAFrames& frames : wrong) {
        EXPECT_EQ(scoper_->SetFrames(&frames), 0);
    }
    EXPECT_EQ(scoper_->SetFrames(nullptr), 1);
    EXPECT_EQ(scoper_->SetRange(kScoperaAxisX, 1, 1), 0);
    EXPECT_EQ(scoper_->SetRange(kScoperaAxisX, nan, 1), 0);
    EXPECT_EQ(scoper_->SetRange(2, 0, 1), 0);
    EXPECT_EQ(scoper_->SetOption(99, 1), 0);
    EXPECT_EQ(scoper_->SetText(99, "x"), 0);
}

template <typename Sample>
std::vector<Sample> withSpike(size_t count, size_t place, Sample rest, Sample spike) {
    std::vector<Sample> samples(count, rest);
    samples[place] = spike;
    return samples;
}

TEST_F(PlotViewTest, OneSampleAmongTenMillionIsSeen) {
    constexpr size_t kCount = 10000000;
    const auto signed16 = withSpike<int16_t>(kCount, 7500000, -100, 32767);
    const auto unsigned16 = withSpike<uint16_t>(kCount, 7500000, 100, 65535);
    const auto signed32 = withSpike<int32_t>(kCount, 7500000, -100, 8388607);
    const auto unsigned32 = withSpike<uint32_t>(kCount, 7500000, 100, 4294967295U);
    const struct {
        const void* samples;
        uint32_t format;
        double spike;
    } kCases[] = {{signed16.data(), kScoperaSigned16, 32767.0},
                  {unsigned16.data(), kScoperaUnsigned16, 65535.0},
                  {signed32.data(), kScoperaSigned32, 8388607.0},
                  {unsigned32.data(), kScoperaUnsigned32, 4294967295.0}};
    for (const auto& c : kCases) {
        setColumns({kRed}, 8.0 / c.spike);
        const SCOPERAFrames frames{c.samples, kCount, 1, c.format, 0.0, 1e-5};
        ASSERT_EQ(scoper_->SetFrames(&frames), 1);
        const QImage image = picture();
        const QPoint top = pixelOf(75, 8);
        EXPECT_TRUE(isColor(image, top, kRed)) << c.format;
        // From the rest up to its top, in one column of pixels or two.
        const QRect column(QPoint(top.x() - 2, top.y()), QPoint(top.x() + 2, pixelOf(75, 0.5).y()));
        EXPECT_GE(countColor(image, column, kRed), column.height() - 1) << c.format;
        EXPECT_LE(countColor(image, column, kRed), 2 * column.height()) << c.format;
        EXPECT_EQ(countColor(image, column.translated(-8, 0), kRed), 0) << c.format;
        double low = 0;
        double high = 0;
        ASSERT_EQ(scoper_->GetExtremes(&low, &high), 1);
        EXPECT_NEAR(high, 8.0, 1e-9);
    }
}

TEST_F(PlotViewTest, TheFirstCurveLiesInFrontAndHiddenOnesDoNotCount) {
    const SCOPERAColumn columns[] = {{"a", kRed, 1, 1.0, 0.0, "", 0, 0}, {"b", kBlue, 1, 1.0, 0.0, "", 0, 0}};
    ASSERT_EQ(scoper_->SetColumns(columns, 2), 1);
    setSamples({5, 5, 5, 5, 5, -7}, 2, 50.0);
    const QPoint shared = pixelOf(20, 5);
    EXPECT_TRUE(isColor(picture(), shared, kRed));
    EXPECT_FALSE(isColor(picture(), shared, kBlue));
    const SCOPERAColumn hidden[] = {{"a", kRed, 0, 1.0, 0.0, "", 0, 0}, {"b", kBlue, 1, 0.5, 1.0, "", 0, 0}};
    ASSERT_EQ(scoper_->SetColumns(hidden, 2), 1);
    EXPECT_TRUE(isColor(picture(), pixelOf(20, 3.5), kBlue));
    EXPECT_EQ(countColor(picture(), view_->rect(), kRed), 0);
    double low = 0;
    double high = 0;
    ASSERT_EQ(scoper_->GetExtremes(&low, &high), 1);
    EXPECT_DOUBLE_EQ(low, -2.5);
    EXPECT_DOUBLE_EQ(high, 3.5);
}

TEST_F(PlotViewTest, LinesRunBetweenSamplesThatLieApart) {
    setColumns({kRed});
    setSamples({-8, 8, 8}, 1, 50.0);
    const QImage image = picture();
    for (const double part : {0.1, 0.5, 0.9}) {
        EXPECT_TRUE(isTinted(image, pixelOf(50 * part, -8 + 16 * part), kRed)) << part;
    }
    EXPECT_TRUE(isColor(image, pixelOf(100, 8), kRed)) << "the last sample stands at the end of the axis";
    // A view between two samples still shows the line, though no sample lies in it.
    ASSERT_EQ(scoper_->SetRange(kScoperaAxisX, 20, 30), 1);
    EXPECT_TRUE(isTinted(picture(), pixelOf(25, 0), kRed));
    double low = 0;
    double high = 0;
    EXPECT_EQ(scoper_->GetExtremes(&low, &high), 0);
}

TEST_F(PlotViewTest, AnEdgeIsAnUnbrokenVerticalLine) {
    setColumns({kRed});
    std::vector<int16_t> samples(100000, -8);
    std::fill(samples.begin() + 50050, samples.end(), int16_t{8});
    setSamples(samples, 1, 0.001);
    const QImage image = picture();
    const QPoint top = pixelOf(50.05, 8);
    const QPoint bottom = pixelOf(50.05, -8);
    for (int y = top.y(); y <= bottom.y(); ++y) {
        ASSERT_TRUE(isColor(image, {top.x(), y}, kRed)) << y;
    }
    EXPECT_FALSE(isColor(image, {top.x() + 10, (top.y() + bottom.y()) / 2}, kRed));
}

TEST_F(PlotViewTest, FramesMayCoverAPartOfTheRange) {
    setColumns({kRed});
    setSamples(std::vector<int16_t>(60000, 3), 1, 0.001);
    const QImage image = picture();
    EXPECT_TRUE(isColor(image, pixelOf(59.5, 3), kRed));
    EXPECT_EQ(countColor(image, QRect(pixelOf(60.5, 10), pixelOf(100, -10)), kRed), 0);
    ASSERT_EQ(scoper_->SetRange(kScoperaAxisX, 60, 100), 1);
    EXPECT_EQ(countColor(picture(), view_->rect(), kRed), 0);
    ASSERT_EQ(scoper_->SetRange(kScoperaAxisX, -20, 20), 1);
    EXPECT_TRUE(isColor(picture(), pixelOf(0.5, 3), kRed));
    EXPECT_FALSE(isColor(picture(), pixelOf(-1, 3), kRed));
}

TEST_F(PlotViewTest, PointsStandAloneAndKeepTheExtremes) {
    setColumns({kRed});
    ASSERT_EQ(scoper_->SetOption(kScoperaOptionPoints, 1), 1);
    setSamples({-8, 8, -8, 8, -8}, 1, 20.0);
    const QImage few = picture();
    EXPECT_TRUE(isColor(few, pixelOf(20, 8), kRed));
    EXPECT_EQ(countColor(few, QRect(pixelOf(22, 9), pixelOf(38, -9)), kRed), 0);
    setSamples(withSpike<int16_t>(1000000, 750001, 0, 8), 1, 0.0001);
    EXPECT_TRUE(isColor(picture(), pixelOf(75, 8), kRed));
    EXPECT_FALSE(isColor(picture(), pixelOf(75, 5), kRed));
}

TEST_F(PlotViewTest, WhatIsOutsideTheYRangeIsCut) {
    setColumns({kRed, kBlue});
    setSamples({300, -300, 300, -300}, 2, 50.0);
    EXPECT_EQ(countColor(picture(), view_->rect(), kRed) + countColor(picture(), view_->rect(), kBlue), 0);
    setSamples({300, 300, -300, -300}, 2, 50.0);
    const QPoint middle = pixelOf(25, 0);
    EXPECT_TRUE(isTinted(picture(), middle, kRed));
}

TEST_F(PlotViewTest, TheHostIsAskedForDataWhenTheViewIsShownAndWhenItsWidthChanges) {
    QTest::qWait(0);
    EXPECT_TRUE(told_.paintsWanted.empty()) << "a hidden view draws nothing";
    view_->show();
    ASSERT_TRUE(QTest::qWaitFor([this] { return !told_.paintsWanted.empty(); }));
    EXPECT_EQ(told_.paintsWanted.back(), scoper_->PixelWidth());
    const uint32_t before = told_.paintsWanted.back();
    view_->resize(view_->width() + 100, view_->height());
    ASSERT_TRUE(QTest::qWaitFor([this, before] { return told_.paintsWanted.back() != before; }));
    EXPECT_EQ(told_.paintsWanted.back(), before + 100);
}

TEST_F(PlotViewTest, ColorsFollowThePalette) {
    EXPECT_EQ(picture().pixelColor(3, 3), QColor(Qt::white));
    QPalette dark;
    dark.setColor(QPalette::Base, QColor(20, 30, 40));
    view_->setPalette(dark);
    EXPECT_EQ(picture().pixelColor(3, 3), QColor(20, 30, 40));
}

TEST(AxisNumbers, HaveTheDecimalsThatTheStepNeeds) {
    const struct {
        double value;
        double step;
        const char* text;
    } kCases[] = {
        {5, 5, "5"},
        {0.25, 0.25, "0.25"},
        {2.5, 2.5, "2.5"},
        {12345678, 1, "12345678"},
        {-0.3, 0.1, "-0.3"},
        {-1e-17, 0.1, "0.0"},
        {100000.002, 0.002, "100000.002"},
        {1e16, 1e15, "1e+16"},
        {0.1 + 0.2, 0.05, "0.30"},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(plainNumber(c.value, decimalsOf(c.step)), QString(c.text));
    }
}

}  // namespace
}  // namespace tarno2

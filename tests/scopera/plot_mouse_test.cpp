#include <QApplication>
#include <QMouseEvent>
#include <QTest>
#include <QWheelEvent>

#include "tests/scopera/scoper_fixture.h"

namespace tarno2 {
namespace {

class PlotMouseTest : public ScoperFixture {
protected:
    void expectRange(int axis, double lower, double upper, double tolerance) {
        double low = 0;
        double high = 0;
        ASSERT_EQ(scoper_->GetRange(axis, &low, &high), 1);
        EXPECT_NEAR(low, lower, tolerance);
        EXPECT_NEAR(high, upper, tolerance);
        if (told_.rangeCalls[axis] > 0) {
            EXPECT_EQ(told_.lower[axis], low);
            EXPECT_EQ(told_.upper[axis], high);
        }
    }
    static constexpr double kPixelX = 0.2;  // more than a pixel of the X axis
    static constexpr double kPixelY = 0.06;
};

TEST_F(PlotMouseTest, TheWheelZoomsAboutTheMouse) {
    wheel(pixelOf(25, 0), 1);
    expectRange(kScoperaAxisX, 5, 85, kPixelX);
    expectRange(kScoperaAxisY, -10, 10, 0);
    EXPECT_EQ(told_.rangeCalls[kScoperaAxisX], 1);
    EXPECT_EQ(told_.cause[kScoperaAxisX], kScoperaCauseWheel);
    wheel(pixelOf(25, 0), -1);
    expectRange(kScoperaAxisX, 0, 100, kPixelX);
    wheel(pixelOf(50, 0), 1, Qt::ControlModifier);
    expectRange(kScoperaAxisY, -8, 8, kPixelY);
    wheel({5, pixelOf(0, 0).y()}, 1);
    expectRange(kScoperaAxisY, -6.4, 6.4, kPixelY);
    EXPECT_EQ(told_.cause[kScoperaAxisY], kScoperaCauseWheel);
    EXPECT_EQ(told_.rangeCalls[kScoperaAxisX], 2);
}

TEST_F(PlotMouseTest, ZoomEndsBeforeTheNumbersDo) {
    const QPoint place = pixelOf(50, 0);
    for (int i = 0; i < 300; ++i) {
        wheel(place, 1);
    }
    double low = 0;
    double high = 0;
    scoper_->GetRange(kScoperaAxisX, &low, &high);
    EXPECT_LT(low, high);
    for (int i = 0; i < 600; ++i) {
        wheel(place, -1);
    }
    EXPECT_FALSE(picture().isNull());
}

TEST_F(PlotMouseTest, ADragMovesThePictureAndAShakyOneOnlyAlong) {
    drag(pixelOf(50, 0), pixelOf(40, 0) + QPoint(0, 5));
    expectRange(kScoperaAxisX, 10, 110, kPixelX);
    EXPECT_EQ(told_.rangeCalls[kScoperaAxisY], 0);
    drag(pixelOf(50, 0), pixelOf(50, 2));
    expectRange(kScoperaAxisX, 10, 110, kPixelX);
    expectRange(kScoperaAxisY, -12, 8, kPixelY);
    EXPECT_EQ(told_.cause[kScoperaAxisX], kScoperaCauseDrag);
    EXPECT_EQ(told_.cause[kScoperaAxisY], kScoperaCauseDrag);
}

TEST_F(PlotMouseTest, ADragWithShiftZoomsIntoTheRectangle) {
    for (const Qt::KeyboardModifier atRelease : {Qt::ShiftModifier, Qt::NoModifier}) {
        told_ = {};
        scoper_->SetRange(kScoperaAxisX, 0.0, 100.0);
        scoper_->SetRange(kScoperaAxisY, -10.0, 10.0);
        drag(pixelOf(20, 5), pixelOf(60, -5), Qt::ShiftModifier, atRelease);
        expectRange(kScoperaAxisX, 20, 60, 2 * kPixelX);
        expectRange(kScoperaAxisY, -5, 5, 2 * kPixelY);
        EXPECT_EQ(told_.cause[kScoperaAxisX], kScoperaCauseRectangle);
        EXPECT_EQ(told_.cause[kScoperaAxisY], kScoperaCauseRectangle);
    }
    const int calls = told_.rangeCalls[kScoperaAxisX];
    drag(pixelOf(30, 0), pixelOf(30, 0) + QPoint(2, 2), Qt::ShiftModifier);
    EXPECT_EQ(told_.rangeCalls[kScoperaAxisX], calls) << "a rectangle of a few pixels is a slip of the hand";
}

TEST_F(PlotMouseTest, TheHostIsToldOfClicksAndPlaces) {
    QTest::mouseDClick(view_, Qt::LeftButton, Qt::NoModifier, pixelOf(50, 0));
    EXPECT_EQ(told_.automaticCalls, 1);
    expectRange(kScoperaAxisX, 0, 100, 0);
    QTest::mouseClick(view_, Qt::RightButton, Qt::NoModifier, pixelOf(50, 0));
    EXPECT_EQ(told_.pressedButton, kScoperaRightButton);
    EXPECT_EQ(told_.mouseInside, 1);
    EXPECT_NEAR(told_.mouseX, 60, 25);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(view_, &leave);
    EXPECT_EQ(told_.mouseInside, 0);
}

TEST_F(PlotMouseTest, FlagsStandAtTheirPlacesAndTellOfClicks) {
    const SCOPERAFlag flags[] = {{75.0, "far", 7}, {25.0, nullptr, 1}, {25.5, "close", 2}, {200.0, "outside", 3}};
    ASSERT_EQ(scoper_->SetFlags(flags, 4), 1);
    const QImage drawn = picture();
    const auto inColumn = [&](double x) {
        int marked = 0;
        for (int y = pixelOf(0, 9).y(); y < pixelOf(0, -9).y(); ++y) {
            marked += drawn.pixelColor(pixelOf(x, 0).x(), y) != QColor(Qt::white) ? 1 : 0;
        }
        return marked;
    };
    EXPECT_GT(inColumn(75.0), 100);
    EXPECT_GT(inColumn(25.0), 100);
    EXPECT_LT(inColumn(85.0), 30) << "the grid alone";
    for (const double x : {75.0, 25.5, 50.0}) {
        QTest::mouseClick(view_, Qt::LeftButton, Qt::NoModifier, pixelOf(x, 10) + QPoint(3, 4));
    }
    EXPECT_EQ(told_.flagsClicked, (std::vector<uint64_t>{7, 2}));
    const SCOPERAFlag nowhere{std::numeric_limits<double>::infinity(), "", 0};
    EXPECT_EQ(scoper_->SetFlags(&nowhere, 1), 0);
    EXPECT_EQ(scoper_->SetFlags(nullptr, 0), 1);
    QTest::mouseClick(view_, Qt::LeftButton, Qt::NoModifier, pixelOf(75, 10) + QPoint(3, 4));
    EXPECT_EQ(told_.flagsClicked.size(), 2U);
}

TEST_F(PlotMouseTest, CursorsAreDraggedAndDrawn) {
    const QImage without = picture();
    ASSERT_EQ(scoper_->SetOption(kScoperaOptionCursors, 1), 1);
    SCOPERACursors cursors{};
    ASSERT_EQ(scoper_->GetCursors(&cursors), 1);
    EXPECT_NEAR(cursors.m_fX[1] - cursors.m_fX[0], 100.0 / 3, 1e-9);
    ASSERT_EQ(scoper_->SetRange(kScoperaAxisY, 0, 300), 1);
    ASSERT_EQ(scoper_->GetCursors(&cursors), 1);
    EXPECT_NEAR(cursors.m_fY[0], 100, 1e-9) << "nobody has placed it yet";
    EXPECT_NEAR(cursors.m_fY[1], 200, 1e-9);
    ASSERT_EQ(scoper_->SetRange(kScoperaAxisY, -10, 10), 1);
    ASSERT_EQ(scoper_->GetCursors(&cursors), 1);
    EXPECT_NE(picture(), without);
    // A vertical line alone, then the crossing of the second cursor's lines.
    drag(pixelOf(cursors.m_fX[0], 8), pixelOf(10, 8));
    EXPECT_NEAR(told_.cursors.m_fX[0], 10, kPixelX);
    // By value: the structure is packed, and its numbers may not lie where a reference needs them.
    EXPECT_NEAR(told_.cursors.m_fY[0], cursors.m_fY[0], 0.0);
    drag(pixelOf(cursors.m_fX[1], cursors.m_fY[1]), pixelOf(80, -4));
    ASSERT_EQ(scoper_->GetCursors(&cursors), 1);
    EXPECT_NEAR(cursors.m_fX[1], 80, kPixelX);
    EXPECT_NEAR(cursors.m_fY[1], -4, kPixelY);
    ASSERT_EQ(scoper_->SetRange(kScoperaAxisY, -100, 100), 1);
    ASSERT_EQ(scoper_->GetCursors(&cursors), 1);
    EXPECT_NEAR(cursors.m_fY[1], -4, kPixelY) << "one that was placed stays, whatever signal comes";
    ASSERT_EQ(scoper_->SetRange(kScoperaAxisY, -10, 10), 1);
    EXPECT_EQ(told_.rangeCalls[kScoperaAxisX], 0) << "a drag of a cursor moves no axis";
    const SCOPERACursors set{{30, 60}, {1, 2}, {0, 0}};
    ASSERT_EQ(scoper_->SetCursors(&set), 1);
    const QImage image = picture();
    const QRgb background = image.pixel(pixelOf(45, -5));
    EXPECT_NE(image.pixel(pixelOf(30, -5)), background);
}

TEST_F(PlotMouseTest, TheLegendSwitchesCurves) {
    setColumns({kRed, kBlue});
    setSamples({5, -5, 5, -5, 5, -5}, 2, 50.0);
    const uint32_t wide = scoper_->PixelWidth();
    ASSERT_EQ(scoper_->SetOption(kScoperaOptionLegend, 1), 1);
    const QRect area = pictureArea();
    EXPECT_LT(scoper_->PixelWidth(), wide);
    const QImage image = picture();
    QPoint swatch;
    for (int y = 0; y < image.height() && swatch.isNull(); ++y) {
        for (int x = area.right() + 2; x < image.width() && swatch.isNull(); ++x) {
            swatch = isColor(image, {x, y}, kBlue) ? QPoint(x + 2, y + 2) : swatch;
        }
    }
    ASSERT_FALSE(swatch.isNull()) << "no swatch in the legend";
    QTest::mouseClick(view_, Qt::LeftButton, Qt::NoModifier, swatch);
    EXPECT_EQ(told_.switchedColumn, 1);
    EXPECT_EQ(told_.switchedVisible, 0);
    EXPECT_EQ(countColor(picture(), view_->rect(), kBlue), 0);
    EXPECT_GT(countColor(picture(), area, kRed), 100);
    QTest::mouseClick(view_, Qt::LeftButton, Qt::NoModifier, swatch);
    EXPECT_EQ(told_.switchedVisible, 1);
    EXPECT_GT(countColor(picture(), area, kBlue), 100);
}

}  // namespace
}  // namespace tarno2

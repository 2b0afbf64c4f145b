#include <QScrollBar>
#include <QTest>

#include "tests/scopera/scoper_fixture.h"

namespace tarno2 {
namespace {

class LanesTest : public ScoperFixture {
protected:
    static constexpr uint32_t kGreen = 0x00A000;

    /// Red and blue of -5 to 5 in lanes of their own, and a green line of 0 and 1 in a low one.
    void SetUp() override {
        ScoperFixture::SetUp();
        std::vector<int16_t> samples;
        for (int i = 0; i < 11; ++i) {
            samples.insert(samples.end(), {4, -4, static_cast<int16_t>(i < 5 ? 0 : 1)});
        }
        setColumns(0);
        setSamples(samples, 3, 10.0);
        const SCOPERALane lanes[] = {{-5, 5, 0, 0}, {-5, 5, 0, 0}, {-0.2, 1.2, 0, 1}};
        ASSERT_EQ(scoper_->SetLanes(lanes, 3), 1);
    }
    void setColumns(uint32_t marked, uint32_t laneOfBlue = 1) {
        const SCOPERAColumn columns[] = {{"red", kRed, 1, 1.0, 0.0, "V", 0, marked == 1},
                                         {"blue", kBlue, 1, 1.0, 0.0, "bar", laneOfBlue, marked == 2},
                                         {"green", kGreen, 1, 1.0, 0.0, "", 2, 0}};
        ASSERT_EQ(scoper_->SetColumns(columns, 3), 1);
    }
    /// In the middle of a head's name.
    QPoint headOf(int32_t lane, double upper) { return {30, pixelOf(1, lane, upper).y() + 8}; }
};

TEST_F(LanesTest, EachCurveLiesInItsLaneAndALineInALowOne) {
    const QImage image = picture();
    EXPECT_TRUE(isColor(image, pixelOf(50, 0, 4), kRed));
    EXPECT_TRUE(isColor(image, pixelOf(50, 1, -4), kBlue));
    EXPECT_TRUE(isColor(image, pixelOf(20, 2, 0), kGreen));
    EXPECT_TRUE(isColor(image, pixelOf(90, 2, 1), kGreen));
    const int first = pixelOf(50, 1, 5).y() - pixelOf(50, 0, 5).y();
    const int low = pixelOf(50, 2, -0.2).y() - pixelOf(50, 2, 1.2).y();
    EXPECT_NEAR(2 * low, first, 16);
    // Nothing of a curve leaves its lane, however far its values go.
    const SCOPERALane narrow[] = {{-1, 1, 0, 0}, {-5, 5, 0, 0}, {-0.2, 1.2, 0, 1}};
    ASSERT_EQ(scoper_->SetLanes(narrow, 3), 1);
    EXPECT_EQ(countColor(picture(), pictureArea(), kRed), 0);
    double low0 = 0;
    double high0 = 0;
    ASSERT_EQ(scoper_->GetColumnExtremes(1, &low0, &high0), 1);
    EXPECT_EQ(low0, -4.0);
    EXPECT_EQ(scoper_->GetColumnExtremes(3, &low0, &high0), 0);
    const SCOPERALane empty{1, 1, 0, 0};
    EXPECT_EQ(scoper_->SetLanes(&empty, 1), 0);
    ASSERT_EQ(scoper_->SetLanes(nullptr, 0), 1);
    EXPECT_TRUE(isColor(picture(), pixelOf(50, 4), kRed)) << "one upon the other again";
    EXPECT_EQ(told_.mouseLane, -1);
}

TEST_F(LanesTest, OneLaneIsZoomedAndMovedAndTheOthersStay) {
    wheel(pixelOf(50, 1, 0), 1, Qt::ControlModifier);
    EXPECT_EQ(told_.lane.lane, 1U);
    EXPECT_NEAR(told_.lane.lower, -4.0, 0.1);
    EXPECT_NEAR(told_.lane.upper, 4.0, 0.1);
    EXPECT_EQ(told_.lane.cause, kScoperaCauseWheel);
    const QPoint from = pixelOf(50, 0, 0);
    drag(from, from + QPoint(0, 30));
    EXPECT_EQ(told_.lane.lane, 0U);
    EXPECT_GT(told_.lane.upper, 5.5);
    EXPECT_NEAR(told_.lane.upper - told_.lane.lower, 10.0, 1e-9);
    EXPECT_EQ(told_.rangeCalls[kScoperaAxisX], 0);
    // A rectangle zooms time, and the lane that it lies in.
    drag(pixelOf(20, 1, 2), pixelOf(60, 1, -2), Qt::ShiftModifier);
    EXPECT_NEAR(told_.lower[kScoperaAxisX], 20.0, 0.5);
    EXPECT_EQ(told_.lane.lane, 1U);
    EXPECT_NEAR(told_.lane.upper, 2.0, 0.2);
    EXPECT_EQ(told_.lane.cause, kScoperaCauseRectangle);
}

TEST_F(LanesTest, HeadsAreClickedDraggedAndSwitchColumns) {
    QTest::mouseClick(view_, Qt::LeftButton, {}, headOf(1, 5));
    EXPECT_EQ(told_.clickedHead, 1U);
    drag(headOf(1, 5), headOf(0, 5));
    EXPECT_EQ(told_.droppedHead, std::pair(1U, 0U));
    setColumns(1, 0);
    EXPECT_TRUE(isColor(picture(), pixelOf(50, 0, -4), kBlue)) << "both share a lane";
    // The buttons stand at the right end of a head's first line.
    const QPoint line = headOf(0, 5);
    bool hidden = false;
    for (int x = line.x(); x < pictureArea().left() && !hidden; x += 4) {
        QTest::mouseClick(view_, Qt::LeftButton, {}, {x, line.y()});
        hidden = told_.switchedColumn == 0;
    }
    EXPECT_TRUE(hidden);
    EXPECT_EQ(told_.switchedVisible, 0);
    EXPECT_EQ(told_.solo, 0U) << "before the one that hides";
    EXPECT_EQ(countColor(picture(), pictureArea(), kRed), 0);
}

TEST_F(LanesTest, BordersAreDraggedAndManyLanesScroll) {
    const QPoint border = pixelOf(50, 0, -5) + QPoint(0, 4);
    drag(border, border + QPoint(0, 300));
    EXPECT_EQ(told_.laneHeight.first, 0U);
    EXPECT_GT(told_.laneHeight.second, 300U);
    std::vector<SCOPERALane> lanes(160, {-5, 5, 0, 0});
    ASSERT_EQ(scoper_->SetLanes(lanes.data(), 160), 1);
    view_->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view_));
    auto* bar = view_->findChild<QScrollBar*>();
    ASSERT_NE(bar, nullptr);
    EXPECT_TRUE(bar->isVisible());
    ASSERT_EQ(scoper_->ShowLane(159), 1);
    EXPECT_EQ(bar->value(), bar->maximum());
    EXPECT_FALSE(pixelOf(50, 159, 0).isNull());
    wheel({30, 200}, 1000);
    EXPECT_EQ(bar->value(), 0);
    EXPECT_EQ(scoper_->ShowLane(160), 0);
}

TEST_F(LanesTest, ALevelIsDraggedInItsLane) {
    const SCOPERALevel levels[] = {{1, 1, 2.0, "above", 7}, {0, 0, 1.0, "", 8}};
    ASSERT_EQ(scoper_->SetLevels(levels, 2), 1);
    drag(pixelOf(50, 1, 2.0), pixelOf(50, 1, -1.0));
    EXPECT_EQ(told_.level.identity, 7U);
    EXPECT_NEAR(told_.level.y, -1.0, 0.1);
    EXPECT_EQ(told_.level.done, 1);
    // Beyond the range it is an arrow at the end of the picture, by which it comes back.
    const SCOPERALevel beyond[] = {{1, 1, 90.0, "beyond", 9}};
    ASSERT_EQ(scoper_->SetLevels(beyond, 1), 1);
    QPoint arrow = pixelOf(50, 1, 5.0) + QPoint(0, 4);
    arrow.setX(pictureArea().right() - 3);
    drag(arrow, arrow);
    EXPECT_EQ(told_.level.identity, 7U) << "a click moves nothing";
    drag(arrow, arrow + (pixelOf(50, 1, 3.0) - pixelOf(50, 1, 5.0)));
    EXPECT_EQ(told_.level.identity, 9U);
    EXPECT_NEAR(told_.level.y, 3.0, 0.5);
    ASSERT_EQ(scoper_->SetLevels(levels, 2), 1);
    // One that can't be moved leaves the drag to the picture.
    const QPoint fixed = pixelOf(50, 0, 1.0);
    drag(fixed, fixed + QPoint(0, 30));
    EXPECT_EQ(told_.level.identity, 9U);
    EXPECT_EQ(told_.lane.lane, 0U);
}

}  // namespace
}  // namespace tarno2

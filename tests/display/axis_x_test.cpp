#include "display/axis_x.h"

#include <gtest/gtest.h>

namespace tarno2 {
namespace {

TEST(AxisX, FramesStandAtTheirTime) {
    struct Case {
        AxisXUnit unit;
        double frame, place;
    };
    for (const Case& c : {Case{AxisXUnit::Samples, 1500, 1500}, Case{AxisXUnit::Microseconds, 3, 3000},
                          Case{AxisXUnit::Milliseconds, 7, 7}, Case{AxisXUnit::Seconds, 1500, 1.5},
                          Case{AxisXUnit::Minutes, 90000, 1.5}, Case{AxisXUnit::Hours, 3600000, 1.0}}) {
        EXPECT_DOUBLE_EQ(axisXOfFrame(c.frame, c.unit, 1000.0), c.place);
        EXPECT_DOUBLE_EQ(frameOfAxisX(c.place, c.unit, 1000.0), c.frame);
    }
}

TEST(AxisX, WithoutARateOnlySamplesHavePlaces) {
    for (const double rate : {0.0, -1.0}) {
        EXPECT_EQ(axisXOfFrame(5, AxisXUnit::Seconds, rate), 0.0);
        EXPECT_EQ(frameOfAxisX(5, AxisXUnit::Seconds, rate), 0.0);
        EXPECT_EQ(axisXOfFrame(5, AxisXUnit::Samples, rate), 5.0);
    }
}

TEST(AxisX, DecimalsTellNeighbouringPixelsApart) {
    const struct {
        double span, steps;
        int decimals;
    } cases[] = {{1e6, 500, 0}, {500, 500, 0}, {50, 500, 1}, {0.01, 500, 5}, {1e-30, 1, 12}, {0, 500, 0}, {3, 0, 0}};
    for (const auto& [span, steps, decimals] : cases) {
        EXPECT_EQ(resolvedDecimals(span, steps), decimals) << span;
    }
}

}  // namespace
}  // namespace tarno2

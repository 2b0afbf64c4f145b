#include <gtest/gtest.h>

#include "scopera/axis_ticker.h"

namespace tarno2 {
namespace {

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

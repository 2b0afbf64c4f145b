#include "records/line_formatter.h"

#include <array>
#include <bit>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "records/column_text.h"
#include "tests/records/printf_export.h"

namespace tarno2 {
namespace {

using test::printfFixed;

std::string fixed(double value, int precision, char decimal = '.') {
    std::array<char, kLongestNumber> text{};
    return {text.data(), writeFixed(text.data(), value, precision, decimal)};
}

TEST(WriteFixed, PrintsEveryKindOfNumberAsPrintfDoes) {
    std::vector<double> values = {
        0.0,  -0.0, 0.5,   1.5,    2.5,    0.125,  0.375,   -1e-9,   9.9999999995,      0.9999999,
        1e15, 1e16, 1e100, 123e18, 4.5e15, 5e-324, 1.7e308, -2.5e-7, 4503599627370495.5};
    values.push_back(std::numeric_limits<double>::infinity());
    values.push_back(-std::numeric_limits<double>::infinity());
    std::mt19937_64 random(7);
    for (int i = 0; i < 20000; ++i) {
        const auto whole = static_cast<double>(static_cast<int64_t>(random()) >> (random() % 60));
        values.push_back(std::ldexp(whole, -static_cast<int>(random() % 90)));  // many ties
        values.push_back(whole / 1e6);
        const auto any = std::bit_cast<double>(random());
        values.push_back(std::isnan(any) ? 0.1 : any);
    }
    for (const double value : values) {
        for (int precision = 0; precision <= 9; ++precision) {
            ASSERT_EQ(fixed(value, precision, ','), printfFixed(value, precision, ',')) << precision;
        }
    }
}

TEST(LineFormatter, CopiesALineThatIsShorterThanTheSpaceAndCountsIt) {
    ExportFormat format;
    format.firstColumn = FirstColumn::Samples;
    format.voltagePrecision = 1;
    format.divider = std::string(2, ';');
    format.decimal = ',';
    const std::array<double, 2> analog = {1.25, -0.0};
    const std::array<int8_t, 3> digital = {1, 0, -1};
    const std::string line = "41;;1,2;;-0,0;;1;;0;;4294967295\r\n";
    for (const size_t space : {size_t{1000000}, line.size() + 1}) {
        LineFormatter formatter(format, 41);
        std::string out(space, '?');
        size_t length = 0;
        EXPECT_EQ(formatter.format(out.data(), space, length, 0.0, analog, digital), 0);
        EXPECT_EQ(out.substr(0, length), line);
        EXPECT_EQ(formatter.format(out.data(), space, length, 0.0, analog, digital), 0);
        EXPECT_EQ(out.substr(0, 2), "42");
    }
    LineFormatter formatter(format, 41);
    std::string out(line.size(), '?');
    size_t length = 99;
    EXPECT_EQ(formatter.format(out.data(), out.size(), length, 0.0, analog, digital), 1);
    EXPECT_EQ(out, std::string(line.size(), '?'));
    out.resize(line.size() + 1);
    EXPECT_EQ(formatter.format(out.data(), out.size(), length, 0.0, analog, digital), 0);
    EXPECT_EQ(out.substr(0, length), line) << "a line that did not fit is not counted";
}

}  // namespace
}  // namespace tarno2

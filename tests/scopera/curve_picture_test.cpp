// Pictures of dense signals beside those of a plain painter: for each column of pixels the rows from the least to the
// greatest sample of it and its neighbour, found by going through them all.

#include <QTest>
#include <algorithm>
#include <cmath>
#include <random>

#include "tests/scopera/scoper_fixture.h"

namespace tarno2 {
namespace {

struct Rows {
    int top;
    int bottom;
};

class CurvePictureTest : public ScoperFixture {
protected:
    static constexpr size_t kFrames = 200000;

    /// In lanes the two columns lie one below the other.
    void show(std::vector<int16_t> first, std::vector<int16_t> second, bool lanes) {
        first_ = std::move(first);
        second_ = std::move(second);
        std::vector<int16_t> samples;
        for (size_t i = 0; i < kFrames; ++i) {
            samples.insert(samples.end(), {first_[i], second_[i]});
        }
        lanes_ = lanes;
        const SCOPERAColumn columns[] = {{"a", kRed, 1, 0.01, 0.0, "", 0, 0}, {"b", kBlue, 1, 0.01, 0.0, "", 1, 0}};
        ASSERT_EQ(scoper_->SetColumns(columns, 2), 1);
        const SCOPERALane both[] = {{-10, 10, 0, 0}, {-10, 10, 0, 0}};
        ASSERT_EQ(scoper_->SetLanes(both, lanes ? 2 : 0), 1);
        setSamples(samples, 2, 100.0 / kFrames);
        for (int32_t lane = 0; lane < 2; ++lane) {
            upper_[lane] = placeOf(lane, 10.0);
            lower_[lane] = placeOf(lane, -10.0);
        }
        left_ = upper_[0].x();
    }
    [[nodiscard]] int columns() const { return static_cast<int>(scoper_->PixelWidth()); }
    [[nodiscard]] int left() const { return left_; }
    /// With those samples beside the pixel to which lines run.
    [[nodiscard]] Rows rowsOf(int32_t curve, int pixel, size_t beside = 0) const {
        const std::vector<int16_t>& samples = curve == 0 ? first_ : second_;
        const auto at = [&](int x) { return kFrames * static_cast<size_t>(x) / static_cast<size_t>(columns()); };
        const size_t begin = std::max(at(pixel), beside) - beside;
        const size_t end = std::min(at(pixel + 1) + beside, kFrames);
        const auto [low, high] = std::minmax_element(samples.begin() + static_cast<ptrdiff_t>(begin),
                                                     samples.begin() + static_cast<ptrdiff_t>(end));
        return {rowOf(curve, *high), rowOf(curve, *low)};
    }
    /// Both curves stand where they should, and nothing of them elsewhere.
    void expectAsPlain(const QImage& image) {
        for (int x = 2; x + 2 < columns(); ++x) {
            // A column more or less, because the widget's places are whole pixels.
            std::vector<Rows> most[2];
            std::vector<Rows> least[2];
            for (const int32_t curve : {0, 1}) {
                for (int column = x - 1; column <= x + 1; ++column) {
                    most[curve].push_back(rowsOf(curve, column, 1));
                    least[curve].push_back(rowsOf(curve, column));
                }
            }
            for (int y = pictureTop(); y <= pictureBottom(); ++y) {
                const QColor color = image.pixelColor(left() + x, y);
                const bool drawn = color.red() != color.green() || color.green() != color.blue();
                const auto reaches = [y](const Rows& rows) { return within(rows, y, 2); };
                const auto covers = [y](const Rows& rows) { return within(rows, y, -1); };
                ASSERT_TRUE(!drawn || std::ranges::any_of(most[0], reaches) || std::ranges::any_of(most[1], reaches))
                    << x << ", " << y << ": nothing lies there";
                ASSERT_TRUE(drawn || !(std::ranges::all_of(least[0], covers) || std::ranges::all_of(least[1], covers)))
                    << x << ", " << y << ": something lies there";
            }
        }
    }
    [[nodiscard]] static bool within(const Rows& rows, int y, int more) {
        return y >= rows.top - more && y <= rows.bottom + more;
    }

private:
    QPoint placeOf(int32_t lane, double y) { return lanes_ ? pixelOf(0, lane, y) : pixelOf(0, y); }
    [[nodiscard]] int rowOf(int32_t curve, int16_t code) const {
        const double part = (10.0 - code * 0.01) / 20.0;
        return static_cast<int>(std::lround(upper_[curve].y() + part * (lower_[curve].y() - upper_[curve].y())));
    }
    [[nodiscard]] int pictureTop() const { return upper_[0].y() + 1; }
    [[nodiscard]] int pictureBottom() const { return lower_[1].y() - 1; }

    std::vector<int16_t> first_;
    std::vector<int16_t> second_;
    QPoint upper_[2];
    QPoint lower_[2];
    int left_ = 0;
    bool lanes_ = false;
};

TEST_F(CurvePictureTest, NoiseEdgeAndSpikeAreWhereAPlainPainterHasThem) {
    std::mt19937 random(7);
    std::vector<int16_t> noise;
    std::vector<int16_t> sine;
    for (size_t i = 0; i < kFrames; ++i) {
        noise.push_back(static_cast<int16_t>(static_cast<int>(random() % 1801) - 900));
        sine.push_back(static_cast<int16_t>(std::lround(200.0 * std::sin(static_cast<double>(i) * 20.0 / kFrames))));
    }
    std::vector<int16_t> square(kFrames, -700);
    std::fill(square.begin() + kFrames / 3, square.begin() + kFrames * 2 / 3, int16_t{700});
    std::vector<int16_t> spike(kFrames, 0);
    spike[kFrames * 4 / 5 + 3] = 900;
    for (const bool lanes : {false, true}) {
        SCOPED_TRACE(lanes);
        show(noise, sine, lanes);
        const QImage veiled = picture();
        expectAsPlain(veiled);
        // The noise in front hides nothing: where the sine runs the picture is another than beside it.
        int seen = 0;
        for (int x = 10; x < columns() - 10; ++x) {
            const Rows rows = rowsOf(1, x);
            const QColor beside = veiled.pixelColor(left() + x, rows.bottom + 12);
            int most = 0;
            for (int y = rows.top - 1; y <= rows.bottom + 1; ++y) {
                const QColor on = veiled.pixelColor(left() + x, y);
                most = std::max(most, on.blue() - on.red() - beside.blue() + beside.red());
            }
            seen += most > 40 ? 1 : 0;
        }
        EXPECT_GT(seen, (columns() - 20) * 95 / 100);
        show(square, spike, lanes);
        const QImage sharp = picture();
        expectAsPlain(sharp);
        const int edge = columns() / 3;
        const Rows rows = rowsOf(0, edge);
        EXPECT_GT(countColor(sharp, QRect(left() + edge - 1, rows.top, 3, rows.bottom - rows.top), kRed),
                  (rows.bottom - rows.top) * 9 / 10)
            << "an edge is no veil";
        const Rows peak = rowsOf(1, columns() * 4 / 5);
        EXPECT_GT(countColor(sharp, QRect(left() + columns() * 4 / 5 - 1, peak.top, 3, peak.bottom - peak.top), kBlue),
                  (peak.bottom - peak.top) * 8 / 10)
            << "nor is a spike";
    }
}

}  // namespace
}  // namespace tarno2

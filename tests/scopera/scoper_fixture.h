#pragma once

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QWidget>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include <tarno2/ISCOPERA.h>

#include "platform/library.h"

namespace tarno2 {

/// The library, found in the registry texts of the build tree and loaded once.
[[nodiscard]] SCOPERAStaticFactory scoperFactory();

struct ReleaseScoper {
    void operator()(ISCOPERA* scoper) const { scoper->Release(); }
};

/// What the host was told last, and how often.
struct Told {
    int rangeCalls[2] = {};
    double lower[2] = {};
    double upper[2] = {};
    int cause[2] = {};
    int automaticCalls = 0;
    int switchedColumn = -1;
    int switchedVisible = -1;
    double mouseX = 0.0;
    double mouseY = 0.0;
    int mouseInside = -1;
    int pressedButton = 0;
    int cursorCalls = 0;
    SCOPERACursors cursors{};
    std::vector<uint32_t> paintsWanted;
    std::vector<uint64_t> flagsClicked;
};

/// A view of 700 x 500 with X from 0 to 100 and Y from -10 to 10, white below black text.
class ScoperFixture : public testing::Test {
protected:
    static constexpr uint32_t kRed = 0x0000FF;  // 0xBBGGRR
    static constexpr uint32_t kBlue = 0xFF0000;

    void SetUp() override;

    /// One curve for each color, all with that scale and offset.
    void setColumns(const std::vector<uint32_t>& colors, double scale = 1.0, double offset = 0.0);
    /// Shows 16-bit frames from X = 0 on; the samples are kept here.
    void setSamples(std::vector<int16_t> samples, uint32_t columns, double step);
    [[nodiscard]] QImage picture() const { return view_->grab().toImage(); }
    /// Where a place of the axes lies on the widget.
    [[nodiscard]] QPoint pixelOf(double x, double y);
    [[nodiscard]] static bool isColor(const QImage& image, const QPoint& place, uint32_t bgr);
    [[nodiscard]] static int countColor(const QImage& image, const QRect& area, uint32_t bgr);
    [[nodiscard]] QRect pictureArea() { return {pixelOf(0, 10), pixelOf(100, -10)}; }

    std::unique_ptr<ISCOPERA, ReleaseScoper> scoper_;
    QWidget* view_ = nullptr;
    Told told_;

private:
    std::vector<int16_t> samples_;
};

}  // namespace tarno2

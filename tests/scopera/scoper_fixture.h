#pragma once

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QWidget>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <utility>
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
    int32_t mouseLane = -2;
    struct {
        uint32_t lane;
        double lower;
        double upper;
        int32_t cause;
    } lane{};
    std::pair<uint32_t, uint32_t> laneHeight{};
    std::optional<uint32_t> clickedHead;
    std::optional<std::pair<uint32_t, uint32_t>> droppedHead;
    std::optional<uint32_t> solo;
    struct {
        uint64_t identity;
        double y;
        int32_t done;
    } level{};
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

    /// Where a place of a lane lies on the widget, as the view tells of the mouse.
    [[nodiscard]] QPoint pixelOf(double x, int32_t lane, double y);
    /// A pixel within one of that place whose colour comes nearer to that one than to white: a smoothed line.
    [[nodiscard]] static bool isTinted(const QImage& image, const QPoint& place, uint32_t bgr);
    void moveMouse(const QPoint& place, Qt::MouseButtons held = Qt::NoButton, Qt::KeyboardModifiers modifiers = {});
    void wheel(const QPoint& place, int notches, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void drag(const QPoint& from, const QPoint& to, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
              Qt::KeyboardModifiers atRelease = Qt::NoModifier);

    std::unique_ptr<ISCOPERA, ReleaseScoper> scoper_;
    QWidget* view_ = nullptr;
    Told told_;

private:
    std::vector<int16_t> samples_;
};

}  // namespace tarno2

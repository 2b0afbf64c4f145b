#pragma once

#include <QRectF>
#include <cstdint>
#include <optional>
#include <qcustomplot.h>
#include <vector>

#include <tarno2/ISCOPERA.h>

namespace tarno2 {

/// Where values of Y lie in the picture: in lanes, one below the other, each with a range of its own; or, without
/// lanes, on the Y axis, as if the whole picture were one lane. Places are logical pixels of the widget.
class Lanes {
public:
    explicit Lanes(QCPAxis* yAxis) : yAxis_(yAxis) {}

    void setLanes(const SCOPERALane* lanes, uint32_t count);
    /// There are lanes.
    [[nodiscard]] bool shown() const { return !lanes_.empty(); }
    /// 1 without lanes.
    [[nodiscard]] size_t count() const { return shown() ? lanes_.size() : 1; }
    /// The lane that something lies in which wants that one.
    [[nodiscard]] size_t placeOf(size_t lane) const { return shown() ? lane : 0; }
    /// The area that the lanes are seen in, and how high a line of text is.
    void arrange(const QRect& area, int textHeight);

    [[nodiscard]] QCPRange range(size_t lane) const;
    /// What lies between two ticks of its scale.
    [[nodiscard]] double tickStep(size_t lane) const;
    void setRange(size_t lane, const QCPRange& range);
    [[nodiscard]] bool isLow(size_t lane) const { return shown() && lanes_[lane].low; }
    /// The whole lane, with the part that is scrolled out of sight.
    [[nodiscard]] QRect rect(size_t lane) const;
    /// Its rows that stand for its range, the first for the upper end.
    [[nodiscard]] QRect rows(size_t lane) const;
    [[nodiscard]] bool inSight(size_t lane) const { return rect(lane).intersects(area_); }

    [[nodiscard]] double pixelOf(size_t lane, double y) const;
    [[nodiscard]] double valueAt(size_t lane, double pixel) const;
    /// The lane at that height; the nearest one beside all of them.
    [[nodiscard]] size_t laneAt(double pixel) const;
    /// The lane whose lower border is there.
    [[nodiscard]] std::optional<size_t> borderAt(double pixel) const;
    /// Pixels.
    void resize(size_t lane, int height);
    [[nodiscard]] int heightOf(size_t lane) const { return lanes_[lane].height; }

    /// Pixels that all lanes take, and those that are scrolled out at the top.
    [[nodiscard]] int contentHeight() const { return contentHeight_; }
    [[nodiscard]] int scroll() const { return scroll_; }
    void setScroll(int pixels);

private:
    struct Lane {
        QCPRange range;
        int wanted = 0;  ///< pixels; 0: what there is for it
        bool low = false;
        int top = 0;  ///< from the first lane's
        int height = 0;
    };
    void layOut();

    QCPAxis* yAxis_;
    std::vector<Lane> lanes_;
    QRect area_;
    int textHeight_ = 16;
    int contentHeight_ = 0;
    int scroll_ = 0;
};

}  // namespace tarno2

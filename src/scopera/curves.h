#pragma once

#include <QImage>
#include <optional>
#include <qcustomplot.h>
#include <vector>

#include "scopera/curve_raster.h"
#include "scopera/lanes.h"
#include "scopera/pixel_spans.h"

namespace tarno2 {

/// All curves of the picture as one plottable: an image filled from the spans of the frames. The spans are kept until
/// frames, X range, width or the way of drawing change.
class Curves : public QCPAbstractPlottable {
public:
    Curves(QCPAxis* xAxis, QCPAxis* yAxis, const Lanes& lanes);

    void setStyles(std::vector<CurveStyle> styles);
    /// The samples stay the caller's. Frames have been checked.
    void setFrames(const SCOPERAFrames& frames);
    /// What the columns were before, the newest first: drawn behind, ever paler. Likewise.
    void setEarlier(std::vector<SCOPERAFrames> frames);
    void setPoints(bool points);
    /// Least and greatest Y of the visible curves in the X range; nothing without samples.
    [[nodiscard]] std::optional<QCPRange> extremes();
    /// The same of one curve, whether it is visible or not.
    [[nodiscard]] std::optional<QCPRange> extremes(size_t column);
    /// Width of the picture in the pixels of the screen.
    [[nodiscard]] int pixelWidth() const { return pixelSize().width(); }

    double selectTest(const QPointF& pos, bool onlySelectable, QVariant* details) const override;
    QCPRange getKeyRange(bool& foundRange, QCP::SignDomain inSignDomain) const override;
    QCPRange getValueRange(bool& foundRange, QCP::SignDomain inSignDomain, const QCPRange& inKeyRange) const override;

protected:
    QRect clipRect() const override;
    void draw(QCPPainter* painter) override;
    void drawLegendIcon(QCPPainter* painter, const QRectF& rect) const override;

private:
    [[nodiscard]] QSize pixelSize() const;
    void updateSpans(int width);
    [[nodiscard]] std::vector<RowBand> bands(double ratio) const;
    void drawOn(const SCOPERAFrames& frames, const PixelSpans& spans, const std::vector<RowBand>& bands, QImage& image,
                double ratio) const;
    void updateEarlierExtremes();
    void drawEarlier(const std::vector<RowBand>& bands, QSize size, double ratio);

    const Lanes& lanes_;
    std::vector<CurveStyle> styles_;
    SCOPERAFrames frames_{};
    bool points_ = false;
    PixelSpans spans_;
    QCPRange spansRange_;  ///< that `spans_` were made for, and the width
    size_t spansWidth_ = 0;
    bool spansStale_ = true;
    QImage image_;

    std::vector<SCOPERAFrames> earlier_;
    std::vector<CodeSpan> earlierExtremes_;  ///< of each column in `earlierRange_`
    QCPRange earlierRange_;
    bool earlierExtremesStale_ = true;
    QImage earlierImage_;
    std::vector<RowBand> earlierBands_;  ///< that the image was drawn for, and the range
    QCPRange earlierDrawnRange_;
    bool earlierImageStale_ = true;
};

}  // namespace tarno2

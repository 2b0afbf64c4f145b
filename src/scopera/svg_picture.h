#pragma once

#include <QBuffer>
#include <QPaintDevice>
#include <QSize>
#include <memory>

namespace tarno2 {

class SvgEngine;

/// A picture in the words of SVG 1.1, drawn with a QPainter: lines, areas and texts as such, pictures as embedded PNG.
/// One colour fills an area; clips are rectangles.
class SvgPicture : public QPaintDevice {
public:
    /// Logical pixels.
    explicit SvgPicture(QSize size);
    ~SvgPicture() override;

    /// The whole text, once the painter has ended.
    [[nodiscard]] QByteArray text() const;

    QPaintEngine* paintEngine() const override;

protected:
    int metric(PaintDeviceMetric metric) const override;

private:
    QSize size_;
    std::unique_ptr<SvgEngine> engine_;
};

}  // namespace tarno2

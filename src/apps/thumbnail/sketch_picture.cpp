#include "apps/thumbnail/sketch_picture.h"

#include <QColor>
#include <QPainter>
#include <algorithm>
#include <array>
#include <optional>

namespace tarno2 {

namespace {

constexpr QRgb kGround = 0xFF1D2B36;
constexpr std::array<QRgb, kMostSketched> kColors = {0xFF5FE08A, 0xFFFFC857, 0xFF4FC3F7, 0xFFFF8A80,
                                                     0xFFCE93D8, 0xFFA5D6A7, 0xFFFFF176, 0xFF90CAF9};

/// Draws a channel into a lane that it fills from its smallest code to its largest.
void drawChannel(QPainter& painter, const std::vector<CourseColumn>& course, const QRectF& lane) {
    std::optional<double> low;
    double high = 0.0;
    for (const CourseColumn& column : course) {
        if (column.known) {
            high = low ? std::max<double>(high, column.high) : column.high;
            low = std::min<double>(low.value_or(column.low), column.low);
        }
    }
    const double base = low.value_or(0.0);
    const double scale = high > base ? lane.height() / (high - base) : 0.0;
    const double level = high > base ? lane.bottom() : lane.center().y();
    const double step = lane.width() / static_cast<double>(course.size());
    std::optional<QPointF> last;
    for (size_t i = 0; i < course.size(); ++i) {
        if (!course[i].known) {
            last.reset();
            continue;
        }
        const double x = lane.left() + step * (static_cast<double>(i) + 0.5);
        const QPointF top(x, level - (course[i].high - base) * scale);
        const QPointF bottom(x, level - (course[i].low - base) * scale);
        const QPointF middle = (top + bottom) / 2.0;
        painter.drawLine(last.value_or(middle), middle);
        painter.drawLine(top, bottom);
        last = middle;
    }
}

}  // namespace

QImage drawSketch(const std::vector<std::vector<CourseColumn>>& channels, int size) {
    QImage image(size, std::max(1, size * 3 / 4), QImage::Format_RGB32);
    image.fill(kGround);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const double margin = size / 32.0;
    const double height = (image.height() - margin) / static_cast<double>(channels.size());
    for (size_t i = 0; i < channels.size(); ++i) {
        painter.setPen(QPen(QColor::fromRgb(kColors[i % kMostSketched]), std::max(1.0, size / 128.0)));
        const double top = margin + height * static_cast<double>(i);
        drawChannel(painter, channels[i], QRectF(margin, top, size - 2 * margin, height - margin));
    }
    return image;
}

}  // namespace tarno2

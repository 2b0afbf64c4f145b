#include "ui/overview_strip.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

namespace tarno2 {

namespace {

constexpr double kLeastPart = 3.0;  // pixels, so that it can be seen and taken
constexpr int kMarkHeight = 5;
constexpr double kEdge = 3.0;  // pixels that stay free above and below the signal

}  // namespace

OverviewStrip::OverviewStrip(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("OverviewStrip"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setCursor(Qt::PointingHandCursor);
}

QSize OverviewStrip::sizeHint() const {
    return {fontMetrics().averageCharWidth() * 20, fontMetrics().height() * 2};
}

size_t OverviewStrip::pixels() const {
    return static_cast<size_t>(std::max(std::lround(width() * devicePixelRatioF()), 1L));
}

void OverviewStrip::setCourse(std::vector<CourseColumn> course, uint64_t frames, const QColor& color) {
    course_ = std::move(course);
    frames_ = frames;
    color_ = color;
    update();
}

void OverviewStrip::setMarks(std::vector<double> frames) {
    if (frames != marks_) {
        marks_ = std::move(frames);
        update();
    }
}

void OverviewStrip::setPart(double low, double high) {
    if (low != low_ || high != high_) {
        low_ = low;
        high_ = high;
        update();
    }
}

double OverviewStrip::pixelOf(double frame) const {
    return frame / static_cast<double>(std::max<uint64_t>(frames_, 1)) * width();
}

QRectF OverviewStrip::partRect() const {
    const double left = pixelOf(std::clamp(low_, 0.0, static_cast<double>(frames_)));
    const double right = pixelOf(std::clamp(high_, 0.0, static_cast<double>(frames_)));
    const double more = std::max(kLeastPart - (right - left), 0.0) / 2.0;
    return QRectF(QPointF(left - more, 0.0), QPointF(right + more, height())).adjusted(0.5, 0.5, -0.5, -0.5);
}

void OverviewStrip::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    if (frames_ == 0) {
        return;
    }
    paintCourse(painter);
    painter.setPen(QPen(palette().text().color(), 0));
    for (const double mark : marks_) {
        const double x = pixelOf(mark);
        painter.drawLine(QPointF(x, 0.0), QPointF(x, kMarkHeight));
    }
    QColor shade = palette().highlight().color();
    painter.setPen(shade);
    shade.setAlpha(60);
    painter.setBrush(shade);
    painter.drawRect(partRect());
}

// As high as the codes of the whole recording reach.
void OverviewStrip::paintCourse(QPainter& painter) const {
    CourseColumn all;
    for (const CourseColumn& column : course_) {
        if (column.known) {
            all.low = all.known ? std::min(all.low, column.low) : column.low;
            all.high = all.known ? std::max(all.high, column.high) : column.high;
            all.known = true;
        }
    }
    const double span = std::max(static_cast<double>(all.high) - all.low, 1.0);
    const double rows = height() - 2.0 * kEdge - 1.0;
    const double step = width() / static_cast<double>(std::max<size_t>(course_.size(), 1));
    painter.setPen(QPen(color_, 0));
    for (size_t i = 0; i < course_.size(); ++i) {
        if (course_[i].known) {
            const double x = (static_cast<double>(i) + 0.5) * step;
            const double top = kEdge + (all.high - static_cast<double>(course_[i].high)) / span * rows;
            const double bottom = kEdge + (all.high - static_cast<double>(course_[i].low)) / span * rows;
            painter.drawLine(QPointF(x, top), QPointF(x, std::max(bottom, top + 1.0)));
        }
    }
}

// A part that is taken moves with the mouse; a click beside it brings its middle there.
void OverviewStrip::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        return;
    }
    const double frame = event->position().x() / std::max(width(), 1) * static_cast<double>(frames_);
    grip_ = partRect().contains(event->position()) ? frame - (low_ + high_) / 2.0 : 0.0;
    ask(event->position().x());
}

void OverviewStrip::mouseMoveEvent(QMouseEvent* event) {
    if ((event->buttons() & Qt::LeftButton) != 0) {
        ask(event->position().x());
    }
}

void OverviewStrip::ask(double pixel) {
    if (frames_ > 0) {
        emit wanted(pixel / std::max(width(), 1) * static_cast<double>(frames_) - grip_);
    }
}

}  // namespace tarno2

#pragma once

#include <QColor>
#include <QWidget>
#include <cstdint>
#include <vector>

#include "display/course.h"

namespace tarno2 {

/// The whole recording on one strip below the picture: the course of one channel, the marks, and the part that is in
/// the picture, which can be dragged. Window thread.
class OverviewStrip : public QWidget {
    Q_OBJECT

public:
    explicit OverviewStrip(QWidget* parent = nullptr);

    /// The course over so many frames, a column a pixel of `pixels`, in that colour. No frames: it is empty.
    void setCourse(std::vector<CourseColumn> course, uint64_t frames, const QColor& color);
    /// Frames that have a mark.
    void setMarks(std::vector<double> frames);
    /// Frames in the picture.
    void setPart(double low, double high);
    /// Columns that a course should have.
    [[nodiscard]] size_t pixels() const;
    [[nodiscard]] QSize sizeHint() const override;

signals:
    /// The user wants that frame in the middle of the picture.
    void wanted(double frame);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    [[nodiscard]] double pixelOf(double frame) const;
    [[nodiscard]] QRectF partRect() const;
    void paintCourse(QPainter& painter) const;
    void ask(double pixel);

    std::vector<CourseColumn> course_;
    std::vector<double> marks_;
    QColor color_;
    uint64_t frames_ = 0;
    double low_ = 0.0;
    double high_ = 0.0;
    double grip_ = 0.0;  ///< frames from the middle of the part to where the mouse holds it
};

}  // namespace tarno2

#pragma once

#include <QWidget>

#include "display/synchro_sketch.h"

namespace tarno2 {

/// A small picture of what the synchronisation settings let through: an invented signal with the levels, the edge and
/// the record, and what is kept of it drawn strong. Colours follow the palette.
class SynchroPicture : public QWidget {
    Q_OBJECT

public:
    explicit SynchroPicture(QWidget* parent = nullptr);

    /// One without lanes says that a value is mistaken.
    void setSketch(SynchroSketch sketch);
    [[nodiscard]] const SynchroSketch& sketch() const { return sketch_; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QRectF laneArea(size_t lane) const;
    void paintRecord(QPainter& painter) const;
    void paintLevels(QPainter& painter) const;
    void paintSignal(QPainter& painter, const SynchroSketch::Lane& lane, const QRectF& area) const;
    void paintMarks(QPainter& painter) const;
    double paintMark(QPainter& painter, int32_t point, const QString& text, double before, double free) const;
    void paintEdge(QPainter& painter) const;

    SynchroSketch sketch_;
};

}  // namespace tarno2

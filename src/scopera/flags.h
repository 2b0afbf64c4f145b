#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <optional>
#include <qcustomplot.h>
#include <vector>

#include <tarno2/ISCOPERA.h>

namespace tarno2 {

/// Flags at places of the X axis: a small pennant at the top with a thin line below it, and a text beside it as far as
/// the next flag leaves room.
class Flags : public QCPLayerable {
public:
    explicit Flags(QCPAxis* xAxis);

    /// Copies them; in any order.
    void setFlags(const SCOPERAFlag* flags, uint32_t count);
    void setFont(const QFont& font) { font_ = font; }
    void setColors(const QColor& line, const QColor& text) {
        lineColor_ = line;
        textColor_ = text;
    }
    /// The identity of the flag whose pennant or text is there; of two the one in front.
    [[nodiscard]] std::optional<uint64_t> flagAt(const QPointF& place) const;

protected:
    void applyDefaultAntialiasingHint(QCPPainter* painter) const override;
    QRect clipRect() const override;
    void draw(QCPPainter* painter) override;

private:
    struct Flag {
        double x = 0.0;
        QString text;
        uint64_t identity = 0;
    };
    struct Drawn {
        QRectF area;
        uint64_t identity = 0;
    };

    void drawFlag(QCPPainter* painter, const Flag& flag, double pixel, double room);

    QCPAxis* xAxis_;
    std::vector<Flag> flags_;  ///< from left to right
    std::vector<Drawn> drawn_;
    QFont font_;
    QColor lineColor_;
    QColor textColor_;
};

}  // namespace tarno2

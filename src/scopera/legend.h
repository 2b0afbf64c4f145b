#pragma once

#include <QColor>
#include <QFont>
#include <QString>
#include <optional>
#include <qcustomplot.h>
#include <vector>

namespace tarno2 {

/// The names of the curves beside the picture, in as many columns as the height asks for. It takes no room while it is
/// hidden.
class Legend : public QCPLayoutElement {
public:
    struct Entry {
        QString name;
        QColor color;
        bool visible;
    };

    explicit Legend(QCustomPlot* plot);

    void setEntries(std::vector<Entry> entries);
    void setFont(const QFont& font);
    void setColors(const QColor& text, const QColor& dimmed);
    /// The entry at a place of the widget.
    [[nodiscard]] std::optional<size_t> entryAt(const QPointF& place) const;

    QSize minimumOuterSizeHint() const override;
    QSize maximumOuterSizeHint() const override;

protected:
    void draw(QCPPainter* painter) override;

private:
    /// How the entries are arranged, in logical pixels.
    struct Arrangement {
        int rowHeight;
        int rows;
        int columns;
        int columnWidth;
    };
    [[nodiscard]] Arrangement arrangement() const;
    [[nodiscard]] QRect entryRect(size_t index, const Arrangement& arrangement) const;
    void measureNames();

    std::vector<Entry> entries_;
    QFont font_;
    QColor textColor_;
    QColor dimmedColor_;
    int nameWidth_ = 0;
};

}  // namespace tarno2

#include "scopera/legend.h"

#include <QFontMetrics>
#include <algorithm>

namespace tarno2 {

namespace {

constexpr int kGap = 6;           // between border, swatch, name and the next column
constexpr int kLongestName = 24;  // in characters of average width; longer ones are cut
constexpr int kNoLimit = 16777215;

}  // namespace

Legend::Legend(QCustomPlot* plot) : QCPLayoutElement(plot) {
    setMargins({});
    setMinimumMargins({});
}

void Legend::setEntries(std::vector<Entry> entries) {
    entries_ = std::move(entries);
    measureNames();
}

void Legend::setFont(const QFont& font) {
    font_ = font;
    measureNames();
}

void Legend::setColors(const QColor& text, const QColor& dimmed) {
    textColor_ = text;
    dimmedColor_ = dimmed;
}

void Legend::measureNames() {
    const QFontMetrics metrics(font_);
    nameWidth_ = 0;
    for (const Entry& entry : entries_) {
        nameWidth_ = std::max(nameWidth_, metrics.horizontalAdvance(entry.name));
    }
    nameWidth_ = std::min(nameWidth_, kLongestName * metrics.averageCharWidth());
}

Legend::Arrangement Legend::arrangement() const {
    const QRect view = mParentPlot->viewport();
    const QFontMetrics metrics(font_);
    const int count = std::max(static_cast<int>(entries_.size()), 1);
    const int swatch = metrics.ascent();
    Arrangement result{};
    result.rowHeight = metrics.height() + 2;
    result.rows = std::clamp((view.height() - 2 * kGap) / result.rowHeight, 1, count);
    result.columns = (count + result.rows - 1) / result.rows;
    // Never more than two fifths of the view: names are cut then.
    const int wished = swatch + nameWidth_ + 3 * kGap;
    result.columnWidth = std::max(std::min(wished, view.width() * 2 / 5 / result.columns), 1);
    return result;
}

QRect Legend::entryRect(size_t index, const Arrangement& arrangement) const {
    const int column = static_cast<int>(index) / arrangement.rows;
    const int row = static_cast<int>(index) % arrangement.rows;
    return {mOuterRect.left() + column * arrangement.columnWidth, mOuterRect.top() + kGap + row * arrangement.rowHeight,
            arrangement.columnWidth, arrangement.rowHeight};
}

std::optional<size_t> Legend::entryAt(const QPointF& place) const {
    if (!visible() || entries_.empty()) {
        return std::nullopt;
    }
    const Arrangement arranged = arrangement();
    for (size_t i = 0; i < entries_.size(); ++i) {
        if (entryRect(i, arranged).contains(place.toPoint())) {
            return i;
        }
    }
    return std::nullopt;
}

QSize Legend::minimumOuterSizeHint() const {
    if (!visible() || entries_.empty()) {
        return {0, 0};
    }
    const Arrangement arranged = arrangement();
    return {arranged.columns * arranged.columnWidth, 0};
}

QSize Legend::maximumOuterSizeHint() const {
    return {minimumOuterSizeHint().width(), kNoLimit};
}

void Legend::draw(QCPPainter* painter) {
    if (entries_.empty()) {
        return;
    }
    const Arrangement arranged = arrangement();
    const QFontMetrics metrics(font_);
    const int swatch = metrics.ascent();
    painter->setFont(font_);
    for (size_t i = 0; i < entries_.size(); ++i) {
        const Entry& entry = entries_[i];
        const QRect row = entryRect(i, arranged);
        const QRect square(row.left() + kGap, row.top() + (row.height() - swatch) / 2, swatch, swatch);
        painter->setPen(entry.visible ? entry.color : dimmedColor_);
        painter->setBrush(entry.visible ? QBrush(entry.color) : QBrush(Qt::NoBrush));
        painter->drawRect(square.adjusted(1, 1, -2, -2));
        painter->setPen(entry.visible ? textColor_ : dimmedColor_);
        const QRect text(square.right() + kGap, row.top(), row.right() - square.right() - kGap, row.height());
        painter->drawText(text, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                          metrics.elidedText(entry.name, Qt::ElideRight, text.width()));
    }
}

}  // namespace tarno2

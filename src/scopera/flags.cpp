#include "scopera/flags.h"

#include <QFontMetrics>
#include <algorithm>
#include <array>

namespace tarno2 {

namespace {

constexpr double kPennantWidth = 8.0;
constexpr double kTextGap = 3.0;
constexpr int kFewestLetters = 2;  // a text with less room than for these is left out

}  // namespace

Flags::Flags(QCPAxis* xAxis) : QCPLayerable(xAxis->parentPlot()), xAxis_(xAxis) {}

void Flags::setFlags(const SCOPERAFlag* flags, uint32_t count) {
    flags_.clear();
    drawn_.clear();
    for (uint32_t i = 0; i < count; ++i) {
        flags_.push_back({flags[i].m_fX, QString::fromUtf8(flags[i].m_sText), flags[i].m_nIdentity});
    }
    std::ranges::stable_sort(flags_, {}, &Flag::x);
}

std::optional<uint64_t> Flags::flagAt(const QPointF& place) const {
    const auto found = std::ranges::find_if(drawn_.rbegin(), drawn_.rend(),
                                            [&](const Drawn& drawn) { return drawn.area.contains(place); });
    return found == drawn_.rend() ? std::nullopt : std::optional(found->identity);
}

void Flags::applyDefaultAntialiasingHint(QCPPainter* painter) const {
    painter->setAntialiasing(false);
}

QRect Flags::clipRect() const {
    return xAxis_->axisRect()->rect();
}

void Flags::draw(QCPPainter* painter) {
    drawn_.clear();
    const QCPRange range = xAxis_->range();
    auto flag = std::ranges::lower_bound(flags_, range.lower, {}, &Flag::x);
    for (; flag != flags_.end() && flag->x <= range.upper; ++flag) {
        const double pixel = xAxis_->coordToPixel(flag->x);
        const auto next = std::next(flag);
        const bool last = next == flags_.end() || next->x > range.upper;
        const double end = last ? clipRect().right() : xAxis_->coordToPixel(next->x);
        drawFlag(painter, *flag, pixel, end - pixel);
    }
}

void Flags::drawFlag(QCPPainter* painter, const Flag& flag, double pixel, double room) {
    const QRect area = clipRect();
    const QFontMetrics metrics(font_);
    const double height = metrics.height();
    painter->setPen(QPen(lineColor_, 0, Qt::DotLine));
    painter->drawLine(QPointF(pixel, area.top()), QPointF(pixel, area.bottom()));
    painter->setPen(QPen(lineColor_, 0));
    painter->setBrush(lineColor_);
    const std::array<QPointF, 3> pennant = {QPointF(pixel, area.top() + 1),
                                            QPointF(pixel + kPennantWidth, area.top() + 1 + height / 4),
                                            QPointF(pixel, area.top() + 1 + height / 2)};
    painter->drawPolygon(pennant.data(), static_cast<int>(pennant.size()));
    const double textLeft = pixel + kPennantWidth + kTextGap;
    const auto textRoom = static_cast<int>(room - kPennantWidth - 2 * kTextGap);
    QString text;
    if (textRoom >= metrics.averageCharWidth() * kFewestLetters) {
        text = metrics.elidedText(flag.text, Qt::ElideRight, textRoom);
        painter->setFont(font_);
        painter->setPen(textColor_);
        painter->drawText(QRectF(textLeft, area.top() + 1, textRoom, height), Qt::AlignLeft | Qt::AlignTop, text);
    }
    const double width = text.isEmpty() ? kPennantWidth : kPennantWidth + kTextGap + metrics.horizontalAdvance(text);
    drawn_.push_back({QRectF(pixel, area.top(), width, height), flag.identity});
}

}  // namespace tarno2

#include "ui/shortened_label.h"

#include <QFontMetrics>

namespace tarno2 {

ShortenedLabel::ShortenedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

void ShortenedLabel::setWhole(const QString& text) {
    whole_ = text;
    updateGeometry();
    fit();
}

QSize ShortenedLabel::sizeHint() const {
    return {fontMetrics().horizontalAdvance(whole_) + fontMetrics().averageCharWidth(), QLabel::sizeHint().height()};
}

QSize ShortenedLabel::minimumSizeHint() const {
    return {fontMetrics().averageCharWidth() * 4, QLabel::minimumSizeHint().height()};
}

void ShortenedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    fit();
}

void ShortenedLabel::fit() {
    const QString shown = fontMetrics().elidedText(whole_, Qt::ElideRight, width());
    setText(shown);
    setToolTip(shown == whole_ ? QString() : whole_);
}

}  // namespace tarno2

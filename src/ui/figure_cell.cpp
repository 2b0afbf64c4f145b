#include "ui/figure_cell.h"

#include <QBoxLayout>
#include <QEvent>
#include <QLabel>
#include <utility>

namespace tarno2 {

namespace {

const QString kWarningSign = QStringLiteral("\u26A0 ");

}  // namespace

FigureCell::FigureCell(Shape shape, QString widest, QWidget* parent)
    : QWidget(parent), widest_(std::move(widest)), caption_(new QLabel(this)), value_(new QLabel(this)) {
    auto* layout = new QBoxLayout(shape == Shape::Large ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight, this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(shape == Shape::Large ? 0 : 6);
    layout->addWidget(caption_);
    layout->addWidget(value_);
    value_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    value_->setTextFormat(Qt::PlainText);
    if (shape == Shape::Large) {
        caption_->setAlignment(Qt::AlignRight);
    }
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    fit();
}

void FigureCell::setCaption(const QString& caption) {
    caption_->setText(caption);
    setAccessibleName(caption);
}

void FigureCell::setCaptionShown(bool shown) {
    caption_->setVisible(shown);
}

void FigureCell::setScale(double scale) {
    QFont large = value_->font();
    large.setPointSizeF(font().pointSizeF() * scale);
    value_->setFont(large);
    fit();
}

void FigureCell::setValue(const QString& value) {
    text_ = value;
    const QString shown = warning_ ? kWarningSign + value : value;
    if (value_->text() != shown) {
        value_->setText(shown);
    }
}

void FigureCell::setWarning(bool warning) {
    if (warning == warning_) {
        return;
    }
    warning_ = warning;
    QFont font = value_->font();
    font.setBold(warning);
    value_->setFont(font);
    setValue(text_);
}

void FigureCell::setWidest(const QString& widest) {
    widest_ = widest;
    fit();
}

void FigureCell::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        fit();
    }
}

void FigureCell::fit() {
    QFont bold = value_->font();
    bold.setBold(true);
    value_->setMinimumWidth(QFontMetrics(bold).horizontalAdvance(widest_));
}

}  // namespace tarno2

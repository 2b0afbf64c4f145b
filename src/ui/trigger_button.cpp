#include "ui/trigger_button.h"

#include <QEvent>
#include <algorithm>

#include "ui/part_icons.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

constexpr int kLeastLetters = 7;

}  // namespace

TriggerButton::TriggerButton(QWidget* parent) : QToolButton(parent) {
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    drawIcon();
}

void TriggerButton::setState(const QString& text, bool active) {
    if (text == accessibleName() && active == active_) {
        return;
    }
    const qsizetype colon = text.indexOf(QStringLiteral(": "));
    caption_ = text.left(std::max<qsizetype>(colon, 0));
    what_ = colon < 0 ? text : text.mid(colon + 2);
    setAccessibleName(text);
    setToolTip(active ? text + QLatin1Char('\n') + uiText(TextId::ConditionsBadgeHint) : text);
    if (active != active_) {
        active_ = active;
        setStyleSheet(
            active ? QStringLiteral("QToolButton { background: #ffb300; color: #000000; border: 2px solid #ffb300; "
                                    "border-radius: 4px; }"
                                    "QToolButton:focus { border-color: #000000; }")
                   : QString());
        drawIcon();
    }
    updateGeometry();
    fit();
}

QSize TriggerButton::sizeHint() const {
    const int widest = std::max(fontMetrics().horizontalAdvance(caption_), fontMetrics().horizontalAdvance(what_));
    return {widest + iconSize().width() + fontMetrics().height(), fontMetrics().height() * 5 / 2};
}

QSize TriggerButton::minimumSizeHint() const {
    // What it is for is always told; the condition may be long.
    const int caption = fontMetrics().horizontalAdvance(caption_);
    const int least = std::max(fontMetrics().averageCharWidth() * kLeastLetters, caption);
    return {least + iconSize().width() + fontMetrics().height() / 2 + 1, sizeHint().height()};
}

void TriggerButton::resizeEvent(QResizeEvent* event) {
    QToolButton::resizeEvent(event);
    fit();
}

void TriggerButton::changeEvent(QEvent* event) {
    QToolButton::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        drawIcon();
    }
}

void TriggerButton::fit() {
    const int room = width() - iconSize().width() - fontMetrics().height() / 2;
    const auto shown = [&](const QString& line) {
        // A name may hold what would mark a mnemonic.
        return fontMetrics().elidedText(line, Qt::ElideRight, room).replace(QLatin1Char('&'), QStringLiteral("&&"));
    };
    setText(shown(caption_) + QLatin1Char('\n') + shown(what_));
}

void TriggerButton::drawIcon() {
    QPalette colors = palette();
    if (active_) {
        colors.setColor(QPalette::ButtonText, Qt::black);
    }
    setIcon(partIcon(PartIcon::Trigger, colors));
}

}  // namespace tarno2

#include "ui/window_style.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QPushButton>
#include <QStyleOption>

namespace tarno2 {

namespace {

bool isDark(const QStyleOption& option) {
    return option.palette.color(QPalette::Window).lightness() < 128;
}

/// With a contrast of 3 and more on every ground that has letters.
void drawRing(const QStyleOption& option, QPainter& painter) {
    constexpr double kWidth = 2.0;
    constexpr double kRadius = 3.0;
    constexpr QRgb kOnLight = 0xFF0B57A4;
    constexpr QRgb kOnDark = 0xFF7FB8F0;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(isDark(option) ? kOnDark : kOnLight), kWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(option.rect).adjusted(1, 1, -1, -1), kRadius, kRadius);
    painter.restore();
}

/// The style underneath makes it darker than its ground.
void drawBoxEdge(const QStyleOption& option, QPainter& painter, bool round) {
    const bool usable = option.state.testFlag(QStyle::State_Enabled);
    painter.save();
    painter.setPen(usable ? option.palette.color(QPalette::PlaceholderText) : option.palette.color(QPalette::Button));
    painter.setBrush(Qt::NoBrush);
    const QRect edge = option.rect.adjusted(0, 0, -1, -1);
    if (round) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.drawEllipse(edge);
    } else {
        painter.drawRect(edge);
    }
    painter.restore();
}

bool hasKeys(const QStyleOption& option) {
    return option.state.testFlag(QStyle::State_HasFocus) && option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

}  // namespace

WindowStyle::WindowStyle() : QProxyStyle(QStringLiteral("fusion")) {}

void WindowStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                const QWidget* widget) const {
    if (element == PE_FrameFocusRect) {
        // A push button has its ring around all of it.
        if (option->state.testFlag(State_KeyboardFocusChange) && qobject_cast<const QPushButton*>(widget) == nullptr) {
            drawRing(*option, *painter);
        }
        return;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool box = element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck;
    if ((box || element == PE_IndicatorRadioButton) && isDark(*option)) {
        drawBoxEdge(*option, *painter, !box);
    }
    if (element == PE_PanelButtonCommand && hasKeys(*option)) {
        drawRing(*option, *painter);
    }
}

void WindowStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
    QProxyStyle::drawControl(element, option, painter, widget);
    // Lists and tables: an empty one has no item that could show it.
    if (element == CE_ShapedFrame && hasKeys(*option) && qobject_cast<const QAbstractScrollArea*>(widget) != nullptr) {
        drawRing(*option, *painter);
    }
}

void WindowStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                     const QWidget* widget) const {
    if (const auto* button = qstyleoption_cast<const QStyleOptionToolButton*>(option);
        button != nullptr && !button->features.testFlag(QStyleOptionToolButton::MenuButtonPopup)) {
        // The arrow of a menu would lie upon the button's text.
        QStyleOptionToolButton plain = *button;
        plain.features.setFlag(QStyleOptionToolButton::HasMenu, false);
        QProxyStyle::drawComplexControl(control, &plain, painter, widget);
        return;
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if ((control == CC_ComboBox || control == CC_SpinBox) && hasKeys(*option)) {
        drawRing(*option, *painter);
    }
}

}  // namespace tarno2

#include "ui/wheel_guard.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QEvent>
#include <QSlider>

namespace tarno2 {

namespace {

bool changesByWheel(const QObject* object) {
    return qobject_cast<const QComboBox*>(object) != nullptr ||
           qobject_cast<const QAbstractSpinBox*>(object) != nullptr || qobject_cast<const QSlider*>(object) != nullptr;
}

bool hasFocus(const QWidget* widget) {
    const QWidget* focus = QApplication::focusWidget();
    return focus == widget || (focus != nullptr && widget->isAncestorOf(focus));
}

}  // namespace

WheelGuard::WheelGuard(QObject* parent) : QObject(parent) {
    qApp->installEventFilter(this);
}

bool WheelGuard::eventFilter(QObject* watched, QEvent* event) {
    // The wheel would give them the focus first.
    if (event->type() == QEvent::Polish && changesByWheel(watched)) {
        if (auto* widget = static_cast<QWidget*>(watched); widget->focusPolicy() == Qt::WheelFocus) {
            widget->setFocusPolicy(Qt::StrongFocus);
        }
    }
    if (event->type() != QEvent::Wheel || !changesByWheel(watched) || hasFocus(static_cast<QWidget*>(watched))) {
        return false;
    }
    event->ignore();
    return true;
}

}  // namespace tarno2

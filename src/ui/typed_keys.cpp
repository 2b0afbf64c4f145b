#include "ui/typed_keys.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QKeyEvent>

namespace tarno2 {

namespace {

bool chooses(const QKeyEvent& event) {
    if ((event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) != Qt::NoModifier) {
        return false;
    }
    return event.key() == Qt::Key_Home || event.key() == Qt::Key_End ||
           (!event.text().isEmpty() && event.text().front().isLetterOrNumber());
}

}  // namespace

TypedKeys::TypedKeys(QWidget* pane) : QObject(pane) {
    for (QComboBox* box : pane->findChildren<QComboBox*>()) {
        box->installEventFilter(this);
    }
    for (QAbstractItemView* view : pane->findChildren<QAbstractItemView*>()) {
        view->installEventFilter(this);
    }
}

bool TypedKeys::eventFilter(QObject* /*watched*/, QEvent* event) {
    if (event->type() != QEvent::ShortcutOverride || !chooses(*static_cast<QKeyEvent*>(event))) {
        return false;
    }
    event->accept();
    return true;
}

}  // namespace tarno2

#pragma once

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <gtest/gtest.h>

#include "language/language_table.h"
#include "tests/support/temporary_folder.h"
#include "ui/text.h"

namespace tarno2::test {

/// The control of that name in a window; a failed expectation when there is none.
template <typename Widget = QWidget>
Widget* findIn(QWidget& window, const char* name) {
    auto* widget = window.findChild<Widget*>(QString::fromLatin1(name));
    EXPECT_NE(widget, nullptr) << name;
    return widget;
}

/// Whether Tab comes to it: not to the field of a box, which is the box's own.
inline bool takesTab(const QWidget& widget) {
    return (widget.focusPolicy() & Qt::TabFocus) != 0 &&
           qobject_cast<QAbstractSpinBox*>(widget.parentWidget()) == nullptr &&
           qobject_cast<QComboBox*>(widget.parentWidget()) == nullptr;
}

/// Clicks on a control where it hears clicks.
void clickIn(QWidget& window, const char* name);

/// Types into a field or a list in place of what it holds, and ends with Enter when that is wanted.
void typeIn(QWidget& window, const char* name, const QString& text, bool enter = false);

/// Does something to the next dialog of that kind, once it is there.
template <typename Dialog, typename Act>
void inDialog(QObject& owner, Act act) {
    auto* watch = new QTimer(&owner);
    QObject::connect(watch, &QTimer::timeout, watch, [watch, act] {
        auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr) {
            return;
        }
        watch->stop();
        watch->deleteLater();
        act(*dialog);
    });
    watch->start(1);
}

/// Enters a name into the next file dialog; an empty one gives the choice up.
void chooseFile(QObject& owner, const QString& name);

}  // namespace tarno2::test

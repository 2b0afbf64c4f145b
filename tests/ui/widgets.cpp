#include "tests/ui/widgets.h"

namespace tarno2::test {

void clickIn(QWidget& window, const char* name) {
    QWidget* widget = findIn(window, name);
    ASSERT_NE(widget, nullptr);
    // A box hears only clicks on itself and its text, which do not fill it.
    const auto* button = qobject_cast<QAbstractButton*>(widget);
    const bool box = button != nullptr && button->isCheckable();
    QTest::mouseClick(widget, Qt::LeftButton, {}, box ? QPoint(8, widget->height() / 2) : QPoint());
}

void typeIn(QWidget& window, const char* name, const QString& text, bool enter) {
    QWidget* field = findIn(window, name);
    ASSERT_NE(field, nullptr);
    if (const auto* list = qobject_cast<QComboBox*>(field)) {
        field = list->lineEdit();
        ASSERT_NE(field, nullptr) << name;
    }
    field->setFocus();
    QTest::keySequence(field, QKeySequence::SelectAll);
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
    if (enter) {
        QTest::keyClick(field, Qt::Key_Return);
    }
}

void chooseFile(QObject& owner, const QString& name) {
    inDialog<QFileDialog>(owner, [name](QFileDialog& dialog) {
        auto* field = findIn<QLineEdit>(dialog, "fileNameEdit");
        field->setText(name);
        name.isEmpty() ? QTest::keyClick(&dialog, Qt::Key_Escape) : QTest::keyClick(field, Qt::Key_Return);
    });
}

}  // namespace tarno2::test

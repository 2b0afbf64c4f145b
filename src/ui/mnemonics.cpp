#include "ui/mnemonics.h"

#include <QAbstractButton>
#include <QGroupBox>

namespace tarno2 {

namespace {

/// Where a letter can be marked; -1: each one is taken.
qsizetype freeLetter(const QString& text, const QSet<QChar>& used) {
    for (const bool wordStart : {true, false}) {
        for (qsizetype i = 0; i < text.size(); ++i) {
            if (text[i].isLetter() && !used.contains(text[i].toUpper()) &&
                (!wordStart || i == 0 || text[i - 1].isSpace())) {
                return i;
            }
        }
    }
    return -1;
}

QString marked(QString text, QSet<QChar>& used) {
    if (const qsizetype mark = text.indexOf(QLatin1Char('&')); mark >= 0 && mark + 1 < text.size()) {
        used.insert(text[mark + 1].toUpper());
        return text;
    }
    if (const qsizetype letter = freeLetter(text, used); letter >= 0) {
        used.insert(text[letter].toUpper());
        text.insert(letter, QLatin1Char('&'));
    }
    return text;
}

}  // namespace

QSet<QChar> giveMnemonics(const QList<QWidget*>& widgets, QSet<QChar> used) {
    for (QWidget* widget : widgets) {
        if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
            button->setText(marked(button->text(), used));
        } else if (auto* box = qobject_cast<QGroupBox*>(widget)) {
            box->setTitle(marked(box->title(), used));
        }
    }
    return used;
}

}  // namespace tarno2

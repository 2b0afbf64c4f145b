#pragma once

#include <QList>
#include <QSet>

class QWidget;

namespace tarno2 {

/// Gives each of these buttons and group boxes a mnemonic that no other has: marks a letter of its text with "&", if
/// possible the first of a word. A text that has one already keeps it. `used`: letters, upper case, that others have
/// taken, of widgets that are seen together with these. Returns all that are taken now.
QSet<QChar> giveMnemonics(const QList<QWidget*>& widgets, QSet<QChar> used = {});

}  // namespace tarno2

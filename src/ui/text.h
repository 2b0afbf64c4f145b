#pragma once

#include <QString>
#include <QStringList>
#include <string>

#include "language/text_ids.h"

namespace tarno2 {

/// A text of the program in the language chosen last. Window thread.
[[nodiscard]] QString uiText(TextId id);
/// The same without the "&" that marks a mnemonic, for places that are no menu or label.
[[nodiscard]] QString plainText(TextId id);
/// The same without the dots of a command that opens a window: that window's title.
[[nodiscard]] QString titleText(TextId id);

/// A text with its conversions (%s, %d) replaced by the values, in order, and %% by a percent sign.
[[nodiscard]] QString uiText(TextId id, const QStringList& values);

/// Texts between the program's code page (1251) and the windows. What the code page lacks becomes "?".
[[nodiscard]] QString fromCodePage(const std::string& text);
[[nodiscard]] std::string toCodePage(const QString& text);

/// What the recording logic reports: a text of the program, in its code page, or words of the system with names of
/// files, where those are UTF-8.
[[nodiscard]] QString fromMessage(const std::string& text);

/// File names between the system's own bytes and the windows. What the code page of Windows lacks becomes "?", which no
/// file's name has.
[[nodiscard]] QString fromFileName(const std::string& name);
[[nodiscard]] std::string toFileName(const QString& name);

}  // namespace tarno2

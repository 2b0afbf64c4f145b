#pragma once

#include <QString>

class QAction;
class QWidget;

namespace tarno2 {

/// A page of the manual in the language chosen last, as a file that is there; empty when the manual is not installed.
/// It is looked for as `manual/en/PAGE.html` or `manual/ru/PAGE.html` in the `doc` folder beside the program, in
/// `share/doc/tarno2` of the place that the program is installed in, and beside the program.
[[nodiscard]] QString manualFile(const QString& page = QStringLiteral("index"));
/// Where the manual tells of what has the focus: `PAGE#ANCHOR` of the innermost part of a window that it knows, `index`
/// where there is none. `focus` may be null.
[[nodiscard]] QString manualPlace(const QWidget* focus);
/// Every place that F1 leads to.
[[nodiscard]] QStringList manualPlaces();
/// Shows the manual in the user's browser, at the place of what has the focus; some desktops open the page and pass
/// over the place in it. False when there is no manual, or nothing to show it with.
bool openManual();
/// F1 triggers `manual` in every window of the program, dialogs too, for as long as the action lives. Window thread.
void installHelpKey(QAction& manual);

}  // namespace tarno2

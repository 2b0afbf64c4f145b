#pragma once

#include <QString>

namespace tarno2 {

/// The manual in the language chosen last, as a file that is there; empty when it is not installed. It is looked for as
/// `manual_en.html` or `manual_ru.html` in the `doc` folder beside the program, in `share/doc/tarno2` of the place that
/// the program is installed in, and beside the program.
[[nodiscard]] QString manualFile();
/// Shows the manual in the user's browser. False when there is none.
bool openManual();

}  // namespace tarno2

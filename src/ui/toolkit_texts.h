#pragma once

namespace tarno2 {

/// The toolkit's own texts (its file dialog, for one) in the language chosen last, as far as its translations are
/// installed or lie in `translations` beside the program. Window thread.
void translateToolkit();

}  // namespace tarno2

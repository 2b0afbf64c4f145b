#pragma once

#include <QString>

namespace tarno2 {

/// Has the desktop tell something, as far as it does so; waits for nobody. Window thread.
void tellDesktop(const QString& title, const QString& message);

}  // namespace tarno2

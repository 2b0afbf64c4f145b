#pragma once

#include <QPixmap>

class QWidget;

namespace tarno2 {

/// A closed padlock in the text colour of the widget and as high as its text, sharp on its screen.
[[nodiscard]] QPixmap padlock(const QWidget& widget);

}  // namespace tarno2

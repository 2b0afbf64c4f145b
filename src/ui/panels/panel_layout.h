#pragma once

#include <QLatin1String>
#include <QString>

class QComboBox;
class QFormLayout;
class QLabel;
class QWidget;

namespace tarno2 {

// How all panels are laid out, so that they fit a narrow column in both languages.

/// A widget of that object name, owned by its parent.
template <typename Widget>
Widget* named(const char* name, QWidget* parent) {
    auto* widget = new Widget(parent);
    widget->setObjectName(QLatin1String(name));
    return widget;
}
/// Captions beside their fields, above them where the column is too narrow.
[[nodiscard]] QFormLayout* makePanelLayout(QWidget* panel);
/// A list that may be narrower than its longest entry.
[[nodiscard]] QComboBox* makeList(QWidget* parent, const QString& name);
/// Text over as many lines as it takes.
[[nodiscard]] QLabel* makeText(QWidget* parent, const QString& name);
/// Shows the text as a warning (with a sign before it), or as usual; an empty text takes no room.
void showText(QLabel* label, const QString& text, bool warning = false);

}  // namespace tarno2

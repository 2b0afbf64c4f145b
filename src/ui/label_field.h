#pragma once

class QObject;
class QValidator;

namespace tarno2 {

/// Letters that a field for a name or a unit takes.
inline constexpr int kLongestLabel = 60;
/// Takes what a list of names can hold: no semicolon and no control character.
[[nodiscard]] QValidator* makeLabelValidator(QObject* parent);

}  // namespace tarno2

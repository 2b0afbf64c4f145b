#pragma once

#include <QString>

#include "records/channel_label.h"

class QObject;
class QValidator;

namespace tarno2 {

/// The unit of a channel for the reader: volts in his language where it has none.
[[nodiscard]] QString unitOf(const ChannelLabel& label);

/// Letters that a field for a name or a unit takes.
inline constexpr int kLongestLabel = 60;
/// Takes what a list of names can hold: no semicolon and no control character.
[[nodiscard]] QValidator* makeLabelValidator(QObject* parent);

}  // namespace tarno2

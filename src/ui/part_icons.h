#pragma once

#include <QIcon>
#include <QPalette>

namespace tarno2 {

enum class PartIcon { Board, Measuring, File, Channels, Program, Table, Trigger };

/// The picture of a part of the main window, drawn in the palette's colours and sharp at every scale.
[[nodiscard]] QIcon partIcon(PartIcon part, const QPalette& palette);

}  // namespace tarno2

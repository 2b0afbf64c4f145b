#pragma once

#include <QIcon>
#include <QPalette>
#include <functional>

class QPainter;

namespace tarno2 {

/// The picture of a way to follow the data (0 none, 1 recorder, 2 recorder with zeroing), drawn in the palette's
/// colours and sharp at every scale.
[[nodiscard]] QIcon followIcon(int mode, const QPalette& palette);

enum class CommandIcon { Monitor, Start, Stop, Cycle };

/// The picture of a command of the recording, drawn like those above.
[[nodiscard]] QIcon commandIcon(CommandIcon command, const QPalette& palette);

enum class ViewIcon {
    Fit,
    Back,
    ZoomIn,
    ZoomOut,
    GoToTime,
    SampleAPixel,
    FirstFrame,
    NewestFrame,
    Records,
    Keys,
    Lanes,
    Legend,
    Cursors,
    Spectrum,
    Points,
    Marks,
    SavePicture,
    CopyPicture,
    SavePart
};

/// An icon that `draw` paints on 16 x 16 with a pen in the palette's colour for buttons; sharp at every scale.
[[nodiscard]] QIcon drawnIcon(const QPalette& palette, std::function<void(QPainter&)> draw);

/// The picture of a command of the signal view, drawn likewise.
[[nodiscard]] QIcon viewIcon(ViewIcon command, const QPalette& palette);

}  // namespace tarno2

#pragma once

#include <QColor>
#include <QString>
#include <vector>

#include "display/axis_y.h"
#include "ui/shown_signal.h"
#include "ui/signal_drawing.h"

namespace tarno2 {

/// A channel or a digital line that is shown, and how its codes become the values of the picture.
struct MeasuredColumn {
    bool line = false;
    size_t index = 0;  ///< of the channel in a frame, or of the line
    QString name;
    QString unit;
    QColor color;
    LinearScale scale;
    bool marked = false;  ///< the one that the user works with

    friend bool operator==(const MeasuredColumn& one, const MeasuredColumn& other) {
        return one.line == other.line && one.index == other.index && one.name == other.name && one.unit == other.unit &&
               one.color == other.color && one.marked == other.marked && one.scale.factor == other.scale.factor &&
               one.scale.offset == other.scale.offset;
    }
};

/// Those that are switched on, in the order of the picture.
[[nodiscard]] std::vector<MeasuredColumn> measuredColumns(const ShownSignal& signal, const SignalDrawing& drawing);

}  // namespace tarno2

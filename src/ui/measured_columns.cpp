#include "ui/measured_columns.h"

#include "ui/color.h"

namespace tarno2 {

std::vector<MeasuredColumn> measuredColumns(const ShownSignal& signal, const SignalDrawing& drawing) {
    std::vector<MeasuredColumn> measured;
    const auto& columns = drawing.columns();
    for (size_t i = 0; i < columns.size(); ++i) {
        const SignalDrawing::Column& column = columns[i];
        if (!column.visible) {
            continue;
        }
        MeasuredColumn out;
        out.line = column.key < 0;
        out.index = out.line ? static_cast<size_t>(-1 - column.key) : i;
        out.name = QString::fromStdString(column.name);
        out.color = fromBgr(static_cast<int32_t>(column.color));
        if (!out.line && i < signal.format().channelCount()) {
            out.unit = QString::fromStdString(column.unitText);
            out.scale = column.scale;
            out.marked = column.marked;
        }
        measured.push_back(std::move(out));
    }
    return measured;
}

}  // namespace tarno2

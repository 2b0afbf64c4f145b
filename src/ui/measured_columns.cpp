#include "ui/measured_columns.h"

#include "ui/label_field.h"
#include "ui/text.h"

namespace tarno2 {

namespace {

QString unitOfChannel(const ShownSignal& signal, size_t channel, AxisYUnit unit) {
    switch (unit) {
        case AxisYUnit::Codes:
            return uiText(TextId::AxisYCodes);
        case AxisYUnit::Units:
            return unitOf(signal.format().channels[channel].label);
        case AxisYUnit::Millivolts:
            return uiText(TextId::UnitMillivolts);
        case AxisYUnit::Microvolts:
            return uiText(TextId::UnitMicrovolts);
        default:
            return uiText(TextId::UnitVolts);
    }
}

}  // namespace

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
        out.color = QColor(static_cast<int>(column.color & 0xFFU), static_cast<int>(column.color >> 8 & 0xFFU),
                           static_cast<int>(column.color >> 16 & 0xFFU));
        if (!out.line && i < signal.format().channelCount()) {
            out.unit = unitOfChannel(signal, i, drawing.unitY());
            out.scale = axisYScale(signal.format(), i, drawing.unitY());
        }
        measured.push_back(std::move(out));
    }
    return measured;
}

}  // namespace tarno2

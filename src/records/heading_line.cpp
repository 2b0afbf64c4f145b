#include "records/heading_line.h"

#include "records/quoted_field.h"

namespace tarno2 {

namespace {

std::string firstHeading(FirstColumn column) {
    switch (column) {
        case FirstColumn::Absent:
            break;
        case FirstColumn::Samples:
            return "Frame";
        case FirstColumn::Seconds:
            return "Time [s]";
        case FirstColumn::Clock:
            return "Time";
    }
    return {};
}

}  // namespace

std::string quotedColumn(const std::string& text, const ExportFormat& format) {
    return quotedField(text, {format.divider.empty() ? '\t' : format.divider.front(), '"'});
}

std::string headingLine(const ExportFormat& format, const ConversionInputs& inputs) {
    std::string line = quotedColumn(firstHeading(format.firstColumn), format);
    for (size_t channel = 0; channel < inputs.channelCount; ++channel) {
        std::string heading = inputs.labels.channelName(channel);
        if (format.volts) {
            const ChannelLabel label = format.units ? inputs.labels.labelOf(channel) : ChannelLabel();
            heading += " [" + label.unitText() + "]";
        }
        line += format.divider + quotedColumn(heading, format);
    }
    for (size_t i = 0; i < inputs.digitalLines; ++i) {
        line += format.divider + quotedColumn(inputs.labels.lineName(i), format);
    }
    return line + (format.marks ? format.divider + "Mark" : std::string()) + "\r\n";
}

}  // namespace tarno2

#include "records/heading_line.h"

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

std::string quotedColumn(const std::string& heading, char divider) {
    if (heading.find(divider) == std::string::npos && heading.find('"') == std::string::npos) {
        return heading;
    }
    std::string text = "\"";
    for (const char c : heading) {
        text.append(c == '"' ? 2 : 1, c);
    }
    return text + '"';
}

std::string headingLine(const ExportFormat& format, const ConversionInputs& inputs) {
    const char divider = format.divider.empty() ? '\t' : format.divider.front();
    std::string line = quotedColumn(firstHeading(format.firstColumn), divider);
    for (size_t channel = 0; channel < inputs.channelCount; ++channel) {
        std::string heading = inputs.labels.channelName(channel);
        if (format.volts) {
            const ChannelLabel label = format.units ? inputs.labels.labelOf(channel) : ChannelLabel();
            heading += " [" + label.unitText() + "]";
        }
        line += format.divider + quotedColumn(heading, divider);
    }
    for (size_t i = 0; i < inputs.digitalLines; ++i) {
        line += format.divider + quotedColumn(inputs.labels.lineName(i), divider);
    }
    return line + (format.marks ? format.divider + "Mark" : std::string()) + "\r\n";
}

}  // namespace tarno2

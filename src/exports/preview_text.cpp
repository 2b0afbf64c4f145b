#include <algorithm>
#include <atomic>
#include <vector>

#include "exports/export_recording.h"
#include "records/frame_formatter.h"
#include "records/frame_reader.h"
#include "records/heading_line.h"

namespace tarno2 {

std::string previewText(const ExportTask& task, uint64_t lines) {
    File data;
    if (!missingInput(task.inputs, task.format).empty()) {
        return {};
    }
    const ConversionResult opened = openRecordedData(data, task.dataFile, task.inputs.frameBytes(), task.choice);
    if (opened.status != ConversionResult::Finished) {
        return {};
    }
    const ConversionInputs inputs = chosenInputs(task.inputs, task.choice);
    std::string text = task.format.headings ? headingLine(task.format, inputs) : std::string();
    FrameReader reader(data, task.inputs, task.choice, opened.frames);
    const auto wanted = static_cast<size_t>(std::min(lines - (text.empty() ? 0 : 1), reader.total()));
    std::vector<uint8_t> frames(wanted * reader.frameBytes());
    size_t count = 0;
    if (!reader.read(frames.data(), wanted, count).ok()) {
        return text;
    }
    const FrameFormatter formatter(task.format, inputs, reader.total(), task.choice);
    std::vector<char> characters(count * formatter.longestLine() + FrameFormatter::kSlack);
    const std::atomic<bool> stop{false};
    const FrameFormatter::Text made = formatter.format(frames.data(), count, 0, characters.data(), stop);
    return text.append(characters.data(), made.bytes);
}

}  // namespace tarno2

#include <utility>

#include "config/files/found_labels.h"
#include "config/files/found_marks.h"
#include "exports/export_recording.h"

namespace tarno2 {

ExportSurroundings lookAround(ExportTask& task, const RecordedKeys& described, const KnownInputs& known) {
    ExportSurroundings around;
    const bool isText = task.row->make == nullptr;
    const ExportFormat& format = task.format;
    task.inputs = conversionInputs(described, known);
    const uint32_t frameBytes = task.inputs.frameBytes();
    if (!isText || format.units || format.headings || !task.wish.channels.empty()) {
        FoundLabels found = findLabels(task.dataFile, task.inputs.channelCount);
        task.inputs.labels = std::move(found.labels);
        if ((!isText || format.units) && known.ranges.empty()) {
            putRangesInOrder(task.inputs, described);
        }
        if (format.units) {
            around.unitsProblem = std::move(found.problem);
        }
    }
    if (!isText) {
        task.facts = findExportFacts(task.dataFile, described);
        // Text has always counted packets by the description, and asks for their rate.
        if (task.facts.packetRate && !known.packetFrequency && !known.frequency) {
            task.inputs.frequency = *task.facts.packetRate;
        }
    }
    around.wishProblem = chooseFrames(task.wish, task.inputs, task.choice, around.wishSubject);
    if ((isText && format.marks) || task.row->usesMarks) {
        const RecordedMarks recorded = findRecordedMarks(task.dataFile, frameBytes);
        task.inputs.marks = marksOfFile(recorded, task.dataFile, frameBytes);
        const bool asked = isText && recorded.marks.empty();
        around.marksProblem = recorded.problem.empty() && asked ? "nothing was marked" : recorded.problem;
    }
    ExportFormat told = format;
    if (!isText) {
        told.firstColumn = task.row->needsRate ? FirstColumn::Seconds : FirstColumn::Absent;
    }
    around.packetRateUnknown = !task.facts.packetRate && lacksPacketFrequency(described, known, told);
    around.timeRunsOn = timeRunsOnOverGaps(described, told);
    return around;
}

}  // namespace tarno2

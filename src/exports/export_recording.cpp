#include "exports/export_recording.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "exports/recording_output.h"
#include "records/export_names.h"
#include "records/frame_reader.h"

namespace tarno2 {

namespace {

constexpr size_t kBlockBytes = size_t{1} << 18;

std::string outputWords(const ExportTask& task) {
    return task.outputName == kStandardOutput ? "standard output" : task.outputName;
}

ExportSubject subjectOf(const ExportTask& task, uint64_t frames) {
    ExportSubject subject{chosenInputs(task.inputs, task.choice),
                          task.format,
                          task.sampleBits,
                          task.inputs.frequency / static_cast<double>(task.choice.every),
                          frames,
                          task.facts,
                          task.dataFile,
                          task.outputName};
    if (task.choice.from > 0) {
        const auto& momentOf = task.facts.momentOf;
        subject.facts.start = momentOf ? momentOf(task.choice.from, task.inputs.frequency) : std::nullopt;
    }
    subject.facts.triggers.clear();
    for (const uint64_t frame : task.facts.triggers) {
        if (frame >= task.choice.from && task.choice.indexOf(frame) < frames) {
            subject.facts.triggers.push_back(task.choice.indexOf(frame));
        }
    }
    return subject;
}

/// Takes the frames to the exporter, until the last one, a stop or a failure. Returns how many it has taken.
uint64_t moveFrames(FrameReader& reader, Exporter& exporter, ExportSink& sink, ConversionProgress& progress,
                    const std::atomic<bool>& stop, ConversionResult& result, uint64_t& goodBytes) {
    const size_t most = std::max<size_t>(kBlockBytes / reader.frameBytes(), 1);
    std::vector<uint8_t> block(most * reader.frameBytes());
    uint64_t frames = 0;
    while (frames < reader.total()) {
        if (stop) {
            result.status = ConversionResult::Stopped;
            break;
        }
        const auto count = static_cast<size_t>(std::min<uint64_t>(most, reader.total() - frames));
        size_t done = 0;
        result.error = reader.read(block.data(), count, done);
        if (done > 0 && !exporter.frames(sink, block.data(), done)) {
            break;
        }
        frames += done;
        goodBytes = sink.position();
        progress.lines.store(frames, std::memory_order_relaxed);
        progress.bytes.store(goodBytes, std::memory_order_relaxed);
        if (done < count) {
            result.status = ConversionResult::CannotRead;
            break;
        }
    }
    return frames;
}

void writeOutput(const ExportTask& task, FrameReader& reader, Exporter& exporter, ExportSink& sink,
                 ConversionProgress& progress, const std::atomic<bool>& stop, ConversionResult& result) {
    uint64_t frames = 0;
    uint64_t goodBytes = 0;
    const bool begun = exporter.begin(sink);
    if (begun) {
        goodBytes = sink.position();
        frames = moveFrames(reader, exporter, sink, progress, stop, result, goodBytes);
    }
    if (begun && sink.error().ok()) {
        exporter.end(sink, frames);
    }
    if (begun && !sink.error().ok()) {
        exporter.rescue(sink, goodBytes, frames);
    }
    if (!sink.firstError().ok()) {
        result.status = ConversionResult::CannotWrite;
        result.error = sink.firstError();
    }
    result.subject = result.status == ConversionResult::CannotRead ? task.dataFile : outputWords(task);
    if (const OsError error = sink.close(); !error.ok() && result.status >= ConversionResult::Finished) {
        result.status = ConversionResult::CannotWrite;
        result.error = error;
    }
    // Data that nothing describes are no recording; those of a file that was there before may still be.
    if (std::string file = exporter.unwritten(); !file.empty()) {
        result.status = ConversionResult::CannotWrite;
        result.subject = std::move(file);
        result.error = exporter.error();
        if (sink.isNew()) {
            static_cast<void>(removeFile(task.outputName));
        }
    }
}

bool openOutput(const ExportTask& task, ExportSink& sink, ConversionResult& result) {
    result.subject = outputWords(task);
    if (task.row->describes) {
        ConversionResult checked = checkRecordingOutput(task.outputName, task.dataFile, task.replace);
        if (checked.status != ConversionResult::Finished) {
            result.status = checked.status;
            result.subject = std::move(checked.subject);
            return false;
        }
    }
    if (task.outputName != kStandardOutput) {
        if (!isOutputName(task.outputName)) {
            result.status = ConversionResult::BadName;
            return false;
        }
        if (isOfRecording(task.outputName, task.dataFile)) {
            result.status = ConversionResult::OutputIsInput;
            return false;
        }
    }
    result.error = sink.open(task.outputName, task.replace);
    if (!result.error.ok()) {
        result.status = result.error.alreadyExists() ? ConversionResult::OutputExists : ConversionResult::CannotCreate;
    }
    return result.error.ok();
}

void exportFrames(const ExportTask& task, ConversionProgress& progress, const std::atomic<bool>& stop,
                  ExportNotes& notes, ConversionResult& result) {
    ExportFormat needs = task.format;
    needs.volts = needs.volts || task.row->needsLimits;
    needs.firstColumn = task.row->needsRate ? FirstColumn::Seconds : FirstColumn::Absent;
    if (std::string key = missingInput(task.inputs, needs); !key.empty()) {
        result.status = ConversionResult::BadInput;
        result.subject = std::move(key);
        return;
    }
    File data;
    result = openRecordedData(data, task.dataFile, task.inputs.frameBytes(), task.choice);
    if (result.status != ConversionResult::Finished) {
        return;
    }
    FrameReader reader(data, task.inputs, task.choice, result.frames);
    progress.totalLines = reader.total();
    progress.totalFiles = 1;
    const ExportSubject subject = subjectOf(task, reader.total());
    const std::unique_ptr<Exporter> exporter = task.row->make(subject, notes, result);
    ExportSink sink;
    if (exporter == nullptr || !openOutput(task, sink, result)) {
        return;
    }
    progress.files = 1;
    writeOutput(task, reader, *exporter, sink, progress, stop, result);
}

}  // namespace

ConversionResult exportRecording(const ExportTask& task, ConversionProgress& progress, const std::atomic<bool>& stop,
                                 ExportNotes& notes) {
    if (task.row->make == nullptr) {
        return convertToText(task.dataFile, task.outputName, task.format, task.inputs, progress, stop, task.choice,
                             [&](const std::string& name) { return isOfRecording(name, task.dataFile); });
    }
    ConversionResult result;
    try {
        exportFrames(task, progress, stop, notes, result);
    } catch (const std::bad_alloc&) {
        result.status = ConversionResult::NoMemory;
    }
    return result;
}

}  // namespace tarno2

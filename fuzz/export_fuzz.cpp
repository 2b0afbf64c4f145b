// Descriptions, and the conversion of what they describe: letters that choose the form of the text, the description,
// the data file, the divider; then for the formats of other programs the passport, the channels that are asked for, and
// where to begin and to end.

#include <atomic>

#include "exports/export_recording.h"
#include "fuzz/scratch_folder.h"
#include "records/recorded_format.h"
#include "records/text_conversion.h"

namespace {

/// Every format of other programs takes what is described, or refuses it with words.
void exportForOthers(const std::string& dataFile, const std::string& output, const tarno2::ExportFormat& format,
                     const tarno2::RecordedKeys& keys, const tarno2::FrameWish& wish) {
    using namespace tarno2;
    for (const ExporterRow& row : exporters()) {
        ExportTask task;
        task.row = &row;
        task.dataFile = dataFile;
        task.outputName = output;
        task.replace = true;
        task.format = format;
        task.wish = wish;
        const ExportSurroundings around = lookAround(task, keys, {});
        if (around.wishProblem != WishProblem::None) {
            require(!describe(around.wishProblem, around.wishSubject).empty());
            continue;
        }
        if (task.inputs.channelCount > 64) {
            continue;
        }
        ConversionProgress progress;
        ExportNotes notes;
        const std::atomic<bool> stop{false};
        const ConversionResult result = exportRecording(task, progress, stop, notes);
        require((result.status == ConversionResult::Finished) == describe(result).empty());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tarno2;
    static const ScratchFolder folder;
    folder.empty();
    InputParts parts(data, size);
    const auto choice = parts.choice();
    const std::string description(parts.next());
    const std::string samples(parts.next());
    const std::string textFile = folder.write("run.txt", description);
    const std::string dataFile = folder.write("run.dat", samples);
    RecordedFormat recorded;
    std::string missing;
    const bool whole = readRecordedFormat(textFile, recorded, missing);
    if (whole) {
        require(recorded.channelCount >= 1 && recorded.ranges.size() == recorded.channelCount);
        require(recorded.frequencyPerChannel > 0.0);
    }
    const RecordedKeys keys = readRecordedKeys(textFile);
    ExportFormat format;
    format.volts = choice.has('v');
    format.firstColumn = choice.has('n')   ? FirstColumn::Samples
                         : choice.has('s') ? FirstColumn::Seconds
                         : choice.has('c') ? FirstColumn::Clock
                                           : FirstColumn::Absent;
    format.timePrecision = choice.has('0') ? 0 : 9;
    format.voltagePrecision = choice.has('9') ? 9 : 3;
    format.decimal = choice.has(',') ? ',' : '.';
    format.maximumLines = choice.has('p') ? 100 : 0;
    if (const auto divider = parts.next(); !divider.empty()) {
        format.divider = divider.substr(0, ExportFormat::kMaximumDividerCount);
    }
    const ConversionInputs inputs = conversionInputs(keys, {});
    ConversionProgress progress;
    const std::atomic<bool> stop{false};
    const ConversionResult result = convertToText(dataFile, folder.file("out.txt"), format, inputs, progress, stop);
    require((result.status == ConversionResult::Finished) == describe(result).empty());
    if (result.status == ConversionResult::Finished) {
        require(missingInput(inputs, format).empty());
        require(result.frames * inputs.frameBytes() + result.leftoverBytes == samples.size());
        require(progress.lines == result.frames && std::filesystem::exists(folder.file("out.txt")));
    }
    if (choice.has('o')) {
        const std::string passport(parts.next());
        if (!passport.empty()) {
            folder.write("run.json", passport);
        }
        FrameWish wish;
        wish.channels = parts.next();
        wish.from = parts.next();
        wish.to = parts.next();
        wish.every = choice.has('e') ? 3 : 1;
        exportForOthers(dataFile, folder.file("out.bin"), format, keys, wish);
        require(folder.read("run.json") == passport);
    }
    require(folder.read("run.txt") == description && folder.read("run.dat") == samples);
    return 0;
}

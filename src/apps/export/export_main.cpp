#include <atomic>
#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include "apps/export/export_options.h"
#include "apps/export/progress_line.h"
#include "config/files/found_labels.h"
#include "config/files/found_marks.h"
#include "language/language_table.h"
#include "platform/run_program.h"
#include "platform/terminal.h"
#include "platform/termination.h"
#include "records/record_description.h"
#include "records/text_conversion.h"

namespace {

using namespace tarno2;

constexpr int kDone = 0;
constexpr int kStopped = 1;
constexpr int kBad = 2;

void complain(const std::string& what) {
    std::cerr << "tarno2-export: " << what << '\n';
}

/// The options that stand for a key of the description.
std::string optionsFor(const std::string& key) {
    if (key == "DataFormat") {
        return "--width, --code-bits, --code-shift, --signed, --unsigned, --code-min and --code-max";
    }
    if (key == "ChannelNumber") {
        return "--channels";
    }
    return key == "Frequency" ? "--frequency" : "--range";
}

void complainOfInput(const std::string& key, const RecordedKeys& described, const std::string& description) {
    const std::string options = key + " can be given with " + optionsFor(key);
    if (described.readable) {
        complain(description + ": " + key + " is missing or does not fit; it can be given with " + optionsFor(key));
    } else if (described.error.notFound()) {
        complain(description + ": no description; " + options);
    } else {
        complain(description + ": cannot be read: " + described.error.text() + "; " + options);
    }
}

/// What is odd about the recording, but does not keep it from being converted.
void warn(const ConversionResult& result, const RecordedKeys& described, const ExportOptions& options) {
    if (lacksPacketFrequency(described, options.known, options.format)) {
        complain(
            "warning: the recording was taken in packets; without --packet-frequency the time counts by the "
            "frequency of a channel");
    }
    if (timeRunsOnOverGaps(described, options.format)) {
        complain("warning: the recording holds triggered records; its time runs on without the gaps between them");
    }
    if (result.leftoverBytes != 0) {
        complain("warning: " + options.dataFile + ": " + std::to_string(result.leftoverBytes) +
                 " bytes after the last whole frame were left out");
    }
    if (described.frames && *described.frames != result.frames) {
        complain("warning: " + options.dataFile + " holds " + std::to_string(result.frames) +
                 " frames, but its description counts " + std::to_string(*described.frames));
    }
}

int convert(const ExportOptions& options, const std::atomic<bool>& stop) {
    const std::string description = RecordDescription::fileNameFor(options.dataFile);
    const RecordedKeys described = readRecordedKeys(description);
    ConversionInputs inputs = conversionInputs(described, options.known);
    if (options.format.units || options.format.headings) {
        FoundLabels found = findLabels(options.dataFile, inputs.channelCount);
        inputs.labels = std::move(found.labels);
        if (options.format.units && options.known.ranges.empty()) {
            putRangesInOrder(inputs, described);
        }
        if (!options.quiet && options.format.units && !found.problem.empty()) {
            complain("warning: " + found.problem + "; the values are volts");
        }
    }
    if (options.format.marks) {
        const RecordedMarks recorded = findRecordedMarks(options.dataFile, inputs.frameBytes());
        inputs.marks = marksOfFile(recorded, options.dataFile, inputs.frameBytes());
        if (!options.quiet && (!recorded.problem.empty() || recorded.marks.empty())) {
            complain("warning: " + (recorded.problem.empty() ? "nothing was marked" : recorded.problem));
        }
    }
    ConversionProgress progress;
    ConversionResult result;
    {
        std::unique_ptr<ProgressLine> line;
        if (!options.quiet && errorOutputIsTerminal()) {
            line = std::make_unique<ProgressLine>(progress);
        }
        result = convertToText(options.dataFile, options.outputName, options.format, inputs, progress, stop);
    }
    if (result.status == ConversionResult::BadInput) {
        complainOfInput(result.subject, described, description);
        return kBad;
    }
    if (result.status < ConversionResult::Finished) {
        complain(describe(result));
        return kBad;
    }
    if (!options.quiet) {
        warn(result, described, options);
    }
    return result.status == ConversionResult::Stopped ? kStopped : kDone;
}

int parseAndRun(int argc, char** argv) {
    languageTable().select(kLanguageEnglish);
    ExportOptions options;
    if (const int status = parseExportOptions(argc, argv, options); status >= 0) {
        return status;
    }
    std::atomic<bool> stop{false};
    const TerminationWatcher watcher([&stop] { stop = true; });
    return convert(options, stop);
}

}  // namespace

int main(int argc, char** argv) {
    return runProgram("tarno2-export", kBad, [&] { return parseAndRun(argc, argv); });
}

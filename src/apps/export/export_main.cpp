#include <atomic>
#include <iostream>
#include <limits>
#include <memory>
#include <string>

#include "apps/export/export_options.h"
#include "apps/export/progress_line.h"
#include "exports/export_recording.h"
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
        return "--channel-count";
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
void warn(const ConversionResult& result, const RecordedKeys& described, const ExportOptions& options,
          const ExportSurroundings& around) {
    if (around.packetRateUnknown) {
        complain(
            "warning: the recording was taken in packets; without --packet-frequency the time counts by the "
            "frequency of a channel");
    }
    if (around.timeRunsOn) {
        complain("warning: the recording holds triggered records; its time runs on without the gaps between them");
    }
    if (result.leftoverBytes != 0) {
        complain("warning: " + options.task.dataFile + ": " + std::to_string(result.leftoverBytes) +
                 " bytes after the last whole frame were left out");
    }
    if (described.frames && *described.frames != result.frames) {
        complain("warning: " + options.task.dataFile + " holds " + std::to_string(result.frames) +
                 " frames, but its description counts " + std::to_string(*described.frames));
    }
}

/// A lone number is how many channels a frame has, where nothing else tells.
void takeChannelCount(ExportOptions& options, const RecordedKeys& described) {
    std::string& list = options.task.wish.channels;
    if (described.channelCount || options.known.channelCount || list.empty() ||
        list.find_first_not_of("0123456789") != std::string::npos) {
        return;
    }
    constexpr size_t kMostDigits = 9;
    options.known.channelCount =
        list.size() > kMostDigits ? std::numeric_limits<uint32_t>::max() : static_cast<uint32_t>(std::stoul(list));
    list.clear();
}

void tellSurroundings(const ExportSurroundings& around) {
    if (!around.unitsProblem.empty()) {
        complain("warning: " + around.unitsProblem + "; the values are volts");
    }
    if (!around.marksProblem.empty()) {
        complain("warning: " + around.marksProblem);
    }
}

int convert(ExportOptions& options, const std::atomic<bool>& stop) {
    ExportTask& task = options.task;
    const std::string description = RecordDescription::fileNameFor(task.dataFile);
    const RecordedKeys described = readRecordedKeys(description);
    takeChannelCount(options, described);
    const ExportSurroundings around = lookAround(task, described, options.known);
    if (around.wishProblem != WishProblem::None) {
        complain(task.dataFile + ": " + describe(around.wishProblem, around.wishSubject));
        return kBad;
    }
    if (!options.quiet) {
        tellSurroundings(around);
    }
    ConversionProgress progress;
    ConversionResult result;
    ExportNotes notes;
    {
        std::unique_ptr<ProgressLine> line;
        if (!options.quiet && errorOutputIsTerminal()) {
            line = std::make_unique<ProgressLine>(progress);
        }
        result = exportRecording(task, progress, stop, notes);
    }
    if (result.status == ConversionResult::BadInput) {
        complainOfInput(result.subject, described, description);
        return kBad;
    }
    if (result.status < ConversionResult::Finished) {
        const bool there = result.status == ConversionResult::OutputExists;
        complain(describe(result) + (there ? "; --overwrite replaces it" : ""));
        return kBad;
    }
    if (!options.quiet) {
        warn(result, described, options, around);
        for (const ExportNote& note : notes) {
            complain("note: " + describe(note));
        }
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

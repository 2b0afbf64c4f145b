#include "exports/recording_output.h"

#include <algorithm>
#include <vector>

#include "config/files/recording_name.h"
#include "platform/ascii_case.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/file_extensions.h"

namespace tarno2 {

namespace {

ConversionResult refused(ConversionResult::Status status, const std::string& subject) {
    ConversionResult result;
    result.status = status;
    result.subject = subject;
    return result;
}

/// Whether readers would take the output for a piece of the recording, or that for a piece of the output.
bool wouldBePiece(const RecordingName& output, const std::string& dataFile) {
    const RecordingName own(dataFile);
    return isSameFile(joinPath(output.folder(), fileNameOf(dataFile)), dataFile) &&
           (output.mayShareFilesWith(own) || output.mayShareFilesWith(own.whole().value_or(own)));
}

/// A file that tells of another recording of that name, and would be wrong beside this one; empty when there is none.
std::string inTheWay(const RecordingName& output) {
    std::vector<std::string> files = output.companions();
    files.push_back(output.piece(1));
    if (const auto there = std::ranges::find_if(files, fileExists); there != files.end()) {
        return *there;
    }
    if (const auto whole = output.whole()) {
        const std::string before = whole->piece(whole->pieceOf(fileNameOf(output.data())).value_or(1) - 1);
        return fileExists(before) ? before : std::string();
    }
    return {};
}

}  // namespace

bool isOfRecording(const std::string& output, const std::string& dataFile) {
    const RecordingName own(dataFile);
    for (const RecordingName& name : {own, own.whole().value_or(own)}) {
        const uint32_t piece = name.pieceOf(fileNameOf(output)).value_or(0);
        std::vector<std::string> files = name.companions();
        files.insert(files.end(), {name.data(), name.description(), name.piece(piece), name.description(piece)});
        if (std::ranges::any_of(files, [&](const std::string& file) { return isSameFile(output, file); })) {
            return true;
        }
    }
    return false;
}

ConversionResult checkRecordingOutput(const std::string& output, const std::string& dataFile, bool replace) {
    const RecordingName name(output);
    if (!sameIgnoringCase(name.extension(), kDataExtension)) {
        return refused(ConversionResult::NoRecordingName, output);
    }
    for (const std::string& file : {output, name.description()}) {
        if (isOfRecording(file, dataFile)) {
            return refused(ConversionResult::OutputIsInput, file);
        }
    }
    if (wouldBePiece(name, dataFile)) {
        return refused(ConversionResult::OutputIsInput, output);
    }
    if (const std::string file = inTheWay(name); !file.empty()) {
        return refused(ConversionResult::NameTaken, file);
    }
    for (const std::string& file : {output, name.description()}) {
        if (!replace && fileExists(file)) {
            return refused(ConversionResult::OutputExists, file);
        }
    }
    // A text that is no description is never replaced.
    if (fileExists(name.description()) && !readRecordedKeys(name.description()).layout) {
        return refused(ConversionResult::NameTaken, name.description());
    }
    return {};
}

}  // namespace tarno2

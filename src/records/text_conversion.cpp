#include "records/text_conversion.h"

#include <algorithm>
#include <limits>
#include <new>

#include "platform/file.h"
#include "records/export_names.h"
#include "records/frame_formatter.h"
#include "records/frame_reader.h"
#include "records/heading_line.h"
#include "records/text_blocks.h"
#include "records/text_pieces.h"

namespace tarno2 {

namespace {

ConversionResult failure(ConversionResult::Status status, std::string subject, OsError error = {}) {
    ConversionResult result;
    result.status = status;
    result.subject = std::move(subject);
    result.error = error;
    return result;
}

/// Lines in an output file; 0 for all of them in one.
uint64_t linesPerFile(uint64_t maximumLines) {
    if (maximumLines == 0 || maximumLines > std::numeric_limits<uint32_t>::max()) {
        return 0;
    }
    return std::max(maximumLines, ExportFormat::kLeastLineLimit);
}

}  // namespace

ConversionResult openRecordedData(File& data, const std::string& dataFile, uint32_t frameBytes,
                                  const FrameChoice& choice) {
    if (const OsError error = data.open(dataFile, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite);
        !error.ok()) {
        return failure(ConversionResult::CannotRead, dataFile, error);
    }
    uint64_t size = 0;
    if (const OsError error = data.size(size); !error.ok()) {
        return failure(ConversionResult::CannotRead, dataFile, error);
    }
    ConversionResult result;
    result.frames = size / frameBytes;
    result.leftoverBytes = static_cast<uint32_t>(size % frameBytes);
    if (choice.count(result.frames) == 0 && (choice.from != 0 || choice.to == 0)) {
        result.status = ConversionResult::NothingChosen;
        result.subject = dataFile;
    }
    return result;
}

namespace {

void takeFault(const TextBlock& block, const std::string& dataFile, ConversionResult& result) {
    if (block.outOfMemory) {
        result.status = ConversionResult::NoMemory;
    } else if (!block.readError.ok() || block.tooShort) {
        result.status = ConversionResult::CannotRead;
        result.subject = dataFile;
        result.error = block.readError;
    } else if (block.text.lines < block.frameCount) {
        result.status = ConversionResult::Stopped;
    }
}

/// Writes the blocks as they come, until the last one, a stop or a failure.
void writeBlocks(TextBlocks& blocks, TextPieces& pieces, const std::string& dataFile, ConversionResult& result) {
    while (const TextBlock* const block = blocks.next()) {
        takeFault(*block, dataFile, result);
        if (block->text.lines > 0 &&
            !pieces.write(block->characters.get(), block->text.bytes, block->text.lines, result)) {
            return;
        }
        if (result.status != ConversionResult::Finished) {
            return;
        }
        blocks.release();
    }
}

void convertFrames(FrameReader& reader, const std::string& dataFile, TextPieces& pieces, const ExportFormat& format,
                   const ConversionInputs& inputs, const FrameChoice& choice, ConversionProgress& progress,
                   const std::atomic<bool>& stop, ConversionResult& result) {
    const FrameFormatter formatter(format, inputs, reader.total(), choice);
    if (formatter.longestLine() > TextBlocks::kTextSize) {
        result.status = ConversionResult::BadInput;
        result.subject = "ChannelNumber";
        return;
    }
    const uint64_t limit = linesPerFile(format.maximumLines);
    progress.totalLines = reader.total();
    progress.totalFiles = limit == 0 ? 1 : std::max<uint64_t>((reader.total() + limit - 1) / limit, 1);
    TextBlocks blocks(reader, formatter, limit, stop);
    if (!pieces.open(result)) {
        return;
    }
    if (!blocks.start()) {
        result.status = ConversionResult::NoMemory;
        return;
    }
    writeBlocks(blocks, pieces, dataFile, result);
    if (ConversionResult closed; !pieces.close(closed) && result.status >= ConversionResult::Finished) {
        closed.frames = result.frames;
        closed.leftoverBytes = result.leftoverBytes;
        result = closed;
    }
}

}  // namespace

ConversionResult convertToText(const std::string& dataFile, const std::string& outputName, const ExportFormat& format,
                               const ConversionInputs& inputs, ConversionProgress& progress,
                               const std::atomic<bool>& stop, const FrameChoice& choice, const NameGuard& guard) {
    ConversionResult result;
    try {
        if (!isOutputName(outputName)) {
            return failure(ConversionResult::BadName, outputName);
        }
        if (std::string key = missingInput(inputs, format); !key.empty()) {
            return failure(ConversionResult::BadInput, std::move(key));
        }
        File data;
        result = openRecordedData(data, dataFile, inputs.frameBytes(), choice);
        if (result.status == ConversionResult::Finished) {
            FrameReader reader(data, inputs, choice, result.frames);
            const ConversionInputs chosen = chosenInputs(inputs, choice);
            TextPieces pieces(dataFile, outputName, guard,
                              format.headings ? headingLine(format, chosen) : std::string(),
                              linesPerFile(format.maximumLines), progress);
            convertFrames(reader, dataFile, pieces, format, chosen, choice, progress, stop, result);
        }
    } catch (const std::bad_alloc&) {
        result.status = ConversionResult::NoMemory;
    }
    return result;
}

std::string describe(const ConversionResult& result) {
    const std::string because = result.error.ok() ? std::string() : ": " + result.error.text();
    switch (result.status) {
        case ConversionResult::Finished:
        case ConversionResult::Stopped:
            return {};
        case ConversionResult::NoMemory:
            return "not enough memory";
        case ConversionResult::BadInput:
            return result.subject + " is missing or makes no sense";
        case ConversionResult::CannotRead:
            return result.subject + ": cannot be read" + (because.empty() ? ": it ended early" : because);
        case ConversionResult::CannotCreate:
            return result.subject + ": cannot be created" + because;
        case ConversionResult::CannotWrite:
            return result.subject + ": cannot be written" + because;
        case ConversionResult::OutputIsInput:
            return result.subject + ": the output would replace the recording itself";
        case ConversionResult::BadName:
            return '"' + result.subject + "\" is no name for an output file: 1 to 259 characters are";
        case ConversionResult::OutputExists:
            return result.subject + ": is there already";
        case ConversionResult::CodesTooWide:
            return "the codes do not fit into " + result.subject + " bits";
        case ConversionResult::TooManyChannels:
            return "the format holds " + result.subject + " channels at most";
        case ConversionResult::RateImpossible:
            return "the format can not tell this rate";
        case ConversionResult::NoRecordingName:
            return '"' + result.subject + "\" is no name for a recording: it has to end in .dat";
        case ConversionResult::NameTaken:
            return result.subject + ": is there and belongs to something else of that name; choose another name";
        case ConversionResult::RecordsTorn:
            return "a recording with records of synchronisation can not become a part of this format: it would pass "
                   "for "
                   "one continuous signal";
        case ConversionResult::NothingChosen:
            return result.subject + ": of its " + std::to_string(result.frames) + " frames none was chosen";
    }
    return {};
}

}  // namespace tarno2

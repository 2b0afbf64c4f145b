#include "display/recorded.h"

#include <algorithm>
#include <optional>

#include "config/files/file_naming.h"
#include "config/files/found_labels.h"
#include "config/files/recording_name.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/file_extensions.h"
#include "records/record_description.h"

namespace tarno2 {

namespace {

bool sameLayout(const SampleLayout& a, const SampleLayout& b) {
    return a.bytesPerSample == b.bytesPerSample && a.analogShift == b.analogShift && a.analogMask == b.analogMask &&
           a.analogBits == b.analogBits && a.digitalShift == b.digitalShift && a.digitalMask == b.digitalMask &&
           a.digitalBits == b.digitalBits && a.analogSigned == b.analogSigned;
}

// Pieces of one recording differ in their frames alone.
bool samePieces(const RecordedFormat& a, const RecordedFormat& b) {
    return sameLayout(a.layout, b.layout) && a.frequencyPerChannel == b.frequencyPerChannel && a.ranges == b.ranges &&
           a.backwardOrder == b.backwardOrder && a.driverName == b.driverName;
}

OpenProblem readDescription(const std::string& dataFile, RecordedFormat& format) {
    const std::string name = RecordDescription::fileNameFor(dataFile);
    std::string missingKey;
    OsError why;
    if (readRecordedFormat(name, format, missingKey, &why)) {
        return {};
    }
    if (missingKey.empty()) {
        return why.notFound() ? OpenProblem{OpenProblem::DescriptionMissing, name}
                              : OpenProblem{OpenProblem::DescriptionNotRead, why.text()};
    }
    return {OpenProblem::DescriptionDamaged, missingKey};
}

/// Of another ending it is the one file of that name that has as many data as the description tells.
std::optional<std::string> otherDataFileOf(const std::string& description, const std::string& base) {
    RecordedFormat format;
    std::string missingKey;
    if (!readRecordedFormat(description, format, missingKey)) {
        return std::nullopt;
    }
    const uint64_t bytes = format.frames * format.channelCount * static_cast<uint64_t>(format.layout.bytesPerSample);
    const std::string folder = parentFolder(description);
    std::vector<std::string> fitting;
    for (const std::string& file : listDirectory(folder.empty() ? "." : folder)) {
        const std::string candidate = folder.empty() ? file : joinPath(folder, file);
        if (candidate.starts_with(base) && isDataExtension(candidate.substr(base.size())) &&
            plainFileSize(candidate) == bytes) {
            fitting.push_back(candidate);
        }
    }
    return fitting.size() == 1 ? std::optional(fitting.front()) : std::nullopt;
}

}  // namespace

// No data file has the extension of descriptions.
std::string dataFileOf(const std::string& name) {
    if (RecordDescription::fileNameFor(name) != name) {
        return name;
    }
    const std::string base = name.substr(0, name.rfind('.'));
    const std::string data = base + ".dat";
    return fileExists(data) ? data : otherDataFileOf(name, base).value_or(name);
}

std::unique_ptr<RecordedFrames> RecordedFrames::open(const std::string& dataFile, OpenProblem& problem) {
    std::unique_ptr<RecordedFrames> recording(new RecordedFrames);
    problem = readDescription(dataFile, recording->recorded_);
    if (problem.kind == OpenProblem::None) {
        recording->format_ = signalFormatOf(recording->recorded_);
        problem = recording->addPiece(dataFile);
    }
    if (problem.kind != OpenProblem::None) {
        return nullptr;
    }
    const FoundLabels found = findLabels(dataFile, recording->recorded_.channelCount);
    recording->takeLabels(found.labels);
    recording->takePassport(found);
    for (uint32_t number = 1;; ++number) {
        const std::string name = RecordingName(dataFile).piece(number);
        RecordedFormat format;
        if (!fileExists(name) || readDescription(name, format).kind != OpenProblem::None ||
            !samePieces(recording->recorded_, format) || recording->addPiece(name).kind != OpenProblem::None) {
            return recording;
        }
    }
}

void RecordedFrames::takeLabels(const RecordedLabels& labels) {
    numbers_.resize(labels.channels.size());
    for (size_t i = 0; i < labels.channels.size(); ++i) {
        format_.channels[i].label = labels.channels[i].label;
        numbers_[format_.channels[i].listPosition] = labels.channels[i].number;
    }
    format_.lineNames = labels.lines;
}

// What is opened may be a later piece of its recording: by its number, for the files may have been renamed since. Of
// records a piece may begin in the middle of one.
void RecordedFrames::takePassport(const FoundLabels& found) {
    if (!found.passport) {
        // The description's rate is not that of packets, and records leave gaps.
        if (recorded_.even && recorded_.created) {
            wallClock_ = wallClockOf(*recorded_.created, recorded_.frequencyPerChannel);
        }
        if (recorded_.record && !RecordingName(pieces_.front().name).whole()) {
            const auto [before, after] = *recorded_.record;
            records_ = {uint64_t{before} + after, before};
        }
        return;
    }
    const auto& pieces = found.passport->pieces;
    if (found.piece > pieces.size()) {
        return;
    }
    uint64_t before = 0;
    for (uint32_t i = 0; i < found.piece; ++i) {
        before += pieces[i].frames;
    }
    wallClock_ = wallClockOf(*found.passport, before, recorded_.frequencyPerChannel);
    if (const uint32_t frames = found.passport->recordFrames(); frames > 0 && before % frames == 0) {
        records_ = {frames, found.passport->synchronisation.prehistory};
    }
}

OpenProblem RecordedFrames::addPiece(const std::string& dataFile) {
    Piece piece;
    uint64_t bytes = 0;
    OsError error = piece.file.open(dataFile, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite);
    if (error.ok()) {
        error = piece.file.size(bytes);
    }
    if (!error.ok()) {
        return {OpenProblem::FileNotRead, error.text()};
    }
    if (bytes % frameBytes() != 0) {
        cutFiles_.push_back(dataFile);
    }
    if (pieces_.size() >= kMostOpenFiles) {
        piece.file.close();
    }
    piece.name = dataFile;
    piece.firstFrame = frameCount_;
    piece.frames = bytes / frameBytes();
    frameCount_ += piece.frames;
    pieces_.push_back(std::move(piece));
    return {};
}

File& RecordedFrames::fileOf(Piece& piece) {
    if (piece.file.isOpen()) {
        return piece.file;
    }
    if (passingPiece_ != &piece) {
        const OsError error = passing_.open(piece.name, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite);
        passingPiece_ = error.ok() ? &piece : nullptr;
    }
    return passing_;
}

RecordedFrames::PieceFrames RecordedFrames::pieceOf(uint64_t frame) const {
    auto piece = std::ranges::upper_bound(pieces_, frame, {}, &Piece::firstFrame);
    piece = piece == pieces_.begin() ? piece : std::prev(piece);
    return {piece->name, piece->firstFrame, piece->firstFrame + piece->frames};
}

uint64_t RecordedFrames::read(uint64_t firstFrame, uint64_t count, std::byte* out) {
    const std::lock_guard lock(mutex_);
    const uint64_t frame = frameBytes();
    auto piece = std::upper_bound(pieces_.begin(), pieces_.end(), firstFrame,
                                  [](uint64_t number, const Piece& p) { return number < p.firstFrame; });
    uint64_t read = 0;
    for (piece = std::prev(piece); piece != pieces_.end() && read < count; ++piece) {
        const uint64_t inside = firstFrame + read - piece->firstFrame;
        const uint64_t wanted = std::min(count - read, piece->frames - std::min(inside, piece->frames));
        size_t done = 0;
        File& file = fileOf(*piece);
        if (wanted > 0 && (!file.isOpen() || !file.seek(inside * frame).ok() ||
                           !file.read(out + read * frame, wanted * frame, done).ok())) {
            break;
        }
        read += done / frame;
        if (done / frame < wanted) {
            break;
        }
    }
    return read;
}

}  // namespace tarno2

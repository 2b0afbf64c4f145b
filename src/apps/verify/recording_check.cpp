#include "apps/verify/recording_check.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <future>
#include <memory>
#include <utility>

#include "core/storage/recording_journal.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "platform/sha256.h"
#include "platform/utf.h"
#include "records/record_description.h"

namespace tarno2 {

namespace {

constexpr size_t kBlockBytes = size_t{4} << 20U;
constexpr uint64_t kLongestList = uint64_t{1} << 28U;

bool isClose(double a, double b) {
    return std::abs(a - b) <= 1e-4 * std::max(std::abs(a), std::abs(b));
}

/// The checksum of a file; empty when it can't be read, or the reading was stopped: `problem`. The next block is read
/// while one is computed.
std::string sha256Of(const std::string& file, const std::atomic<bool>& stop, std::string& problem) {
    struct Block {
        std::unique_ptr<std::byte[]> bytes = std::make_unique<std::byte[]>(kBlockBytes);
        size_t size = 0;
        OsError error;
    };
    std::array<Block, 2> blocks;
    File data;
    Sha256 hash;
    const auto read = [&data](Block& block) { block.error = data.read(block.bytes.get(), kBlockBytes, block.size); };
    size_t at = 0;
    blocks[at].error = data.open(file, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite);
    if (blocks[at].error.ok()) {
        read(blocks[at]);
    }
    for (; blocks[at].error.ok() && blocks[at].size > 0 && !stop; at = 1 - at) {
        std::future<void> next = std::async(read, std::ref(blocks[1 - at]));
        hash.add({blocks[at].bytes.get(), blocks[at].size});
        next.get();
    }
    problem = stop                     ? "stopped"
              : !blocks[at].error.ok() ? blocks[at].error.text()
              : !hash.valid()          ? "no memory"
                                       : std::string();
    return problem.empty() ? hash.take() : std::string();
}

std::string stateText(const Passport& passport) {
    return passport.state == Passport::State::Recovered ? "recovered after it was cut off"
                                                        : "ended: " + passport.end.reason;
}

}  // namespace

RecordingCheck::RecordingCheck(const std::string& dataName, Tell tell, const std::atomic<bool>& stop)
    : name_(dataName), tell_(std::move(tell)), stop_(stop) {}

void RecordingCheck::run() {
    if (!mayBeChecked()) {
        return;
    }
    pieces_ = piecesOf(name_);
    readPassport();
    readList();
    checkContinuity();
    for (const uint32_t k : pieces_) {
        checkPiece(k);
        checkSums(k);
    }
    checkMarks();
    if (found_.passport && format_) {
        checkFormat(*format_);
    }
    if (sums_.empty()) {
        note("there are no checksums: what the files hold was not checked");
    }
}

bool RecordingCheck::mayBeChecked() {
    for (const std::string& journal : {name_.journal(), name_.earlierJournal()}) {
        const auto found = RecordingJournal::look(journal);
        if (!found) {
            tell_(Verdict::Unchecked, fileNameOf(journal) + " can not be read");
            return false;
        }
        RecordingJournal held;
        if (*found == JournalFound::InUse ||
            (*found == JournalFound::Ours && held.takeExisting(journal) == JournalFound::InUse)) {
            tell_(Verdict::Unchecked, "it is being recorded: not checked");
            return false;
        }
        if (*found == JournalFound::Ours) {
            wrong("it was cut off and not recovered yet: tarno2-recover finishes it");
        }
    }
    return true;
}

// A recording that made way for another one is called otherwise than its own lists say.
std::optional<uint32_t> RecordingCheck::pieceOf(const std::string& listed) const {
    for (const auto* name : {&name_, formerName_ ? &*formerName_ : nullptr}) {
        const auto k = name != nullptr ? name->pieceOf(listed) : std::nullopt;
        if (k && fileNameOf(name->piece(*k)) == listed) {
            return k;
        }
    }
    return std::nullopt;
}

void RecordingCheck::enter(const std::string& listedAs, const std::string& sha256, const std::string& source) {
    if (const auto k = pieceOf(listedAs)) {
        sums_[*k].push_back({sha256, source});
    } else if (isOwnMarks(listedAs)) {
        marksSums_.push_back({sha256, source});
    } else {
        wrong(source + " tells of \"" + listedAs + "\", which is no file of this recording");
    }
}

void RecordingCheck::readPassport() {
    found_ = findPassport(name_.passport());
    const std::string file = fileNameOf(name_.passport());
    if (!found_.there) {
        note("there is no passport");
        return;
    }
    if (!found_.passport) {
        wrong(file + ": " + found_.problem);
        return;
    }
    const Passport& passport = *found_.passport;
    if (passport.state == Passport::State::Recording) {
        wrong(file + " tells of no end");
    }
    const auto problems = passportContradictions(found_.text, passport);
    const auto bad = [&](const std::string& what) { wrong(file + ": " + what); };
    std::ranges::for_each(problems, bad);
    if (problems.empty() && passport.state != Passport::State::Recording) {
        right(file + " is one: " + std::to_string(passport.frames()) + " frames in " +
              std::to_string(passport.pieces.size()) + " files, " + stateText(passport));
    }
    for (const PassportLoss& loss : passport.end.losses) {
        note("lost: " + std::to_string(loss.count) + " samples from sample " + std::to_string(loss.sample) + " on (" +
             loss.cause + ")");
    }
    if (!passport.pieces.empty() && !pieceOf(utf8ToSystem(passport.pieces.front().file))) {
        formerName_ = RecordingName(utf8ToSystem(passport.pieces.front().file));
        note("it was recorded as \"" + formerName_->data() + "\"");
    }
    takePieces(passport, file);
}

void RecordingCheck::takePieces(const Passport& passport, const std::string& file) {
    const auto strange = [&](const std::string& listed) {
        wrong(file + " tells of \"" + listed + "\", which is no file of this recording");
    };
    const auto outOfOrder = [&](const std::string& listed) { wrong(file + ": \"" + listed + "\" is out of order"); };
    uint32_t next = 0;
    for (const PassportPiece& piece : passport.pieces) {
        const std::string listed = utf8ToSystem(piece.file);
        const auto k = pieceOf(listed);
        if (!k) {
            strange(listed);
            continue;
        }
        if (*k < next) {
            outOfOrder(listed);
        }
        next = *k + 1;
        told_[*k] = piece;
        if (!piece.sha256.empty()) {
            enter(listed, piece.sha256, file);
        }
    }
}

void RecordingCheck::readList() {
    const std::string file = fileNameOf(name_.checksums());
    if (!fileExists(name_.checksums())) {
        return;
    }
    std::string text;
    const OsError error = readWholeFile(name_.checksums(), kLongestList, FileShare::ReadWrite, text);
    const auto list = error.ok() ? readChecksumList(text) : std::nullopt;
    if (!list) {
        wrong(file + ": " + (error.ok() ? "it is no list of checksums" : error.text()));
        return;
    }
    if (!formerName_ && !pieceOf(list->front().file)) {
        formerName_ = RecordingName(list->front().file);
        note("it was recorded as \"" + formerName_->data() + "\"");
    }
    for (const FileChecksum& entry : *list) {
        enter(entry.file, entry.sha256, file);
    }
}

void RecordingCheck::checkContinuity() {
    std::set<uint32_t> expected = pieces_;
    for (const auto& [k, piece] : told_) {
        expected.insert(k);
    }
    for (const auto& [k, sums] : sums_) {
        expected.insert(k);
    }
    if (pieces_.empty()) {
        wrong("there is no data file");
    }
    const uint32_t last = expected.empty() ? 0 : *expected.rbegin();
    // Where many are missing in a row, the first one stands for them.
    bool whole = !pieces_.empty();
    bool missingBefore = false;
    for (uint32_t k = 0, seen = 0; !expected.empty() && k <= last && seen < expected.size(); ++k) {
        seen += expected.contains(k) ? 1 : 0;
        const bool missing = !pieces_.contains(k);
        if (missing && !missingBefore) {
            wrong(fileNameOf(name_.piece(k)) + " is missing: the recording has a gap there");
        }
        missingBefore = missing;
        whole = whole && !missing;
    }
    for (const uint32_t k : pieces_) {
        if (!told_.empty() && !told_.contains(k)) {
            wrong(fileNameOf(name_.piece(k)) + " is none of the files that the passport tells of");
        }
    }
    if (whole) {
        right(std::to_string(pieces_.size()) + (pieces_.size() == 1 ? " data file" : " data files without a gap"));
    }
}

// Without a passport nobody knows what ended the recording.
bool RecordingCheck::mayEndWithinAFrame(uint32_t k) const {
    return k == *pieces_.rbegin() && (!found_.passport || found_.passport->mayEndWithinAFrame());
}

void RecordingCheck::checkPiece(uint32_t k) {
    const std::string data = name_.piece(k);
    const std::string shown = fileNameOf(data);
    const auto bytes = plainFileSize(data);
    if (!bytes) {
        tell_(Verdict::Unchecked, shown + " can not be read");
        return;
    }
    RecordedFormat format;
    std::string missingKey;
    OsError why;
    if (!readRecordedFormat(name_.description(k), format, missingKey, &why)) {
        const std::string description = fileNameOf(name_.description(k));
        wrong(missingKey.empty() ? description + ": " + why.text()
                                 : description + ": " + missingKey + " is missing or does not fit");
        return;
    }
    const uint64_t frameBytes = static_cast<uint64_t>(format.layout.bytesPerSample) * format.channelCount;
    const uint64_t frames = *bytes / frameBytes;
    bool good = true;
    const auto bad = [&](const std::string& what) {
        good = false;
        wrong(shown + what);
    };
    if (*bytes % frameBytes != 0) {
        if (mayEndWithinAFrame(k)) {
            note(shown + " ends within a frame, as a size limit may have it");
        } else {
            bad(" ends with a torn frame");
        }
    }
    if (frames != format.frames) {
        bad(" has " + std::to_string(frames) + " frames, its description tells of " + std::to_string(format.frames));
    }
    if (format_ && (format.channelCount != format_->channelCount ||
                    format.layout.bytesPerSample != format_->layout.bytesPerSample ||
                    format.frequencyPerChannel != format_->frequencyPerChannel || format.ranges != format_->ranges)) {
        bad(" is described otherwise than the first data file");
    }
    if (const auto told = told_.find(k);
        told != told_.end() && (told->second.bytes != *bytes || told->second.frames != frames)) {
        bad(" has " + std::to_string(*bytes) + " bytes, the passport tells of " + std::to_string(told->second.bytes) +
            " in " + std::to_string(told->second.frames) + " frames");
    }
    if (good) {
        right(shown + ": " + std::to_string(frames) + " frames, as described");
    }
    format_ = format_ ? format_ : format;
}

void RecordingCheck::checkFormat(const RecordedFormat& format) {
    const Passport& passport = *found_.passport;
    const std::string file = fileNameOf(name_.passport());
    const auto differs = [&](const char* what) { wrong(file + ": " + what + " not those of the description"); };
    if (passport.channels.size() != format.channelCount) {
        differs("the channels are");
    }
    if (passport.sample.bytes != static_cast<uint32_t>(format.layout.bytesPerSample) ||
        passport.sample.backwardOrder != format.backwardOrder) {
        differs("the samples are");
    }
    if (!isClose(passport.rate.recorded, format.frequencyPerChannel)) {
        differs("the rates are");
    }
    for (size_t i = 0; i < std::min(passport.channels.size(), format.ranges.size()); ++i) {
        if (!isClose(passport.channels[i].upper, format.ranges[i].first) ||
            !isClose(passport.channels[i].lower, format.ranges[i].second)) {
            differs("the ranges are");
            break;
        }
    }
}

void RecordingCheck::checkSums(uint32_t k) {
    const auto sums = sums_.find(k);
    const std::string shown = fileNameOf(name_.piece(k));
    if (sums == sums_.end()) {
        if (!sums_.empty()) {
            note(shown + " has no checksum: what it holds was not checked");
        }
        return;
    }
    compareSums(shown, name_.piece(k), sums->second);
}

void RecordingCheck::compareSums(const std::string& shown, const std::string& file, const std::vector<Sum>& sums) {
    if (sums.empty()) {
        return;
    }
    std::string problem;
    const std::string computed = sha256Of(file, stop_, problem);
    if (computed.empty()) {
        tell_(Verdict::Unchecked, shown + ": " + problem);
        return;
    }
    bool good = true;
    for (const Sum& sum : sums) {
        if (sum.sha256 != computed) {
            wrong(shown + " has another checksum than " + sum.source + " tells");
            good = false;
        }
    }
    if (good) {
        right(shown + ": checksum");
    }
}

}  // namespace tarno2

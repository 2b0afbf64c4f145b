#include "core/storage/recording_checksums.h"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "platform/paths.h"
#include "platform/utf.h"
#include "records/checksum_list.h"

namespace tarno2 {

namespace {

/// What the writer is ahead at most: more of it may not be in the system's memory any more.
constexpr uint64_t kLongestLag = uint64_t{64} << 20U;
constexpr uint64_t kLongestText = uint64_t{1} << 30U;

std::string inWords(const std::string& name, const std::string& problem) {
    return "\"" + name + "\": " + problem;
}

/// Whether a file that stands where the list goes is an earlier list of the same recording.
bool isListOf(const RecordingName& name, const std::string& text) {
    const auto files = readChecksumList(text);
    return files && std::ranges::all_of(*files, [&](const FileChecksum& file) {
               const auto piece = name.pieceOf(file.file);
               return (piece && fileNameOf(name.piece(*piece)) == file.file) || file.file == fileNameOf(name.marks());
           });
}

}  // namespace

// A recording does not end because there is no memory for its checksums.
void RecordingChecksums::pieceBegins(const std::string& name) noexcept {
    const std::scoped_lock lock(mutex_);
    written_.store(0, std::memory_order_relaxed);
    pieceOpen_ = false;
    try {
        std::string own(name);
        pieces_.emplace_back().name = std::move(own);
        pieceOpen_ = true;
    } catch (const std::bad_alloc&) {
        lacksPiece_ = true;
    }
}

void RecordingChecksums::pieceEnds(uint64_t bytes) noexcept {
    const std::scoped_lock lock(mutex_);
    if (std::exchange(pieceOpen_, false)) {
        pieces_.back().bytes = bytes;
        pieces_.back().ended = true;
    }
}

void RecordingChecksums::finish(std::optional<Passport> passport) {
    passport_ = std::move(passport);
    finished_.store(true, std::memory_order_release);
}

// The piece to read on, and how far it may be read.
RecordingChecksums::Piece* RecordingChecksums::next(uint64_t& limit) {
    const std::scoped_lock lock(mutex_);
    for (size_t i = first_; i < pieces_.size(); ++i) {
        Piece& piece = pieces_[i];
        limit = piece.ended ? piece.bytes : written_.load(std::memory_order_relaxed);
        const bool done = piece.failed || !piece.sha256.empty() || (piece.ended && completes(piece, limit));
        if (done) {
            first_ += i == first_ ? 1 : 0;
            continue;
        }
        piece.behind = !late_ && (piece.behind || limit > piece.done + kLongestLag);
        if (!piece.behind && piece.done < limit) {
            return &piece;
        }
    }
    return nullptr;
}

// A file that was cut after a failed write is read anew when more of it was read than is left.
bool RecordingChecksums::completes(Piece& piece, uint64_t limit) {
    if (limit == 0) {
        piece.failed = true;
        return true;
    }
    if (piece.done > limit) {
        static_cast<void>(piece.hash.take());
        piece.file.close();
        piece.done = 0;
    }
    if (piece.done < limit) {
        return false;
    }
    piece.sha256 = piece.hash.take();
    piece.failed = piece.sha256.empty();
    piece.file.close();
    return true;
}

bool RecordingChecksums::step(std::span<std::byte> buffer) {
    if (!late_ && finished()) {
        late_ = true;
        countLate();
    }
    if (!late_ && !room()) {
        return false;
    }
    uint64_t limit = 0;
    Piece* piece = next(limit);
    if (piece == nullptr) {
        return false;
    }
    read(*piece, limit, buffer);
    return true;
}

void RecordingChecksums::countLate() {
    uint64_t bytes = 0;
    for (const Piece& piece : pieces_) {
        bytes += piece.failed || piece.done >= piece.bytes ? 0 : piece.bytes - piece.done;
    }
    lateBytes_.store(bytes, std::memory_order_relaxed);
}

void RecordingChecksums::read(Piece& piece, uint64_t limit, std::span<std::byte> buffer) {
    OsError error;
    if (!piece.file.isOpen()) {
        error = piece.file.openPlain(piece.name, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite);
        if (error.ok()) {
            error = piece.file.seek(piece.done);
        }
        if (error.ok() && !identity_.isOpen()) {
            error = identity_.openPlain(piece.name, FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite);
        }
    }
    const auto wanted = static_cast<size_t>(std::min<uint64_t>(buffer.size(), limit - piece.done));
    size_t got = 0;
    if (error.ok()) {
        error = late_ ? piece.file.read(buffer.data(), wanted, got) : piece.file.readCached(buffer.data(), wanted, got);
    }
    if (error.ok() && got == 0 && !late_) {
        piece.behind = true;
        piece.file.close();
        return;
    }
    if (!error.ok() || got == 0) {
        piece.failed = true;
        piece.file.close();
        problem_ = inWords(piece.name, error.ok() ? "it is shorter than it was" : error.text());
        return;
    }
    piece.hash.add(buffer.first(got));
    piece.done += got;
    if (late_) {
        lateDone_.fetch_add(got, std::memory_order_relaxed);
    }
}

// Somebody may have moved the recording aside and begun another one of its name.
bool RecordingChecksums::isStillThere() {
    for (const Piece& piece : pieces_) {
        if (!piece.sha256.empty()) {
            return identity_.isOpen() && std::ranges::any_of(pieces_, [this](const Piece& each) {
                       return identity_.named(each.name) == Named::Yes;
                   });
        }
    }
    return false;
}

std::string RecordingChecksums::complete() {
    const bool all = !lacksPiece_ && std::ranges::none_of(pieces_, [](const Piece& piece) {
        return piece.bytes != 0 && piece.sha256.empty();
    });
    if (!all && problem_.empty()) {
        problem_ = inWords(dataName_, "not every data file has a checksum");
    }
    if (isStillThere()) {
        for (const std::string& problem : {writeList(), completePassport()}) {
            problem_ = problem_.empty() ? problem : problem_;
        }
    }
    identity_.close();
    if (!problem_.empty()) {
        DEBUG_LOG("!!!!! Checksums: %s", problem_.c_str());
    }
    return problem_;
}

std::string RecordingChecksums::writeList() {
    const RecordingName name(dataName_);
    std::vector<FileChecksum> files;
    for (const Piece& piece : pieces_) {
        if (!piece.sha256.empty()) {
            files.push_back({fileNameOf(piece.name), piece.sha256});
        }
    }
    std::string marks;
    OsError marksRead;
    const bool marked = isPlainFile(name.marks());
    if (marked) {
        marksRead = readWholeFile(name.marks(), kLongestText, FileShare::ReadWrite, marks);
    }
    if (!marksRead.ok()) {
        DEBUG_LOG("!!!!! Checksums: %s", inWords(name.marks(), marksRead.text()).c_str());
    } else if (marked) {
        Sha256 hash;
        hash.add(std::as_bytes(std::span(marks)));
        if (std::string sha256 = hash.take(); !sha256.empty()) {
            files.push_back({fileNameOf(name.marks()), std::move(sha256)});
        }
    }
    std::string earlier;
    if (fileExists(name.checksums()) &&
        (!isPlainFile(name.checksums()) ||
         !readWholeFile(name.checksums(), kLongestText, FileShare::ReadWrite, earlier).ok() ||
         !isListOf(name, earlier))) {
        return inWords(name.checksums(), "the name is taken");
    }
    const OsError error = replaceWholeFile(name.checksums(), checksumListText(files));
    return error.ok() ? std::string() : inWords(name.checksums(), error.text());
}

std::string RecordingChecksums::completePassport() {
    if (!passport_) {
        return {};
    }
    const std::string name = RecordingName(dataName_).passport();
    std::string text;
    if (!isPlainFile(name) || !readWholeFile(name, kLongestText, FileShare::ReadWrite, text).ok() ||
        text != passportText(*passport_)) {
        return inWords(name, "it was changed by somebody else");
    }
    for (const Piece& piece : pieces_) {
        const auto entry =
            std::ranges::find(passport_->pieces, systemToUtf8(fileNameOf(piece.name)), &PassportPiece::file);
        if (entry != passport_->pieces.end()) {
            entry->sha256 = piece.sha256;
        }
    }
    const OsError error = replaceWholeFile(name, passportText(*passport_));
    return error.ok() ? std::string() : inWords(name, error.text());
}

}  // namespace tarno2

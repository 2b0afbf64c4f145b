#include "core/storage/checksum_thread.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <new>
#include <utility>
#include <vector>

#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "core/storage/recovery_files.h"
#include "platform/paths.h"
#include "records/found_passport.h"

namespace tarno2 {

namespace {

/// Read in one go: a recording that begins, or whoever wants to end, waits no longer than for this.
constexpr size_t kBlockBytes = size_t{1} << 20U;
/// How often a recording that runs is looked after.
constexpr uint32_t kFollowPeriodMs = 20;

/// One that says more than this version reads stays as it is.
std::optional<Passport> passportOf(const RecordingName& name) {
    FoundPassport found = findPassport(name.passport());
    return found.passport && passportText(*found.passport) == found.text ? std::move(found.passport) : std::nullopt;
}

}  // namespace

ChecksumThread::ChecksumThread(Report report) : report_(std::move(report)) {}

ChecksumThread::~ChecksumThread() {
    {
        const std::scoped_lock lock(mutex_);
        ending_ = true;
        for (Job& job : jobs_) {
            job.givenUp = true;
        }
    }
    static_cast<void>(wake_.set());
    thread_.join();
}

bool ChecksumThread::take(std::shared_ptr<RecordingChecksums> checksums) {
    const std::scoped_lock lock(mutex_);
    if (ending_ || !wake_.valid()) {
        return false;
    }
    if (!thread_.joinable()) {
        buffer_ = std::make_unique<std::byte[]>(kBlockBytes);
        if (!thread_.create([this] { run(); })) {
            return false;
        }
        thread_.resume();
    }
    jobs_.push_back({std::move(checksums)});
    static_cast<void>(wake_.set());
    return true;
}

std::shared_ptr<RecordingChecksums> ChecksumThread::begin(const std::string& dataName) {
    try {
        auto checksums = std::make_shared<RecordingChecksums>(dataName);
        if (take(checksums)) {
            return checksums;
        }
    } catch (const std::bad_alloc&) {
        // Told below.
    }
    DEBUG_LOG("!!!!! No thread or memory for the checksums of \"%s\"", dataName.c_str());
    return nullptr;
}

void ChecksumThread::add(const std::string& dataName, uint32_t lastPiece) {
    const RecordingName name(dataName);
    auto checksums = std::make_shared<RecordingChecksums>(dataName);
    OsError listed;
    for (const uint32_t k : piecesUpTo(name, lastPiece, &listed)) {
        if (const uint64_t bytes = plainFileSize(name.piece(k)).value_or(0); bytes != 0) {
            checksums->pieceBegins(name.piece(k));
            checksums->pieceEnds(bytes);
        }
    }
    if (!listed.ok()) {
        DEBUG_LOG("!!!!! No checksums of \"%s\": %s", dataName.c_str(), listed.text().c_str());
        return;
    }
    checksums->finish(passportOf(name));
    if (!take(std::move(checksums))) {
        DEBUG_LOG("!!!!! No thread for the checksums of \"%s\"", dataName.c_str());
    }
}

void ChecksumThread::release(const std::string& dataName) {
    const RecordingName name(dataName);
    std::unique_lock lock(mutex_);
    const auto inTheWay = [&](const Job& job) {
        const RecordingName other(job.checksums->dataName());
        return job.checksums->finished() && other.folder() == name.folder() && name.mayShareFilesWith(other);
    };
    for (Job& job : jobs_) {
        job.givenUp = job.givenUp || inTheWay(job);
    }
    static_cast<void>(wake_.set());
    changed_.wait(lock, [&] { return std::ranges::none_of(jobs_, inTheWay); });
}

void ChecksumThread::stop() {
    const std::scoped_lock lock(mutex_);
    for (Job& job : jobs_) {
        job.givenUp = true;
    }
    static_cast<void>(wake_.set());
}

bool ChecksumThread::wait(uint32_t milliseconds) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return jobs_.empty(); });
}

std::optional<ChecksumThread::Progress> ChecksumThread::progress() {
    const std::scoped_lock lock(mutex_);
    std::optional<Progress> progress;
    for (const Job& job : jobs_) {
        if (job.checksums->finished()) {
            if (!progress) {
                progress.emplace().dataName = job.checksums->dataName();
            }
            progress->done += job.checksums->lateDone();
            progress->bytes += job.checksums->lateBytes();
        }
    }
    return progress;
}

void ChecksumThread::run() {
    giveWayToOthers();
    for (;;) {
        try {
            while (work()) {
            }
        } catch (const std::exception& error) {
            DEBUG_LOG("!!!!! Checksums: %s", error.what());
            giveUpFinished();
        }
        bool idle = false;
        {
            const std::scoped_lock lock(mutex_);
            idle = jobs_.empty();
            // What is not finished by now never will be.
            if (ending_ && std::ranges::none_of(jobs_, [](const Job& job) { return job.checksums->finished(); })) {
                return;
            }
        }
        static_cast<void>(wake_.wait(idle ? kWaitForever : kFollowPeriodMs));
        wake_.reset();
    }
}

// One step of the first recording that has something to do: those that run before those that are finished.
bool ChecksumThread::work() {
    std::vector<Job> jobs;
    {
        const std::scoped_lock lock(mutex_);
        jobs.assign(jobs_.begin(), jobs_.end());
    }
    const std::span<std::byte> buffer(buffer_.get(), kBlockBytes);
    bool room = true;
    for (const Job& job : jobs) {
        if (!job.checksums->finished()) {
            room = room && job.checksums->room();
            if (!job.givenUp && job.checksums->step(buffer)) {
                return true;
            }
        }
    }
    for (const Job& job : jobs) {
        const bool left = job.checksums->left();
        const bool finished = job.checksums->finished();
        if (finished && !job.givenUp && room && job.checksums->step(buffer)) {
            return true;
        }
        if ((finished && (job.givenUp || room)) || (left && !finished)) {
            end(job.checksums);
            return true;
        }
    }
    return false;
}

// Nobody waits for what can't be computed.
void ChecksumThread::giveUpFinished() {
    const std::scoped_lock lock(mutex_);
    std::erase_if(jobs_, [](const Job& job) { return job.checksums->finished(); });
    changed_.notify_all();
}

void ChecksumThread::end(const std::shared_ptr<RecordingChecksums>& checksums) {
    if (checksums->finished()) {
        std::string problem;
        try {
            problem = checksums->complete();
            if (report_) {
                report_(checksums->dataName(), problem);
            }
        } catch (const std::exception& error) {
            DEBUG_LOG("!!!!! Checksums of \"%s\": %s", checksums->dataName().c_str(), error.what());
        }
    }
    const std::scoped_lock lock(mutex_);
    std::erase_if(jobs_, [&](const Job& job) { return job.checksums == checksums; });
    changed_.notify_all();
}

}  // namespace tarno2

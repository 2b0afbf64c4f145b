#include "core/acquisition_thread.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "config/debug_log.h"
#include "platform/c_locale.h"
#include "platform/clock.h"

namespace tarno2 {

namespace {

constexpr uint32_t kPresenceSliceMs = 250;
constexpr uint64_t kProgressPeriodMs = 40;

int32_t secondsBetween(const LocalTime& from, const LocalTime& to) {
    return (to.hour - from.hour) * 3600 + (to.minute - from.minute) * 60 + (to.second - from.second);
}

// Slow boards fill a half in more than the usual time: twice what a half takes is waited for.
uint32_t waitLimit(uint32_t leastMs, uint32_t ringSize, double sampleRate) {
    const double half = sampleRate > 0.0 ? ringSize / 2.0 / sampleRate : 0.0;
    const double limit = std::min(std::max<double>(leastMs, 2.0 * half * 1000.0), 4e9);
    return static_cast<uint32_t>(limit);
}

}  // namespace

StopCode AcquisitionThread::stopCodeOf(int32_t result) {
    switch (result) {
        case kFinished:
            return StopCode::StopMeasuring;
        case kWriteFailed:
            return StopCode::WriteError;
        case kNoData:
            return StopCode::NoData;
        case kAnalyzeFailed:
            return StopCode::AnalyzeError;
        case kTransferFailed:
            return StopCode::TransferError;
        default:
            return StopCode::User;
    }
}

AcquisitionThread::AcquisitionThread(T_BOARD& board)
    : board_(board), driver_(board.driver_), sampleWidth_(board.driver_.facts().sampleWidth()) {}

void AcquisitionThread::run() noexcept {
    try {
        DEBUG_LOG("Thread for SHORT(2) - START");
        DEBUG_LOG("Calculate data error state = %d", board_.noDataCheck_ ? 1 : 0);
        if (!prepare()) {
            board_.readyEvent_.set();
            finish();
            return;
        }
        DEBUG_LOG("Set Event for Main");
        board_.readyEvent_.set();
        DEBUG_LOG("Wait Start");
        const Event::Either woken = Event::waitEither(board_.startEvent_, board_.stopEvent_, kWaitForever);
        if (woken.result != WaitResult::Signalled) {
            fail(ErrorDetail::Unknown);
        } else if (!board_.stopRequest_) {
            DEBUG_LOG("Prepare for start - OK");
            if (startBoard()) {
                measure();
            }
        }
    } catch (const std::bad_alloc&) {
        board_.memoryError_ = true;
        fail(ErrorDetail::Memory);
    } catch (...) {
        board_.threadError_ = true;
        fail(ErrorDetail::Unknown);
    }
    finish();
    board_.readyEvent_.set();
}

bool AcquisitionThread::prepare() {
    const InitOutcome outcome = board_.Init();
    if (outcome == InitOutcome::Incompatible) {
        board_.incompatible_ = true;
        report_.code = StopCode::Incompatible;
        return false;
    }
    if (outcome != InitOutcome::Done) {
        fail(ErrorDetail::Init);
        return false;
    }
    const uint32_t ringSize = board_.maxBufferSamples_;
    const auto& settings = board_.settings;
    const uint32_t factor = driver_.facts().perChannelFrequency ? settings.channelCount() : 1;
    timing_ =
        streamTiming(static_cast<double>(settings.frequency), factor, sampleWidth_, ringSize, driver_.facts().hotPlug);
    DEBUG_LOG("DataSpeed = %lf", timing_.megabytesPerSecond);
    DEBUG_LOG("Time for check = %lld", static_cast<long long>(timing_.checkSeconds));
    DEBUG_LOG("Max Sleep Time = %u", timing_.maximumSleep);
    const bool endless = settings.externalStart || settings.externalClock;
    waitLimitMs_ = endless ? kWaitForever : waitLimit(board_.dataWaitMs, ringSize, board_.sampleRate());

    const uint64_t bufferBytes = uint64_t{ringSize} * sampleWidth_;
    buffer_.reset(new (std::nothrow) std::byte[bufferBytes]);
    if (buffer_ == nullptr) {
        DEBUG_LOG("!!!!!!! Error: Not enought memory");
        board_.memoryError_ = true;
        fail(ErrorDetail::Memory);
        return false;
    }
    if (board_.decimation > 1) {
        decimator_.emplace(board_.decimation, uint64_t{sampleWidth_} * settings.channelCount(), bufferBytes);
    }
    additionalMode_ = driver_.facts().preHistory;
    return true;
}

bool AcquisitionThread::startBoard() {
    const int32_t normalMode = sampleWidth_ == 4 ? kADCDataLong : kADCDataShort;
    dataMode_ = additionalMode_ ? static_cast<int32_t>(kADCDataPreHistory) : normalMode;
    ADCRingInfo info{};
    if (!driver_.device().get(kADCGetRing, info) || info.m_nRingSize != board_.maxBufferSamples_) {
        report_.code = StopCode::Incompatible;
        report_.problem = formatText("The driver gives a ring of %u samples and was set up with %u", info.m_nRingSize,
                                     board_.maxBufferSamples_);
        DEBUG_LOG("!!!!! %s", report_.problem.c_str());
        board_.incompatible_ = true;
        board_.stopRequest_ = true;
        return false;
    }
    dataEvent_.emplace(Event::wrap(info.m_hDataEvent));
    dataEvent_->reset();
    if (!driver_.start()) {
        DEBUG_LOG("!!!!! Start ERROR");
        board_.startError_ = true;
        fail(ErrorDetail::Start, driver_.device().lastError());
        return false;
    }
    uint64_t written = 0;
    countKnown_ = driver_.device().get(kADCGetSamplesWritten, written);
    ring_.emplace(info.m_nRingSize, board_.settings.channelCount(), timing_.threshold);
    return true;
}

void AcquisitionThread::measure() {
    while (!board_.stopRequest_) {
        const Wake wake = waitForData();
        if (wake == Wake::Unplugged) {
            DEBUG_LOG("!!!!! Board unplug.... Thread stop");
            unplugged_ = true;
        } else if (wake == Wake::Failed) {
            report_.problem = formatText("The wait for the board's data event failed: %s", waitError_.text().c_str());
            DEBUG_LOG("!!!!! %s", report_.problem.c_str());
        } else if (wake == Wake::TimedOut) {
            report_.problem = formatText("The board gave no data event in %u ms", waitLimitMs_);
            DEBUG_LOG("!!!!! %s", report_.problem.c_str());
            result_ = kNoData;
        }
        if (wake != Wake::Data) {
            board_.stopRequest_ = true;
            break;
        }
        updatePositions();
        readHalves();
        if (result_ != kGoOn || report_.code != StopCode::Running) {
            board_.stopRequest_ = true;
        }
        notifyProgress();
    }
    // A recording that ended by its own rule has what it wants; one that was ended gets what the board still holds.
    if (report_.code == StopCode::Running && (result_ == kGoOn || result_ == kNoData)) {
        drain();
    }
    if (report_.code == StopCode::Running && !waitError_.ok()) {
        fail(ErrorDetail::Unknown);
    }
}

AcquisitionThread::Wake AcquisitionThread::waitForData() {
    const uint64_t begin = tickCount();
    for (;;) {
        if (board_.stopRequest_) {
            return Wake::Stop;
        }
        const bool hotPlug = driver_.facts().hotPlug;
        if (hotPlug && unplugged()) {
            return Wake::Unplugged;
        }
        uint32_t slice = waitLimitMs_;
        if (waitLimitMs_ != kWaitForever) {
            const uint64_t elapsed = tickCount() - begin;
            slice = elapsed < waitLimitMs_ ? static_cast<uint32_t>(waitLimitMs_ - elapsed) : 0;
        }
        if (hotPlug) {
            slice = std::min(slice, kPresenceSliceMs);
        }
        const Event::Either woken = Event::waitEither(*dataEvent_, board_.stopEvent_, slice);
        if (woken.first) {
            return Wake::Data;
        }
        if (woken.second) {
            return Wake::Stop;
        }
        if (woken.result == WaitResult::Failed) {
            waitError_ = woken.error;
            return Wake::Failed;
        }
        if (waitLimitMs_ != kWaitForever && tickCount() - begin >= waitLimitMs_) {
            return Wake::TimedOut;
        }
    }
}

bool AcquisitionThread::unplugged() {
    uint32_t present = 1;
    return driver_.device().get(kADCGetHotPlugPresence, present) && present == 0;
}

void AcquisitionThread::updatePositions() {
    const uint64_t halves = dataEvent_->reset();
    uint64_t written = 0;
    if (!countKnown_) {
        ring_->halvesFilled(halves);
    } else if (driver_.device().get(kADCGetSamplesWritten, written)) {
        ring_->samplesWritten(written);
    }
    const auto load = static_cast<uint32_t>(ring_->load() * 1000.0);
    if (load > board_.worstLoad()) {
        board_.worstLoad_.store(load, std::memory_order_relaxed);
    }
}

void AcquisitionThread::readHalves() {
    const RingReader::Part part = ring_->nextHalves();
    if (ring_->overflows(part)) {
        overflow();
        return;
    }
    if (part.belowThreshold && timing_.maximumSleep > 0) {
        static_cast<void>(board_.stopEvent_.wait(timing_.maximumSleep));
    }
    if (part.count == 0) {
        if (noDataTooLong()) {
            DEBUG_LOG("Time out!!!");
            result_ = kNoData;
        }
        return;
    }
    noDataSince_.reset();
    if (!transfer(part)) {
        return;
    }
    result_ = processBlock(part.count);
    ring_->advance(part.count);
    lastHalves_ = ring_->halvesPosition();
    board_.samplesRead_.store(ring_->readPosition(), std::memory_order_relaxed);
}

// Passes without data while the board's events go on: a board that counts nothing.
bool AcquisitionThread::noDataTooLong() {
    if (!board_.noDataCheck_ || ring_->halvesPosition() != lastHalves_) {
        lastHalves_ = ring_->halvesPosition();
        return false;
    }
    const LocalTime now = localTime();
    if (!noDataSince_) {
        noDataSince_ = now;
        return false;
    }
    const int32_t elapsed = secondsBetween(*noDataSince_, now);
    if (elapsed < 0) {
        noDataSince_ = now;
        return false;
    }
    return elapsed > timing_.checkSeconds;
}

// Copies a part of the ring to the start of the buffer. False when there is nothing to process: an error was noted.
bool AcquisitionThread::transfer(const RingReader::Part& part) {
    const uint32_t ringSize = board_.maxBufferSamples_;
    bool done = false;
    block_ = buffer_.get();
    if (uint64_t{part.offset} + part.count > ringSize) {
        // Rings hold whole frames in each half, so a read does not come here unless a driver answers otherwise.
        const uint32_t first = ringSize - part.offset;
        done = fetch(buffer_.get(), first, part.offset, 2) && fetch(buffer_.get() + first, part.count - first, 0, 1);
    } else {
        std::byte* room = decimator_ ? nullptr : board_.writer_.room(uint64_t{part.count} * sampleWidth_);
        block_ = room != nullptr ? room : buffer_.get();
        done = fetch(block_, part.count, part.offset, 2);
    }
    if (!done) {
        return false;
    }
    uint64_t written = 0;
    if (countKnown_ && driver_.device().get(kADCGetSamplesWritten, written)) {
        ring_->samplesWritten(written);
        return !overwritten();
    }
    return true;
}

bool AcquisitionThread::fetch(std::byte* destination, uint32_t count, uint32_t offset, int32_t partNumber) {
    if (driver_.device().getData(dataMode_, destination, count, offset) != kADCDataFailed) {
        return true;
    }
    if (additionalMode_) {
        // The board's pre-history is at its end: the same part follows in the normal mode.
        additionalMode_ = false;
        dataMode_ = sampleWidth_ == 4 ? kADCDataLong : kADCDataShort;
        lastProgress_ = tickCount();
        notify();
        return fetch(destination, count, offset, partNumber);
    }
    report_.getData = {dataMode_, count, offset, destination, block_, board_.maxBufferSamples_, partNumber};
    result_ = kTransferFailed;
    lose(LossCause::Transfer);
    report_.problem = driver_.device().lastError();
    DEBUG_LOG("!!!!! GetData error at sample %llu: %s", static_cast<unsigned long long>(ring_->readPosition()),
              report_.problem.c_str());
    return false;
}

int32_t AcquisitionThread::processBlock(uint32_t samples) {
    std::span<const std::byte> block{block_, size_t{samples} * sampleWidth_};
    if (decimator_) {
        block = decimator_->process(block);
    }
    int32_t result = kGoOn;
    if (!block.empty()) {
        if (!begun_ && board_.settings.externalStart) {
            board_.writer_.setCreateTime(localTime(board_.writer_.millisecondsOf(block.size())));
        }
        begun_ = true;
        if (board_.liveTap != nullptr) {
            board_.liveTap->put(block);
        }
        EvaluatedBlock out;
        const int32_t verdict = board_.evaluator->evaluate(block, out);
        if (verdict < 0) {
            return kAnalyzeFailed;
        }
        if (!out.data.empty()) {
            result = write(out);
        }
        if (verdict > 0 && result == kGoOn) {
            result = kFinished;
        }
    }
    if (board_.progress_) {
        board_.progress_(0, static_cast<int>(sampleWidth_));
    }
    return result;
}

int32_t AcquisitionThread::write(const EvaluatedBlock& block) {
    const uint64_t frame = uint64_t{sampleWidth_} * board_.settings.channelCount();
    const uint64_t unit = block.recordFrames == 0 ? frame : frame * block.recordFrames;
    const uint64_t before = board_.writer_.totalBytes();
    const int32_t result = board_.writer_.Write(block.data.data(), block.data.size(), unit, block.events);
    // Records that the size limit left out are not in the file, and no events of it.
    const uint64_t records = (board_.writer_.totalBytes() - before + unit - 1) / unit;
    const auto events = std::min<uint64_t>(records, block.events.size());
    board_.eventCount_.store(board_.eventCount() + events, std::memory_order_relaxed);
    report_.sizeReached = result == kFinished && !board_.writer_.diskNearlyFull();
    return result;
}

// Reads what the ring holds at this moment: filled halves, and the part of the next one that the driver has counted.
void AcquisitionThread::drain() {
    draining_ = true;
    updatePositions();
    const uint64_t end = ring_->written();
    const int32_t ended = result_;
    if (overwritten()) {
        return;
    }
    for (;;) {
        const RingReader::Part part = ring_->nextRest(end);
        if (part.count == 0) {
            return;
        }
        if (!transfer(part)) {
            // The board went away with it, or the transfer broke: what came before is kept.
            if (unplugged_ && result_ == kTransferFailed) {
                result_ = ended;
            }
            return;
        }
        const int32_t processed = processBlock(part.count);
        ring_->advance(part.count);
        board_.samplesRead_.store(ring_->readPosition(), std::memory_order_relaxed);
        if (processed != kGoOn) {
            result_ = processed;
            return;
        }
    }
}

// Unread samples are gone. A board that gave no event in time has run over its ring unseen: that it gave none stays the
// reason why the recording ends.
bool AcquisitionThread::overwritten() {
    if (!ring_->overwritten()) {
        return false;
    }
    if (draining_ && result_ == kNoData) {
        lose(LossCause::Overwritten);
        DEBUG_LOG("!!!!! Samples from %llu on were overwritten unread",
                  static_cast<unsigned long long>(ring_->readPosition()));
    } else {
        overflow();
    }
    return true;
}

void AcquisitionThread::overflow() {
    driver_.stop();
    DEBUG_LOG("!!!!! FIFO Overflow");
    const uint64_t position = ring_->readPosition();
    report_.overflowPosition = position;
    lose(LossCause::Overwritten);
    fail(ErrorDetail::Overflow,
         formatText("First lost sample = %llu, frame = %llu", static_cast<unsigned long long>(position),
                    static_cast<unsigned long long>(position / board_.settings.channelCount())));
}

// From the read position on nothing is recorded any more, of what the board is known to have delivered.
void AcquisitionThread::lose(LossCause cause) {
    const uint64_t position = ring_->readPosition();
    report_.losses.push_back({cause, position, ring_->written() - position});
}

void AcquisitionThread::fail(ErrorDetail detail) {
    report_.code = StopCode::Error;
    report_.detail = detail;
}

void AcquisitionThread::fail(ErrorDetail detail, const std::string& problem) {
    fail(detail);
    report_.problem = problem;
    DEBUG_LOG("!!!!! %s", problem.c_str());
}

void AcquisitionThread::closeFiles() {
    bool saved = false;
    try {
        saved = board_.writer_.Close();
    } catch (...) {
        DEBUG_LOG("!!!!! Files could not be closed");
    }
    report_.bytes = board_.writer_.totalBytes();
    report_.files = board_.writer_.fileCount();
    report_.events = board_.eventCount();
    if (report_.code == StopCode::Running) {
        report_.code = unplugged_ && result_ >= kGoOn ? StopCode::Unplug : stopCodeOf(result_);
    }
    report_.diskNearlyFull = report_.code == StopCode::StopMeasuring && board_.writer_.diskNearlyFull();
    if (!saved && (report_.code == StopCode::User || report_.code == StopCode::StopMeasuring)) {
        report_.code = StopCode::WriteError;
    }
    if (!saved && report_.problem.empty()) {
        report_.problem = board_.writer_.writeError();
    }
    const uint64_t onDisk = board_.writer_.savedBytes();
    if (!saved && onDisk < report_.bytes) {
        report_.losses.push_back({LossCause::Disk, onDisk / sampleWidth_, (report_.bytes - onDisk) / sampleWidth_});
    }
    if (!report_.losses.empty() && !writeLossLedger(board_.writer_.fileName(), report_.losses)) {
        DEBUG_LOG("!!!!! The list of losses could not be written");
    }
}

void AcquisitionThread::finish() {
    driver_.stop();
    buffer_.reset();
    closeFiles();
    DEBUG_LOG("Worst load of the ring = %u of 1000", board_.worstLoad());
    DEBUG_LOG("Thread Exit rezAdd = %d, Code = %d", result_, static_cast<int>(report_.code));
    notify();
}

void AcquisitionThread::notify() {
    if (board_.target_ != nullptr) {
        Notification notification{board_.number_, report_};
        notification.result.bytes = board_.writer_.totalBytes();
        try {
            board_.target_->post(notification);
        } catch (...) {
            DEBUG_LOG("!!!!! Notification could not be posted");
        }
    }
}

void AcquisitionThread::notifyProgress() {
    const uint64_t now = tickCount();
    if (report_.code != StopCode::Running || (!fallsBehind() && now - lastProgress_ < kProgressPeriodMs)) {
        return;
    }
    lastProgress_ = now;
    notify();
    report_.waitingBytes = 0;
}

// The disk has come to be half a memory behind; told once until it has caught up.
bool AcquisitionThread::fallsBehind() {
    const uint64_t waiting = board_.writer_.waitingBytes();
    const uint64_t half = board_.writer_.bufferBytes() / 2;
    const bool before = diskBehind_;
    diskBehind_ = waiting > (before ? half / 2 : half);
    report_.waitingBytes = diskBehind_ && !before ? waiting : 0;
    return report_.waitingBytes > 0;
}

}  // namespace tarno2

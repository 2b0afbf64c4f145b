#include "core/recording/acquisition_thread.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "config/logs/debug_log.h"
#include "core/recording/passport_facts.h"
#include "platform/c_locale.h"
#include "platform/clock.h"

namespace tarno2 {

namespace {

constexpr uint64_t kProgressPeriodMs = 40;
constexpr int kEndAttempts = 50;
constexpr uint32_t kEndAttemptMs = 100;

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

AcquisitionThread::AcquisitionThread(T_BOARD& board, SessionLink& link)
    : board_(board),
      link_(link),
      driver_(board.driver()),
      sampleWidth_(board.driver().facts().sampleWidth()),
      wait_(board.driver(), link) {}

void AcquisitionThread::run() noexcept {
    try {
        DEBUG_LOG("Thread for SHORT(2) - START");
        DEBUG_LOG("Calculate data error state = %d", checksForData() ? 1 : 0);
        StartFailure failure = prepare();
        const bool prepared = !failure.failed();
        if (prepared) {
            DEBUG_LOG("Set Event for Main");
        }
        link_.answer(std::move(failure));
        if (prepared) {
            waitAndMeasure();
        }
    } catch (const std::bad_alloc&) {
        fail(ErrorDetail::Memory);
        link_.answer({StartFailure::Kind::Memory, {}});
    } catch (...) {
        fail(ErrorDetail::Unknown);
        link_.answer({StartFailure::Kind::Thread, {}});
    }
    finish();
}

void AcquisitionThread::waitAndMeasure() {
    DEBUG_LOG("Wait Start");
    if (!link_.waitForBegin()) {
        fail(ErrorDetail::Unknown);
    } else if (!link_.stopRequested()) {
        DEBUG_LOG("Prepare for start - OK");
        if (startBoard()) {
            measure();
        }
    }
}

StartFailure AcquisitionThread::prepare() {
    if (StartFailure failure = board_.Init(); failure.failed()) {
        fail(ErrorDetail::Init);
        if (failure.kind == StartFailure::Kind::Incompatible) {
            report_.code = StopCode::Incompatible;
        }
        return failure;
    }
    const uint32_t ringSize = board_.maxBufferSamples();
    const auto& settings = board_.settings;
    const uint32_t factor = driver_.facts().perChannelFrequency ? settings.channelCount() : 1;
    timing_ =
        streamTiming(static_cast<double>(settings.frequency), factor, sampleWidth_, ringSize, driver_.facts().hotPlug);
    DEBUG_LOG("DataSpeed = %lf", timing_.megabytesPerSecond);
    DEBUG_LOG("Time for check = %lld", static_cast<long long>(timing_.checkSeconds));
    DEBUG_LOG("Max Sleep Time = %u", timing_.maximumSleep);
    const uint64_t bufferBytes = uint64_t{ringSize} * sampleWidth_;
    buffer_.reset(new (std::nothrow) std::byte[bufferBytes]);
    if (buffer_ == nullptr) {
        DEBUG_LOG("!!!!!!! Error: Not enought memory");
        fail(ErrorDetail::Memory);
        return {StartFailure::Kind::Memory, {}};
    }
    if (board_.decimation > 1) {
        decimator_.emplace(board_.decimation, uint64_t{sampleWidth_} * settings.channelCount(), bufferBytes);
    }
    if (const uint32_t mask = driver_.facts().lineMask(board_.markedLine.line); mask != 0) {
        edges_.emplace(mask, sampleWidth_, size_t{sampleWidth_} * settings.channelCount(), board_.markedLine.edge);
    }
    additionalMode_ = driver_.facts().preHistory;
    return {};
}

bool AcquisitionThread::startBoard() {
    const int32_t normalMode = sampleWidth_ == 4 ? kADCDataLong : kADCDataShort;
    dataMode_ = additionalMode_ ? static_cast<int32_t>(kADCDataPreHistory) : normalMode;
    ADCRingInfo info{};
    if (!driver_.device().get(kADCGetRing, info) || info.m_nRingSize != board_.maxBufferSamples()) {
        report_.code = StopCode::Incompatible;
        report_.problem = formatText("The driver gives a ring of %u samples and was set up with %u", info.m_nRingSize,
                                     board_.maxBufferSamples());
        DEBUG_LOG("!!!!! %s", report_.problem.c_str());
        return false;
    }
    wait_.begin(info.m_hDataEvent, waitPlan());
    if (!driver_.start()) {
        DEBUG_LOG("!!!!! Start ERROR");
        fail(ErrorDetail::Start, driver_.device().lastError());
        return false;
    }
    begunAt_ = utcMicroseconds();
    keeps_ = !link_.monitors();
    uint64_t written = 0;
    counts_ = driver_.device().get(kADCGetSamplesWritten, written);
    startAwaited_ = board_.settings.externalStart;
    ring_.emplace(info.m_nRingSize, board_.settings.channelCount(), timing_.threshold);
    ADCStreamEnd end{};
    tellsEnd_ = driver_.device().get(kADCGetStreamEnd, end);
    askEnd();
    askMarks();
    return true;
}

// Between two blocks: has the session come to be kept meanwhile?
void AcquisitionThread::takeUp() {
    if (!keeps_ && link_.keepAsked()) {
        keeps_ = true;
        beginHere();
    }
}

// The recording begins with the frame that is read next; one that the decimation has begun to gather is that frame.
void AcquisitionThread::beginHere() {
    const uint64_t group = uint64_t{board_.settings.channelCount()} * board_.decimation;
    const uint64_t frames = ring_->readPosition() / group;
    origin_ = frames * group;
    const int64_t ago = age(origin_);
    begunAt_ = utcMicroseconds() - ago;
    board_.writer().setCreateTime(localTime(static_cast<uint64_t>(ago / 1000)));
    noteClock(false);
    link_.setWorstLoad(0);
    if (board_.liveTap != nullptr) {
        board_.liveTap->restart();
    }
    link_.setFramesBefore(frames);
    report_.monitoredFrames = frames;
    report_.startCame = true;
}

// A board that waits for an external signal, or runs from an external clock, may be silent for as long as it likes.
bool AcquisitionThread::checksForData() const {
    return !board_.settings.externalStart && !board_.settings.externalClock;
}

// Slow boards fill a half in more than the usual time: twice what a half takes is waited for.
WaitPlan AcquisitionThread::waitPlan() const {
    const BoardSettings& settings = board_.settings;
    WaitPlan plan;
    const double rate = board_.sampleRate();
    if (!settings.externalClock && rate > 0.0) {
        plan.halfMs = board_.maxBufferSamples() / 2.0 / rate * 1000.0;
    }
    if (checksForData()) {
        plan.limitMs = static_cast<uint32_t>(std::min(std::max<double>(board_.dataWaitMs, 2.0 * plan.halfMs), 4e9));
    }
    return plan;
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
    tellPassport();
    try {
        saved = board_.writer().Close();
    } catch (...) {
        DEBUG_LOG("!!!!! Files could not be closed");
    }
    try {
        completeReport(saved);
    } catch (const std::bad_alloc&) {
        DEBUG_LOG("!!!!! No memory to tell everything of the end");
    }
}

void AcquisitionThread::decideCode() {
    if (report_.code == StopCode::Running) {
        report_.code = unplugged_ && result_ >= kGoOn ? StopCode::Unplug : stopCodeOf(result_);
    }
    report_.diskNearlyFull = report_.code == StopCode::StopMeasuring && board_.writer().diskNearlyFull();
}

void AcquisitionThread::tellPassport() {
    try {
        PassportEnd end = passportEnd(report_, link_.outsideEnd());
        end.begun = begunAt_;
        end.monitoredFrames = report_.monitoredFrames;
        end.clock.assign(clock_.pairs().begin(), clock_.pairs().end());
        board_.writer().setEnd(std::move(end));
    } catch (const std::bad_alloc&) {
        DEBUG_LOG("!!!!! No memory for the passport");
    }
}

void AcquisitionThread::completeReport(bool saved) {
    report_.bytes = board_.writer().savedBytes();
    report_.files = board_.writer().savedFiles();
    report_.events = link_.eventCount();
    if (!saved && (report_.code == StopCode::User || report_.code == StopCode::StopMeasuring ||
                   report_.code == StopCode::SourceEnd)) {
        report_.code = StopCode::WriteError;
    }
    if (!saved && report_.problem.empty()) {
        report_.problem = board_.writer().writeError();
    }
    if (report_.problem.empty()) {
        report_.problem = board_.writer().notice();
    }
    const uint64_t accepted = board_.writer().totalBytes();
    const uint64_t written = board_.writer().writtenBytes();
    if (!saved && written < accepted) {
        report_.losses.push_back({LossCause::Disk, written / sampleWidth_, (accepted - written) / sampleWidth_});
    }
    if (!report_.losses.empty() && !writeLossLedger(board_.writer().fileName(), report_.losses)) {
        DEBUG_LOG("!!!!! The list of losses could not be written");
    }
    report_.fileName = board_.writer().fileName();  // last: without memory for it the rest is told
}

void AcquisitionThread::finish() {
    driver_.stop();
    buffer_.reset();
    decideCode();
    report_.monitored = link_.endUnkept() && link_.monitors();
    if (!report_.monitored) {
        closeFiles();
    }
    DEBUG_LOG("Worst load of the ring = %u of 1000", link_.worstLoad());
    DEBUG_LOG("Thread Exit rezAdd = %d, Code = %d", result_, static_cast<int>(report_.code));
    // Who never hears of the end would wait for it for ever; memory may be there again in a moment.
    for (int i = 0; i < kEndAttempts && !notify(); ++i) {
        sleepMilliseconds(kEndAttemptMs);
    }
}

bool AcquisitionThread::notify() {
    if (link_.target() == nullptr) {
        return true;
    }
    try {
        Notification notification{board_.number(), report_};
        if (report_.code == StopCode::Running && keeps_) {
            notification.result.bytes = board_.writer().totalBytes();
        }
        link_.target()->post(notification);
    } catch (...) {
        DEBUG_LOG("!!!!! Notification could not be posted");
        return false;
    }
    return true;
}

void AcquisitionThread::notifyProgress() {
    const uint64_t now = tickCount();
    if (report_.code != StopCode::Running) {
        return;
    }
    if (startAwaited_ && ring_->readPosition() > 0) {
        startAwaited_ = false;
        report_.startCame = true;
    }
    if (fallsBehind() || report_.startCame || now - lastProgress_ >= kProgressPeriodMs) {
        lastProgress_ = now;
        static_cast<void>(notify());
    }
    report_.startCame = false;
    report_.waitingBytes = 0;
}

bool AcquisitionThread::fallsBehind() {
    if (!keeps_) {
        return false;
    }
    const uint64_t waiting = board_.writer().waitingBytes();
    report_.waitingBytes = diskWatch_.fallsBehind(waiting, board_.writer().bufferBytes()) ? waiting : 0;
    return report_.waitingBytes > 0;
}

}  // namespace tarno2

#include "core/recording/recording_control.h"

#include "config/files/figure_text.h"
#include "config/logs/debug_log.h"
#include "core/recording/recording_settings.h"
#include "language/language_table.h"
#include "platform/c_locale.h"

namespace tarno2 {

namespace {

constexpr uint32_t kTimerPeriodMs = 1000;

}  // namespace

RecordingControl::RecordingControl(RecordingShell& shell, T_DRIVER& driver, FileNaming& naming)
    : shell_(shell), driver_(driver), naming_(naming) {}

RecordingControl::~RecordingControl() {
    freeSession();
}

bool RecordingControl::StartButtonClick() {
    DEBUG_LOG("StartButtonClick");
    if (monitoring()) {
        return keepFromNow();
    }
    if (session_) {
        DEBUG_LOG("Already run");
        StopButtonClick();
        DEBUG_LOG("Stop ok");
    }
    takeWish();
    const bool started =
        createSession() && checkFile() && checkSettings() && checkStopRule() && startThread() && prepareFacts();
    if (!started || !createFiles()) {
        return false;
    }
    release();
    return true;
}

bool RecordingControl::MonitorButtonClick() {
    DEBUG_LOG("MonitorButtonClick");
    if (monitoring()) {
        StopButtonClick();
        return false;
    }
    if (session_ || shell_.consoleMode()) {
        return false;
    }
    takeWish();
    fileName_.clear();
    if (!(createSession() && checkSettings() && startThread() && boardFacts())) {
        return false;
    }
    prepareLiveTap();
    outsideEnd_ = OutsideEnd::User;
    monitoring_ = true;
    session_->Monitor();
    shell_.showStatus(text(TextId::StatusMonitoring));
    return true;
}

// The files are made while the board runs; then its thread is told to keep what comes.
bool RecordingControl::keepFromNow() {
    const RecordingWish monitored = settings_;
    try {
        takeWish();
        takeBoardSettings(monitored, settings_);
        const bool ready = checkFile() && checkStopRule() && prepareFacts() && createFiles();
        if (!ready || !handOver()) {
            settings_ = monitored;
            session_->renewWriter();
            return false;
        }
    } catch (...) {
        // Memory has ended; what is half made must not be used again.
        freeSession();
        throw;
    }
    DEBUG_LOG("Monitored signal is recorded");
    monitoring_ = false;
    monitoredUntold_ = true;
    recordingBegins();
    return true;
}

bool RecordingControl::handOver() {
    if (liveTap_ != nullptr) {
        liveTap_->awaitRestart();
    }
    session_->writer().setCreateTime(localTime());
    const bool kept = session_->Keep();
    if (!kept) {
        shell_.showDetail(text(TextId::RecordingNotBegun));
    }
    return kept;
}

// Once the thread has come to it.
void RecordingControl::tellMonitored() {
    if (const auto frames = session_->framesBefore(); monitoredUntold_ && frames) {
        monitoredUntold_ = false;
        shell_.showDetail(formatText(text(TextId::RecordingFromMonitor).c_str(), formatCount(*frames).c_str()));
    }
}

void RecordingControl::release() {
    prepareLiveTap();
    session_->writer().setCreateTime(localTime());
    DEBUG_LOG("Resume start");
    session_->Begin();
    recordingBegins();
}

void RecordingControl::recordingBegins() {
    outsideEnd_ = OutsideEnd::User;
    shell_.showStatus(text(TextId::StatusRecording));
    if (settings_.stopRule == StopRule::Time) {
        DEBUG_LOG("Create timer for stop: TimeStopValue = %lf", settings_.stopSeconds);
        startAwaited_ = session_->settings.externalStart && session_->samplesRead() == 0;
        startStopTimer();
    }
}

void RecordingControl::startStopTimer() {
    timerCount_ = 0;
    timerArmed_ = true;
    shell_.startTimer(kTimerPeriodMs);
}

// So many seconds are meant as seconds of data, so the first second begins, phase included, when data are seen.
void RecordingControl::watchForExternalStart() {
    if (timerArmed_ && startAwaited_ && session_->samplesRead() > 0) {
        startAwaited_ = false;
        startStopTimer();
    }
}

bool RecordingControl::StopTimerTick() {
    if (!timerArmed_ || !session_) {
        return false;
    }
    if (startAwaited_) {
        watchForExternalStart();
        return false;
    }
    ++timerCount_;
    if (static_cast<double>(timerCount_) < settings_.stopSeconds) {
        return false;
    }
    DEBUG_LOG("Timer stop - Work");
    outsideEnd_ = OutsideEnd::StopTime;
    StopButtonClick();
    if (cycleGoesOn()) {
        StartButtonClick();
    }
    return true;
}

// The operator may end the cycle while its last recording runs.
bool RecordingControl::cycleGoesOn() {
    return !diskNearlyFull_ && !shell_.consoleMode() && shell_.settings().cycleStart;
}

void RecordingControl::StopButtonClick() {
    DEBUG_LOG("StopButtonClick");
    if (session_) {
        session_->setOutsideEnd(outsideEnd_);
        session_->requestStop();
    }
    DEBUG_LOG("KillTimer");
    shell_.killTimer();
    timerArmed_ = false;
    if (!session_) {
        return;
    }
    DEBUG_LOG("Stoping");
    DEBUG_LOG("Stoping by User");
    session_->endThread();
    warnOfMarks(true);
    tellMonitored();
    diskNearlyFull_ = session_->writer().diskNearlyFull();
    if (!monitoring()) {
        DEBUG_LOG("Generate new file name");
        GenerateFileName();
    }
    freeSession();
    if (shell_.consoleMode() && !closing_) {
        closing_ = true;
        shell_.quit();
    }
}

void RecordingControl::endForShutdown() {
    if (session_) {
        DEBUG_LOG("Ended by shutdown");
        shell_.showDetail(text(TextId::EndedByShutdown));
        outsideEnd_ = OutsideEnd::SystemEnding;
        StopButtonClick();
    }
}

void RecordingControl::GenerateFileName() {
    shell_.setFileName(naming_.GenerateFileName(shell_.fileName(), shell_.savedFileName()));
}

void RecordingControl::OnNotification(const Notification& notification) {
    const RecordingResult& result = notification.result;
    const bool current = session_ && session_->number() == notification.session;
    if (current && !monitoring()) {
        warnOfSmallBuffer();
        warnOfMarks(result.code != StopCode::Running);
        tellMonitored();
    }
    if (result.code == StopCode::Running) {
        if (current) {
            watchForExternalStart();
            warnOfSlowDisk(result.waitingBytes);
        }
        return;
    }
    if (!current && refusedSessions_.erase(notification.session) > 0) {
        DEBUG_LOG("Refused start: %s", endOf(result).status);
        return;
    }
    if (!current) {
        report(notification);
        return;
    }
    // One that ended at once and kept nothing would be followed by the next without an end.
    if (result.code == StopCode::StopMeasuring && result.bytes > 0 && !result.diskNearlyFull && cycleGoesOn()) {
        report(notification);
        shell_.killTimer();
        StartButtonClick();
        return;
    }
    const bool stopFirst = result.code == StopCode::Error;
    if (stopFirst) {
        StopButtonClick();
    }
    report(notification);
    if (!stopFirst) {
        StopButtonClick();
    }
}

void RecordingControl::warnOfSlowDisk(uint64_t waitingBytes) {
    if (waitingBytes > 0) {
        attention(formatText(text(TextId::DiskFallsBehind).c_str(), formatFreeSpace(waitingBytes).c_str()));
    }
}

RunEnd RecordingControl::endOf(const RecordingResult& result) const {
    return runEnd(result, settings_.stopRule, outsideEnd_);
}

void RecordingControl::report(const Notification& notification) {
    const RecordingResult& result = notification.result;
    const RunEnd end = endOf(result);
    if (!result.monitored) {
        lastResult_ = result;
        outcome_ = end.outcome;
    }
    if (end.status[0] != '\0') {
        DEBUG_LOG("%s", end.status);
        shell_.showStatus(end.status);
    }
    if (end.message && end.kind == MessageKind::Attention) {
        attention(text(*end.message));
    }
    if (result.code == StopCode::TransferError && result.getData.mode != 0) {
        shell_.showMessage(result.getData.text());
    }
    if (!result.problem.empty()) {
        shell_.showDetail(result.problem);
    }
    for (const Loss& loss : result.losses) {
        shell_.showDetail(lossText(loss));
    }
    if (result.sizeReached && result.bytes < settings_.stopBytes) {
        shell_.showDetail(formatText("Asked for %llu bytes, recorded %llu",
                                     static_cast<unsigned long long>(settings_.stopBytes),
                                     static_cast<unsigned long long>(result.bytes)));
    }
    shell_.recordingEnded(notification, end);
}

void RecordingControl::attention(const std::string& message) {
    shell_.showAttention(formatText(text(TextId::Attention).c_str(), message.c_str()));
}

// Every refusal ends the waiting thread and frees the session, with the files that it may have made. What is monitored
// goes on.
bool RecordingControl::refuse(TextId id, const std::string& detail) {
    if (!monitoring()) {
        refusedSessions_.insert(sessionNumber_);
        freeSession();
    }
    attention(text(id));
    if (!detail.empty()) {
        shell_.showDetail(detail);
    }
    if (shell_.consoleMode()) {
        shell_.quit();
    }
    return false;
}

void RecordingControl::freeSession() {
    if (session_ && beforeSessionGoes_) {
        beforeSessionGoes_();
    }
    session_.reset();
    monitoring_ = false;
    monitoredUntold_ = false;
}

}  // namespace tarno2

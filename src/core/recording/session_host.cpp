#include "core/recording/session_host.h"

#include <utility>

#include "config/logs/console_log.h"
#include "config/logs/debug_log.h"
#include "config/settings/settings_file.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/clock.h"
#include "platform/codepage1251.h"
#include "platform/file.h"

namespace tarno2 {

SessionHost::SessionHost(SessionFront& front, std::string programDirectory, std::optional<RecordingWish> console)
    : front_(front),
      programDirectory_(std::move(programDirectory)),
      console_(std::move(console)),
      selection_([this](const std::string& fault) { front_.faultFound(fault); }, programDirectory_),
      checksums_([this](const std::string& /*dataName*/, const std::string& problem) { tellChecksums(problem); }),
      control_(*this, selection_.driver(), naming_) {
    control_.setChecksums(&checksums_);
}

bool SessionHost::applyConsoleSettings(uint32_t longestSearchMs) {
    DEBUG_LOG("LoadConfig consolemode");
    selection_.setOnlySettings(parseDriverValues(console_->driverSettings).value_or(std::vector<DriverValue>()));
    ApplyOutcome outcome = console_->drqNumber < 0
                               ? selection_.apply(console_->driver, console_->base)
                               : selection_.apply(console_->driver, console_->base, console_->drqNumber);
    if (!settingsReachDriver()) {
        quit();
        return false;
    }
    if (outcome == ApplyOutcome::Searching) {
        outcome = waitForSearch(longestSearchMs);
    }
    if (!boardApplied(outcome)) {
        return false;
    }
    if (!selection_.hasFrequency(console_->frequency)) {
        consoleLog().log("Frequency not founded");
    }
    if (!selection_.setHardwareAverage(console_->hardwareAverage)) {
        consoleLog().log("Hardware average not accesible");
    }
    return true;
}

// A recording with another value than the one asked for would be of no use.
bool SessionHost::settingsReachDriver() {
    bool all = true;
    for (const DriverRefusal& refusal : selection_.refusals()) {
        const char* const key = refusal.value.key.c_str();
        switch (refusal.kind) {
            case DriverRefusal::Kind::Unknown:
                consoleLog().log("Unknown parameter \"%s\" of \"DriverSettings\" ignored", key);
                break;
            case DriverRefusal::Kind::Fixed:
                consoleLog().log("Value %s of \"DriverSettings\" is fixed by the environment... Use \"%s\"", key,
                                 refusal.why.c_str());
                break;
            case DriverRefusal::Kind::Refused:
                consoleLog().log("Value %s of \"DriverSettings\" refused: %s... Program aborted", key,
                                 refusal.why.c_str());
                all = false;
                break;
        }
    }
    return all;
}

ApplyOutcome SessionHost::waitForSearch(uint32_t longestMs) {
    constexpr uint32_t kPeriodMs = 100;
    DEBUG_LOG("Boards are being searched for");
    const uint64_t begin = tickCount();
    while (selection_.followSearch() && tickCount() - begin < longestMs &&
           stopAsked_.wait(kPeriodMs) == WaitResult::TimedOut) {
    }
    const ApplyOutcome outcome = selection_.chooseFound();
    if (outcome != ApplyOutcome::Searching) {
        return outcome;
    }
    consoleLog().log("The driver still searches for boards, and has not found this one");
    return ApplyOutcome::BoardError;
}

void SessionHost::tellDriverSettings() {
    if (const std::string& problem = selection_.driver().settingsProblem(); !problem.empty()) {
        showDetail(problem);
    }
    for (const DriverRefusal& refusal : consoleMode() ? std::vector<DriverRefusal>() : selection_.refusals()) {
        if (refusal.kind != DriverRefusal::Kind::Fixed) {
            const std::string told =
                formatText(text(TextId::DriverSettingRefused).c_str(), refusal.value.key.c_str(),
                           systemTextToCp1251(refusal.value.value).c_str(), systemTextToCp1251(refusal.why).c_str());
            showAttention(formatText(text(TextId::Attention).c_str(), told.c_str()));
        }
    }
}

bool SessionHost::boardApplied(ApplyOutcome outcome) {
    tellDriverSettings();
    if (outcome == ApplyOutcome::DriverNotFound) {
        consoleLog().log("Driver not founded");
        if (consoleMode()) {
            quit();
            return false;
        }
    }
    SetErrorCode(statusOf(outcome));
    const bool failed = outcome != ApplyOutcome::Done && outcome != ApplyOutcome::DriverNotFound;
    if (failed && !selection_.problem().empty()) {
        showDetail(selection_.problem());
    }
    return outcome == ApplyOutcome::Done;
}

void SessionHost::SetErrorCode(BoardStatus status) {
    watch_.setBoard(status);
    front_.showBoard();
    if (status == BoardStatus::Ready) {
        return;
    }
    consoleLog().log("Set error code = %d: %s . Program aborted.", static_cast<int>(status),
                     text(boardStatusWord(status)).c_str());
    if (consoleMode()) {
        quit();
    }
}

bool SessionHost::startNeedsBoard() {
    const bool usable = watch_.board() == BoardStatus::Ready && selection_.driver().startAllowed();
    return !usable && !consoleMode() && !control_.running();
}

bool SessionHost::boardFoundForStart(ApplyOutcome outcome) {
    SetErrorCode(statusOf(outcome));
    if (outcome == ApplyOutcome::Done) {
        return true;
    }
    showAttention(formatText(text(TextId::Attention).c_str(), text(TextId::InitError).c_str()));
    if (!selection_.problem().empty()) {
        showDetail(selection_.problem());
    }
    return false;
}

void SessionHost::recover(const RecoveryThread::Report& told, const std::string& folder) {
    const std::set<std::string> folders =
        folder.empty() ? foldersOf({fileName(), savedFileName()}) : std::set<std::string>{folder};
    const auto toldAndComputed = [this, told,
                                  wanted = settings().checksums](const std::vector<RecoveryReport>& reports) {
        told(reports);
        for (const RecoveryReport& report : reports) {
            if (wanted && report.outcome == RecoveryReport::Outcome::Recovered) {
                checksums_.add(report.name, report.lastPiece);
            }
        }
    };
    if (!recovery_.recover(folders, toldAndComputed)) {
        consoleLog().log("No unfinished recordings were looked for: the system has no thread for it");
    }
}

void SessionHost::tellChecksums(const std::string& problem) {
    if (!problem.empty()) {
        const std::string told =
            formatText(text(TextId::ChecksumsNotDone).c_str(), systemTextToCp1251(problem).c_str());
        consoleLog().log("%s", told.c_str());
        front_.post([this, told] { front_.showDetail(told); });
    }
}

void SessionHost::waitForChecksums() {
    constexpr uint32_t kPeriodMs = 10000;
    constexpr uint32_t kShortWhileMs = 2000;
    waiting_ = true;
    if (!consoleMode()) {
        static_cast<void>(checksums_.wait(kShortWhileMs));
        return;
    }
    while (!checksums_.wait(kPeriodMs)) {
        guarded("Checksums", [this] {
            if (const auto progress = checksums_.progress()) {
                consoleLog().log(text(TextId::ChecksumsProgress).c_str(),
                                 systemTextToCp1251(progress->dataName).c_str(), progress->percent());
            }
        });
    }
}

void SessionHost::endWaiting() {
    if (waiting_) {
        checksums_.stop();
    }
}

void logRecovered(const std::vector<RecoveryReport>& reports) {
    for (const RecoveryReport& report : reports) {
        consoleLog().log("%s", report.text().c_str());
    }
}

void SessionHost::start() {
    const bool whole = perform("StartButtonClick", [this] {
        watch_.starting();
        front_.showState();
        if (control_.StartButtonClick()) {
            consoleLog().log("Save to file \"%s\"", fileName().c_str());
        }
    });
    if (!whole && consoleMode()) {
        quit();
    }
}

void SessionHost::monitor() {
    perform("MonitorButtonClick", [this] {
        if (control_.monitoring()) {
            watch_.stopping();
        } else {
            watch_.starting();
        }
        front_.showState();
        static_cast<void>(control_.MonitorButtonClick());
    });
}

void SessionHost::stop() {
    perform("StopButtonClick", [this] {
        if (control_.running()) {
            watch_.stopping();
            front_.showState();
        }
        control_.StopButtonClick();
    });
}

void SessionHost::shutdown() {
    perform("Shutdown", [this] { control_.endForShutdown(); });
}

void SessionHost::requestStop(bool systemEnds) {
    recovery_.stop();
    endWaiting();
    stopAsked_.set();
    front_.post([this, systemEnds] {
        const bool whole = perform("StopButtonClick", [this, systemEnds] {
            if (control_.running() && systemEnds) {
                control_.endForShutdown();
            } else if (control_.running()) {
                control_.StopButtonClick();
            } else {
                quit();
            }
        });
        if (!whole) {
            quit();
        }
    });
}

void SessionHost::timerTick() {
    perform("StopTimer", [this] {
        while (ticks_.take(TimerTicks::Clock::now())) {
            if (control_.StopTimerTick()) {
                watch_.ruleReached();
            }
        }
    });
}

// Progress is looked up many times a second: the thread that reads the board must not allocate for it.
void SessionHost::post(const Notification& notification) {
    if (notification.result.code == StopCode::Running) {
        watch_.blockCame(notification, tickCount());
    }
    if (notification.result.isNews()) {
        front_.post([this, notification] { handle(notification); });
    }
}

void SessionHost::handle(const Notification& notification) {
    const StopCode code = notification.result.code;
    const bool whole = perform("Notification", [this, &notification, code] {
        control_.OnNotification(notification);
        if (code == StopCode::Unplug) {
            SetErrorCode(BoardStatus::Unplugged);
        }
    });
    // An end that could not be told in full is an end all the same.
    if (!whole && consoleMode() && code != StopCode::Running) {
        quit();
    }
}

void SessionHost::recordingEnded(const Notification& last, const RunEnd& end) {
    const RecordingResult& result = last.result;
    if (consoleMode()) {
        showDetail(result.bytes > 0 ? formatText("Recorded %llu bytes in %u files",
                                                 static_cast<unsigned long long>(result.bytes), result.files)
                                    : "No data were recorded, no file was kept");
    }
    watch_.ended(last.session, result, end);
    front_.showEnd(result, end);
}

void SessionHost::follow() {
    T_BOARD* session = control_.session();
    const bool known = session != nullptr && watch_.running() && watch_.facts().session == session->number() &&
                       watch_.facts().monitored == control_.monitoring();
    if (session != nullptr && !known) {
        beginRun(*session);
    } else if (session == nullptr && watch_.running()) {
        watch_.sessionGone();
        front_.runEnded();
    }
    watch_.settled();
    if (session != nullptr) {
        RunCounts counts;
        counts.dataBegun = watch_.begun() || session->dataBegun();
        counts.bytes = session->writer().totalBytes();
        counts.files = session->writer().fileCount();
        counts.events = session->eventCount();
        counts.worstLoad = session->worstLoad();
        watch_.update(counts, tickCount());
    }
    front_.showRun();
}

void SessionHost::beginRun(T_BOARD& session) {
    rememberFile();
    const BoardFacts& board = selection_.driver().facts();
    RunFacts facts;
    facts.session = session.number();
    facts.monitored = control_.monitoring();
    facts.frameBytes = uint64_t{board.sampleWidth()} * session.settings.channelCount();
    facts.externalStart = session.settings.externalStart;
    if (facts.monitored) {
        facts.file = watch_.facts().file;
        facts.inputs = watch_.facts().inputs;
    } else {
        takeRecording(session, facts);
    }
    watch_.begin(std::move(facts), tickCount());
    front_.runBegun();
    SetErrorCode(BoardStatus::Ready);
}

void SessionHost::takeRecording(const T_BOARD& session, RunFacts& facts) {
    const BoardFacts& board = selection_.driver().facts();
    const RecordingWish& asked = control_.settings();
    facts.file = fileName();
    facts.conditions = asked.synchro.SynchroAnalyzeMode != 0;
    facts.stopRule = asked.stopRule;
    facts.stopSeconds = asked.stopSeconds;
    facts.stopBytes = asked.stopBytes;
    if (board.codeRangeKnown) {
        facts.inputs.codeMinimum = int32_t{board.codeRange.m_nMinimum};
        facts.inputs.codeMaximum = int32_t{board.codeRange.m_nMaximum};
    }
    if (session.settings.packetMode) {
        facts.inputs.packetFrequency = static_cast<double>(session.settings.packetFrequency) / session.decimation;
    }
}

void SessionHost::rememberFile() {
    if (const std::string& last = watch_.facts().file; fileExists(last)) {
        keptFile_ = last;
    }
}

RecordingWish SessionHost::settings() {
    return console_ ? *console_ : front_.settings();
}

std::string SessionHost::savedFileName() {
    return tarno2::savedFileName(programDirectory_);
}

void SessionHost::showStatus(const std::string& status) {
    consoleLog().log("%s", status.c_str());
}

void SessionHost::showAttention(const std::string& message) {
    consoleLog().log("%s", message.c_str());
    front_.showAttention(message);
}

void SessionHost::showDetail(const std::string& detail) {
    consoleLog().log("%s", detail.c_str());
    front_.showDetail(detail);
}

void SessionHost::showMessage(const std::string& message) {
    consoleLog().log("%s", message.c_str());
    front_.showMessage(message);
}

void SessionHost::startTimer(uint32_t milliseconds) {
    ticks_.start(std::chrono::milliseconds(milliseconds), TimerTicks::Clock::now());
    front_.startTimer(milliseconds);
}

void SessionHost::killTimer() {
    ticks_.stop();
    front_.killTimer();
}

void SessionHost::quit() {
    ending_ = true;
    front_.quit();
}

void SessionHost::logException(const char* name, const char* what) noexcept {
    try {
        DEBUG_LOG("!!!! %s: %s", name, what);
        consoleLog().log("!!!! %s: %s", name, what);
    } catch (...) {
        // There is nobody left to tell.
    }
}

}  // namespace tarno2

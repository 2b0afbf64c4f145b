#include "core/recording/recording_control.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "config/files/file_name_check.h"
#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "core/recording/recording_settings.h"
#include "core/recording/static_parameters.h"
#include "core/recording/synchro_preparation.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/codepage1251.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

constexpr uint64_t kMebibyte = 1024 * 1024;
constexpr uint32_t kTimerPeriodMs = 1000;
constexpr int32_t kNameInUse = -6;  // of the writer
constexpr int kNameAttempts = 100;

}  // namespace

void RecordingShell::recordingEnded(const RecordingResult& result) {
    showDetail(result.bytes > 0 ? formatText("Recorded %llu bytes in %u files",
                                             static_cast<unsigned long long>(result.bytes), result.files)
                                : "No data were recorded, no file was kept");
}

RecordingControl::RecordingControl(RecordingShell& shell, T_DRIVER& driver, FileNaming& naming)
    : shell_(shell), driver_(driver), naming_(naming) {}

RecordingControl::~RecordingControl() {
    freeSession();
}

bool RecordingControl::StartButtonClick() {
    DEBUG_LOG("StartButtonClick");
    if (session_) {
        DEBUG_LOG("Already run");
        StopButtonClick();
        DEBUG_LOG("Stop ok");
    }
    settings_ = shell_.settings();
    settings_.gains.resize(settings_.channels.size(), 1);
    const bool started =
        createSession() && checkFile() && checkSettings() && checkStopRule() && startThread() && prepareFacts();
    if (!started || !createFiles()) {
        return false;
    }
    release();
    return true;
}

bool RecordingControl::createSession() {
    ++sessionNumber_;
    diskNearlyFull_ = false;
    try {
        session_ = std::make_unique<T_BOARD>(driver_, sessionNumber_,
                                             [this](const std::string& fault) { shell_.showMessage(fault); });
    } catch (const std::bad_alloc&) {
        session_.reset();
    }
    if (session_ == nullptr || !session_->ready()) {
        DEBUG_LOG("!!!!!  MyData");
        return refuse(TextId::NotEnoughMemory);
    }
    session_->dataWaitMs = dataWaitMs_;
    return true;
}

bool RecordingControl::checkFile() {
    DEBUG_LOG("Connect");
    DEBUG_LOG("Check file");
    // The name is checked as it was typed: with ".dat" added that of a folder would pass.
    fileName_ = shell_.fileName();
    const NameProblem problem = checkDataFileName(fileName_);
    if (const auto message = nameText(problem)) {
        DEBUG_LOG("File error \"%s\" code = %d", shownName(fileName_).c_str(), nameCheckCode(problem));
        return refuse(*message, problem == NameProblem::Impossible ? shownName(fileName_) : std::string());
    }
    fileName_ = RecordingName::typed(fileName_).data();
    const int32_t code = DiskInfo(fileName_, disk_);
    if (code >= 0) {
        shell_.setFileName(fileName_);
        return true;
    }
    DEBUG_LOG("File error \"%s\" code = %d", fileName_.c_str(), code);
    switch (code) {
        case -1:
            return refuse(TextId::NotEnoughMemory);
        case -2:
            return refuse(TextId::NotLocalDrive);
        case -3:
            return refuse(TextId::UnknownDrive);
        default:
            return refuse(TextId::UnknownFat);
    }
}

bool RecordingControl::checkSettings() {
    BoardSettings& board = session_->settings;
    board.channels = settings_.channels;
    board.gains = settings_.gains;
    board.externalStart = settings_.hasMode(kBoardExternalStart);
    board.differential = settings_.hasMode(kBoardDifferential);
    board.packetMode = settings_.hasMode(kBoardPacketMode);
    board.externalClock = settings_.hasMode(kBoardExternalClock);
    board.packetFrequency = static_cast<float>(settings_.packetFrequency);
    session_->decimation = static_cast<uint32_t>(std::max(settings_.decimation, 1));

    DEBUG_LOG("Save to file \"%s\"", fileName_.c_str());
    for (size_t i = 0; i < board.channels.size(); ++i) {
        DEBUG_LOG("Active channel = %d, gain = %d", board.channels[i], board.gains[i]);
    }
    if (board.packetMode && board.channels.size() == 1) {
        DEBUG_LOG("!!! Packet mode, but channel's count = 1");
        return refuse(TextId::PacketModeOneChannel);
    }
    DEBUG_LOG("BoardMode = %u", settings_.boardMode);
    if (board.packetMode) {
        DEBUG_LOG("Packet freq = %f", settings_.packetFrequency);
    }
    const uint32_t width = driver_.facts().sampleWidth();
    if (width != 2 && width != 4) {
        return refuse(TextId::UndefinedFormat);
    }
    if (board.channels.empty()) {
        DEBUG_LOG("Channel count = 0");
        return refuse(TextId::ChannelCountZero);
    }
    DEBUG_LOG("Frequency = %f", settings_.frequency);
    board.frequency = static_cast<float>(settings_.frequency);
    const bool packetUsable = !board.packetMode || (std::isfinite(board.packetFrequency) && board.packetFrequency > 0);
    if (!std::isfinite(board.frequency) || !(board.frequency > 0.0F) || !packetUsable) {
        return refuse(TextId::FrequencyIncorrect);
    }
    if (const auto beyond = beyondBoard(settings_, driver_.facts())) {
        DEBUG_LOG("!!!!! %s", beyond->detail.c_str());
        return refuse(beyond->message, beyond->detail);
    }
    return true;
}

bool RecordingControl::checkStopRule() {
    const bool emptySize = settings_.stopRule == StopRule::Size && settings_.stopBytes == 0;
    const bool emptyTime = settings_.stopRule == StopRule::Time &&
                           (!std::isfinite(settings_.stopSeconds) || !(settings_.stopSeconds > 0.0));
    if (emptySize || emptyTime) {
        DEBUG_LOG("!!!!! Stop value = 0");
        return refuse(TextId::StopValueIncorrect);
    }
    return true;
}

bool RecordingControl::startThread() {
    DEBUG_LOG("CreateThread");
    const BoardSettings asked = session_->settings;
    const bool started = session_->StartThread(&shell_, {});
    DEBUG_LOG("Uninitialize");
    if (started) {
        DEBUG_LOG("No Error");
        for (const std::string& line : correctionLines(asked, session_->settings)) {
            DEBUG_LOG("%s", line.c_str());
            shell_.showDetail(line);
        }
        return true;
    }
    DEBUG_LOG("!!!!!  Error status != 0");
    const StartFailure failure = session_->failure();
    switch (failure.kind) {
        case StartFailure::Kind::Incompatible:
            DEBUG_LOG("Library not compatible");
            return refuse(TextId::IncompatibleDriver, failure.problem);
        case StartFailure::Kind::Thread:
            DEBUG_LOG("Thread error");
            return refuse(TextId::UnknownError, failure.problem);
        case StartFailure::Kind::Init:
            DEBUG_LOG("Init error");
            return refuse(TextId::InitError, failure.problem);
        default:
            DEBUG_LOG("Memory error");
            return refuse(TextId::NotEnoughMemory);
    }
}

void RecordingControl::chooseCut() {
    int32_t cutNumber = 0;
    bool cut = settings_.cut && driver_.facts().cutMode;
    if (settings_.cut && !driver_.facts().cutMode) {
        shell_.showDetail("Cut mode not accesible");
    }
    if (cut && !settings_.automaticCut) {
        cutNumber = settings_.cutMegabytes;
        if (cutNumber <= 0) {
            DEBUG_LOG("!!!! CutNumber catching= %d", cutNumber);
            attention(text(TextId::CutNumberIncorrect));
            cut = false;
        }
    }
    DEBUG_LOG("CutNumber = %d", cutNumber);
    DEBUG_LOG(cut ? "CutMode enabled" : "CutMode disable");
    // A file never grows over what its volume holds: the recording goes on in a numbered piece.
    pieceBytes_ = disk_.maximumFileSize;
    if (cut && cutNumber > 0) {
        pieceBytes_ = std::min(pieceBytes_, static_cast<uint64_t>(cutNumber) * kMebibyte);
    }
    const uint64_t limit = settings_.stopRule == StopRule::Size ? settings_.stopBytes : 0;
    DEBUG_LOG("Set parameters: \r\nFreq = %f\r\nCutNumber = %d\r\nChannelCount = %u\r\nDataSize = %llu\r\nCutFlag = %d",
              static_cast<double>(session_->settings.frequency), cutNumber, session_->settings.channelCount(),
              static_cast<unsigned long long>(limit), cut ? 1 : 0);
}

bool RecordingControl::prepareFacts() {
    chooseCut();
    shell_.killTimer();
    timerArmed_ = false;
    std::string missing;
    if (!calculateStaticParameters(driver_, *session_, facts_, missing)) {
        DEBUG_LOG("!!!!! Error on calculate static parameters");
        DEBUG_LOG("!!!!! The driver does not tell %s", missing.c_str());
        return refuse(TextId::StaticParametersMistake, "The driver does not tell " + missing);
    }
    if (!prepareSynchro()) {
        return false;
    }
    warnOfFreeSpace();
    return true;
}

bool RecordingControl::prepareSynchro() {
    SynchroFindings findings;
    try {
        if (!prepareSynchronisation(settings_, facts_, *session_, findings)) {
            DEBUG_LOG("!!!!! Error in checked synchro parameters.");
            DEBUG_LOG("!!!!! %s", findings.detail.c_str());
            return refuse(TextId::SynchroParametersMistake, findings.detail);
        }
    } catch (const std::bad_alloc&) {
        DEBUG_LOG("Memory error");
        return refuse(TextId::NotEnoughMemory);
    }
    if (findings.switchedOff != SynchroSwitchOff::None) {
        DEBUG_LOG("Synchronisation is switched off. %s", findings.detail.c_str());
        shell_.showDetail("Synchronisation is switched off. " + findings.detail);
        shell_.synchronisationSwitchedOff();
    }
    return true;
}

void RecordingControl::warnOfFreeSpace() {
    const BoardSettings& board = session_->settings;
    double need = 0.0;
    if (settings_.stopRule == StopRule::Size) {
        need = static_cast<double>(settings_.stopBytes);
    } else if (settings_.stopRule == StopRule::Time && !board.externalClock) {
        need = session_->sampleRate() * driver_.facts().sampleWidth() * settings_.stopSeconds / session_->decimation;
    }
    if (need > static_cast<double>(disk_.freeBytes)) {
        DEBUG_LOG("Free space = %llu, recording needs %.0f", static_cast<unsigned long long>(disk_.freeBytes), need);
        attention(text(TextId::FreeSpaceTooSmall));
    }
}

bool RecordingControl::createFiles() {
    WriterSetup setup;
    setup.fileName = fileName_;
    setup.sampleWidth = driver_.facts().sampleWidth();
    setup.channelCount = session_->settings.channelCount();
    setup.limitBytes = settings_.stopRule == StopRule::Size ? settings_.stopBytes : 0;
    setup.pieceBytes = pieceBytes_;
    if (!session_->settings.externalClock) {
        setup.bytesPerSecond = session_->sampleRate() * setup.sampleWidth / session_->decimation;
    }
    setup.facts = facts_;
    setup.bufferBytes =
        bufferFor(setup.bytesPerSecond, static_cast<uint64_t>(settings_.writeBufferMegabytes) * kMebibyte);
    setup.longestWaitMs = static_cast<uint32_t>(settings_.longestWriteWaitMs);
    setup.keepDiskMargin = true;
    int32_t code = session_->writer().open(setup, description_);
    // Two programs may have come to the same free name: a generated one stands for any other.
    for (int i = 0; i < kNameAttempts && code == kNameInUse && RecordingName(fileName_).isGenerated(); ++i) {
        GenerateFileName();
        fileName_ = setup.fileName = RecordingName::typed(shell_.fileName()).data();
        code = session_->writer().open(setup, description_);
    }
    for (const std::string& name : session_->writer().movedAside()) {
        attention(formatText(text(TextId::EarlierRecordingMoved).c_str(), systemTextToCp1251(name).c_str()));
    }
    if (code != 0) {
        DEBUG_LOG("!!!!! Error in create files. Code = %d", code);
        const std::string problem = session_->writer().openError();
        DEBUG_LOG("!!!!! %s", problem.c_str());
        // What says that a file is in use names it.
        return refuse(TextId::FileNameError, code == kNameInUse ? problem : '"' + fileName_ + "\": " + problem);
    }
    wantedBuffer_ = setup.bufferBytes;
    warnOfSmallBuffer();
    return true;
}

// Once a recording: its memory is still being made ready when it begins, and may turn out not to be there.
void RecordingControl::warnOfSmallBuffer() {
    const uint64_t got = session_->writer().bufferBytes();
    if (got < wantedBuffer_) {
        attention(formatText(text(TextId::WriteBufferSmaller).c_str(), formatFreeSpace(got).c_str(),
                             formatFreeSpace(wantedBuffer_).c_str()));
        wantedBuffer_ = 0;
    }
}

void RecordingControl::prepareLiveTap() {
    if (liveTap_ == nullptr) {
        return;
    }
    const size_t width = driver_.facts().sampleWidth();
    const size_t half = session_->maxBufferSamples() / 2 * width / session_->decimation;
    const double bytesPerSecond = session_->sampleRate() * static_cast<double>(width) / session_->decimation;
    if (!liveTap_->prepare(width * session_->settings.channelCount(), half, bytesPerSecond)) {
        DEBUG_LOG("!!!!! No memory for the signal view");
    }
    session_->liveTap = liveTap_;
}

void RecordingControl::release() {
    prepareLiveTap();
    session_->writer().setCreateTime(localTime());
    outsideEnd_ = OutsideEnd::User;
    DEBUG_LOG("Resume start");
    session_->Begin();
    shell_.showStatus(text(TextId::StatusRecording));
    if (settings_.stopRule == StopRule::Time) {
        DEBUG_LOG("Create timer for stop: TimeStopValue = %lf", settings_.stopSeconds);
        startAwaited_ = session_->settings.externalStart;
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

void RecordingControl::StopTimerTick() {
    if (!timerArmed_ || !session_) {
        return;
    }
    if (startAwaited_) {
        watchForExternalStart();
        return;
    }
    ++timerCount_;
    if (static_cast<double>(timerCount_) < settings_.stopSeconds) {
        return;
    }
    DEBUG_LOG("Timer stop - Work");
    outsideEnd_ = OutsideEnd::StopTime;
    StopButtonClick();
    shell_.showProgress(100);
    shell_.killTimer();
    if (cycleGoesOn()) {
        StartButtonClick();
    }
}

// The operator may end the cycle while its last recording runs.
bool RecordingControl::cycleGoesOn() {
    return !diskNearlyFull_ && !shell_.consoleMode() && shell_.settings().cycleStart;
}

void RecordingControl::StopButtonClick() {
    DEBUG_LOG("StopButtonClick");
    if (session_) {
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
    diskNearlyFull_ = session_->writer().diskNearlyFull();
    DEBUG_LOG("Generate new file name");
    GenerateFileName();
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
    if (current) {
        warnOfSmallBuffer();
    }
    if (result.code == StopCode::Running) {
        if (current) {
            watchForExternalStart();
            shell_.showBytes(result.bytes);
            warnOfSlowDisk(result.waitingBytes);
        }
        return;
    }
    if (!current && refusedSessions_.erase(notification.session) > 0) {
        DEBUG_LOG("Refused start: %s", stopText(result));
        return;
    }
    if (!current) {
        report(result);
        return;
    }
    // One that ended at once and kept nothing would be followed by the next without an end.
    if (result.code == StopCode::StopMeasuring && result.bytes > 0 && !result.diskNearlyFull && cycleGoesOn()) {
        report(result);
        shell_.killTimer();
        StartButtonClick();
        return;
    }
    const bool stopFirst = result.code == StopCode::Error;
    if (stopFirst) {
        StopButtonClick();
    }
    report(result);
    if (!stopFirst) {
        StopButtonClick();
    }
}

void RecordingControl::warnOfSlowDisk(uint64_t waitingBytes) {
    if (waitingBytes > 0) {
        attention(formatText(text(TextId::DiskFallsBehind).c_str(), formatFreeSpace(waitingBytes).c_str()));
    }
}

void RecordingControl::report(const RecordingResult& result) {
    lastResult_ = result;
    outcome_ = outcomeOf(result, settings_.stopRule, outsideEnd_);
    if (const char* line = stopText(result); line[0] != '\0') {
        DEBUG_LOG("%s", line);
        shell_.showStatus(line);
    }
    if (const std::string message = stopMessage(result); !message.empty()) {
        attention(message);
    }
    if (result.code == StopCode::TransferError) {
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
    shell_.recordingEnded(result);
}

void RecordingControl::attention(const std::string& message) {
    shell_.showAttention(formatText(text(TextId::Attention).c_str(), message.c_str()));
}

// Every refusal ends the waiting thread and frees the session, with the files that it may have made.
bool RecordingControl::refuse(TextId id, const std::string& detail) {
    refusedSessions_.insert(sessionNumber_);
    freeSession();
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
    session_.reset();
}

}  // namespace tarno2

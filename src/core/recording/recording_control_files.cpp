// What a recording needs beside its board: pieces, facts, conditions, files and their memory.

#include <algorithm>
#include <new>

#include "config/files/figure_text.h"
#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "core/recording/passport_facts.h"
#include "core/recording/recording_control.h"
#include "core/recording/static_parameters.h"
#include "core/recording/synchro_preparation.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/codepage1251.h"

namespace tarno2 {

namespace {

constexpr uint64_t kMebibyte = 1024 * 1024;
constexpr int32_t kNameInUse = -6;  // of the writer
constexpr int kNameAttempts = 100;

}  // namespace

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

bool RecordingControl::boardFacts() {
    std::string missing;
    if (!calculateStaticParameters(driver_, *session_, facts_, missing)) {
        DEBUG_LOG("!!!!! Error on calculate static parameters");
        DEBUG_LOG("!!!!! The driver does not tell %s", missing.c_str());
        return refuse(TextId::StaticParametersMistake, "The driver does not tell " + missing);
    }
    return true;
}

bool RecordingControl::prepareFacts() {
    chooseCut();
    shell_.killTimer();
    timerArmed_ = false;
    // A board that is monitored is not asked again while it measures.
    if ((!monitoring() && !boardFacts()) || !prepareSynchro()) {
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
        settings_.synchro.SynchroAnalyzeMode = 0;
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
    setup.sampleWidth = driver_.facts().sampleWidth();
    setup.channelCount = session_->settings.channelCount();
    setup.limitBytes = settings_.stopRule == StopRule::Size ? settings_.stopBytes : 0;
    setup.pieceBytes = pieceBytes_;
    if (!session_->settings.externalClock) {
        setup.bytesPerSecond = session_->sampleRate() * setup.sampleWidth / session_->decimation;
    }
    setup.facts = facts_;
    if (settings_.passport) {
        setup.passport = passportAtStart(settings_, *session_, facts_);
    }
    setup.marks = &session_->marks();
    setup.checksums = settings_.checksums ? checksums_ : nullptr;
    setup.bufferBytes =
        bufferFor(setup.bytesPerSecond, static_cast<uint64_t>(settings_.writeBufferMegabytes) * kMebibyte);
    setup.longestWaitMs = static_cast<uint32_t>(settings_.longestWriteWaitMs);
    setup.keepDiskMargin = true;
    const auto open = [&] {
        setup.fileName = fileName_;
        setup.freeName = naming_.isNewest(fileName_);
        // An earlier recording of this name is moved aside, and nobody may go on writing beside it.
        if (checksums_ != nullptr) {
            checksums_->release(fileName_);
        }
        return session_->writer().open(setup, description_);
    };
    int32_t code = open();
    // Two programs may have come to the same free name: a generated one stands for any other.
    for (int i = 0; i < kNameAttempts && code == kNameInUse && RecordingName(fileName_).isGenerated(); ++i) {
        GenerateFileName();
        fileName_ = RecordingName::typed(shell_.fileName()).data();
        code = open();
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
    if (!session_->marks().open(fileName_)) {
        DEBUG_LOG("!!!!! No thread or memory for marks");
        attention(text(TextId::MarksOff));
    }
    lostMarks_ = 0;
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

// What goes wrong with marks ends nothing.
void RecordingControl::warnOfMarks(bool ended) {
    if (const std::string problem = session_->marks().takeProblem(); !problem.empty()) {
        attention(text(TextId::MarksNotWritten));
        shell_.showDetail(problem);
    }
    // Once while they come, and their whole number with the end.
    const uint64_t lost = session_->marks().lost();
    if (lost > lostMarks_ && (lostMarks_ == 0 || ended)) {
        lostMarks_ = lost;
        attention(formatText(text(TextId::MarksLost).c_str(), formatCount(lost).c_str()));
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

}  // namespace tarno2

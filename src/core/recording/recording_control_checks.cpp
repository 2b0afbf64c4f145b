// What is checked before a recording starts, and the start of its thread.

#include <algorithm>
#include <cmath>
#include <new>

#include "config/files/file_name_check.h"
#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "core/recording/recording_control.h"
#include "core/recording/recording_settings.h"
#include "language/language_table.h"
#include "platform/c_locale.h"

namespace tarno2 {

void RecordingControl::takeWish() {
    settings_ = shell_.settings();
    settings_.gains.resize(settings_.channels.size(), 1);
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
    session_->markedLine = {settings_.markLine, settings_.markEdge};
    session_->decimation = static_cast<uint32_t>(std::max(settings_.decimation, 1));

    if (!fileName_.empty()) {
        DEBUG_LOG("Save to file \"%s\"", fileName_.c_str());
    }
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
    if (settings_.markLine >= 0 && driver_.facts().lineMask(settings_.markLine) == 0) {
        attention(formatText(text(TextId::MarkLineMissing).c_str(), settings_.markLine));
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

}  // namespace tarno2

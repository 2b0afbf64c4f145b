#include "core/recording/auto_recording.h"

#include "platform/c_locale.h"

namespace tarno2 {

RecordingSettings recordingSettings(const AutoSettings& wanted) {
    RecordingSettings recording;
    recording.channels = wanted.channels;
    recording.gains = wanted.gains;
    recording.frequencyText = formatText("%.17g", wanted.frequency);
    recording.boardMode = wanted.boardMode;
    recording.packetFrequency = wanted.packetFrequency;
    recording.stopRule = wanted.stopRule;
    recording.stopSeconds = wanted.timeNeed;
    recording.stopBytes = wanted.sizeNeed;
    recording.cutMode = wanted.cutMode > 0;
    recording.cutNumberText = std::to_string(wanted.cutMode);
    recording.decimation = wanted.decimation;
    recording.writeBufferMegabytes = static_cast<uint32_t>(wanted.writeBufferMegabytes);
    recording.longestWriteWaitMs = static_cast<uint32_t>(wanted.longestWriteWaitMs);
    recording.synchro = wanted.synchro.settings;
    recording.synchroSizes = wanted.synchro.sizes;
    recording.useDigitalPort = wanted.synchro.useDigitalPort;
    return recording;
}

void showAutoSettings(const AutoSettings& wanted, ProgramSettings& shown) {
    shown.driver = wanted.driverName;
    shown.base = static_cast<int32_t>(wanted.baseNumber);
    shown.fileName = wanted.fileName;
    shown.frequency = wanted.frequency;
    shown.packetFrequency = wanted.packetFrequency;
    shown.externalStart = (wanted.boardMode & kBoardExternalStart) != 0;
    shown.differentialMode = (wanted.boardMode & kBoardDifferential) != 0;
    shown.packetMode = (wanted.boardMode & kBoardPacketMode) != 0;
    shown.externalFrequency = (wanted.boardMode & kBoardExternalClock) != 0;
    shown.stopMode = wanted.stopRule;
    shown.stopPower = 0;
    shown.stopValue = wanted.stopRule == StopRule::Size ? static_cast<double>(wanted.sizeNeed) : wanted.timeNeed;
    shown.writeBufferMegabytes = wanted.writeBufferMegabytes;
    shown.longestWriteWaitMs = wanted.longestWriteWaitMs;
    shown.cutModeActive = wanted.cutMode > 0;
    shown.cutModeValue = wanted.cutMode > 0 ? wanted.cutMode : shown.cutModeValue;
    shown.synchro = wanted.synchro.settings;
    shown.synchroSizes = wanted.synchro.sizes;
    shown.useDigitalPort = wanted.synchro.useDigitalPort;
    for (ChannelSettings& channel : shown.channels) {
        channel.active = false;
    }
    for (size_t i = 0; i < wanted.channels.size(); ++i) {
        const auto number = static_cast<size_t>(wanted.channels[i]);
        if (number < shown.channels.size()) {
            shown.channels[number].active = true;
            shown.channels[number].gain = i < wanted.gains.size() ? wanted.gains[i] : 1;
        }
    }
}

}  // namespace tarno2

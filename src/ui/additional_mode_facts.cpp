#include "ui/additional_mode_facts.h"

#include <algorithm>

#include "core/devices/input_limits.h"
#include "core/recording/recording_need.h"

namespace tarno2 {

AdditionalModeFacts additionalModeFacts(const RecordingWish& settings, BoardSelection& selection) {
    const BoardFacts& board = selection.driver().facts();
    AdditionalModeFacts facts;
    for (size_t i = 0; i < settings.channels.size(); ++i) {
        const int32_t gain = i < settings.gains.size() ? settings.gains[i] : 1;
        const InputLimits limits = inputLimits(selection.driver().device(), settings.channels[i], gain);
        const ChannelLabel given = i < settings.labels.size() ? settings.labels[i] : ChannelLabel();
        facts.board.channels.push_back({settings.channels[i], gain, limits.range, limits.lower, limits.upper,
                                        channelLabel(board, settings.channels[i], given)});
    }
    facts.board.minimumCode = board.codeRange.m_nMinimum;
    facts.board.maximumCode = board.codeRange.m_nMaximum;
    facts.board.sampleWidth = board.sampleWidth();
    facts.board.useDigitalPort = settings.useDigitalPort;
    facts.digitalLines = board.format.m_nDigitalLines;
    if (!settings.channels.empty()) {
        facts.framesPerSecond = sampleRate(settings, board) / static_cast<double>(settings.channels.size()) /
                                std::max(settings.decimation, 1);
    }
    return facts;
}

}  // namespace tarno2

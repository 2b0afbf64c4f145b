#include "core/recording/synchro_preparation.h"

#include "sync/synchro_evaluator.h"

namespace tarno2 {

namespace {

SynchroBoardFacts boardFactsFor(const RecordingWish& settings, const RecordingFacts& facts, T_BOARD& session) {
    const BoardFacts& board = session.driver().facts();
    SynchroBoardFacts result;
    for (size_t i = 0; i < session.settings.channels.size(); ++i) {
        const RecordingFacts::Range& range = facts.ranges[i];
        result.channels.push_back(
            {session.settings.channels[i], session.settings.gains[i], range.inputRange, range.lower, range.upper});
    }
    result.minimumCode = board.codeRange.m_nMinimum;
    result.maximumCode = board.codeRange.m_nMaximum;
    result.sampleWidth = board.sampleWidth();
    result.useDigitalPort = settings.useDigitalPort;
    return result;
}

}  // namespace

bool prepareSynchronisation(const RecordingWish& settings, const RecordingFacts& facts, T_BOARD& session,
                            SynchroFindings& findings) {
    if (!CheckSynchroParameters(settings.synchro, settings.synchroSizes, boardFactsFor(settings, facts, session),
                                findings)) {
        return false;
    }
    const BoardFacts& board = session.driver().facts();
    StreamFormat format;
    format.sampleWidth = board.sampleWidth();
    format.channels = session.settings.channelCount();
    format.packed = board.packed();
    format.facts.formatFlags = board.format.m_nFormatFlags;
    format.facts.codeShift = board.format.m_nCodeShift;
    format.facts.portShift = board.format.m_nDigitalShift;
    format.facts.backwardOrder = board.format.m_nBackwardOrder != 0;
    format.largestBlock = size_t{session.maxBufferSamples()} * format.sampleWidth;
    session.evaluator = std::make_unique<SynchroEvaluator>(findings.settings, settings.synchroSizes, format);
    return true;
}

}  // namespace tarno2

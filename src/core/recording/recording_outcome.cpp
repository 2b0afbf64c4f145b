#include "core/recording/recording_outcome.h"

#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/codepage1251.h"

namespace tarno2 {

RecordingOutcome outcomeOf(const RecordingResult& result, StopRule rule, OutsideEnd end) {
    if (result.bytes == 0 || result.files == 0) {
        return RecordingOutcome::NothingRecorded;
    }
    bool asAsked = false;
    if (result.code == StopCode::StopMeasuring) {
        asAsked = !result.diskNearlyFull;
    } else if (result.code == StopCode::User) {
        asAsked = end == OutsideEnd::StopTime || (end == OutsideEnd::User && rule == StopRule::Manual);
    }
    return asAsked ? RecordingOutcome::AsAsked : RecordingOutcome::EndedEarly;
}

std::string outcomeLine(RecordingOutcome outcome, const RecordingResult& result, const std::string& logPath) {
    const auto format = [](TextId id) { return languageTable().loadUtf8(static_cast<int32_t>(id)); };
    const auto bytes = static_cast<unsigned long long>(result.bytes);
    std::string line;
    switch (outcome) {
        case RecordingOutcome::AsAsked:
            line = formatText(format(TextId::OutcomeAsAsked).c_str(), bytes, result.files);
            break;
        case RecordingOutcome::EndedEarly: {
            const std::string status = stopText(result);
            const std::string reason = status.empty() ? cp1251ToUtf8(stopMessage(result)) : status;
            line = formatText(format(TextId::OutcomeEndedEarly).c_str(), reason.c_str(), bytes, result.files,
                              logPath.c_str());
            break;
        }
        case RecordingOutcome::NothingRecorded:
            line = formatText(format(TextId::OutcomeNothing).c_str(), logPath.c_str());
            break;
    }
    return line + "\n";
}

}  // namespace tarno2

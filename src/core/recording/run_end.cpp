#include "core/recording/run_end.h"

#include <algorithm>
#include <array>

#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/codepage1251.h"

namespace tarno2 {

namespace {

/// Who has to have ended it so that it is over as asked.
enum class Asked { Never, ByItsRule, WithoutRule, Always };

struct Row {
    StopCode code = StopCode::Running;
    ErrorDetail detail = ErrorDetail::Unknown;  ///< of StopCode::Error
    bool diskNearlyFull = false;                ///< of StopCode::StopMeasuring
    RunState state = RunState::Error;
    Asked asked = Asked::Never;
    const char* status = "";
    std::optional<TextId> message;
    MessageKind kind = MessageKind::Attention;
};

constexpr RunState kError = RunState::Error;
constexpr RunState kStopped = RunState::Stopped;
constexpr MessageKind kAttention = MessageKind::Attention;
constexpr MessageKind kInformation = MessageKind::Information;
constexpr ErrorDetail kNone = ErrorDetail::Unknown;

constexpr std::array<Row, 15> kRows = {{
    {StopCode::Error, ErrorDetail::Overflow, false, kError, Asked::Never, "", TextId::FifoOverflow, kAttention},
    {StopCode::Error, ErrorDetail::Init, false, kError, Asked::Never, "Stop - By init error", TextId::InitError,
     kAttention},
    {StopCode::Error, ErrorDetail::Start, false, kError, Asked::Never, "Stop - By start error", TextId::StartError,
     kAttention},
    {StopCode::Error, ErrorDetail::Memory, false, kError, Asked::Never, "Stop - By memory error",
     TextId::NotEnoughMemory, kAttention},
    {StopCode::Error, ErrorDetail::Unknown, false, kError, Asked::Never, "Stop - By unknown error",
     TextId::UnknownError, kAttention},
    {StopCode::User, kNone, false, kStopped, Asked::ByItsRule, "Stop - By user", std::nullopt, kInformation},
    {StopCode::StopMeasuring, kNone, false, kStopped, Asked::Always, "Stop - By stop measuring",
     TextId::EndedByCondition, kInformation},
    {StopCode::StopMeasuring, kNone, true, kStopped, Asked::Never, "Stop - By stop measuring",
     TextId::DiskMarginReached, kAttention},
    {StopCode::WriteError, kNone, false, kError, Asked::Never, "Stop - By error", TextId::DataWriteError, kAttention},
    {StopCode::Unplug, kNone, false, kError, Asked::Never, "Stop - By device unplug", TextId::BoardUnplugged,
     kAttention},
    {StopCode::NoData, kNone, false, kError, Asked::Never, "Stop - By non data", TextId::NoData, kAttention},
    {StopCode::AnalyzeError, kNone, false, kError, Asked::Never, "Stop - By analyze error", TextId::AnalyzeError,
     kAttention},
    {StopCode::TransferError, kNone, false, kError, Asked::Never, "Stop - By get error", TextId::GetDataError,
     kAttention},
    {StopCode::Incompatible, kNone, false, kError, Asked::Never, "", TextId::IncompatibleDriver, kAttention},
    {StopCode::SourceEnd, kNone, false, kStopped, Asked::WithoutRule, "Stop - By end of source", TextId::EndedBySource,
     kInformation},
}};

bool isRowOf(const Row& row, const RecordingResult& result) {
    return row.code == result.code && (row.code != StopCode::Error || row.detail == result.detail) &&
           (row.code != StopCode::StopMeasuring || row.diskNearlyFull == result.diskNearlyFull);
}

bool asAsked(Asked asked, StopRule rule, OutsideEnd end) {
    return asked == Asked::Always || (asked == Asked::WithoutRule && rule == StopRule::Manual) ||
           (asked == Asked::ByItsRule &&
            (end == OutsideEnd::StopTime || (end == OutsideEnd::User && rule == StopRule::Manual)));
}

}  // namespace

RunEnd runEnd(const RecordingResult& result, StopRule rule, OutsideEnd end) {
    RunEnd meaning;
    const auto* const row =
        std::find_if(kRows.begin(), kRows.end(), [&result](const Row& each) { return isRowOf(each, result); });
    if (row == kRows.end()) {
        return meaning;
    }
    meaning.state = row->state;
    meaning.status = row->status;
    meaning.message = row->message;
    meaning.kind = row->kind;
    if (result.bytes > 0) {
        meaning.summary = TextId::RecordingEnded;
    }
    if (result.bytes > 0 && result.files > 0) {
        meaning.outcome = asAsked(row->asked, rule, end) ? RecordingOutcome::AsAsked : RecordingOutcome::EndedEarly;
    }
    return meaning;
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
            const RunEnd end = runEnd(result, StopRule::Manual, OutsideEnd::User);
            std::string reason = end.status;
            if (reason.empty() && end.message) {
                reason = cp1251ToUtf8(text(*end.message));
            }
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

#include "core/recording/recording_outcome.h"

#include <gtest/gtest.h>

#include "language/language_table.h"

namespace tarno2::test {
namespace {

TEST(RecordingOutcome, IsHeldAgainstWhatWasAskedFor) {
    languageTable().select(kLanguageEnglish);
    const std::string nothing = "Nothing was recorded. See \"log\".\n";
    struct Case {
        StopCode code;
        StopRule rule;
        RecordingOutcome outcome;
        std::string line;
        OutsideEnd end = OutsideEnd::User;
        bool diskNearlyFull = false;
        uint64_t bytes = 600;
        uint32_t files = 2;
    };
    const std::string asAsked = "Recorded as asked: 600 bytes in 2 files.\n";
    const auto early = [](const std::string& why) {
        return "The recording ended early (" + why + "): 600 bytes in 2 files. See \"log\".\n";
    };
    const Case cases[] = {
        {StopCode::User, StopRule::Manual, RecordingOutcome::AsAsked, asAsked},
        {StopCode::User, StopRule::Manual, RecordingOutcome::EndedEarly, early("Stop - By user"),
         OutsideEnd::SystemEnding},
        {StopCode::User, StopRule::Time, RecordingOutcome::EndedEarly, early("Stop - By user")},
        {StopCode::User, StopRule::Time, RecordingOutcome::AsAsked, asAsked, OutsideEnd::StopTime},
        {StopCode::User, StopRule::Size, RecordingOutcome::EndedEarly, early("Stop - By user")},
        {StopCode::StopMeasuring, StopRule::Size, RecordingOutcome::AsAsked, asAsked},
        {StopCode::StopMeasuring, StopRule::Time, RecordingOutcome::AsAsked, asAsked},
        {StopCode::StopMeasuring, StopRule::Size, RecordingOutcome::EndedEarly, early("Stop - By stop measuring"),
         OutsideEnd::User, true},
        {StopCode::WriteError, StopRule::Size, RecordingOutcome::EndedEarly, early("Stop - By error")},
        {StopCode::Incompatible, StopRule::Manual, RecordingOutcome::EndedEarly,
         early("Dynamic library is not compatible with this application! Update drivers.")},
        {StopCode::User, StopRule::Manual, RecordingOutcome::NothingRecorded, nothing, OutsideEnd::User, false, 0, 0},
        {StopCode::WriteError, StopRule::Manual, RecordingOutcome::NothingRecorded, nothing, OutsideEnd::User, false,
         600, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        RecordingResult result;
        result.code = c.code;
        result.bytes = c.bytes;
        result.files = c.files;
        result.diskNearlyFull = c.diskNearlyFull;
        const RecordingOutcome outcome = outcomeOf(result, c.rule, c.end);
        EXPECT_EQ(outcome, c.outcome);
        EXPECT_EQ(outcomeLine(outcome, result, "log"), c.line);
    }
}

}  // namespace
}  // namespace tarno2::test

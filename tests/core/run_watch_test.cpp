#include "core/recording/run_watch.h"

#include <gtest/gtest.h>

#include "language/language_table.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

/// How a recording is to end.
enum class Way { ByHand, Time, Size, Trigger };

RunFacts factsOf(Way way, uint32_t session = 1) {
    RunFacts facts;
    facts.session = session;
    facts.frameBytes = 4;
    facts.conditions = way == Way::Trigger;
    facts.stopRule = way == Way::Time ? StopRule::Time : way == Way::Size ? StopRule::Size : StopRule::Manual;
    facts.stopSeconds = 2.5;
    facts.stopBytes = 600;
    return facts;
}

struct EndTold {
    StopCode code;
    ErrorDetail detail;
    const char* status;   ///< line of the logs
    const char* message;  ///< to the operator; empty: none that needs attention
    RunState state;
    const char* outcomes;  ///< exit status for each way to end, with data: by hand, time, size, trigger
};
constexpr ErrorDetail kNone = ErrorDetail::Unknown;

const EndTold kEndsTold[] = {
    {StopCode::Error, ErrorDetail::Overflow, "", "FIFO overflow", RunState::Error, "1111"},
    {StopCode::Error, ErrorDetail::Init, "Stop - By init error", "Init error", RunState::Error, "1111"},
    {StopCode::Error, ErrorDetail::Start, "Stop - By start error", "Start error", RunState::Error, "1111"},
    {StopCode::Error, ErrorDetail::Memory, "Stop - By memory error",
     "Not enought memory. Please, close unnecessary window and try again.", RunState::Error, "1111"},
    {StopCode::Error, ErrorDetail::Unknown, "Stop - By unknown error", "Unknown error", RunState::Error, "1111"},
    {StopCode::User, kNone, "Stop - By user", "", RunState::Stopped, "0010"},
    {StopCode::StopMeasuring, kNone, "Stop - By stop measuring", "", RunState::Stopped, "0000"},
    {StopCode::WriteError, kNone, "Stop - By error", "Error in writing the data file", RunState::Error, "1111"},
    {StopCode::Unplug, kNone, "Stop - By device unplug", "The board was unplugged", RunState::Error, "1111"},
    {StopCode::NoData, kNone, "Stop - By non data", "Data did not act for a settlement time interval", RunState::Error,
     "1111"},
    {StopCode::AnalyzeError, kNone, "Stop - By analyze error", "Error in analyze data", RunState::Error, "1111"},
    {StopCode::TransferError, kNone, "Stop - By get error", "Error in metod GET", RunState::Error, "1111"},
    {StopCode::Incompatible, kNone, "", "Dynamic library is not compatible with this application! Update drivers.",
     RunState::Error, "1111"},
    {StopCode::SourceEnd, kNone, "Stop - By end of source", "", RunState::Stopped, "0110"},
};

// A board that ends by itself tells so before its session goes; one that was stopped tells it afterwards.
TEST(RunWatch, EveryEndHasItsStateTextAndOutcome) {
    languageTable().select(kLanguageEnglish);
    for (const EndTold& c : kEndsTold) {
        for (const Way way : {Way::ByHand, Way::Time, Way::Size, Way::Trigger}) {
            for (const bool data : {false, true}) {
                SCOPED_TRACE(testing::Message() << static_cast<int>(c.code) << ' ' << c.status << " way "
                                                << static_cast<int>(way) << (data ? ", data" : ""));
                const RunFacts facts = factsOf(way);
                RunWatch watch;
                watch.starting();
                EXPECT_EQ(watch.state(), RunState::Starting);
                watch.begin(facts, 1000);
                watch.settled();
                RunCounts counts;
                counts.bytes = data ? 600 : 0;
                watch.update(counts, 2000);
                EXPECT_EQ(watch.state(),
                          way == Way::Trigger && !data ? RunState::WaitingForTrigger : RunState::Recording);

                RecordingResult result;
                result.code = c.code;
                result.detail = c.detail;
                result.bytes = counts.bytes;
                result.files = data ? 2 : 0;
                const RunEnd end =
                    runEnd(result, facts.stopRule, way == Way::Time ? OutsideEnd::StopTime : OutsideEnd::User);
                const bool stopFirst = c.code == StopCode::User || c.code == StopCode::Error;
                if (!stopFirst) {
                    watch.ended(1, result, end);
                }
                watch.stopping();
                EXPECT_EQ(watch.state(), RunState::Stopping);
                watch.sessionGone();
                watch.settled();
                if (stopFirst) {
                    EXPECT_EQ(watch.state(), RunState::Stopped) << "why is not known yet";
                    watch.ended(1, result, end);
                }
                EXPECT_EQ(watch.state(), c.state);
                EXPECT_EQ(watch.figures().frames, data ? 150U : 0U);

                EXPECT_STREQ(end.status, c.status);
                const bool attention = end.message && end.kind == MessageKind::Attention;
                EXPECT_EQ(attention ? text(*end.message) : "", c.message);
                EXPECT_EQ(end.message == TextId::EndedByCondition, c.code == StopCode::StopMeasuring);
                EXPECT_EQ(end.summary, data ? TextId::RecordingEnded : TextId::NothingRecorded);
                const int outcome = data ? c.outcomes[static_cast<size_t>(way)] - '0' : 2;
                EXPECT_EQ(static_cast<int>(end.outcome), outcome);
                const std::string why = *c.status != '\0' ? c.status : c.message;
                const std::string lines[] = {
                    "Recorded as asked: 600 bytes in 2 files.\n",
                    "The recording ended early (" + why + "): 600 bytes in 2 files. See \"log\".\n",
                    "Nothing was recorded. See \"log\".\n"};
                EXPECT_EQ(outcomeLine(end.outcome, result, "log"), lines[outcome]);
            }
        }
    }
}

TEST(RunWatch, AnEndFromOutsideOrByTheDiskIsHeldAgainstWhatWasAskedFor) {
    RecordingResult result;
    result.code = StopCode::User;
    result.bytes = 600;
    result.files = 1;
    EXPECT_EQ(runEnd(result, StopRule::Time, OutsideEnd::User).outcome, RecordingOutcome::EndedEarly)
        << "before its time";
    EXPECT_EQ(runEnd(result, StopRule::Manual, OutsideEnd::SystemEnding).outcome, RecordingOutcome::EndedEarly);
    result.files = 0;
    EXPECT_EQ(runEnd(result, StopRule::Manual, OutsideEnd::User).outcome, RecordingOutcome::NothingRecorded);
    result.files = 1;
    result.code = StopCode::StopMeasuring;
    result.diskNearlyFull = true;
    const RunEnd full = runEnd(result, StopRule::Size, OutsideEnd::User);
    EXPECT_EQ(full.outcome, RecordingOutcome::EndedEarly);
    EXPECT_EQ(full.state, RunState::Stopped);
    EXPECT_EQ(full.message, TextId::DiskMarginReached);
    EXPECT_EQ(full.kind, MessageKind::Attention);
}

TEST(RunWatch, FollowsOneRunAfterTheOther) {
    RunWatch watch;
    EXPECT_EQ(watch.state(), RunState::Ready);
    watch.setBoard(BoardStatus::Unplugged);
    EXPECT_EQ(watch.state(), RunState::Error);
    watch.starting();
    watch.settled();
    EXPECT_EQ(watch.state(), RunState::Error) << "the start was refused";
    watch.setBoard(BoardStatus::Ready);
    EXPECT_EQ(watch.state(), RunState::Ready);

    RunFacts facts = factsOf(Way::Time, 3);
    facts.externalStart = true;
    watch.begin(facts, 0);
    watch.update({}, 9000);
    EXPECT_EQ(watch.state(), RunState::WaitingForStart);
    EXPECT_EQ(watch.figures().elapsedSeconds, 0U);
    RunCounts counts;
    counts.dataBegun = true;
    counts.bytes = 40;
    counts.worstLoad = 799;
    watch.update(counts, 10000);
    EXPECT_EQ(watch.state(), RunState::Recording);
    counts.worstLoad = 800;
    watch.update(counts, 11000);
    EXPECT_EQ(watch.state(), RunState::Warning) << "the ring was nearly full";
    EXPECT_EQ(watch.figures().elapsedSeconds, 1U) << "since the board has begun";
    watch.ruleReached();
    EXPECT_EQ(watch.figures().elapsedSeconds, 3U);
    EXPECT_EQ(watch.figures().percent, 100);

    // The next one runs already when the last word of the one before comes.
    watch.begin(factsOf(Way::ByHand, 4), 20000);
    RecordingResult late;
    late.code = StopCode::Unplug;
    late.bytes = 80;
    watch.ended(3, late, runEnd(late, StopRule::Time, OutsideEnd::User));
    EXPECT_EQ(watch.figures().bytes, 0U);
    watch.sessionGone();
    EXPECT_EQ(watch.state(), RunState::Stopped);
}

TEST(RunWatch, KnowsTheFilesOfTheLastRun) {
    const TemporaryFolder folder;
    RunWatch watch;
    RunFacts facts = factsOf(Way::ByHand);
    facts.file = folder.write("run.dat", "x");
    facts.inputs.codeMaximum = 2047.0;
    folder.write("run_1.dat", "x");
    folder.write("other.dat", "x");
    EXPECT_FALSE(watch.knownInputs(facts.file).codeMaximum);
    watch.begin(facts, 0);
    for (const auto& [name, known] : {std::pair{"run.dat", true}, {"run_1.dat", true}, {"other.dat", false}}) {
        EXPECT_EQ(watch.knownInputs(folder.file(name)).codeMaximum.has_value(), known) << name;
    }
}

TEST(TimerTicks, LateOnesAreMadeUpForAndNoneComesEarly) {
    using std::chrono::milliseconds;
    const TimerTicks::Clock::time_point begin{};
    TimerTicks ticks;
    EXPECT_FALSE(ticks.take(begin));
    ticks.start(milliseconds(1000), begin);
    const struct {
        int at;
        int due;
    } looks[] = {{999, 0}, {1000, 1}, {1999, 0}, {5500, 4}, {6000, 1}};
    for (const auto& look : looks) {
        int taken = 0;
        while (ticks.take(begin + milliseconds(look.at))) {
            ++taken;
        }
        EXPECT_EQ(taken, look.due) << look.at;
    }
    ticks.stop();
    EXPECT_FALSE(ticks.take(begin + milliseconds(60000)));
}

}  // namespace
}  // namespace tarno2::test

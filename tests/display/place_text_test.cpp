#include "display/place_text.h"

#include <gtest/gtest.h>

namespace tarno2::test {
namespace {

constexpr int64_t kSecond = 1'000'000;

/// Ten hours at 1000 frames a second, begun at 22:00 of 2026-11-22.
PlaceTerms nightTerms() {
    PlaceTerms terms;
    terms.framesPerSecond = 1000.0;
    terms.frames = 36'000'000;
    terms.clock = wallClockOf(LocalTime{2026, 11, 0, 22, 22, 0, 0, 0}, 1000.0);
    return terms;
}

TEST(PlaceText, TakesSecondsFramesTimesAndDates) {
    const PlaceTerms plain = nightTerms();
    PlaceTerms counting = plain;
    counting.countsFrames = true;
    PlaceTerms telling = plain;
    telling.tellsClock = true;
    const struct {
        const char* text;
        const PlaceTerms& terms;
        double frame;
    } cases[] = {{"12.5", plain, 12'500},
                 {" 12,5 s ", plain, 12'500},
                 {"12,5 \xD1\x81", plain, 12'500},
                 {"12", counting, 12},
                 {"12s", counting, 12'000},
                 {"#48000", plain, 48'000},
                 {"1:30", plain, 90'000},
                 {"00:01:30.250", plain, 90'250},
                 {"23:00:00", telling, 3'600'000},
                 {"00:30:00.5", telling, 9'000'500},
                 {"2026-11-23 02:30", telling, 16'200'000},
                 {"2026-11-23T02:00:00", plain, 14'400'000},
                 {"2026-11-23", plain, 7'200'000}};
    for (const auto& one : cases) {
        PlaceProblem problem = PlaceProblem::NotUnderstood;
        EXPECT_NEAR(parsePlace(one.text, one.terms, problem).value_or(-1), one.frame, 1e-3) << one.text;
        EXPECT_EQ(problem, PlaceProblem::None) << one.text;
    }
}

TEST(PlaceText, TellsWhyNot) {
    const PlaceTerms known = nightTerms();
    PlaceTerms unknown;
    unknown.frames = 100;
    const struct {
        const char* text;
        const PlaceTerms& terms;
        PlaceProblem problem;
    } cases[] = {{"", known, PlaceProblem::NotUnderstood},
                 {"noon", known, PlaceProblem::NotUnderstood},
                 {"#", known, PlaceProblem::NotUnderstood},
                 {"#-1", known, PlaceProblem::NotUnderstood},
                 {"1:60", known, PlaceProblem::NotUnderstood},
                 {"1:-2", known, PlaceProblem::NotUnderstood},
                 {"::", known, PlaceProblem::NotUnderstood},
                 {"2026-02-30", known, PlaceProblem::NotUnderstood},
                 {"2026-11-23 x", known, PlaceProblem::NotUnderstood},
                 {"2026-11-23 25:00:00", known, PlaceProblem::NotUnderstood},
                 {"-1", known, PlaceProblem::Outside},
                 {"36001", known, PlaceProblem::Outside},
                 {"2026-11-22 21:59:59", known, PlaceProblem::Outside},
                 {"1.5", unknown, PlaceProblem::NoRate},
                 {"0:01", unknown, PlaceProblem::NoRate},
                 {"2026-11-23", unknown, PlaceProblem::NoClock},
                 {"#101", unknown, PlaceProblem::Outside}};
    for (const auto& one : cases) {
        PlaceProblem problem = PlaceProblem::None;
        EXPECT_FALSE(parsePlace(one.text, one.terms, problem)) << one.text;
        EXPECT_EQ(problem, one.problem) << one.text;
    }
}

TEST(WallClock, IsThePassportsOwn) {
    Passport passport;
    passport.start = 5 * kSecond;
    passport.startOffset = 180;
    const int64_t east = int64_t{180} * 60 * kSecond;
    EXPECT_EQ(wallClockOf(passport, 0, 1000.0)->start, 5 * kSecond + east);
    passport.end.begun = 6 * kSecond;
    EXPECT_EQ(wallClockOf(passport, 500, 1000.0)->start, 6 * kSecond + kSecond / 2 + east) << "a later piece";
    // The board ran a thousandth faster than it said.
    passport.end.clock = {{0, 1'000'000'000, 7 * kSecond}, {100'100, 101'000'000'000, 107 * kSecond}};
    const auto clock = wallClockOf(passport, 0, 1000.0);
    EXPECT_EQ(clock->start, 7 * kSecond + east);
    EXPECT_EQ(clock->at(100'100), 107 * kSecond + east);
    EXPECT_NEAR(clock->frameAt(107 * kSecond + east), 100'100, 1e-6);
    EXPECT_EQ(wallClockOf(passport, 0, 2000.0)->framesPerSecond, 2000.0) << "a board that was played back";
    EXPECT_FALSE(wallClockOf(passport, 0, 0.0));
    passport.synchronisation.mode = "records";
    EXPECT_FALSE(wallClockOf(passport, 0, 1000.0));
}

TEST(WallClock, RoundsAcrossMidnight) {
    const int64_t time = *timeOf({2024, 2, 0, 29, 23, 59, 59, 999});
    EXPECT_EQ(clockText(time, 3), "23:59:59.999");
    EXPECT_EQ(clockText(time, 2), "00:00:00.00");
    EXPECT_EQ(clockText(time, 9), "23:59:59.999000000");
    EXPECT_EQ(dateText(time), "2024-02-29");
    EXPECT_EQ(clockText(-1, 6), "23:59:59.999999");
    EXPECT_EQ(dateText(-1), "1969-12-31");
}

}  // namespace
}  // namespace tarno2::test

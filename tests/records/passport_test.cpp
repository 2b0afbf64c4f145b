#include "records/passport.h"

#include <gtest/gtest.h>

#include "records/utc_text.h"

namespace tarno2 {
namespace {

constexpr int64_t kMoment = 1'795'370'489'123'456;  // 2026-11-22 18:01:29.123456 UTC

Passport everything() {
    Passport passport;
    passport.state = Passport::State::Complete;
    passport.version = "2.1.0.0";
    passport.driver = "Simulator";
    passport.board = "SIM14 \"новая\"";
    passport.computer = "bench-3";
    passport.comment = "two\nlines";
    passport.start = kMoment;
    passport.startOffset = 180;
    passport.rate = {10000.0, 9999.5, 2, 4999.75, false, 100.0, 99.5};
    passport.sample = {2, true, 14, 2, 0xFFFC, -8192, 8191, 2, 0, 3, true};
    passport.channels = {{0, "inlet", "bar", 2, 2.5, -2.5, 4.0, -1.0}, {7, "", "V", 1, 5.0, -5.0, 1.0, 0.0}};
    passport.lines = {{0, "pump"}, {1, ""}};
    passport.synchronisation = {
        "records", 10, 30, true, {{"trigger", 0, -1, "rises", 0.5}, {"start", -1, 1, "high", 0.0}}};
    passport.pieces = {{"run.dat", 80, 320, 2, std::string(64, 'a')}, {"run_1.dat", 40, 160, 1, {}}};
    passport.triggers = {1000, 2000, 3000};
    passport.end = {
        0,          kMoment + 60'000'000,  "size",
        "as asked", {{"board", 12345, 7}}, {{0, 5, kMoment}, {299985, 60'000'000'005, kMoment + 60'000'000}},
        4321};
    return passport;
}

TEST(Passport, IsReadBackAsItWasWritten) {
    for (const auto state : {Passport::State::Recording, Passport::State::Complete, Passport::State::Recovered}) {
        Passport passport = everything();
        passport.state = state;
        const std::string text = passportText(passport);
        std::string problem;
        const auto read = readPassport(text, problem);
        ASSERT_TRUE(read) << problem;
        EXPECT_EQ(read->state, state);
        EXPECT_EQ(passportText(*read), text);
        // What a later version adds is passed over.
        std::string later = text;
        later.insert(later.find("\"rate\": {") + 9, R"("quality": [{"of": null}], )");
        later.insert(1, R"("weather": {"wind": [1.5, "west"]},)");
        const auto readAgain = readPassport(later, problem);
        ASSERT_TRUE(readAgain) << problem;
        EXPECT_EQ(passportText(*readAgain), text);
    }
    std::string problem;
    const Passport read = *readPassport(passportText(everything()), problem);
    EXPECT_EQ(read.board, everything().board);
    EXPECT_EQ(read.start, kMoment);
    EXPECT_EQ(read.end.clock, everything().end.clock);
    EXPECT_EQ(read.triggers, everything().triggers);
    EXPECT_EQ(read.end.monitoredFrames, 4321U);
}

TEST(Passport, TellsWhereEachRecordIsAndWhenItWasTriggered) {
    const std::string text = passportText(everything());
    EXPECT_NE(text.find("\"trigger\": 3000,\n   \"utc\": \"2026-11-22T18:01:29.723"), std::string::npos) << text;
    const size_t records = text.find("\"records\": [");
    const size_t third = text.find("\"piece\": 1", records);
    EXPECT_NE(text.find("\"frame\": 40", records), std::string::npos) << "the second record of the first piece";
    EXPECT_NE(text.find("\"frame\": 0", third), std::string::npos) << "the first one of the second piece";
}

TEST(Passport, OthersAreRefusedWithAReason) {
    const std::string whole = passportText(everything());
    const auto changed = [&](const std::string& from, const std::string& to) {
        std::string text = whole;
        return text.replace(text.find(from), from.size(), to);
    };
    const std::string texts[] = {"",
                                 "{}",
                                 "[]",
                                 "null",
                                 whole.substr(0, whole.size() / 2),
                                 changed("\"formatVersion\": 1", "\"formatVersion\": 2"),
                                 changed("\"decimation\": 2", "\"decimation\": -2"),
                                 changed("\"decimation\": 2", "\"decimation\": 4294967296"),
                                 changed("\"decimation\": 2", "\"decimation\": \"2\""),
                                 changed("\"state\": \"complete\"", "\"state\": \"ready\""),
                                 changed("2026-11-22T18:01:29.123456Z", "2026-11-31T18:01:29.123456Z")};
    for (const std::string& text : texts) {
        std::string problem;
        EXPECT_FALSE(readPassport(text, problem)) << text;
        EXPECT_NE(problem, "") << text;
    }
}

TEST(UtcText, TellsAMomentInBothWays) {
    EXPECT_EQ(utcText(kMoment), "2026-11-22T18:01:29.123456Z");
    EXPECT_EQ(localTimeText(kMoment, 180), "2026-11-22T21:01:29.123456+03:00");
    EXPECT_EQ(localTimeText(kMoment, -570), "2026-11-22T08:31:29.123456-09:30");
    EXPECT_EQ(utcText(-1), "1969-12-31T23:59:59.999999Z");
    for (const std::string& text : {utcText(kMoment), localTimeText(kMoment, 180), localTimeText(kMoment, -570)}) {
        EXPECT_EQ(parseUtcText(text), kMoment) << text;
    }
    for (const char* text : {"", "2026-11-22T18:01:29Z", "2026-13-22T18:01:29.123456Z", "2026-11-22T24:01:29.123456Z",
                             "2026-11-22 18:01:29.123456Z", "2026-11-22T18:01:29.123456+0300"}) {
        EXPECT_FALSE(parseUtcText(text)) << text;
    }
}

}  // namespace
}  // namespace tarno2

#include <gtest/gtest.h>

#include "records/passport.h"

namespace tarno2 {
namespace {

Passport consistent() {
    Passport passport;
    passport.state = Passport::State::Complete;
    passport.rate = {10000.0, 10000.0, 2, 5000.0, false, {}, {}};
    passport.sample = {2, true, 14, 2, 0xFFFC, -8192, 8191, 0, 0, 0, false};
    passport.channels = {{0, "", "V", 1, 5.0, -5.0, 1.0, 0.0}, {3, "", "V", 1, 5.0, -5.0, 1.0, 0.0}};
    passport.synchronisation = {"records", 10, 30, false, {{"trigger", 0, -1, "rises", 0.5}}};
    passport.pieces = {{"run.dat", 80, 320, 2, {}}, {"run_1.dat", 40, 160, 1, std::string(64, 'a')}};
    passport.triggers = {1000, 2000, 3000};
    passport.end = {0, 1'000'000, "user", {}, {}, {{0, 5, 0}, {5000, 1'000'000'005, 1'000'000}}, {}};
    return passport;
}

TEST(PassportContradictions, EachFigureThatLies) {
    struct Case {
        const char* from;
        const char* to;
        const char* problem;
    };
    const std::string text = passportText(consistent());
    std::string problem;
    EXPECT_EQ(passportContradictions(text, *readPassport(text, problem)), std::vector<std::string>());
    for (const Case& c :
         std::vector<Case>{{"\"frames\": 120", "\"frames\": 121", "frames is 121, not 120"},
                           {"\"frames\": 80", "\"frames\": 81", "run.dat: 81 frames do not have 320 bytes"},
                           {"\"bytes\": 160", "\"bytes\": 162", "run_1.dat: 40 frames do not have 162 bytes"},
                           {"\"records\": 2", "\"records\": 1", "run.dat: 80 frames are not 1 records"},
                           {"\"frame\": 40", "\"frame\": 41", "records.1.frame is 41, not 40"},
                           {"\"piece\": 1", "\"piece\": 0", "records.2.piece is 0, not 1"},
                           {"\"utc\": \"1970-01-01T00:00:00.400000Z\"", "\"utc\": \"1970-01-01T00:00:09.400000Z\"",
                            "records.1.utc is "},
                           {"\"trigger\": 2000", "\"trigger\": 900", "records: their triggers go back"},
                           {"\"lower\": -5", "\"lower\": 5", "channels.0: its range has no width"},
                           {"\"factor\": 1.0", "\"factor\": 0", "channels.0: its factor is 0"},
                           {"\"codeBits\": 14", "\"codeBits\": 15", "sample: there is no such code"},
                           {"\"recorded\": 5000", "\"recorded\": 9000", "rate: the recorded one"},
                           {"\"measuredFrequency\": 5", "\"measuredFrequency\": 6", "clock.measuredFrequency is "},
                           {"\"monotonic\": 5,", "\"monotonic\": 9000000000,", "clock: its pairs go back"},
                           {"aaaaaaaa\"", "\"", "pieces: a checksum is none"}}) {
        std::string lie = text;
        const size_t at = lie.find(c.from);
        ASSERT_NE(at, std::string::npos) << c.from << text;
        lie.replace(at, std::string(c.from).size(), c.to);
        const auto read = readPassport(lie, problem);
        ASSERT_TRUE(read) << problem;
        std::string told;
        for (const std::string& each : passportContradictions(lie, *read)) {
            told += each + '\n';
        }
        EXPECT_NE(told.find(c.problem), std::string::npos) << c.from << ": " << told;
    }
}

}  // namespace
}  // namespace tarno2

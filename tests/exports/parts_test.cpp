// What exporters are made of: the list of an archive, records of EDF, numbers in narrow fields, chosen frames.

#include <gtest/gtest.h>

#include "exports/channel_scale.h"
#include "exports/edf_header.h"
#include "exports/edf_layout.h"
#include "exports/export_facts.h"
#include "exports/frame_wish.h"
#include "exports/zip_writer.h"
#include "records/frame_reader.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

uint64_t numberAt(const std::string& bytes, size_t at, size_t size) {
    uint64_t value = 0;
    for (size_t i = 0; i < size; ++i) {
        value |= uint64_t{static_cast<uint8_t>(bytes.at(at + i))} << (8 * i);
    }
    return value;
}

TEST(ZipDirectory, TakesTheWideFormWhereAndOnlyWhereItIsNeeded) {
    constexpr size_t kEndBytes = 22;
    constexpr size_t kWideBytes = 56 + 20;
    constexpr uint64_t kBorder = 0xFFFFFFFF;
    const auto list = [](uint64_t offset, uint64_t begin, size_t count) {
        ZipEntry entry;
        entry.name = "a";
        entry.offset = offset;
        return zipDirectory(std::vector<ZipEntry>(count, entry), begin);
    };
    constexpr size_t kEntry = 46 + 1;
    EXPECT_EQ(list(kBorder - 1, kBorder - 1, 1).size(), kEntry + kEndBytes);
    const std::string far = list(kBorder, kBorder + 5, 1);
    ASSERT_EQ(far.size(), kEntry + 12 + kWideBytes + kEndBytes);
    EXPECT_EQ(numberAt(far, 42, 4), kBorder);          // the offset stands elsewhere:
    EXPECT_EQ(numberAt(far, kEntry, 4), 0x00080001U);  // in the field for 64 bits
    EXPECT_EQ(numberAt(far, kEntry + 4, 8), kBorder);
    const size_t wide = kEntry + 12;
    EXPECT_EQ(numberAt(far, wide + 32, 8), 1U);           // files
    EXPECT_EQ(numberAt(far, wide + 40, 8), wide);         // bytes of the list
    EXPECT_EQ(numberAt(far, wide + 48, 8), kBorder + 5);  // where it begins
    EXPECT_EQ(numberAt(far, wide + 56 + 8, 8), kBorder + 5 + wide);
    EXPECT_EQ(numberAt(far, far.size() - 6, 4), kBorder);

    EXPECT_EQ(list(0, 0, 65534).size(), 65534 * kEntry + kEndBytes);
    const std::string many = list(0, 0, 65535);
    EXPECT_EQ(many.size(), 65535 * kEntry + kWideBytes + kEndBytes);
    EXPECT_EQ(numberAt(many, many.size() - 12, 2), 65535U);
}

TEST(NumberText, TellsAsMuchAsThereIsRoomFor) {
    EXPECT_EQ(numberText(-5.0, 8), "-5");
    EXPECT_EQ(numberText(1.0 / 3.0, 8), "0.333333");
    EXPECT_EQ(numberText(-0.0, 8), "0");
    EXPECT_EQ(numberText(12345678.4, 8), "12345678");
    EXPECT_EQ(numberText(1.25e-12, 8), "1.25e-12");
    EXPECT_EQ(numberText(-0.00012345, 8), "-1.23e-4");
    EXPECT_EQ(numberText(1.2345e-5, 8), "1.234e-5");
    EXPECT_EQ(numberText(-123456789.0, 8), "-1.235e8");
}

TEST(EdfRecords, FollowTheRate) {
    struct Case {
        double rate;
        uint64_t frameBytes;
        uint64_t frames;
        uint64_t recordFrames;
        const char* duration;
        bool exact;
    };
    const Case cases[] = {{1000.0, 2, 10'000, 1000, "1", true},
                          {44100.0, 4, 10'000, 8820, "0.2", true},
                          {1e6, 320, 1'000'000, 100, "0.0001", true},
                          {1e6, 320, 100'000'000'000, 10000, "0.01", true},  // no more records than can be counted
                          {0.5, 2, 100, 1, "2", true},
                          {2.0 / 3.0, 2, 100, 30720, "46080", true},
                          {20000.0 / 3.0, 6, 100'000, 10240, "1.536", true}};
    for (const Case& c : cases) {
        const EdfRecords records = edfRecords(c.rate, c.frameBytes, c.frames);
        EXPECT_EQ(records.frames, c.recordFrames) << c.rate;
        EXPECT_EQ(records.duration, c.duration) << c.rate;
        EXPECT_EQ(records.exactRate, c.exact) << c.rate;
    }
    const EdfRecords odd = edfRecords(12345.6789, 2, 1'000'000);
    EXPECT_NEAR(static_cast<double>(odd.frames) / std::stod(odd.duration), 12345.6789, 12345.6789e-7);
}

TEST(EdfText, HasPlainLettersAlone) {
    EXPECT_EQ(edfText("°C µV m² Ω"), "degC uV m2 Ohm");
    EXPECT_EQ(edfText("Ход\x01"), "????");
    EdfHeader header;
    header.start = -1'500'000;  // before 1970
    EXPECT_EQ(edfHeader(header).substr(168, 16), "31.12.6923.59.58");
}

/// Two pieces of two records each, which have been renamed since.
TEST(ExportFacts, FollowTheRecordsOfRenamedPieces) {
    const TemporaryFolder folder;
    Passport passport;
    passport.state = Passport::State::Complete;
    passport.start = 1'600'000'000'000'000;
    passport.rate = {10.0, 10.0, 1, 10.0, false, {}, {}};
    passport.synchronisation.mode = "records";
    passport.synchronisation.prehistory = 2;
    passport.synchronisation.history = 8;
    passport.pieces = {{"old.dat", 20, 40, 2, {}}, {"old_1.dat", 20, 40, 2, {}}};
    passport.triggers = {1, 52, 102, 202};
    folder.write("new.json", passportText(passport));
    const auto seconds = [&](const std::string& file, uint64_t frame) {
        const auto moment = findExportFacts(folder.file(file), {}).momentOf(frame, 0.0);
        return moment ? static_cast<double>(*moment - passport.start) / 1e6 : -1.0;
    };
    EXPECT_EQ(findExportFacts(folder.file("new.dat"), {}).triggers, (std::vector<uint64_t>{1, 12}));
    EXPECT_EQ(findExportFacts(folder.file("new_1.dat"), {}).triggers, (std::vector<uint64_t>{2, 12}));
    EXPECT_EQ(seconds("new.dat", 0), 0.0);
    EXPECT_EQ(seconds("new.dat", 13), 5.3);
    EXPECT_EQ(seconds("new_1.dat", 0), 10.0);
    EXPECT_EQ(seconds("new_1.dat", 10), 20.0);
    EXPECT_EQ(seconds("new_2.dat", 0), -1.0);
}

TEST(FrameWish, IsTypedAsFramesSecondsNumbersAndNames) {
    ConversionInputs inputs;
    inputs.channelCount = 3;
    inputs.frequency = 1000.0;
    inputs.labels.channels = {{4, {"in, out", {}}}, {1, {"5", {}}}, {5, {}}};
    struct Case {
        FrameWish wish;
        WishProblem problem;
        uint64_t from;
        uint64_t to;
        std::vector<uint32_t> columns;
    };
    constexpr uint64_t kEnd = std::numeric_limits<uint64_t>::max();
    const Case cases[] = {
        {{"", "", 1, ""}, WishProblem::None, 0, kEnd, {}},
        {{"1.5s", "1600", 3, "4"}, WishProblem::None, 1500, 1600, {0}},
        {{"0,0015 с", "1e3s", 1, ""}, WishProblem::To, 0, 0, {}},
        {{"0,0015 с", "", 1, "in, out"}, WishProblem::None, 2, kEnd, {0}},
        {{"", "", 1, "Channel 5,1,5"}, WishProblem::None, 0, kEnd, {2, 1, 1}},  // a name counts before a number
        {{"", "", 1, "4-5"}, WishProblem::None, 0, kEnd, {0, 2}},
        {{"", "", 1, "1,,4"}, WishProblem::Channels, 0, 0, {}},
        {{"", "", 1, "5-4"}, WishProblem::Channels, 0, 0, {}},
        {{"", "", 1, "4-4000000000"}, WishProblem::Channels, 0, 0, {}},
        {{"", "", 0, ""}, WishProblem::Every, 0, 0, {}},
        {{"-1", "", 1, ""}, WishProblem::From, 0, 0, {}},
        {{"-1s", "", 1, ""}, WishProblem::From, 0, 0, {}},
        {{"nans", "", 1, ""}, WishProblem::From, 0, 0, {}},
        {{"99999999999999999999", "", 1, ""}, WishProblem::From, 0, 0, {}},
        {{"7", "7", 1, ""}, WishProblem::Span, 0, 0, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.wish.from + " to " + c.wish.to + ": " + c.wish.channels);
        FrameChoice choice;
        std::string subject;
        EXPECT_EQ(chooseFrames(c.wish, inputs, choice, subject), c.problem);
        EXPECT_EQ(describe(c.problem, subject).empty(), c.problem == WishProblem::None);
        if (c.problem == WishProblem::None) {
            EXPECT_EQ(choice.from, c.from);
            EXPECT_EQ(choice.to, c.to);
            EXPECT_EQ(choice.columns, c.columns);
        }
    }
    inputs.frequency = 0.0;
    FrameChoice choice;
    std::string subject;
    EXPECT_EQ(chooseFrames({"1s", "", 1, ""}, inputs, choice, subject), WishProblem::From);
}

TEST(FrameReader, TakesWhatWasChosenAndKeepsTheLines) {
    constexpr uint64_t kRampFrames = 50'000;
    std::string bytes;
    for (uint64_t i = 0; i < kRampFrames * 3; ++i) {
        bytes += static_cast<char>(i);
        bytes += static_cast<char>(i >> 8U);
    }
    const TemporaryFolder folder;
    File data;
    ASSERT_TRUE(
        data.open(folder.write("run.dat", bytes), FileMode::OpenExisting, FileAccess::Read, FileShare::ReadWrite).ok());
    ConversionInputs inputs;
    inputs.bytesPerSample = 2;
    inputs.channelCount = 3;
    inputs.digitalMask = 3;
    inputs.digitalLines = 2;
    for (const uint64_t every : {1U, 7U, 20'000U}) {
        FrameChoice choice;
        choice.from = 11;
        choice.to = kRampFrames - 2;
        choice.every = every;
        choice.columns = {2, 0};
        FrameReader reader(data, inputs, choice, kRampFrames);
        std::vector<uint8_t> frames(reader.total() * reader.frameBytes());
        size_t done = 0;
        size_t more = 0;
        ASSERT_TRUE(reader.read(frames.data(), 1, done).ok());
        ASSERT_TRUE(reader.read(&frames[reader.frameBytes()], reader.total() - 1, more).ok());
        ASSERT_EQ(done + more, reader.total());
        ASSERT_EQ(reader.total(), (kRampFrames - 13 - 1) / every + 1);
        for (uint64_t i = 0; i < reader.total(); ++i) {
            const uint64_t first = (11 + i * every) * 3;
            const auto port = static_cast<uint32_t>(first & 3U);
            const auto expected = static_cast<uint16_t>(((first + 2) & 0xFFFCU) | port);
            ASSERT_EQ(frames[i * 4] | frames[i * 4 + 1] << 8, expected) << i;
            ASSERT_EQ(frames[i * 4 + 2] | frames[i * 4 + 3] << 8, static_cast<uint16_t>(first)) << i;
        }
    }
}

}  // namespace
}  // namespace tarno2::test

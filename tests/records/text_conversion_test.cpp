#include "records/text_conversion.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <thread>

#include "platform/file.h"
#include "records/export_names.h"
#include "tests/records/printf_export.h"
#include "tests/support/temporary_folder.h"

namespace tarno2 {
namespace {

using test::printfExport;
using test::readFile;
using test::TemporaryFolder;
using testing::HasSubstr;

/// One channel of 16-bit codes, ±5 V, two frames a second.
ConversionInputs simpleInputs() {
    ConversionInputs inputs;
    inputs.bytesPerSample = 2;
    inputs.channelCount = 1;
    inputs.codeBits = 16;
    inputs.codeMinimum = -32768;
    inputs.codeMaximum = 32767;
    inputs.ranges = {{5.0, -5.0}};
    inputs.frequency = 2.0;
    return inputs;
}

std::string randomBytes(size_t count, std::mt19937_64& random) {
    std::string bytes(count, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

struct Conversion {
    TemporaryFolder folder;
    ConversionProgress progress;
    std::atomic<bool> stop{false};
    ConversionResult result;

    ConversionResult::Status run(const std::string& data, const ExportFormat& format, const ConversionInputs& inputs,
                                 const std::string& output = "out.csv") {
        result = convertToText(folder.write("run.dat", data), folder.file(output), format, inputs, progress, stop);
        return result.status;
    }
    [[nodiscard]] std::string text(const std::string& name = "out.csv") const { return readFile(folder.file(name)); }
};

ExportFormat randomFormat(std::mt19937_64& random) {
    ExportFormat format;
    format.firstColumn = static_cast<FirstColumn>(random() % 4);
    format.volts = random() % 2 != 0;
    format.timePrecision = static_cast<int>(random() % 10);
    format.voltagePrecision = static_cast<int>(random() % 10);
    format.decimal = random() % 2 != 0 ? ',' : '.';
    const size_t dividers[] = {1, 1, 1, 2, 7, 14, 15, 40, 99};
    format.divider = std::string(dividers[random() % std::size(dividers)], random() % 2 != 0 ? '\t' : ';');
    return format;
}

ConversionInputs randomInputs(std::mt19937_64& random) {
    ConversionInputs inputs;
    inputs.bytesPerSample = random() % 3 != 0 ? 2 : 4;
    const uint32_t bits = inputs.bytesPerSample * 8;
    inputs.channelCount = static_cast<uint32_t>(1 + random() % (random() % 8 != 0 ? 6 : 160));
    inputs.codeBits = static_cast<uint32_t>(1 + random() % bits);
    inputs.codeShift = static_cast<uint32_t>(random() % (bits - inputs.codeBits + 1));
    inputs.codeSigned = random() % 2 != 0;
    inputs.digitalMask = static_cast<uint32_t>(random());
    inputs.digitalShift = static_cast<uint32_t>(random() % bits);
    inputs.digitalLines = static_cast<uint32_t>(random() % 2 != 0 ? 0 : random() % 17);
    const int codeBits = static_cast<int>(inputs.codeBits);
    inputs.codeMinimum = inputs.codeSigned ? -std::ldexp(1.0, codeBits - 1) : 0.0;
    inputs.codeMaximum = inputs.codeMinimum + std::ldexp(1.0, codeBits) - 1.0;
    const double limits[] = {5.0, 0.5, 10.0, 0.0, 2.4414, 1e-7, 12345.678};
    for (uint32_t i = 0; i < inputs.channelCount; ++i) {
        inputs.ranges.emplace_back(limits[random() % std::size(limits)], -limits[random() % std::size(limits)]);
    }
    const double frequencies[] = {1.0, 3.0, 0.001, 48000.0, 1e6 / 3.0, 7.3e-5};
    inputs.frequency = frequencies[random() % std::size(frequencies)];
    return inputs;
}

// TARNO2_EXPORT_FRAMES=10000000 compares so many frames instead; the choice of formats and data depends on it alone.
TEST(TextConversion, GivesTheBytesThatPrintfGives) {
    const char* const asked = std::getenv("TARNO2_EXPORT_FRAMES");
    const uint64_t frames = asked != nullptr ? std::strtoull(asked, nullptr, 10) : 60000;
    std::mt19937_64 random(20261121);
    for (uint64_t done = 0; done < frames;) {
        const ExportFormat format = randomFormat(random);
        const ConversionInputs inputs = randomInputs(random);
        const uint64_t part = std::min<uint64_t>(1 + random() % (asked != nullptr ? 40000 : 2000), frames - done);
        const std::string data = randomBytes(part * inputs.frameBytes(), random);
        Conversion conversion;
        ASSERT_EQ(conversion.run(data, format, inputs), ConversionResult::Finished) << describe(conversion.result);
        // Not EXPECT_EQ: megabytes of text would be shown.
        const std::string expected = printfExport(data, format, inputs);
        const std::string text = conversion.text();
        ASSERT_TRUE(text == expected) << "after " << done << " frames: '" << text.substr(0, 300) << "' for '"
                                      << expected.substr(0, 300) << "'";
        ASSERT_EQ(conversion.progress.lines, part);
        ASSERT_EQ(conversion.progress.bytes, expected.size());
        done += part;
    }
}

TEST(TextConversion, ManyRangesWithoutTablesGiveTheSame) {
    std::mt19937_64 random(5);
    ConversionInputs inputs = simpleInputs();
    inputs.channelCount = 160;
    inputs.ranges.clear();
    for (int i = 1; i <= 160; ++i) {
        inputs.ranges.emplace_back(i, -i / 3.0);
    }
    ExportFormat format;
    format.volts = true;
    const std::string data = randomBytes(size_t{3000} * inputs.frameBytes(), random);
    Conversion conversion;
    ASSERT_EQ(conversion.run(data, format, inputs), ConversionResult::Finished);
    EXPECT_TRUE(conversion.text() == printfExport(data, format, inputs));
}

TEST(TextConversion, CutsTheTextIntoPieces) {
    const struct {
        uint64_t limit;
        size_t frames;
        std::vector<size_t> lines;
    } cases[] = {
        {50, 250, {100, 100, 50}}, {100, 200, {100, 100}}, {101, 250, {101, 101, 48}},
        {0, 250, {250}},           {100, 0, {0}},          {uint64_t{1} << 32, 250, {250}},
        {UINT64_MAX, 250, {250}},  {250, 250, {250}},      {99, 100, {100}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.limit);
        ExportFormat format;
        format.firstColumn = FirstColumn::Samples;
        format.maximumLines = c.limit;
        Conversion conversion;
        const std::string data(c.frames * 2, '\0');
        ASSERT_EQ(conversion.run(data, format, simpleInputs()), ConversionResult::Finished);
        std::string joined;
        for (size_t piece = 0; piece < c.lines.size(); ++piece) {
            const std::string text = conversion.text(piece == 0 ? "out.csv" : "out_" + std::to_string(piece) + ".csv");
            EXPECT_EQ(static_cast<size_t>(std::count(text.begin(), text.end(), '\n')), c.lines[piece]);
            joined += text;
        }
        EXPECT_EQ(joined, printfExport(data, format, simpleInputs()));  // the number of the line runs on
        EXPECT_FALSE(fileExists(conversion.folder.file("out_" + std::to_string(c.lines.size()) + ".csv")));
        EXPECT_EQ(conversion.progress.files, c.lines.size());
        EXPECT_EQ(conversion.progress.totalFiles, c.lines.size());
    }
}

TEST(TextConversion, TellsUnitsAndHeadings) {
    // Codes -32768, 0 and 32767 of three channels: 16 bits have tables, whose ranges are the same but not the scales.
    const std::string data("\x00\x80\x00\x00\xFF\x7F", 6);
    ConversionInputs inputs = simpleInputs();
    inputs.channelCount = 3;
    inputs.ranges.assign(3, {5.0, -5.0});
    inputs.digitalLines = 1;
    inputs.labels.channels = {{4, {"a \"b\", c", "bar", -2.0, 0.25}}, {0, {"", "", 1.0, 0.0}}, {7, {"d", "", 1e-3, 1}}};
    inputs.labels.lines = {"gate"};
    ExportFormat format;
    format.volts = format.headings = true;
    format.divider = ",";
    format.voltagePrecision = 3;
    format.maximumLines = 100;
    const struct {
        bool volts;
        bool units;
        const char* text;
    } cases[] = {{true, true, ",\"a \"\"b\"\", c [bar]\",Channel 0 [V],d [V],gate\r\n,10.250,0.000,1.005,0\r\n"},
                 {true, false, ",\"a \"\"b\"\", c [V]\",Channel 0 [V],d [V],gate\r\n,-5.000,0.000,5.000,0\r\n"},
                 {false, false, ",\"a \"\"b\"\", c\",Channel 0,d,gate\r\n,-32768.000,0.000,32767.000,0\r\n"}};
    for (const auto& each : cases) {
        format.volts = each.volts;
        format.units = each.units;
        Conversion conversion;
        ASSERT_EQ(conversion.run(data, format, inputs), ConversionResult::Finished);
        EXPECT_EQ(conversion.text(), each.text);
    }
    // Every file has its headings, also one without a frame; they are no line.
    inputs.labels = {};
    format.firstColumn = FirstColumn::Seconds;
    Conversion cut;
    ASSERT_EQ(cut.run(std::string(101 * 6, '\0'), format, inputs), ConversionResult::Finished);
    const std::string headings = "Time [s],Channel 0,Channel 1,Channel 2,Line 0\r\n";
    EXPECT_EQ(cut.text("out_1.csv"), headings + "50.000000,0.000,0.000,0.000,0\r\n");
    for (const auto& [column, over] : {std::pair(FirstColumn::Samples, "Frame,"), {FirstColumn::Clock, "Time,"}}) {
        format.firstColumn = column;
        Conversion other;
        ASSERT_EQ(other.run(std::string(6, '\0'), format, inputs), ConversionResult::Finished);
        EXPECT_EQ(other.text().substr(0, other.text().find("Channel")), over);
    }
    format.firstColumn = FirstColumn::Seconds;
    EXPECT_EQ(cut.progress.lines, 101U);
    ASSERT_EQ(cut.run("", format, inputs), ConversionResult::Finished);
    EXPECT_EQ(cut.text(), headings);
    // Values beyond all numbers have short texts, those before them the longest there are.
    format.volts = format.units = true;
    inputs.labels.channels = {{0, {"", "", 1e308, 0.0}}, {1, {}}, {2, {}}};
    std::string ramp;
    for (int code = -32768; code < 32768; code += 64) {
        for (int channel = 0; channel < 3; ++channel) {
            ramp += static_cast<char>(code & 0xFF);
            ramp += static_cast<char>((code >> 8) & 0xFF);
        }
    }
    ASSERT_EQ(cut.run(ramp, format, inputs), ConversionResult::Finished);
    EXPECT_THAT(cut.text(), HasSubstr(headings.substr(0, 9) + "Channel 0 [V],Channel 1 [V],"));
    EXPECT_THAT(cut.text(), HasSubstr("\r\n0.000000,-inf,-5.000,-5.000,0\r\n"));
}

TEST(TextConversion, EndsLinesWithTheMarksOfTheirFrames) {
    for (const uint32_t width : {2U, 4U}) {  // with tables and without
        ConversionInputs inputs = simpleInputs();
        inputs.bytesPerSample = width;
        inputs.marks = {{0, "start"}, {2, "a,b; \"c\""}, {300, "late"}, {1000, "behind the end"}};
        ExportFormat format;
        format.marks = format.headings = true;
        format.divider = ",";
        format.voltagePrecision = 0;
        format.maximumLines = 200;
        Conversion conversion;
        ASSERT_EQ(conversion.run(std::string(301 * size_t{width} * inputs.channelCount, '\0'), format, inputs),
                  ConversionResult::Finished);
        const std::string begin = ",Channel 0,Mark\r\n,0,start\r\n,0,\r\n,0,\"a,b; \"\"c\"\"\"\r\n,0,\r\n";
        EXPECT_EQ(conversion.text().substr(0, begin.size()), begin) << width;
        EXPECT_TRUE(conversion.text("out_1.csv").ends_with(",0,\r\n,0,late\r\n")) << width;
        format.marks = format.headings = false;
        ASSERT_EQ(conversion.run(std::string(size_t{width} * inputs.channelCount, '\0'), format, inputs),
                  ConversionResult::Finished);
        EXPECT_EQ(conversion.text(), ",0\r\n");
    }
}

TEST(TextConversion, NamesItsFiles) {
    EXPECT_EQ(defaultOutputName("/a/run.1.dat"), "/a/run.1.csv");
    EXPECT_EQ(defaultOutputName("run"), "run.csv");
    EXPECT_EQ(outputPieceName("a.b.txt", 0), "a.b.txt");
    EXPECT_EQ(outputPieceName("a.b.txt", 12), "a.b_12.txt");
    EXPECT_EQ(outputPieceName("name", 0), "name.");
    EXPECT_EQ(outputPieceName("name", 1), "name_1.");
    EXPECT_TRUE(isOutputName(std::string(259, 'x')));
    EXPECT_FALSE(isOutputName(std::string(260, 'x')));
    EXPECT_FALSE(isOutputName(""));
}

TEST(TextConversion, NeverReplacesTheRecording) {
    const std::string data(20, '\0');
    for (const char* output : {"run.dat", "run.txt"}) {
        Conversion conversion;
        conversion.folder.write("run.txt", "description");
        EXPECT_EQ(conversion.run(data, {}, simpleInputs(), output), ConversionResult::OutputIsInput);
        EXPECT_THAT(describe(conversion.result), HasSubstr(output));
        EXPECT_EQ(conversion.text("run.dat"), data);
        EXPECT_EQ(conversion.text("run.txt"), "description");
    }
    // A later piece may bear the name as well.
    Conversion conversion;
    const std::string name = conversion.folder.write("run_1.dat", std::string(400, '\0'));
    ExportFormat format;
    format.maximumLines = 100;
    EXPECT_EQ(convertToText(name, conversion.folder.file("run.dat"), format, simpleInputs(), conversion.progress,
                            conversion.stop)
                  .status,
              ConversionResult::OutputIsInput);
    EXPECT_EQ(conversion.text("run_1.dat"), std::string(400, '\0'));
    EXPECT_NE(conversion.text("run.dat"), "");
}

TEST(TextConversion, SaysWhichFileOrKeyIsWrong) {
    const std::string data(20, '\0');
    Conversion conversion;
    conversion.folder.write("file", "");
    EXPECT_EQ(conversion.run(data, {}, simpleInputs(), "file/out.csv"), ConversionResult::CannotCreate);
    EXPECT_THAT(describe(conversion.result), HasSubstr(conversion.folder.file("file/out.csv")));
    EXPECT_EQ(conversion.run(data, {}, simpleInputs(), std::string(400, 'x')), ConversionResult::BadName);
    EXPECT_EQ(convertToText(conversion.folder.file("none.dat"), conversion.folder.file("o.csv"), {}, simpleInputs(),
                            conversion.progress, conversion.stop)
                  .status,
              ConversionResult::CannotRead);
    EXPECT_FALSE(fileExists(conversion.folder.file("o.csv")));

    const struct {
        const char* key;
        void (*spoil)(ConversionInputs&);
    } cases[] = {
        {"DataFormat", [](ConversionInputs& i) { i.bytesPerSample = 3; }},
        {"DataFormat", [](ConversionInputs& i) { i.codeBits = 0; }},
        {"DataFormat", [](ConversionInputs& i) { i.codeShift = 1; }},
        {"DataFormat", [](ConversionInputs& i) { i.codeMaximum = i.codeMinimum; }},
        {"ChannelNumber", [](ConversionInputs& i) { i.channelCount = 0; }},
        {"ChannelNumber", [](ConversionInputs& i) { i.channelCount = 4000000000U; }},
        {"ChannelsRange", [](ConversionInputs& i) { i.ranges.clear(); }},
        {"Frequency", [](ConversionInputs& i) { i.frequency = 0.0; }},
    };
    ExportFormat format;
    format.volts = true;
    format.firstColumn = FirstColumn::Seconds;
    for (const auto& c : cases) {
        ConversionInputs inputs = simpleInputs();
        c.spoil(inputs);
        EXPECT_EQ(conversion.run(data, format, inputs), ConversionResult::BadInput);
        EXPECT_EQ(conversion.result.subject, c.key);
    }
    EXPECT_FALSE(fileExists(conversion.folder.file("out.csv")));
}

TEST(TextConversion, StopsAfterAWholeLine) {
    ExportFormat format;
    format.firstColumn = FirstColumn::Samples;
    Conversion first;
    first.stop = true;
    EXPECT_EQ(first.run(std::string(600, '\0'), format, simpleInputs()), ConversionResult::Stopped);
    EXPECT_EQ(first.text(), "0\t0.000000\r\n");

    Conversion conversion;
    const std::string data(size_t{48} << 20, '\0');
    std::thread stopper([&conversion] {
        while (conversion.progress.lines == 0) {
            std::this_thread::yield();
        }
        conversion.stop = true;
    });
    const auto status = conversion.run(data, format, simpleInputs());
    stopper.join();
    ASSERT_EQ(status, ConversionResult::Stopped);
    const uint64_t lines = conversion.progress.lines;
    ASSERT_LT(lines * 2, data.size());
    EXPECT_TRUE(conversion.text() == printfExport(data.substr(0, lines * 2), format, simpleInputs()));
}

TEST(ConversionInputs, ComeFromTheDescriptionUnlessTheyAreKnown) {
    RecordedKeys described;
    described.readable = true;
    described.layout = SampleLayout{2, 2, 65532, 14, 0, 3, 2, 1};
    described.frequencyPerChannel = 1000.0;
    described.channelCount = 2;
    described.ranges = {{5.0, -5.0}, {0.5, -0.5}};
    described.packetMode = true;
    ConversionInputs inputs = conversionInputs(described, {});
    EXPECT_EQ(inputs.code(0x8003), -8192);
    EXPECT_EQ(inputs.code(0x7FFF), 8191);
    EXPECT_EQ(inputs.volts(1, -8192), -0.5);
    EXPECT_EQ(inputs.volts(0, 8191), 5.0);
    EXPECT_EQ(inputs.digitalLines, 2U);
    RecordedKeys withoutLines = described;
    withoutLines.layout->digitalBits = -1;
    EXPECT_EQ(conversionInputs(withoutLines, {}).digitalLines, 0U);
    EXPECT_EQ(inputs.frequency, 1000.0);
    ExportFormat format;
    EXPECT_FALSE(lacksPacketFrequency(described, {}, format));
    format.firstColumn = FirstColumn::Clock;
    EXPECT_TRUE(lacksPacketFrequency(described, {}, format));

    KnownInputs known;
    known.packetFrequency = 50.0;
    known.codeSigned = false;
    known.codeMaximum = 16000.0;
    known.ranges = {{1.0, 0.0}};
    inputs = conversionInputs(described, known);
    EXPECT_EQ(inputs.frequency, 50.0);
    EXPECT_EQ(inputs.code(0x8003), 8192);
    EXPECT_EQ(inputs.volts(1, 16000), 1.0);
    EXPECT_FALSE(lacksPacketFrequency(described, known, format));

    // Nothing but the width is known of a word: all of it is the code.
    KnownInputs bare;
    bare.bytesPerSample = 4;
    bare.channelCount = 3;
    inputs = conversionInputs(RecordedKeys(), bare);
    EXPECT_EQ(missingInput(inputs, {}), "");
    EXPECT_EQ(inputs.code(0x80000000U), -2147483648LL);
    EXPECT_EQ(missingInput(inputs, format), "Frequency");
    EXPECT_EQ(missingInput(conversionInputs(described, bare), {}), "");
}

}  // namespace
}  // namespace tarno2

// Exports that are stopped, find no room, or must not be begun.

#include "exports/export_recording.h"

#include <gmock/gmock.h>

#include "records/record_description.h"
#include "tests/apps/small_disk.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {
namespace {

constexpr uint64_t kNoiseFrames = 400'000;

/// A recording of two channels that no archive makes smaller.
class ExportRecording : public testing::Test {
protected:
    ExportRecording() {
        RecordDescription description;
        SampleLayout layout;
        layout.bytesPerSample = 2;
        layout.analogShift = 0;
        layout.analogMask = 0xFFFF;
        layout.analogBits = 16;
        layout.analogSigned = 1;
        layout.digitalBits = 0;
        EXPECT_TRUE(description.setFrequency(20000.0) && description.setDataFormat(layout) &&
                    description.setDataCountPerChannel(kNoiseFrames) && description.addChannelRange(5.0, -5.0) &&
                    description.addChannelRange(5.0, -5.0));
        std::string bytes(kNoiseFrames * 4, '\0');
        uint32_t state = 1;
        for (char& byte : bytes) {
            state = state * 1664525U + 1013904223U;
            byte = static_cast<char>(state >> 24U);
        }
        data_ = folder_.write("run.dat", bytes);
        EXPECT_TRUE(description.writeForDataFile(data_));
    }

    ExportTask task(const char* form, const std::string& output) {
        ExportTask task;
        task.row = findExporter(form);
        task.dataFile = data_;
        task.outputName = output;
        task.format.volts = task.row->usuallyVolts;
        EXPECT_EQ(lookAround(task, readRecordedKeys(folder_.file("run.txt")), {}).wishProblem, WishProblem::None);
        return task;
    }

    ConversionResult run(const ExportTask& task) {
        ExportNotes notes;
        ConversionProgress progress;
        return exportRecording(task, progress, stop_, notes);
    }

    /// Frames by the header of an output, which is all that it should be for so many; nothing when it is not.
    static std::optional<uint64_t> framesOf(const std::string& form, const std::string& bytes) {
        const auto number = [&](size_t at, size_t size) {
            uint64_t value = 0;
            for (size_t i = 0; i < size; ++i) {
                value |= uint64_t{static_cast<uint8_t>(bytes.at(at + i))} << (8 * i);
            }
            return value;
        };
        const auto fits = [&](bool right, uint64_t frames) { return right ? std::optional(frames) : std::nullopt; };
        if (form == "wav") {
            const size_t samples = bytes.find("data") + 8;
            const uint64_t size = number(samples - 4, 4);
            return fits(number(4, 4) + 8 == bytes.size() && samples + size == bytes.size(), size / 4);
        }
        if (form == "npy") {
            const uint64_t frames = std::stoull(bytes.substr(bytes.find("'shape': (") + 10));
            return fits((10 + number(8, 2)) % 64 == 0 && 10 + number(8, 2) + frames * 4 == bytes.size(), frames);
        }
        if (form == "sr") {
            const size_t end = bytes.size() - 22;
            return fits(number(end, 4) == 0x06054B50 && number(end + 8, 2) % 2 == 0 &&
                            number(end + 12, 4) + number(end + 16, 4) == end,
                        (number(end + 8, 2) - 2) / 2);
        }
        const uint64_t records = std::stoull(bytes.substr(236));
        const uint64_t header = std::stoull(bytes.substr(184));
        return fits(records == 0 ? bytes.size() == header : (bytes.size() - header) % records == 0, records);
    }

    const TemporaryFolder folder_;
    std::string data_;
    std::atomic<bool> stop_{false};
};

TEST_F(ExportRecording, StoppedAtOnceLeavesFilesThatOpen) {
    stop_ = true;
    for (const char* const form : {"wav", "npy", "sr", "edf", "bdf"}) {
        const std::string output = folder_.file(std::string("out.") + form);
        EXPECT_EQ(run(task(form, output)).status, ConversionResult::Stopped) << form;
        EXPECT_EQ(framesOf(form, readFile(output)), 0U) << form;
    }
}

TEST_F(ExportRecording, WithoutRoomLeavesFilesThatOpen) {
    const SmallDisk disk(folder_.file("disk"), 1'100'000);
    if (!disk.mounted()) {
        GTEST_SKIP() << "no small disk can be made here";
    }
    for (const char* const form : {"wav", "npy", "sr", "edf", "bdf"}) {
        const std::string output = folder_.file(std::string("disk/out.") + form);
        const ConversionResult result = run(task(form, output));
        EXPECT_EQ(result.status, ConversionResult::CannotWrite) << form;
        EXPECT_THAT(describe(result), testing::HasSubstr(output + ": cannot be written: "));
        const auto frames = framesOf(form, readFile(output));
        EXPECT_TRUE(frames && (*frames > 0 || std::string(form) == "sr")) << form;
        EXPECT_TRUE(removeFile(output).ok());
    }
}

TEST_F(ExportRecording, MakesARecordingOfItsOwn) {
    const std::string output = folder_.file("part.dat");
    ExportTask part = task("dat", output);
    part.wish.from = "10";
    part.wish.to = "30";
    part.wish.channels = "1";
    EXPECT_EQ(lookAround(part, readRecordedKeys(folder_.file("run.txt")), {}).wishProblem, WishProblem::None);
    EXPECT_EQ(run(part).status, ConversionResult::Finished);
    const std::string all = readFile(data_);
    std::string second;
    for (size_t frame = 10; frame < 30; ++frame) {
        second += all.substr(frame * 4 + 2, 2);
    }
    EXPECT_EQ(readFile(output), second);
    RecordedFormat format;
    std::string missing;
    ASSERT_TRUE(readRecordedFormat(folder_.file("part.txt"), format, missing)) << missing;
    EXPECT_EQ(format.frames, 20U);
    EXPECT_EQ(format.channelCount, 1U);
    EXPECT_EQ(format.frequencyPerChannel, 10000.0);
}

TEST_F(ExportRecording, ARecordingReplacesNoOther) {
    const std::string own = readFile(folder_.file("run.txt"));
    const auto status = [&](const char* name, bool replace) {
        ExportTask part = task("dat", name == std::string("-") ? name : folder_.file(name));
        part.replace = replace;
        return run(part).status;
    };
    createDirectory(folder_.file("a.b"));
    for (const char* const bad : {"-", "run.raw", "a.b/nodot", ".dat"}) {
        EXPECT_EQ(status(bad, true), ConversionResult::NoRecordingName) << bad;
    }
    folder_.write("run.raw", readFile(data_));
    data_ = folder_.file("run.raw");
    EXPECT_EQ(status("run.dat", true), ConversionResult::OutputIsInput);
    EXPECT_EQ(status("run_3.dat", true), ConversionResult::OutputIsInput);
    EXPECT_EQ(readFile(folder_.file("run.txt")), own);

    folder_.write("other.txt", own + ";more");
    EXPECT_EQ(status("other.dat", false), ConversionResult::OutputExists);
    EXPECT_EQ(readFile(folder_.file("other.txt")), own + ";more");
    EXPECT_FALSE(fileExists(folder_.file("other.dat")));
    EXPECT_EQ(status("other.dat", true), ConversionResult::Finished);
    EXPECT_EQ(status("other_1.dat", false), ConversionResult::NameTaken);
    folder_.write("notes.txt", "mine");
    EXPECT_EQ(status("notes.dat", true), ConversionResult::NameTaken);
    EXPECT_EQ(readFile(folder_.file("notes.txt")), "mine");
    for (const char* const beside : {"other.json", "other.sha256", "other.marks.csv", "other_1.dat"}) {
        const std::string file = folder_.write(beside, "kept");
        EXPECT_EQ(status("other.dat", true), ConversionResult::NameTaken) << beside;
        EXPECT_TRUE(removeFile(file).ok());
    }
    EXPECT_EQ(readFile(folder_.file("other.dat")), readFile(data_));

    // Found before the first frame: of an output that can't be described nothing stays.
    createDirectory(folder_.file("gone"));
    ExportTask part = task("dat", folder_.file("gone/part.dat"));
    createDirectory(folder_.file("gone/part.txt"));
    part.replace = true;
    EXPECT_LT(run(part).status, ConversionResult::Finished);
    EXPECT_FALSE(fileExists(part.outputName));
}

TEST_F(ExportRecording, APartOfARecordingKeepsItsKeys) {
    const auto described = [&](const std::string& from, const std::string& to) {
        std::string text = readFile(folder_.file("run.txt"));
        const size_t at = text.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        folder_.write("run.txt", text.replace(at, from.size(), to));
    };
    described("PacketMode = -1", "PacketMode = 1");
    described("PacketFreq = 0", "PacketFreq = 50");
    described("SynchronousChannels = -1", "SynchronousChannels = 1");
    ExportTask part = task("dat", folder_.file("part.dat"));
    part.choice.every = 2;
    EXPECT_EQ(run(part).status, ConversionResult::Finished);
    const RecordedKeys keys = readRecordedKeys(folder_.file("part.txt"));
    EXPECT_TRUE(keys.packetMode);
    EXPECT_EQ(keys.packetFrequency, 25);
    EXPECT_EQ(keys.synchronousChannels, 1);
    EXPECT_EQ(keys.frequencyPerChannel, 5000.0);
    described("SynchroEnable = 0", "SynchroEnable = 1");
    EXPECT_EQ(run(task("dat", folder_.file("torn.dat"))).status, ConversionResult::RecordsTorn);
    EXPECT_FALSE(fileExists(folder_.file("torn.dat")));
}

TEST_F(ExportRecording, ReplacesNothingThatItShouldNot) {
    const std::string other = folder_.write("other.wav", "mine");
    EXPECT_EQ(run(task("wav", other)).status, ConversionResult::OutputExists);
    EXPECT_EQ(readFile(other), "mine");
    const std::string before = readFile(data_);
    folder_.write("run_3.dat", "a piece");
    for (const char* const own : {"run.dat", "run.txt", "run_3.dat", "run_12.dat", "run_12.txt", "run.json",
                                  "run.marks.csv", "run.sha256", "run.tarno2-journal"}) {
        const std::string name = folder_.file(own);
        const std::string kept = fileExists(name) ? readFile(name) : readFile(folder_.write(own, "kept"));
        for (const char* const form : {"wav", "csv"}) {
            ExportTask onto = task(form, name);
            onto.replace = true;
            EXPECT_EQ(run(onto).status, ConversionResult::OutputIsInput) << form << own;
        }
        EXPECT_EQ(readFile(name), kept);
    }
    EXPECT_EQ(readFile(data_), before);
    EXPECT_EQ(run(task("csv", folder_.file("run_12.csv"))).status, ConversionResult::Finished);
    ExportTask good = task("wav", other);
    good.replace = true;
    EXPECT_EQ(run(good).status, ConversionResult::Finished);
    EXPECT_EQ(framesOf("wav", readFile(other)), kNoiseFrames);
}

TEST_F(ExportRecording, RefusesWhatAFormatCanNotHold) {
    ExportTask wide = task("edf", folder_.file("out.edf"));
    wide.inputs.bytesPerSample = 4;
    wide.inputs.codeBits = 24;
    EXPECT_EQ(describe(run(wide)), "the codes do not fit into 16 bits");
    ExportTask narrow = task("wav", folder_.file("out.wav"));
    narrow.inputs.frequency = 0.1;
    EXPECT_EQ(run(narrow).status, ConversionResult::RateImpossible);
    narrow.inputs.frequency = 0.0;
    EXPECT_EQ(run(narrow).status, ConversionResult::BadInput);
    ExportTask late = task("npy", folder_.file("out.npy"));
    late.choice.from = kNoiseFrames;
    EXPECT_EQ(run(late).status, ConversionResult::NothingChosen);
    EXPECT_FALSE(fileExists(folder_.file("out.edf")) || fileExists(folder_.file("out.wav")) ||
                 fileExists(folder_.file("out.npy")));
}

}  // namespace
}  // namespace tarno2::test

#include "tests/apps/recording_rig.h"

#include <charconv>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <thread>

#include "config/files/recording_name.h"
#include "drivers/simulator/counter_signal.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/record_description.h"

namespace tarno2::test {

namespace {

uint64_t sizeOfFile(const std::string& name) {
    std::ifstream in(name, std::ios::binary | std::ios::ate);
    return in.is_open() ? static_cast<uint64_t>(in.tellg()) : 0;
}

template <typename Word>
uint64_t countMatching(const std::vector<char>& block, size_t bytes, uint64_t first, uint32_t bits) {
    for (size_t i = 0; i < bytes / sizeof(Word); ++i) {
        Word word;
        std::memcpy(&word, block.data() + i * sizeof word, sizeof word);
        if (word != static_cast<Word>(drivers::counterWord(first + i, bits))) {
            return i;
        }
    }
    return bytes / sizeof(Word);
}

}  // namespace

std::string RecordingRig::writeSettings(const Wish& wish) const {
    std::ostringstream text;
    text.precision(17);
    text << "DebugMode = 1\r\nDriverName = " << quoted(wish.driver) << "\r\nBaseNumber = " << std::hex << wish.board
         << std::dec << "\r\n";
    if (!wish.fileName.empty()) {
        text << "FileName = " << quoted(isAbsolutePath(wish.fileName) ? wish.fileName : file(wish.fileName)) << "\r\n";
    }
    text << "ChannelCount = " << wish.channels << "\r\nChannelsNumber = ";
    for (uint32_t channel = 0; channel < wish.channels; ++channel) {
        text << (channel == 0 ? "" : ", ") << channel;
    }
    text << "\r\nFrequency = " << wish.frequency << "\r\nCutMode = " << wish.cut << "\r\n";
    if (wish.seconds > 0.0) {
        text << "MeasureFileMode = 1\r\nTimeNeed = " << wish.seconds << "\r\n";
    } else if (wish.bytes > 0) {
        text << "MeasureFileMode = 2\r\nSizeNeedHight = " << (wish.bytes >> 32U)
             << "\r\nSizeNeedLow = " << (wish.bytes & 0xFFFFFFFFU) << "\r\n";
    }
    return folder_.write("auto.txt", text.str() + wish.more);
}

std::unique_ptr<ChildProcess> RecordingRig::start(const Wish& wish, const std::string& simulator,
                                                  const std::string& program) const {
    const ScopedEnvironment home("TARNO2_HOME", path());
    const ScopedEnvironment settings("TARNO2_SIMULATOR", simulator);
    return std::make_unique<ChildProcess>(builtFile(program), std::vector<std::string>{"/c", writeSettings(wish)},
                                          file("output.txt"));
}

std::unique_ptr<ChildProcess> RecordingRig::startAfter(const std::string& commands, const Wish& wish,
                                                       const std::string& simulator, const std::string& program) const {
    const ScopedEnvironment home("TARNO2_HOME", path());
    const ScopedEnvironment settings("TARNO2_SIMULATOR", simulator);
    const std::string line = commands + "; exec \"$0\" /c \"$1\"";
    return std::make_unique<ChildProcess>(
        "/bin/sh", std::vector<std::string>{"-c", line, builtFile(program), writeSettings(wish)}, file("output.txt"));
}

void RecordingRig::record(const Wish& wish, const std::string& simulator) const {
    EXPECT_EQ(start(wish, simulator)->waitForEnd(kGuard), 0) << readFile(file("output.txt"));
}

std::string RecordingRig::run(const std::string& program, const std::vector<std::string>& arguments,
                              int expectedStatus) const {
    const ScopedEnvironment home("TARNO2_HOME", path());
    ChildProcess process(builtFile(program), arguments, file("output.txt"));
    EXPECT_EQ(process.waitForEnd(kGuard), expectedStatus) << program;
    std::string printed = readFile(file("output.txt"));
    std::erase(printed, '\r');
    return printed;
}

std::vector<std::string> RecordingRig::pieces(const std::string& name) const {
    std::vector<std::string> files;
    while (exists(RecordingName(name).piece(static_cast<uint32_t>(files.size())))) {
        files.push_back(file(RecordingName(name).piece(static_cast<uint32_t>(files.size()))));
    }
    return files;
}

bool RecordingRig::exists(const std::string& name) const {
    return fileExists(file(name));
}

uint64_t RecordingRig::size(const std::string& name) const {
    return sizeOfFile(file(name));
}

std::string builtFile(const std::string& name, const std::string& folder) {
    return joinPath(folder, name) + (kPathSeparator == '\\' ? ".exe" : "");
}

uint64_t checkCounter(const std::vector<std::string>& files, const Expected& expected) {
    constexpr size_t kBlock = size_t{1} << 20U;
    std::vector<char> block(kBlock);
    uint64_t position = 0;
    for (const std::string& name : files) {
        std::ifstream in(name, std::ios::binary);
        EXPECT_TRUE(in.is_open()) << name;
        for (bool more = in.is_open(); more;) {
            in.read(block.data(), kBlock);
            const auto bytes = static_cast<size_t>(in.gcount());
            more = bytes == kBlock;
            const uint64_t good = expected.bytesPerSample == 4
                                      ? countMatching<uint32_t>(block, bytes, position, expected.counterBits)
                                      : countMatching<uint16_t>(block, bytes, position, expected.counterBits);
            position += good;
            if (good * expected.bytesPerSample != bytes) {
                ADD_FAILURE() << name << ": sample " << position << " of the recording is not the one of the signal";
                return position;
            }
        }
    }
    return position;
}

void checkDescriptions(const std::vector<std::string>& files, const Expected& expected) {
    for (const std::string& name : files) {
        RecordedFormat format;
        std::string missing;
        ASSERT_TRUE(readRecordedFormat(RecordDescription::fileNameFor(name), format, missing)) << name << missing;
        EXPECT_EQ(format.driverName, expected.driver) << name;
        EXPECT_EQ(format.channelCount, expected.channels) << name;
        EXPECT_NEAR(format.frequencyPerChannel, expected.frequencyPerChannel, 1e-6 * expected.frequencyPerChannel)
            << name;
        EXPECT_EQ(static_cast<uint32_t>(format.layout.bytesPerSample), expected.bytesPerSample) << name;
        EXPECT_EQ(format.ranges.size(), expected.channels) << name;
        EXPECT_EQ(format.frames * expected.channels * expected.bytesPerSample, sizeOfFile(name)) << name;
    }
}

uint64_t checkRecording(const std::vector<std::string>& files, const Expected& expected) {
    checkDescriptions(files, expected);
    return checkCounter(files, expected);
}

bool waitUntil(const std::function<bool()>& condition, std::chrono::seconds guard) {
    const auto end = std::chrono::steady_clock::now() + guard;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

uint64_t numberAfter(const std::string& log, const std::string& text) {
    const size_t found = log.find(text);
    uint64_t number = 0;
    if (found == std::string::npos ||
        std::from_chars(log.data() + found + text.size(), log.data() + log.size(), number).ec != std::errc()) {
        ADD_FAILURE() << "No number after \"" << text << "\" in " << log;
    }
    return number;
}

}  // namespace tarno2::test

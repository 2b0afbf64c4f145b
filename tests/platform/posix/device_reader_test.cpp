#include "platform/device_reader.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace tarno2 {
namespace {

using Outcome = DeviceReader::Outcome;

constexpr uint32_t kLongRead = 600'000;  // a read that waits for so long has failed the test

TEST(DeviceReader, ReadsWhatIsThereAndTellsTheEnd) {
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    DeviceReader reader(ends[0]);
    ASSERT_TRUE(reader.valid());
    std::string text(8, ' ');
    EXPECT_EQ(reader.read(text.data(), text.size(), 0).outcome, Outcome::Nothing) << "and does not block";

    ASSERT_EQ(write(ends[1], "abcdefghij", 10), 10);
    DeviceReader::Result result = reader.read(text.data(), text.size(), kLongRead);
    EXPECT_EQ(result.outcome, Outcome::Data);
    EXPECT_EQ(text.substr(0, result.done), "abcdefgh");
    close(ends[1]);
    result = reader.read(text.data(), text.size(), kLongRead);
    EXPECT_EQ(result.outcome, Outcome::Data);
    EXPECT_EQ(text.substr(0, result.done), "ij") << "what came before the end is not lost by it";
    EXPECT_EQ(reader.read(text.data(), text.size(), kLongRead).outcome, Outcome::Ended);
    close(ends[0]);
}

TEST(DeviceReader, IsCancelledFromAnotherThreadForGood) {
    int ends[2] = {};
    ASSERT_EQ(pipe(ends), 0);
    DeviceReader reader(ends[0]);
    char byte = 0;
    std::thread other([&reader] { reader.cancel(); });
    EXPECT_EQ(reader.read(&byte, 1, kLongRead).outcome, Outcome::Nothing);
    other.join();
    ASSERT_EQ(write(ends[1], "a", 1), 1);
    EXPECT_EQ(reader.read(&byte, 1, kLongRead).outcome, Outcome::Nothing);
    close(ends[0]);
    close(ends[1]);
}

TEST(DeviceReader, TellsWhyADeviceCanNotBeRead) {
    const int folder = open("/", O_RDONLY | O_DIRECTORY);
    ASSERT_GE(folder, 0);
    DeviceReader reader(folder);
    char byte = 0;
    const DeviceReader::Result result = reader.read(&byte, 1, kLongRead);
    EXPECT_EQ(result.outcome, Outcome::Failed);
    EXPECT_EQ(result.error.code(), EISDIR);
    close(folder);
}

}  // namespace
}  // namespace tarno2

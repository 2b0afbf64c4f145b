// Serial ports, which here are terminals of the system's own, and their list.

#include "platform/serial_port.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "platform/posix/serial/port_list.h"
#include "platform/socket.h"
#include "tests/support/pty.h"
#include "tests/support/temporary_folder.h"

namespace tarno2 {
namespace {

constexpr uint32_t kLongWait = 60'000;  // a wait for so long has failed the test

TEST(SerialPort, CarriesEveryByteAsItIs) {
    test::Pty line;
    SerialPort port;
    ASSERT_TRUE(port.open(line.name(), {.baud = 250'000}).ok()) << "no standard rate";
    std::string sent;
    for (int i = 0; i < 1000; ++i) {
        sent += static_cast<char>(i * 37);
    }
    std::thread writer([&] { EXPECT_TRUE(line.write(sent)); });
    std::string got;
    while (got.size() < sent.size()) {
        char part[100];
        const TimedRead read = port.read(part, sizeof part, kLongWait);
        ASSERT_EQ(read.end, ReadEnd::Data);
        got.append(part, read.bytes);
    }
    writer.join();
    EXPECT_EQ(got, sent);
    ASSERT_TRUE(port.write("start\r\n\xFF", 8).ok());
    EXPECT_EQ(line.read(8), "start\r\n\xFF");
    EXPECT_EQ(port.faults().damaged + port.faults().overruns, 0U);
}

TEST(SerialPort, TellsSilenceCancellationAndAVanishedPortApart) {
    test::Pty line;
    SerialPort port;
    ASSERT_TRUE(port.open(line.name(), {}).ok());
    char byte = 0;
    EXPECT_EQ(port.read(&byte, 1, 0).end, ReadEnd::TimedOut);
    std::thread other([&] { port.cancel(); });
    EXPECT_EQ(port.read(&byte, 1, kLongWait).end, ReadEnd::Cancelled);
    other.join();
    ASSERT_TRUE(port.open(line.name(), {}).ok());
    EXPECT_EQ(port.read(&byte, 1, 0).end, ReadEnd::TimedOut) << "opened again, it is not cancelled any more";
    line.unplug();
    EXPECT_EQ(port.read(&byte, 1, kLongWait).end, ReadEnd::Gone);
    EXPECT_FALSE(port.write("x", 1).ok());
}

TEST(SerialPort, RefusesWhatItCantOpen) {
    const test::TemporaryFolder folder;
    test::Pty line;
    SerialPort port;
    SerialPort second;
    ASSERT_TRUE(port.open(line.name(), {}).ok());
    EXPECT_TRUE(second.open(line.name(), {}).inUse()) << "for root too";
    port.close();
    EXPECT_TRUE(second.open(line.name(), {}).ok());
    EXPECT_TRUE(port.open(folder.file("missing"), {}).notFound());
    EXPECT_FALSE(port.open(folder.write("file", "text"), {}).ok()) << "no terminal";
    EXPECT_FALSE(port.isOpen());
    second.close();
    EXPECT_TRUE(port.open(line.name(), {.dataBits = 5}).notSupported()) << "a pty has 8 bits";
}

TEST(SerialPort, IsListedWithMakerAndProduct) {
    const test::TemporaryFolder folder;
    const auto make = [&](const std::string& name) { std::filesystem::create_directories(folder.file(name)); };
    for (const char* port : {"ttyS0", "ttyS1", "ttyUSB2", "ttyUSB10", "tty3", "ttyACM0"}) {
        make(std::string("class/") + port);
    }
    make("devices/usb1/1-2/1-2:1.0/ttyUSB2");
    std::filesystem::create_directory_symlink(folder.file("devices/usb1/1-2/1-2:1.0/ttyUSB2"),
                                              folder.file("class/ttyUSB2/device"));
    make("class/ttyUSB10/device");
    make("class/ttyACM0/device");
    make("class/ttyS0/device");
    make("class/ttyS1/device");
    make("dev");
    folder.write("devices/usb1/1-2/product", "Voltmeter 3\n");
    folder.write("devices/usb1/1-2/manufacturer", "Acme\n");
    folder.write("class/ttyS0/type", "4\n");
    folder.write("class/ttyS1/type", "0\n");  // was never fitted
    for (const char* device : {"ttyS0", "ttyS1", "ttyUSB2", "ttyUSB10", "tty3"}) {
        folder.write(std::string("dev/") + device, "");
    }

    std::string found;
    for (const SerialPortName& port : serialPortsIn(folder.file("class"), folder.file("dev"))) {
        found += port.name.substr(port.name.rfind('/') + 1) + ":" + port.description + ";";
    }
    EXPECT_EQ(found, "ttyS0:;ttyUSB2:Acme Voltmeter 3;ttyUSB10:;") << "ttyACM0 has no device file";
}

TEST(Socket, TellsHowManyDatagramsTheSystemHadNoRoomFor) {
    UdpReceiver receiver;
    ASSERT_TRUE(receiver.open({"127.0.0.1", 0}).ok());
    UdpSender sender;
    ASSERT_TRUE(sender.open({"127.0.0.1", receiver.localPort()}).ok());
    // More than any buffer holds.
    const std::string packet(60'000, 'x');
    constexpr uint64_t kPackets = 2000;
    for (uint64_t i = 0; i < kPackets; ++i) {
        ASSERT_TRUE(sender.send(packet.data(), packet.size()).ok());
    }
    std::string bytes(packet.size(), ' ');
    uint64_t got = 0;
    while (receiver.read(bytes.data(), bytes.size(), 0).end == ReadEnd::Data) {
        EXPECT_EQ(receiver.dropped(), 0U) << "those before this one all had room";
        ++got;
    }
    ASSERT_LT(got, kPackets);
    ASSERT_TRUE(sender.send("last", 4).ok());
    ASSERT_EQ(receiver.read(bytes.data(), bytes.size(), kLongWait).end, ReadEnd::Data);
    EXPECT_EQ(got + receiver.dropped(), kPackets);
}

}  // namespace
}  // namespace tarno2

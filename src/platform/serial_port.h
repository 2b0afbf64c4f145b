#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/event.h"
#include "platform/os_error.h"
#include "platform/timed_read.h"

namespace tarno2 {

enum class Parity { None, Odd, Even, Mark, Space };
enum class FlowControl { None, Hardware, Software };

/// How bytes travel on the line.
struct SerialLine {
    uint32_t baud = 115200;
    uint32_t dataBits = 8;  ///< 5 to 8
    Parity parity = Parity::None;
    uint32_t stopBits = 1;  ///< 1 or 2
    FlowControl flow = FlowControl::None;
};

/// A serial port of this program alone; closed on destruction. Bytes arrive as they were sent.
///
/// All operations but `cancel` belong to one thread at a time.
class SerialPort {
public:
    SerialPort() = default;
    ~SerialPort() { close(); }
    SerialPort(const SerialPort&) = delete;
    SerialPort& operator=(const SerialPort&) = delete;

    /// Opens a port by its name (`/dev/ttyUSB0`, `COM3`). An error when there is none of that name, it is no serial
    /// port, somebody else has it (`OsError::inUse`), or it can't do these settings (`OsError::notSupported`).
    OsError open(const std::string& name, const SerialLine& line);
    void close();
    [[nodiscard]] bool isOpen() const { return handle_ != kClosed; }

    /// Waits until there are bytes, at most so long, and takes up to `size` of them.
    TimedRead read(void* data, size_t size, uint32_t milliseconds);
    /// Sends bytes; waits at most a second until the port has taken them.
    OsError write(const void* data, size_t size);
    /// Ends a read that waits, and each later one, until the port is opened again. Any thread.
    void cancel() { cancel_.set(); }

    /// Bytes that came in damaged, or that nobody fetched in time, since `open`, as far as the system tells: it may
    /// count several as one.
    struct Faults {
        uint64_t damaged = 0;   ///< framing and parity
        uint64_t overruns = 0;  ///< lost in the port's hardware or in its driver
    };
    [[nodiscard]] Faults faults();

private:
    static constexpr intptr_t kClosed = -1;
    OsError settle(OsError error);
    [[nodiscard]] bool countFaults(Faults& counted);

    intptr_t handle_ = kClosed;
    Event cancel_;
    Faults before_;  ///< those that the system has counted before `open`
};

struct SerialPortName {
    std::string name;         ///< as `SerialPort::open` takes it
    std::string description;  ///< what the system knows of it: maker, product; may be empty
};

/// The serial ports of this machine, by name. May take some milliseconds.
[[nodiscard]] std::vector<SerialPortName> serialPorts();

}  // namespace tarno2

#pragma once

#include <memory>
#include <string>

#include "drivers/common/sample_stream.h"
#include "drivers/serial/framing.h"
#include "platform/serial_port.h"

namespace tarno2::drivers {

/// What the settings of the serial driver come to.
struct SerialPlan {
    enum class Framing { Binary, Text, Frames };

    std::string port;  ///< empty: each port of the machine is a board
    SerialLine line;
    SampleStream samples;
    Framing framing = Framing::Binary;
    TextFrames::Layout text;
    MarkedFrames::Layout frames;
    bool endsWithDamage = false;
    std::string startCommand;  ///< bytes that the device is sent when a recording begins, and when it ends
    std::string stopCommand;

    /// False with the reason when a value can't be used.
    bool read(const sdk::Settings& settings, std::string& why);
    [[nodiscard]] std::unique_ptr<FrameParser> parser() const;
};

void addSerialSettings(sdk::Settings& settings);

/// Bytes of a text in which \r, \n, \t, \\ and \xHH stand for one each; false when a backslash is followed by something
/// else.
bool unescape(const std::string& text, std::string& bytes);

}  // namespace tarno2::drivers

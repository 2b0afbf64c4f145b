#pragma once

#include <string>
#include <vector>

#include "platform/serial_port.h"

namespace tarno2 {

/// The serial ports according to the folders where the system shows its terminals (`/sys/class/tty`) and the devices
/// themselves (`/dev`).
[[nodiscard]] std::vector<SerialPortName> serialPortsIn(const std::string& terminals, const std::string& devices);

}  // namespace tarno2

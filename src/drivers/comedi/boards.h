#pragma once

#include <optional>
#include <string>
#include <vector>

#include <tarno2/driver.h>

#include "drivers/comedi/device.h"

namespace tarno2::drivers::comedi {

/// Where an input is: the id of its board.
struct Place {
    std::string device;  ///< path of the device file
    unsigned subdevice = 0;

    [[nodiscard]] std::string id() const { return device + ':' + std::to_string(subdevice); }
    [[nodiscard]] static Place of(const std::string& id);
};

/// The device files of this computer: "/dev/comedi0", "/dev/comedi1", ... in the order of their numbers.
[[nodiscard]] std::vector<std::string> deviceFiles();

/// An analog input that streams; nothing when the subdevice is something else.
[[nodiscard]] std::optional<Input> readInput(comedi_t* device, unsigned subdevice);

/// Each input of an open device that streams, as a board. Gain n is range n - 1 of the input.
[[nodiscard]] std::vector<sdk::Board> boardsOf(comedi_t* device, const std::string& path);

}  // namespace tarno2::drivers::comedi

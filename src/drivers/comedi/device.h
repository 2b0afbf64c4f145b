#pragma once

#include <comedilib.h>
#include <memory>
#include <string>

namespace tarno2::drivers::comedi {

struct CloseDevice {
    void operator()(comedi_t* device) const { comedi_close(device); }
};
/// An open device file of Comedi.
using DeviceHandle = std::unique_ptr<comedi_t, CloseDevice>;

/// What an input subdevice is, as far as every channel of it is alike.
struct Input {
    unsigned subdevice = 0;
    unsigned channels = 0;  ///< from the first on, those that have the codes and ranges of channel 0
    unsigned ranges = 0;
    lsampl_t highestCode = 0;
    unsigned flags = 0;  ///< SDF_...

    [[nodiscard]] unsigned bytesPerSample() const {
        return (flags & SDF_LSAMPL) != 0 ? sizeof(lsampl_t) : sizeof(sampl_t);
    }
};

/// The library's words for the last call of this thread that failed.
[[nodiscard]] inline std::string lastWords() {
    return comedi_strerror(comedi_errno());
}

}  // namespace tarno2::drivers::comedi

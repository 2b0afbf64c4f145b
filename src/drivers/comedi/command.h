#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "drivers/comedi/device.h"

namespace tarno2::drivers::comedi {

/// A command by which an input streams whole frames until it is cancelled.
class Command {
public:
    /// Agrees with the board on a command for these entries (CR_PACK) at so many frames per second, or as near to it as
    /// the board can. False, with the reason in `why`, when it takes none.
    bool negotiate(comedi_t* device, const Input& input, std::vector<unsigned> entries, double framesPerSecond,
                   std::string& why);
    [[nodiscard]] size_t channels() const { return entries_.size(); }
    /// The rate that the board agreed to.
    [[nodiscard]] double framesPerSecond() const;
    /// Begins; false, with the reason in `why`, when the board refuses.
    bool start(comedi_t* device, std::string& why);

private:
    bool test(comedi_t* device, std::string& why);

    std::vector<unsigned> entries_;
    comedi_cmd command_{};
};

/// The frames per second between which an input streams so many channels; both 0 when it can't at all.
struct FrameRates {
    double slowest = 0.0;
    double fastest = 0.0;
};
[[nodiscard]] FrameRates frameRates(comedi_t* device, const Input& input, unsigned channels);

/// Makes the kernel's buffer hold some seconds of such a stream, as far as this user may, never less than it holds now.
/// Nothing may run.
void enlargeBuffer(comedi_t* device, const Input& input, double bytesPerSecond);

}  // namespace tarno2::drivers::comedi

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "drivers/comedi/command.h"
#include "drivers/comedi/device.h"
#include "drivers/common/paced_source.h"
#include "platform/device_reader.h"

namespace tarno2::drivers::comedi {

/// The frames of a command that runs on an open device, which has to outlive it.
class Source final : public PacedSource {
public:
    Source(comedi_t* device, const Input& input, Command command);
    ~Source() override;
    /// Begins; false, with the reason in `why`.
    bool start(std::string& why);

    SourceRead read(std::byte* destination, size_t frames) override;
    void cancel() noexcept override { reader_.cancel(); }

private:
    SourceRead stopped();
    SourceRead failed(int error);

    comedi_t* device_;
    Input input_;
    Command command_;
    DeviceReader reader_;
    std::vector<std::byte> part_;  // the beginning of a frame whose rest has not come yet
    size_t partBytes_ = 0;
    bool running_ = false;
};

}  // namespace tarno2::drivers::comedi

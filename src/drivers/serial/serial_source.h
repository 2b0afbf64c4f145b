#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "drivers/common/frame_assembler.h"
#include "drivers/common/paced_source.h"
#include "drivers/serial/framing.h"
#include "drivers/serial/serial_plan.h"
#include "platform/serial_port.h"

namespace tarno2::drivers {

/// A serial port whose bytes are frames of samples.
class SerialSource final : public PacedSource {
public:
    /// What became of frames, as anybody may ask at any time.
    struct Counts {
        std::atomic<uint64_t> good{0};
        std::atomic<uint64_t> damaged{0};
        std::atomic<uint64_t> firstDamaged{0};  ///< good frames before the first damaged one
    };

    /// Begins to listen at an open port.
    SerialSource(std::unique_ptr<SerialPort> port, const SerialPlan& plan, std::shared_ptr<Counts> counts);
    /// Sends the device the command for the end.
    ~SerialSource() override;

    /// What is read from now on is recorded: these channels. `atEnd` is called when the source is destroyed.
    void record(ChannelChoice choice, std::function<void()> atEnd);
    SourceRead read(std::byte* destination, size_t frames) override;
    /// Takes frames for so long and tells how many a second there were; 0 when there were too few.
    [[nodiscard]] double measureRate(uint32_t milliseconds);
    void cancel() noexcept override { port_->cancel(); }

private:
    SourceRead parse(std::byte* destination, size_t frames);
    bool receive();
    [[nodiscard]] bool lineIsFaulty();

    std::unique_ptr<SerialPort> port_;
    std::unique_ptr<FrameParser> parser_;
    bool endsWithDamage_;
    std::string stopCommand_;
    std::function<void()> atEnd_;
    ChannelChoice choice_;
    std::vector<std::byte> words_;  ///< of one frame of all channels
    std::vector<std::byte> input_;
    SourceRead end_;  ///< what follows the frames that were parsed already; `Nothing`: it goes on
    SerialPort::Faults faults_;
    std::shared_ptr<Counts> counts_;
};

}  // namespace tarno2::drivers

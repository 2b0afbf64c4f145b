#pragma once

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "drivers/common/paced_source.h"
#include "drivers/sigrok/frame_assembler.h"
#include "drivers/sigrok/library.h"
#include "platform/thread.h"

struct sr_datafeed_analog;
struct sr_datafeed_logic;
struct sr_datafeed_packet;
struct sr_session;

namespace tarno2::drivers {

struct SessionPlan {
    WordShape shape;
    std::vector<int32_t> channels;  ///< places among the analog ones, in the order of a frame; none: lines alone
    std::vector<double> ranges;     ///< volts, of each of them
    double framesPerSecond = 0.0;
    bool hold = false;     ///< the device has no rate: each frame has its last values
    bool limited = false;  ///< the user has set a limit: the end is no failure
};

/// What a device sends, by a session of the library in a thread of its own. The device has to live longer.
class Session final : public PacedSource {
public:
    /// Null with a text in `problem`.
    [[nodiscard]] static std::unique_ptr<Session> start(const OpenDevice& device, const SessionPlan& plan,
                                                        std::string& problem);
    ~Session() override;

    SourceRead read(std::byte* destination, size_t frames) override;
    void cancel() noexcept override;

    /// Called by the library with what the device sends.
    void receive(const sr_datafeed_packet& packet);

private:
    Session(const OpenDevice& device, const SessionPlan& plan);
    bool begin(std::string& problem);
    void run();
    void takeAnalog(const sr_datafeed_analog& packet);
    void takeLogic(const sr_datafeed_logic& packet);
    SourceRead readHeld(std::byte* destination, size_t frames);
    SourceRead endOfStream();

    const OpenDevice& device_;
    const SessionPlan plan_;
    const std::string name_;
    sr_session* session_ = nullptr;
    Thread thread_;
    std::vector<float> values_;  // of the packet that is looked at

    std::mutex mutex_;
    std::condition_variable changed_;
    FrameAssembler assembler_;
    std::vector<std::optional<float>> held_;  // the last value of each channel of a frame
    std::optional<int> startResult_;
    bool ended_ = false;    // the library sends nothing any more
    bool overrun_ = false;  // more came than there was room for
    bool cancelled_ = false;
    uint64_t heldFrames_ = 0;
    uint64_t holdStart_ = 0;  // nanoseconds
};

}  // namespace tarno2::drivers

// SPDX-License-Identifier: MIT
//
// A complete board driver: a "board" of four channels whose samples are a slow ramp, 1000 codes apart from channel to
// channel. Copy it, put your board in the place of `run`, and keep the rest.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <tarno2/driver.h>

namespace {

using tarno2::sdk::Board;
using tarno2::sdk::Measurement;
using tarno2::sdk::Setting;
using tarno2::sdk::Settings;

class ExampleDriver : public tarno2::sdk::Driver {
public:
    ExampleDriver() : Driver("Example"), stop_(false) {
        settings().add(
            Setting::integer("Step", 1000, 0, 10000, "Codes from channel to channel", "Кодов от канала к каналу"));
    }

protected:
    // What boards there are, and what they can do.
    std::vector<Board> search(const Settings&) override {
        Board board;
        board.id = "ramp";
        board.name = "Example (4 channels)";
        board.format = tarno2::sdk::plainWords(2, 16, true);
        board.codes = tarno2::sdk::allCodes(16, true);
        board.channels = 4;
        board.range = 10.0;              // volts
        board.minimumFrequency = 10.0F;  // Hz, all channels together
        board.maximumFrequency = 1e6F;
        board.usualFrequency = 10e3F;
        return std::vector<Board>(1, board);
    }

    // Samples come from a thread; a real board would be set up here.
    bool begin(const Board&, const Measurement& measurement) override {
        measurement_ = measurement;
        step_ = static_cast<int>(settings().integer("Step"));
        stop_ = false;
        thread_ = std::thread(&ExampleDriver::run, this);
        return true;
    }

    void end() override {
        stop_ = true;
        thread_.join();
    }

private:
    void run() {
        typedef std::chrono::steady_clock Clock;
        const Clock::time_point start = Clock::now();
        const size_t mostFrames = 4096;
        std::vector<int16_t> samples;
        for (uint64_t frame = 0; !stop_;) {
            const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
            const uint64_t due = static_cast<uint64_t>(seconds * measurement_.framesPerSecond());
            samples.clear();
            for (; frame < due && samples.size() < mostFrames * measurement_.channels.size(); ++frame) {
                for (size_t i = 0; i < measurement_.channels.size(); ++i) {
                    samples.push_back(
                        static_cast<int16_t>(static_cast<int>(frame % 1000) + measurement_.channels[i] * step_));
                }
            }
            push(samples.data(), samples.size());
            if (frame >= due) {
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
        }
    }

    Measurement measurement_;
    int step_ = 0;
    std::thread thread_;
    std::atomic<bool> stop_;
};

}  // namespace

TARNO2_DRIVER(ExampleDriver)

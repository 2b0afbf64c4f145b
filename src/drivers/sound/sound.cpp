// Inputs of sound cards as boards. docs/boards.md tells of its settings.

#include <algorithm>
#include <cmath>

#include <tarno2/driver.h>

#include "drivers/common/pump_driver.h"
#include "drivers/sound/sound_source.h"
#include "platform/sound_input.h"

namespace tarno2::drivers {

namespace {

constexpr double kSmallestScale = 1e-6;  // volts
constexpr double kLargestScale = 1e6;
constexpr uint32_t kUsualRate = 48000;

/// The width that the settings ask for; 0: what loses nothing; -1: none that there is.
int widthOf(const sdk::Settings& settings) {
    const std::string text = settings.text("Bits");
    double bits = 0.0;
    if (text == "auto") {
        bits = settings.real("Bits");  // a number without quotes, or 0
    } else if (!sdk::readNumber(text, bits) || bits == 0.0) {
        return -1;
    }
    return bits == 0.0 || bits == 16.0 || bits == 24.0 || bits == 32.0 ? static_cast<int>(bits) : -1;
}

bool has(const std::vector<uint32_t>& values, uint32_t value) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

/// What the board is when samples have that many bits.
void completeBoard(const SoundDevice& device, uint32_t width, sdk::Board& board) {
    board.format = sdk::plainWords(width == 16 ? 2 : 4, width, true);
    board.codes = sdk::allCodes(width, true);
    board.channels = device.maximumChannels;
    board.frequencies.assign(device.rates.begin(), device.rates.end());
    if (!device.rates.empty()) {
        board.minimumFrequency = board.frequencies.front();
        board.maximumFrequency = board.frequencies.back();
        board.usualFrequency = has(device.rates, kUsualRate) ? float{kUsualRate} : board.frequencies.back();
    }
}

sdk::Board boardOf(const SoundDevice& device, const sdk::Settings& settings) {
    sdk::Board board;
    board.id = device.id;
    board.name = device.name + (device.throughServer ? " (through the sound server)" : "");
    board.range = settings.real("FullScale");
    board.perChannelFrequency = true;
    const auto wished = static_cast<uint32_t>(std::max(widthOf(settings), 0));
    completeBoard(device, has(device.widths, wished) ? wished : device.nativeWidth, board);
    return board;
}

class SoundDriver final : public PumpDriver {
public:
    SoundDriver() : PumpDriver("Sound") {
        settings().add(sdk::Setting::real("FullScale", 1.0, kSmallestScale, kLargestScale,
                                          "Voltage of the largest code, V", "Напряжение при наибольшем коде, В"));
        settings().add(sdk::Setting::choice("Bits", "auto", {"auto", "16", "24", "32"}, "Bits of a sample",
                                            "Разрядность отсчёта, бит"));
        settings().add(sdk::Setting::text("Device", "", "Another input, by its name in the system",
                                          "Ещё один вход, по имени в системе"));
    }

protected:
    bool searchTakesLong() const override { return true; }
    std::vector<sdk::Board> search(const sdk::Settings& settings) override;
    bool open(sdk::Board& board) override;
    bool configure(const sdk::Board& board, sdk::Measurement& measurement) override;
    std::unique_ptr<PacedSource> connect(const sdk::Board& board, const sdk::Measurement& measurement) override;
    bool settingsChanged() override {
        return widthOf(settings()) >= 0 ||
               fail("Bits is auto, 16, 24 or 32, not \"%s\".", settings().text("Bits").c_str());
    }

private:
    std::unique_ptr<SoundInput> openInput(const sdk::Board& board, const sdk::Measurement& measurement);
};

std::vector<sdk::Board> SoundDriver::search(const sdk::Settings& settings) {
    std::vector<SoundDevice> devices = soundInputs();
    const std::string named = settings.text("Device");
    const bool listed =
        std::any_of(devices.begin(), devices.end(), [&named](const SoundDevice& device) { return device.id == named; });
    if (!named.empty() && !listed) {
        devices.insert(devices.begin(), soundInput(named));
    }
    std::vector<sdk::Board> boards;
    boards.reserve(devices.size());
    for (const SoundDevice& device : devices) {
        boards.push_back(boardOf(device, settings));
    }
    if (boards.empty()) {
        fail("No input of a sound card was found.");
    }
    return boards;
}

/// What the card can do is asked anew: it was taken by somebody, or not there, when it was looked for, or is now.
bool SoundDriver::open(sdk::Board& board) {
    const SoundDevice device = soundInput(board.id);
    if (!device.problem.empty()) {
        return fail("%s can't be used: %s.", board.name.c_str(), device.problem.c_str());
    }
    const auto wished = static_cast<uint32_t>(widthOf(settings()));
    if (wished != 0 && !has(device.widths, wished)) {
        return fail("%s has no samples of %u bits.", board.name.c_str(), wished);
    }
    completeBoard(device, wished != 0 ? wished : device.nativeWidth, board);
    return true;
}

/// As many channels as it takes to have the highest of those chosen.
std::unique_ptr<SoundInput> SoundDriver::openInput(const sdk::Board& board, const sdk::Measurement& measurement) {
    SoundFormat wished;
    wished.channels =
        static_cast<uint32_t>(*std::max_element(measurement.channels.begin(), measurement.channels.end())) + 1;
    wished.rate = static_cast<uint32_t>(std::lround(measurement.framesPerSecond()));
    wished.width = board.format.m_nCodeBits;
    std::string reason;
    std::unique_ptr<SoundInput> input = SoundInput::open(board.id, wished, reason);
    if (input == nullptr) {
        fail("%s can't be opened: %s.", board.name.c_str(), reason.c_str());
    }
    return input;
}

/// Which rates there are may depend on the number of channels, so the card itself is asked.
bool SoundDriver::configure(const sdk::Board& board, sdk::Measurement& measurement) {
    const std::unique_ptr<SoundInput> input = openInput(board, measurement);
    if (input == nullptr) {
        return false;
    }
    measurement.frequency =
        static_cast<double>(input->format().rate) * static_cast<double>(measurement.channels.size());
    return true;
}

std::unique_ptr<PacedSource> SoundDriver::connect(const sdk::Board& board, const sdk::Measurement& measurement) {
    std::unique_ptr<SoundInput> input = openInput(board, measurement);
    if (input == nullptr) {
        return nullptr;
    }
    const uint32_t rate = input->format().rate;
    if (std::lround(measurement.framesPerSecond()) != static_cast<long>(rate)) {
        fail("%s takes these channels at %u Hz alone.", board.name.c_str(), rate);
        return nullptr;
    }
    return makeSoundSource(std::move(input), measurement.channels);
}

}  // namespace

}  // namespace tarno2::drivers

TARNO2_DRIVER(tarno2::drivers::SoundDriver)

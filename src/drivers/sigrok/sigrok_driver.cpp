// Devices of libsigrok that send samples endlessly, and meters. docs/boards.md lists the settings.

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "drivers/common/pump_driver.h"
#include "drivers/sigrok/library.h"
#include "drivers/sigrok/session.h"

namespace tarno2::drivers {

namespace {

constexpr double kUsualRange = 10.0;  // volts, of devices that don't tell

/// The voltages at the end of the codes of each analog channel.
std::vector<double> rangesOf(const OpenDevice& device, const sdk::Settings& settings) {
    std::vector<double> ranges;
    for (const sr_channel* const channel : device.analog()) {
        const double chosen = settings.real("Range");
        const double told = chosen > 0.0 ? chosen : device.range(*channel);
        ranges.push_back(told > 0.0 ? told : kUsualRange);
    }
    return ranges;
}

/// Whether readings are recorded again and again until the next one comes, as those of meters.
bool holds(const OpenDevice& device, const sdk::Settings& settings) {
    return !device.analog().empty() && (!device.hasRate() || settings.flag("Hold"));
}

WordShape shapeOf(const OpenDevice& device, const sdk::Settings& settings) {
    // The lines of a meter, if it has any, come at times of their own.
    const size_t lines = holds(device, settings) ? 0 : device.logic().size();
    return WordShape::with(!device.analog().empty(), static_cast<uint32_t>(lines));
}

ADCSampleFormat formatOf(const WordShape& shape) {
    if (shape.codeBits == 0) {
        ADCSampleFormat format = sdk::plainWords(shape.bytes, shape.lines, false);
        format.m_nDigitalMask = format.m_nCodeMask;
        format.m_nDigitalLines = shape.lines;
        return format;
    }
    ADCSampleFormat format = sdk::plainWords(shape.bytes, shape.codeBits, true);
    format.m_nCodeShift = shape.codeShift();
    format.m_nCodeMask = format.m_nCodeMask << shape.codeShift();
    format.m_nDigitalMask = shape.linesMask();
    format.m_nDigitalLines = shape.lines;
    return format;
}

sdk::Board describe(const OpenDevice& device, const sdk::Settings& settings) {
    const WordShape shape = shapeOf(device, settings);
    sdk::Board board;
    board.name = device.name();
    board.format = formatOf(shape);
    board.channels = static_cast<uint32_t>(std::clamp<size_t>(device.analog().size(), 1, 160));
    board.perChannelFrequency = true;
    if (shape.codeBits == 0) {
        // The number that the lines make up, as volts.
        board.codes = sdk::allCodes(shape.lines, false);
        board.range = board.codes.m_nMaximum;
        board.limits = {{0.0, board.range}};
    } else {
        board.codes = sdk::allCodes(shape.codeBits, true);
        board.channelRanges = rangesOf(device, settings);
        board.channelNames = device.analogNames();
        board.range = *std::max_element(board.channelRanges.begin(), board.channelRanges.end());
    }
    if (holds(device, settings)) {
        board.usualFrequency = static_cast<float>(settings.real("HoldRate"));
        board.minimumFrequency = board.maximumFrequency = board.usualFrequency;
        board.frequencies = {board.usualFrequency};
        return board;
    }
    const OpenDevice::Rates rates = device.rates();
    if (rates.values.empty()) {
        board.maximumFrequency = 1e9F;
    } else {
        board.minimumFrequency = static_cast<float>(rates.values.front());
        board.maximumFrequency = static_cast<float>(rates.values.back());
    }
    if (!rates.stepped) {
        board.frequencies.assign(rates.values.begin(), rates.values.end());
    }
    const float usual = 1e6F;
    board.usualFrequency = std::clamp(usual, board.minimumFrequency, board.maximumFrequency);
    return board;
}

class SigrokDriver final : public PumpDriver {
public:
    SigrokDriver();
    ~SigrokDriver() override { closeDevice(); }

protected:
    std::vector<sdk::Board> search(const sdk::Settings& settings) override;
    bool searchTakesLong() const override { return true; }
    bool open(sdk::Board& board) override;
    void close() override { closeDevice(); }
    bool configure(const sdk::Board& board, sdk::Measurement& measurement) override;
    bool inputLimits(const sdk::Board& board, int32_t channel, int32_t gain, sdk::InputLimits& limits) override;
    std::unique_ptr<PacedSource> connect(const sdk::Board& board, const sdk::Measurement& measurement) override;
    bool settingsChanged() override;

private:
    void closeDevice();
    bool applyOptions(const OpenDevice& device, std::string& problem);
    void addBoards(const std::shared_ptr<Library>& library, const DeviceSpec& spec, const sdk::Settings& settings,
                   std::vector<sdk::Board>& boards);

    std::map<std::string, std::vector<sdk::Board>> known_;  // by the text of a device; under the library's lock
    std::unique_ptr<OpenDevice> device_;
    bool limited_ = false;
};

SigrokDriver::SigrokDriver() : PumpDriver("Sigrok") {
    settings().add(sdk::Setting::text("Devices", "", "Devices (fx2lafw, demo:analog_channels=4)",
                                      "Устройства (fx2lafw, demo:analog_channels=4)"));
    settings().add(sdk::Setting::text("Options", "", "Options of the device (Logic:pattern=incremental)",
                                      "Параметры устройства (Logic:pattern=incremental)"));
    settings().add(sdk::Setting::real("Range", 0.0, 0.0, 1e9, "Range of analog channels, V (0: as the device says)",
                                      "Диапазон аналоговых каналов, В (0: по данным устройства)"));
    settings().add(sdk::Setting::real("HoldRate", 10.0, 0.001, 100000.0,
                                      "Rate at which a meter's reading is recorded, Hz",
                                      "Частота записи показаний мультиметра, Гц"));
    settings().add(sdk::Setting::integer("Hold", 0, 0, 1, "Record other devices like a meter",
                                         "Другие устройства тоже как мультиметры"));
}

bool SigrokDriver::settingsChanged() {
    if (!readDevices(settings().text("Devices")).has_value()) {
        return fail("Devices: \"%s\" is no list of sigrok devices.", settings().text("Devices").c_str());
    }
    return readOptions(settings().text("Options")).has_value() ||
           fail("Options: \"%s\" is no list of options.", settings().text("Options").c_str());
}

std::vector<sdk::Board> SigrokDriver::search(const sdk::Settings& settings) {
    std::vector<sdk::Board> boards;
    const std::vector<DeviceSpec> specs = readDevices(settings.text("Devices")).value_or(std::vector<DeviceSpec>());
    if (specs.empty()) {
        fail("Name the sigrok devices to look for: Devices, for example fx2lafw.");
        return boards;
    }
    std::string problem;
    const std::shared_ptr<Library> library = Library::instance(problem);
    if (library == nullptr) {
        fail("%s", problem.c_str());
        return boards;
    }
    const std::unique_lock lock = library->lock();
    for (const DeviceSpec& spec : specs) {
        std::vector<sdk::Board>& known = known_[spec.text];
        // While one of them is open the library can't look again.
        if (!library->inUse(spec.driver)) {
            known.clear();
            addBoards(library, spec, settings, known);
        }
        boards.insert(boards.end(), known.begin(), known.end());
    }
    return boards;
}

void SigrokDriver::addBoards(const std::shared_ptr<Library>& library, const DeviceSpec& spec,
                             const sdk::Settings& settings, std::vector<sdk::Board>& boards) {
    std::string problem;
    const size_t count = library->scan(spec, problem).size();
    for (size_t place = 0; place < count; ++place) {
        OpenDevice device;
        if (!device.open(library, spec, place, problem)) {
            fail("%s", problem.c_str());
        } else if (!device.isContinuous() || device.analog().size() + device.logic().size() == 0 ||
                   (device.analog().empty() && !device.hasRate())) {
            fail("%s can't send samples endlessly.", device.name().c_str());
        } else {
            boards.push_back(describe(device, settings));
            boards.back().id = std::to_string(place) + " " + spec.text;
        }
    }
    if (count == 0) {
        fail("%s", problem.c_str());
    }
}

bool SigrokDriver::open(sdk::Board& board) {
    closeDevice();
    std::string problem;
    const size_t blank = board.id.find(' ');
    const std::vector<DeviceSpec> specs = readDevices(board.id.substr(blank + 1)).value_or(std::vector<DeviceSpec>());
    const std::shared_ptr<Library> library = Library::instance(problem);
    if (library == nullptr || specs.size() != 1) {
        return fail("%s", problem.c_str());
    }
    auto device = std::make_unique<OpenDevice>();
    const std::unique_lock lock = library->lock();
    if (!device->open(library, specs[0], std::stoul(board.id), problem) || !applyOptions(*device, problem)) {
        device->close();
        return fail("%s", problem.c_str());
    }
    const std::string id = board.id;
    board = describe(*device, settings());
    board.id = id;
    device_ = std::move(device);
    return true;
}

bool SigrokDriver::applyOptions(const OpenDevice& device, std::string& problem) {
    limited_ = false;
    for (const DeviceOption& option : readOptions(settings().text("Options")).value_or(std::vector<DeviceOption>())) {
        if (!device.apply(option, problem)) {
            return false;
        }
        limited_ = limited_ || option.option.key.starts_with("limit_");
    }
    return true;
}

void SigrokDriver::closeDevice() {
    if (device_ != nullptr) {
        const std::shared_ptr<Library> library = device_->library();
        const std::unique_lock lock = library->lock();
        device_.reset();
    }
}

bool SigrokDriver::configure(const sdk::Board& board, sdk::Measurement& measurement) {
    const auto channels = static_cast<double>(measurement.channels.size());
    if (holds(*device_, settings())) {
        measurement.frequency = static_cast<double>(board.usualFrequency) * channels;
        return true;
    }
    std::string problem;
    const std::unique_lock lock = device_->library()->lock();
    const double rate = device_->negotiateRate(measurement.framesPerSecond(), problem);
    measurement.frequency = rate * channels;
    return rate > 0.0 || fail("%s", problem.c_str());
}

bool SigrokDriver::inputLimits(const sdk::Board& board, int32_t channel, int32_t gain, sdk::InputLimits& limits) {
    const auto index = static_cast<size_t>(channel);
    if (index >= board.channelRanges.size()) {
        return PumpDriver::inputLimits(board, channel, gain, limits);
    }
    // Minus the range is a code of its own, plus the range is one above the highest.
    const double range = board.channelRanges[index];
    limits = {-range, range * board.codes.m_nMaximum / -static_cast<double>(board.codes.m_nMinimum)};
    return true;
}

std::unique_ptr<PacedSource> SigrokDriver::connect(const sdk::Board& board, const sdk::Measurement& measurement) {
    SessionPlan plan{.shape = shapeOf(*device_, settings()),
                     .channels = {},
                     .ranges = {},
                     .framesPerSecond = measurement.framesPerSecond(),
                     .hold = holds(*device_, settings()),
                     .limited = limited_};
    if (plan.shape.codeBits > 0) {
        plan.channels = measurement.channels;
        for (const int32_t channel : plan.channels) {
            plan.ranges.push_back(board.channelRanges[static_cast<size_t>(channel)]);
        }
    }
    std::string problem;
    std::unique_ptr<PacedSource> session = Session::start(*device_, plan, problem);
    if (session == nullptr) {
        fail("%s", problem.c_str());
    }
    return session;
}

}  // namespace

}  // namespace tarno2::drivers

TARNO2_DRIVER(tarno2::drivers::SigrokDriver)

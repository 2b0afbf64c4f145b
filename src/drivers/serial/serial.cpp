// Samples that a device sends over a serial port. docs/boards.md lists the settings.

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "drivers/common/pump_driver.h"
#include "drivers/serial/serial_plan.h"
#include "drivers/serial/serial_source.h"
#include "platform/clock.h"
#include "platform/paths.h"

namespace tarno2::drivers {

namespace {

constexpr const char* kDamagedKey = "DamagedFrames";
constexpr uint32_t kMeasureMilliseconds = 1000;

class SerialDevice final : public PumpDriver {
public:
    SerialDevice();
    int32_t TARNO2_CALL Get(uint32_t code, void* result) noexcept override;

protected:
    std::vector<sdk::Board> search(const sdk::Settings& list) override;
    bool settingsChanged() override;
    bool open(sdk::Board& board) override;
    void close() override { measured_.reset(); }
    bool configure(const sdk::Board& board, sdk::Measurement& measurement) override;
    std::unique_ptr<PacedSource> connect(const sdk::Board& board, const sdk::Measurement& measurement) override;

private:
    std::unique_ptr<SerialSource> listen(const std::string& name);
    bool explain(const std::string& name, const OsError& error);
    void tellDamage();

    SerialPlan plan_;  ///< of the chosen board
    std::string port_;
    std::unique_ptr<SerialSource> measured_;  ///< whose rate is known now, and which has not begun
    double measuredRate_ = 0.0;
    std::shared_ptr<SerialSource::Counts> counts_;  ///< of the running recording or of the last one
    std::atomic<uint64_t> damaged_{0};              ///< the same for whoever asks meanwhile
};

SerialDevice::SerialDevice() : PumpDriver("Serial"), counts_(std::make_shared<SerialSource::Counts>()) {
    addSerialSettings(settings());
    sdk::Setting damaged = sdk::Setting::integer(kDamagedKey, 0, 0, 0, "Frames left out of the last recording",
                                                 "Пропущено кадров в последней записи");
    damaged.flags = kADCSettingFixed;
    settings().add(damaged);
}

/// The count of damaged frames is shown among the settings, but is none.
int32_t TARNO2_CALL SerialDevice::Get(uint32_t code, void* result) noexcept {
    const int32_t answered = PumpDriver::Get(code, result);
    if (code != kADCGetSettings || answered == 0) {
        return answered;
    }
    ADCSettingList list;
    std::memcpy(&list, result, sizeof list);
    for (uint32_t i = 0; list.m_pEntries != nullptr && i < list.m_nCapacity && i < list.m_nCount; ++i) {
        ADCSetting& entry = list.m_pEntries[i];
        if (std::strcmp(entry.m_sKey, kDamagedKey) == 0) {
            std::snprintf(entry.m_sValue, sizeof entry.m_sValue, "%" PRIu64, damaged_.load());
        }
    }
    return answered;
}

bool SerialDevice::settingsChanged() {
    std::vector<std::string> names;
    std::vector<std::string> texts;
    for (const SerialPortName& port : serialPorts()) {
        names.push_back(port.name);
        texts.push_back(port.description.empty() ? port.name : port.name + " (" + port.description + ")");
    }
    settings().setChoices("Port", names, texts);
    SerialPlan plan;
    std::string why;
    return plan.read(settings(), why) || fail("%s", why.c_str());
}

std::vector<sdk::Board> SerialDevice::search(const sdk::Settings& list) {
    SerialPlan plan;
    std::string why;
    if (!plan.read(list, why)) {
        fail("%s", why.c_str());
        return {};
    }
    std::vector<SerialPortName> ports = serialPorts();
    if (!plan.port.empty()) {
        std::erase_if(ports, [&](const SerialPortName& port) { return port.name != plan.port; });
        if (ports.empty()) {
            ports.push_back({plan.port, {}});  // not every port is in the system's list
        }
    }
    if (ports.empty()) {
        fail("There is no serial port.");
    }
    std::vector<sdk::Board> boards;
    for (const SerialPortName& port : ports) {
        sdk::Board board = plan.samples.board();
        board.id = port.name;
        board.name = port.name + (port.description.empty() ? "" : " (" + port.description + ")");
        board.hotPlug = true;
        if (!(plan.samples.rate > 0.0)) {
            board.modes = kADCModeExternalClock;
            board.minimumFrequency = 1e-3F;
            board.maximumFrequency = 1e9F;
            board.usualFrequency = 1000.0F;
        }
        boards.push_back(board);
    }
    return boards;
}

bool SerialDevice::open(sdk::Board& board) {
    std::string why;
    port_ = board.id;
    measured_.reset();
    return plan_.read(settings(), why) || fail("%s", why.c_str());
}

/// A rate that nobody knows is measured before the recording, unless the user takes it for an external clock.
bool SerialDevice::configure(const sdk::Board&, sdk::Measurement& measurement) {
    if (measurement.externalClock || plan_.samples.rate > 0.0) {
        return true;
    }
    if (measured_ == nullptr) {
        measured_ = listen(port_);
        if (measured_ == nullptr) {
            return false;
        }
        measuredRate_ = measured_->measureRate(kMeasureMilliseconds);
    }
    if (!(measuredRate_ > 0.0)) {
        measured_.reset();
        return fail(
            "Too few frames came from %s within a second to measure their rate: set Rate, or choose the "
            "external clock.",
            port_.c_str());
    }
    measurement.frequency = measuredRate_ * static_cast<double>(measurement.channels.size());
    return true;
}

std::unique_ptr<PacedSource> SerialDevice::connect(const sdk::Board&, const sdk::Measurement& measurement) {
    std::unique_ptr<SerialSource> source = measured_ != nullptr ? std::move(measured_) : listen(port_);
    if (source == nullptr) {
        return nullptr;
    }
    source->record(ChannelChoice(plan_.samples.channels, measurement.channels, wordBytes(plan_.samples.format)),
                   [this] { tellDamage(); });
    return source;
}

/// Opens the port and has the device begin; null after `fail`.
std::unique_ptr<SerialSource> SerialDevice::listen(const std::string& name) {
    auto port = std::make_unique<SerialPort>();
    OsError error = port->open(name, plan_.line);
    if (error.ok() && !plan_.startCommand.empty()) {
        error = port->write(plan_.startCommand.data(), plan_.startCommand.size());
    }
    if (!error.ok()) {
        explain(name, error);
        return nullptr;
    }
    counts_ = std::make_shared<SerialSource::Counts>();
    return std::make_unique<SerialSource>(std::move(port), plan_, counts_);
}

bool SerialDevice::explain(const std::string& name, const OsError& error) {
    if (error.notFound()) {
        return fail("There is no serial port %s.", name.c_str());
    }
    if (error.inUse()) {
        return fail("%s is in use by another program.", name.c_str());
    }
    if (error.notSupported()) {
        return fail("%s can't do %u baud with these line settings.", name.c_str(), plan_.line.baud);
    }
    return fail("%s can't be used: %s", name.c_str(), error.text().c_str());
}

/// The recording has ended. The user reads of damage in Serial.log beside the settings.
void SerialDevice::tellDamage() {
    damaged_ = counts_->damaged.load();
    if (damaged_ == 0) {
        return;
    }
    char text[200];
    std::snprintf(text, sizeof text,
                  "%" PRIu64 " frames recorded, %" PRIu64 " damaged or missing ones left out, the first after %" PRIu64
                  " frames.",
                  counts_->good.load(), counts_->damaged.load(), counts_->firstDamaged.load());
    if (!ring().ended()) {
        fail("%s: %s", port_.c_str(), text);
    }
    std::FILE* const log = std::fopen(joinPath(programDirectory(), "Serial.log").c_str(), "ab");
    if (log == nullptr) {
        return;
    }
    const LocalTime now = localTime();
    std::fprintf(log, "%04u-%02u-%02u %02u:%02u:%02u %s: %s\n", now.year, now.month, now.day, now.hour, now.minute,
                 now.second, port_.c_str(), text);
    std::fclose(log);
}

}  // namespace

}  // namespace tarno2::drivers

TARNO2_DRIVER(tarno2::drivers::SerialDevice)

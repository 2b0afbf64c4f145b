// The boards that Comedi drives: analog inputs that stream by commands.
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <tarno2/driver.h>

#include "drivers/comedi/boards.h"
#include "drivers/comedi/command.h"
#include "drivers/comedi/device.h"
#include "drivers/comedi/source.h"
#include "drivers/common/pump_driver.h"

namespace tarno2::drivers::comedi {

namespace {

constexpr char kAnyDevice[] = "all";

struct Reference {
    const char* value;
    unsigned aref;
    unsigned flag;  ///< of inputs that have it
};
constexpr Reference kReferences[] = {
    {"ground", AREF_GROUND, SDF_GROUND},
    {"common", AREF_COMMON, SDF_COMMON},
    {"differential", AREF_DIFF, SDF_DIFF},
    {"other", AREF_OTHER, SDF_OTHER},
};
constexpr char kFirstReference[] = "auto";

class ComediDriver final : public PumpDriver {
public:
    ComediDriver() : PumpDriver("Comedi") {
        sdk::Setting device = sdk::Setting::choice("Device", kAnyDevice, {}, "Device", "Устройство");
        device.flags = kADCSettingFree;
        settings().add(device);
        sdk::Setting reference = sdk::Setting::choice("Reference", kFirstReference, {kFirstReference},
                                                      "Inputs measured against", "Входы относительно");
        for (const Reference& one : kReferences) {
            reference.choices.emplace_back(one.value);
        }
        settings().add(reference);
        offerDevices();
    }

    int32_t TARNO2_CALL ReadPort(uint32_t* lines) noexcept override {
        return guarded([&] { return lines != nullptr && readLines(*lines) ? 1 : 0; });
    }

protected:
    std::vector<sdk::Board> search(const sdk::Settings& given) override {
        offerDevices();
        const std::string wished = given.text("Device");
        const std::vector<std::string> files = wished == kAnyDevice ? deviceFiles() : std::vector<std::string>{wished};
        std::vector<sdk::Board> boards;
        if (files.empty()) {
            fail("There is no device of Comedi: no file /dev/comedi0, /dev/comedi1, ...");
        }
        for (const std::string& file : files) {
            const DeviceHandle device(comedi_open(file.c_str()));
            if (device == nullptr) {
                fail("%s can't be opened: %s", file.c_str(), lastWords().c_str());
                continue;
            }
            const std::vector<sdk::Board> found = boardsOf(device.get(), file);
            if (found.empty()) {
                fail("%s has no analog input that streams.", file.c_str());
            }
            boards.insert(boards.end(), found.begin(), found.end());
        }
        return boards;
    }

    bool open(sdk::Board& board) override {
        const Place place = Place::of(board.id);
        DeviceHandle device(comedi_open(place.device.c_str()));
        const std::optional<Input> input = device != nullptr ? readInput(device.get(), place.subdevice) : std::nullopt;
        if (!input) {
            return fail("%s can't be opened: %s", place.device.c_str(), lastWords().c_str());
        }
        if (comedi_lock(device.get(), place.subdevice) < 0) {
            return fail("%s is used by another program: %s", place.device.c_str(), lastWords().c_str());
        }
        if (comedi_get_read_subdevice(device.get()) != static_cast<int>(place.subdevice) &&
            comedi_set_read_subdevice(device.get(), place.subdevice) < 0) {
            return fail("This input of %s can't be read: %s", place.device.c_str(), lastWords().c_str());
        }
        const std::lock_guard lock(portMutex_);
        device_ = std::move(device);
        input_ = *input;
        return true;
    }

    void close() override {
        const std::lock_guard lock(portMutex_);
        device_.reset();
    }

    bool configure(const sdk::Board& /*board*/, sdk::Measurement& measurement) override {
        Command command;
        if (!agree(measurement, command)) {
            return false;
        }
        measurement.frequency = command.framesPerSecond() * static_cast<double>(measurement.channels.size());
        return true;
    }

    std::unique_ptr<PacedSource> connect(const sdk::Board& /*board*/, const sdk::Measurement& measurement) override {
        Command command;
        if (!agree(measurement, command)) {
            return nullptr;
        }
        enlargeBuffer(device_.get(), input_,
                      command.framesPerSecond() * static_cast<double>(command.channels() * input_.bytesPerSample()));
        auto source = std::make_unique<Source>(device_.get(), input_, std::move(command));
        std::string why;
        if (!source->start(why)) {
            fail("The board does not start: %s", why.c_str());
            return nullptr;
        }
        return source;
    }

private:
    void offerDevices() {
        std::vector<std::string> devices{kAnyDevice};
        for (const std::string& file : deviceFiles()) {
            devices.push_back(file);
        }
        settings().setChoices("Device", devices, {});
    }

    bool agree(const sdk::Measurement& measurement, Command& command) {
        unsigned aref = 0;
        if (!findReference(measurement.differential, aref)) {
            return false;
        }
        std::vector<unsigned> entries;
        for (size_t i = 0; i < measurement.channels.size(); ++i) {
            const auto range = static_cast<unsigned>(measurement.gains[i] - 1);
            entries.push_back(CR_PACK(static_cast<unsigned>(measurement.channels[i]), range, aref));
        }
        std::string why;
        return command.negotiate(device_.get(), input_, std::move(entries), measurement.framesPerSecond(), why) ||
               fail("%s", why.c_str());
    }

    bool findReference(bool differential, unsigned& aref) {
        const std::string wished = differential ? "differential" : settings().text("Reference");
        for (const Reference& one : kReferences) {
            if ((input_.flags & one.flag) != 0 && (wished == kFirstReference || wished == one.value)) {
                aref = one.aref;
                return true;
            }
        }
        return fail("The board has no inputs of the kind \"%s\".", wished.c_str());
    }

    bool readLines(uint32_t& lines) {
        const std::lock_guard lock(portMutex_);
        if (device_ == nullptr) {
            return fail("No board is chosen.");
        }
        for (const int type : {COMEDI_SUBD_DI, COMEDI_SUBD_DIO}) {
            const int subdevice = comedi_find_subdevice_by_type(device_.get(), type, 0);
            unsigned bits = 0;
            if (subdevice < 0) {
                continue;
            }
            if (comedi_dio_bitfield2(device_.get(), static_cast<unsigned>(subdevice), 0, &bits, 0) < 0) {
                return fail("The digital inputs can't be read: %s", lastWords().c_str());
            }
            lines = bits;
            return true;
        }
        return fail("The board has no digital inputs.");
    }

    DeviceHandle device_;
    Input input_;
    std::mutex portMutex_;  // the port may be asked about beside anything else
};

}  // namespace

}  // namespace tarno2::drivers::comedi

TARNO2_DRIVER(tarno2::drivers::comedi::ComediDriver)

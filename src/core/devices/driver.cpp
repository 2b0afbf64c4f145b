#include "core/devices/driver.h"

#include <utility>

#include "config/logs/debug_log.h"
#include "core/devices/driver_catalogue.h"
#include "core/devices/library_object.h"

namespace tarno2 {

namespace {

constexpr uint32_t kUnlimitedBuffer = 0x7FFFFFFF;
constexpr HolderCount::Texts kHolderTexts{TextId::DriverReleasedTooOften, TextId::DriverFreedWhileHeld,
                                          TextId::DriverDestroyedWhileHeld};

}  // namespace

T_DRIVER::T_DRIVER(FaultReporter faults) : holders_(kHolderTexts, std::move(faults)) {}

T_DRIVER::~T_DRIVER() {
    releaseDevice();
}

bool T_DRIVER::LoadDriver(const std::string& name, const std::string& programDirectory, std::string& why) {
    FREE();
    const auto path = driverLibraryPath(name, why);
    if (!path) {
        return false;
    }
    void* object = loadObject(library_, *path, TARNO2_DEVICE_INTERFACE, why);
    if (object == nullptr) {
        return false;
    }
    if (!attach(static_cast<IADCDevice*>(object), name, programDirectory, why)) {
        library_.unload();
        return false;
    }
    return true;
}

bool T_DRIVER::attach(IADCDevice* device, const std::string& name, const std::string& programDirectory,
                      std::string& why) {
    releaseDevice();
    device_ = Device(device);
    name_ = name;
    const uint32_t version = device_.number(kADCGetAbiVersion, 0);
    if (version != kADCAbiVersion) {
        why = version == 0 ? "the driver does not tell the version of its interface"
                           : "the driver's interface has version " + std::to_string(version) + ", this program's " +
                                 std::to_string(kADCAbiVersion);
        releaseDevice();
        return false;
    }
    if (!device_.setProgramDirectory(programDirectory)) {
        settingsProblem_ = "Driver settings: " + device_.lastError();
        DEBUG_LOG("!!!!! %s", settingsProblem_.c_str());
    }
    return true;
}

bool T_DRIVER::selectBoard(uint32_t number, std::string& why) {
    if (blockCount() != 0) {
        why = "the board is in use";
        return false;
    }
    forgetBoard();
    if (!device_.selectBoard(number)) {
        why = device_.lastError();
        return false;
    }
    facts_ = readBoardFacts(device_);
    startAllowed_ = true;
    return true;
}

void T_DRIVER::forgetBoard() {
    stop();
    startAllowed_ = false;
    initialised_ = false;
    facts_ = {};
}

void T_DRIVER::FREE() {
    holders_.checkFree();
    releaseDevice();
    library_.unload();
}

void T_DRIVER::releaseDevice() {
    forgetBoard();
    if (device_.present()) {
        device_.release();
    }
    device_ = Device();
    name_.clear();
    settingsProblem_.clear();
}

uint32_t T_DRIVER::maximumBuffer() {
    if (!device_.present()) {
        return 0;
    }
    uint32_t samples = kUnlimitedBuffer;
    if (device_.get(kADCGetMaxBuffer, samples) || device_.get(kADCGetMaxBufferOld, samples)) {
        return samples;
    }
    return kUnlimitedBuffer;
}

bool T_DRIVER::CheckParameters(ParameterBlocks& blocks, bool checkOnly) {
    rez1_ = 0;
    rez2_ = 0;
    if (!checkOnly) {
        stop();
    }
    setupProblem_.clear();
    if (!startAllowed_) {
        return false;
    }
    rez1_ = 1;
    if (checkOnly) {
        rez2_ = setup(0, &blocks.dma);
        if (facts_.extendedBlock) {
            rez1_ = setup(0, &blocks.extended);
        }
    } else {
        initPass(blocks);
    }
    const bool accepted = rez1_ == 1 && rez2_ == 1;
    if (accepted && !checkOnly) {
        initialised_ = true;
    }
    return accepted;
}

// The first refusal is the reason: what the driver says of the block behind it follows from that.
int32_t T_DRIVER::setup(int32_t apply, void* block) {
    const int32_t result = device_.setup(apply, block);
    if (result != 1 && setupProblem_.empty()) {
        setupProblem_ = device_.lastError();
    }
    return result;
}

void T_DRIVER::initPass(ParameterBlocks& blocks) {
    initialised_ = false;
    DEBUG_LOG("ADCParametersDMA INIT structures:");
    blocks.dumpDma();
    rez2_ = setup(1, &blocks.dma);
    DEBUG_LOG("ADCParametersDMA INIT rezult = %d", rez2_);
    DEBUG_LOG("ADCParametersDMA INIT structures rezult:");
    blocks.dumpDma();
    if (facts_.extendedBlock) {
        DEBUG_LOG("ADCParametersDMAEX INIT structures:");
        blocks.dumpExtended();
        rez1_ = setup(1, &blocks.extended);
        DEBUG_LOG("ADCParametersDMAEX INIT rezult = %d", rez1_);
        DEBUG_LOG("ADCParametersDMAEX INIT structures rezult:");
        blocks.dumpExtended();
    } else {
        DEBUG_LOG("ADCParametersDMAEX INIT - missing");
    }
    ADCRingInfo ring{};
    if (device_.get(kADCGetRing, ring)) {
        blocks.dma.m_nDMABlockSize = static_cast<int32_t>(ring.m_nRingSize);
    }
}

bool T_DRIVER::start() {
    if (!initialised_ || !startAllowed_ || started_) {
        return false;
    }
    started_ = device_.start();
    return started_;
}

void T_DRIVER::stop() {
    if (!started_) {
        return;
    }
    started_ = false;
    if (startAllowed_) {
        device_.stop();
    }
    initialised_ = false;
}

}  // namespace tarno2

// Driver and plotting libraries that a host must survive, one a value of FAULT.

#include <cstring>
#include <stdexcept>

#include <tarno2/IADCDevice.h>
#include <tarno2/ISCOPERA.h>

namespace {

class Device final : public IADCDevice {
public:
    void* TARNO2_CALL QueryInterface(const char* /*name*/) override { return nullptr; }
    void TARNO2_CALL Release() override { delete this; }
    int32_t TARNO2_CALL SelectBoard(uint32_t /*number*/) override { return 0; }
    int32_t TARNO2_CALL CloseBoard() override { return 1; }
    int32_t TARNO2_CALL Setup(int32_t /*apply*/, void* /*block*/, int32_t /*zero*/) override { return 0; }
    int32_t TARNO2_CALL Start() override { return 0; }
    void TARNO2_CALL Stop() override {}
    int32_t TARNO2_CALL GetData(int32_t, void*, uint32_t, uint32_t) override { return kADCDataFailed; }
    int32_t TARNO2_CALL LastError(char* text, uint32_t size) override {
        std::strncpy(text, "no such board", size - 1);
        return 1;
    }
    int32_t TARNO2_CALL Get(uint32_t code, void* result) override {
        if (code != kADCGetAbiVersion || FAULT == 4) {
            return 0;
        }
        const uint32_t version = FAULT == 3 ? kADCAbiVersion + 1 : kADCAbiVersion;
        std::memcpy(result, &version, sizeof version);
        return 1;
    }
    int32_t TARNO2_CALL Set(uint32_t /*code*/, const void* /*value*/) override { return 0; }
    int32_t TARNO2_CALL ReadPort(uint32_t* /*lines*/) override { return 0; }
    int32_t TARNO2_CALL WritePort(uint32_t /*lines*/) override { return 0; }
    int32_t TARNO2_CALL WriteAnalog(uint32_t /*output*/, float /*volts*/) override { return 0; }
    int32_t TARNO2_CALL SetProgramDirectory(const char* /*folder*/) override { return 1; }
};

/// A plotting object of another version.
class OtherScoper final : public ISCOPERA {
public:
    uint32_t TARNO2_CALL AbiVersion() override { return FAULT == 6 ? kScoperaAbiVersion - 1 : kScoperaAbiVersion + 1; }
    void TARNO2_CALL Release() override { delete this; }
    void* TARNO2_CALL CreateView(void*) override { return nullptr; }
    void* TARNO2_CALL View() override { return nullptr; }
    void TARNO2_CALL SetEvents(const SCOPERAEvents*) override {}
    int32_t TARNO2_CALL SetColumns(const SCOPERAColumn*, uint32_t) override { return 0; }
    int32_t TARNO2_CALL SetFrames(const SCOPERAFrames*) override { return 0; }
    int32_t TARNO2_CALL SetRange(int32_t, double, double) override { return 0; }
    int32_t TARNO2_CALL GetRange(int32_t, double*, double*) override { return 0; }
    int32_t TARNO2_CALL GetExtremes(double*, double*) override { return 0; }
    int32_t TARNO2_CALL SetOption(uint32_t, int32_t) override { return 0; }
    int32_t TARNO2_CALL GetOption(uint32_t, int32_t*) override { return 0; }
    int32_t TARNO2_CALL SetText(uint32_t, const char*) override { return 0; }
    int32_t TARNO2_CALL SetFont(const char*, int32_t) override { return 0; }
    int32_t TARNO2_CALL SetCursors(const SCOPERACursors*) override { return 0; }
    int32_t TARNO2_CALL GetCursors(SCOPERACursors*) override { return 0; }
    uint32_t TARNO2_CALL PixelWidth() override { return 0; }
    int32_t TARNO2_CALL Render() override { return 0; }
    int32_t TARNO2_CALL SavePicture(const char*) override { return 0; }
    int32_t TARNO2_CALL CopyPicture() override { return 0; }
    int32_t TARNO2_CALL SetFlags(const SCOPERAFlag*, uint32_t) override { return 0; }
    int32_t TARNO2_CALL SetLanes(const SCOPERALane*, uint32_t) override { return 0; }
    int32_t TARNO2_CALL GetColumnExtremes(uint32_t, double*, double*) override { return 0; }
    int32_t TARNO2_CALL SetReadings(const SCOPERAReading*, uint32_t) override { return 0; }
    int32_t TARNO2_CALL SetLevels(const SCOPERALevel*, uint32_t) override { return 0; }
    int32_t TARNO2_CALL ShowLane(uint32_t) override { return 0; }
    int32_t TARNO2_CALL SetClockX(int64_t, double) override { return 0; }
    int32_t TARNO2_CALL SetEarlier(const SCOPERAFrames*, uint32_t) override { return 0; }
};

}  // namespace

#if FAULT == 0
TARNO2_EXPORT void* TARNO2_CALL SomethingElse(const char* /*interfaceName*/, uint32_t /*flags*/) {
    return new Device;
}
#else
TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t flags) {
    if (FAULT == 2) {
        throw std::runtime_error("no memory for a device");
    }
    if (FAULT >= 6 && std::strcmp(interfaceName, TARNO2_SCOPERA_INTERFACE) == 0) {
        return new OtherScoper;
    }
    const bool known = std::strcmp(interfaceName, TARNO2_DEVICE_INTERFACE) == 0 && flags == 0;
    return known && FAULT != 1 ? new Device : nullptr;
}
#endif

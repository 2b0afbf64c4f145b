// A driver with settings of every type, whose only board bears what it was told in its name, and whose search for
// boards ends after as many questions as it was told.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <tarno2/IADCDevice.h>

namespace {

template <size_t Size>
void put(char (&field)[Size], const char* text) {
    std::snprintf(field, Size, "%s", text);
}

ADCSetting setting(const char* key, uint32_t type, const char* caption, const char* captionRu) {
    ADCSetting made{};
    put(made.m_sKey, key);
    made.m_nType = type;
    put(made.m_sCaption, caption);
    put(made.m_sCaptionRu, captionRu);
    return made;
}

class Device final : public IADCDevice {
public:
    Device() {
        settings_ = {setting("Label", kADCSettingText, "Label of the board, part of its name",
                             "Обозначение платы, часть её имени"),
                     setting("Channels", kADCSettingInteger, "Channels", "Каналы"),
                     setting("Rate", kADCSettingReal, "Sample rate of a channel, Hz", "Частота канала, Гц"),
                     setting("Format", kADCSettingChoice, "Sample format", "Формат отсчётов"),
                     setting("Port", kADCSettingChoice, "Port", "Порт"),
                     setting("File", kADCSettingFile, "File to play", "Воспроизводимый файл"),
                     setting("Folder", kADCSettingFolder, "Folder of the calibration", "Папка калибровки"),
                     setting("Host", kADCSettingText, "Host", "Узел"),
                     setting("Asks", kADCSettingInteger, "Length of the search, in questions",
                             "Длительность поиска, в вопросах"),
                     setting("Invert", kADCSettingInteger, "Inverted", "Инвертировать"),
                     setting("Pause", kADCSettingInteger, "Time to open, ms", "Время открытия, мс")};
        at("Label").m_sValue[0] = 'A';
        at("Channels").m_fMinimum = 1;
        at("Channels").m_fMaximum = 16;
        put(at("Channels").m_sValue, "2");
        put(at("Rate").m_sValue, "1000.5");
        put(at("Format").m_sChoices, "u8\ns16le\nf32le\n");
        put(at("Format").m_sChoiceTexts, "8 bit, unsigned\n16 bit, little-endian\nfloating point\n");
        put(at("Format").m_sValue, "s16le");
        put(at("Port").m_sChoices, "/dev/ttyS0\n/dev/ttyUSB0\n");
        at("Port").m_nFlags = kADCSettingFree;
        put(at("Port").m_sValue, "/dev/ttyACM7");
        put(at("File").m_sChoices, "*.wav\n*.dat\n");
        put(at("File").m_sChoiceTexts, "Sound\nRecordings\n");
        at("Host").m_nFlags = kADCSettingFixed;
        put(at("Host").m_sValue, "lab");
        at("Asks").m_fMaximum = 100;
        put(at("Asks").m_sValue, "0");
        at("Invert").m_fMaximum = 1;
        put(at("Invert").m_sValue, "0");
        at("Pause").m_fMaximum = 1000;
        put(at("Pause").m_sValue, "0");
    }

    void* TARNO2_CALL QueryInterface(const char* /*name*/) override { return nullptr; }
    void TARNO2_CALL Release() override { delete this; }
    int32_t TARNO2_CALL SelectBoard(uint32_t number) override {
        std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(at("Pause").m_sValue)));
        return number == 1 ? 1 : 0;
    }
    int32_t TARNO2_CALL CloseBoard() override { return 1; }
    int32_t TARNO2_CALL Setup(int32_t /*apply*/, void* /*block*/, int32_t /*zero*/) override { return 0; }
    int32_t TARNO2_CALL Start() override { return 0; }
    void TARNO2_CALL Stop() override {}
    int32_t TARNO2_CALL GetData(int32_t, void*, uint32_t, uint32_t) override { return kADCDataFailed; }
    int32_t TARNO2_CALL LastError(char* text, uint32_t size) override {
        std::snprintf(text, size, "%s", error_.c_str());
        return error_.empty() ? 0 : 1;
    }
    int32_t TARNO2_CALL Get(uint32_t code, void* result) override;
    int32_t TARNO2_CALL Set(uint32_t code, const void* value) override;
    int32_t TARNO2_CALL ReadPort(uint32_t* /*lines*/) override { return 0; }
    int32_t TARNO2_CALL WritePort(uint32_t /*lines*/) override { return 0; }
    int32_t TARNO2_CALL WriteAnalog(uint32_t /*output*/, float /*volts*/) override { return 0; }
    int32_t TARNO2_CALL SetProgramDirectory(const char* /*folder*/) override {
        told_ += '.';
        return 1;
    }

private:
    ADCSetting& at(const char* key) {
        return *std::find_if(settings_.begin(), settings_.end(),
                             [key](const ADCSetting& each) { return std::strcmp(each.m_sKey, key) == 0; });
    }
    int32_t refuse(const std::string& why) {
        error_ = why;
        return 0;
    }
    int32_t tell(const ADCSettingValue& value);

    std::vector<ADCSetting> settings_;
    int asks_ = 0;      ///< questions until the search ends
    std::string told_;  ///< since the driver was made: its folder is ".", values as they are
    std::string error_;
};

int32_t Device::Get(uint32_t code, void* result) {
    switch (code) {
        case kADCGetAbiVersion:
            std::memcpy(result, &kADCAbiVersion, sizeof kADCAbiVersion);
            return 1;
        case kADCGetChannelCount: {
            const uint32_t channels = 2;
            std::memcpy(result, &channels, sizeof channels);
            return 1;
        }
        case kADCGetSampleFormat:
            *static_cast<ADCSampleFormat*>(result) = {2, 16, 0, 0xFFFF, 0, 0, 0, 1, 0, 0};
            return 1;
        case kADCGetSettings: {
            auto& list = *static_cast<ADCSettingList*>(result);
            list.m_nCount = static_cast<uint32_t>(settings_.size());
            std::copy_n(settings_.begin(), std::min(list.m_nCapacity, list.m_nCount), list.m_pEntries);
            return 1;
        }
        case kADCGetBoardSearch: {
            const uint32_t goesOn = asks_ > 0 ? 1 : 0;
            asks_ = std::max(asks_ - 1, 0);
            std::memcpy(result, &goesOn, sizeof goesOn);
            return 1;
        }
        case kADCGetBoardList: {
            auto& list = *static_cast<ADCBoardList*>(result);
            error_.clear();
            list.m_nCount = asks_ > 0 ? 0 : 1;
            if (list.m_nCapacity > 0 && list.m_nCount > 0) {
                list.m_pEntries[0].m_nNumber = 1;
                put(list.m_pEntries[0].m_sName, ("001 " + told_).c_str());
            }
            return 1;
        }
        default:
            return 0;
    }
}

int32_t Device::Set(uint32_t code, const void* value) {
    if (code == kADCSetBoardSearch) {
        asks_ = std::atoi(at("Asks").m_sValue);
        return 1;
    }
    return code == kADCSetSetting ? tell(*static_cast<const ADCSettingValue*>(value)) : 0;
}

int32_t Device::tell(const ADCSettingValue& value) {
    const std::string key = value.m_sKey;
    const auto found =
        std::find_if(settings_.begin(), settings_.end(), [&key](const ADCSetting& each) { return key == each.m_sKey; });
    if (found == settings_.end()) {
        return refuse("no setting is called " + key);
    }
    if (found->m_nType == kADCSettingFile && std::strstr(value.m_sValue, "missing") != nullptr) {
        return refuse(std::string(value.m_sValue) + ": no such file");
    }
    if (key == "Rate" && std::atof(value.m_sValue) > 5000) {
        return refuse("Rate: from 0.5 to 5000");
    }
    put(found->m_sValue, value.m_sValue);
    told_ += found->m_sValue;
    if (key == "Asks") {
        asks_ = std::atoi(value.m_sValue);
    }
    return 1;
}

}  // namespace

TARNO2_EXPORT void* TARNO2_CALL StaticFactory(const char* interfaceName, uint32_t flags) {
    const bool known = std::strcmp(interfaceName, TARNO2_DEVICE_INTERFACE) == 0 && flags == 0;
    return known ? new Device : nullptr;
}

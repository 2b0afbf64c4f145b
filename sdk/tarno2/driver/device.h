// SPDX-License-Identifier: MIT

#ifndef TARNO2_DRIVER_DEVICE_H
#define TARNO2_DRIVER_DEVICE_H

#include <cctype>
#include <cstring>
#include <exception>
#include <mutex>
#include <new>
#include <stdint.h>
#include <string>

#include <tarno2/IADCDevice.h>
#include <tarno2/driver/settings.h>
#include <tarno2/driver/setup.h>

namespace tarno2 {
namespace sdk {

/// The settings of a driver, the words for what failed, the slots that most boards have no use for, and a net under all
/// calls.
class Device : public IADCDevice {
public:
    void* TARNO2_CALL QueryInterface(const char* name) noexcept override {
        return name != nullptr && std::strcmp(name, TARNO2_DEVICE_INTERFACE) == 0 ? static_cast<IADCDevice*>(this)
                                                                                  : nullptr;
    }
    int32_t TARNO2_CALL LastError(char* text, uint32_t size) noexcept override {
        return text != nullptr && size > 0 ? problem_.copy(text, size) : 0;
    }
    int32_t TARNO2_CALL SetProgramDirectory(const char* folder) noexcept override {
        return guarded([&] {
#ifdef _WIN32
            const char separator = '\\';
#else
            const char separator = '/';
#endif
            const std::lock_guard<std::mutex> lock(mutex_);
            programDirectory_ = folder != nullptr ? folder : "";
            const std::string file = programDirectory_ + separator + name_ + ".cfg";
            const bool read = settings_.readFile(file);
            settingsWereRead();
            const bool usable = settingsChanged();
            return (read || fail("%s can't be read.", file.c_str())) && usable ? 1 : 0;
        });
    }
    int32_t TARNO2_CALL ReadPort(uint32_t*) noexcept override {
        return problem_.set("The board has no digital inputs outside the samples.");
    }
    int32_t TARNO2_CALL WritePort(uint32_t) noexcept override {
        return problem_.set("The board has no digital outputs.");
    }
    int32_t TARNO2_CALL WriteAnalog(uint32_t, float) noexcept override {
        return problem_.set("The board has no analog outputs.");
    }

protected:
    explicit Device(const std::string& name) : name_(name) {
        std::string variable = "TARNO2_" + name;
        for (size_t i = 0; i < variable.size(); ++i) {
            variable[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(variable[i])));
        }
        settings_.readEnvironment(variable);
    }
    virtual ~Device() {}

    /// Add settings in the constructor; read them in the calls of the host.
    Settings& settings() {
        return settings_;
    }
    /// The folder of the program's settings.
    const std::string& programDirectory() const {
        return programDirectory_;
    }
    /// Settings were read or changed. False after `fail`: a value can't be used, and a change is taken back. Under a
    /// lock.
    virtual bool settingsChanged() {
        return true;
    }

    /// Keeps the words for the user and returns false. Any thread.
    TARNO2_PRINTF(2, 3) bool fail(const char* format, ...) {
        va_list arguments;
        va_start(arguments, format);
        problem_.print(format, arguments);
        va_end(arguments);
        return false;
    }
    Problem& problem() {
        return problem_;
    }

    /// Runs a call of the host; an exception ends as `fail`.
    template <typename Call>
    int32_t guarded(Call call) noexcept {
        try {
            return call();
        } catch (const std::bad_alloc&) {
            problem_.set("Not enough memory.");
        } catch (const std::exception& e) {
            problem_.set("Unexpected: %s", e.what());
        } catch (...) {
            problem_.set("Unexpected error.");
        }
        return 0;
    }

    /// Before `settingsChanged`; under the lock.
    virtual void settingsWereRead() = 0;
    /// Held where settings change, and where any thread may ask about them.
    std::mutex& mutex() {
        return mutex_;
    }
    /// kADCSetSetting, while nothing runs.
    bool changeSetting(const void* value) {
        ADCSettingValue setting;
        std::memcpy(&setting, value, sizeof setting);
        if (setting.m_sKey == nullptr || setting.m_sValue == nullptr) {
            return fail("The setting has no key or no value.");
        }
        const std::lock_guard<std::mutex> lock(mutex_);
        const std::string before = settings_.hostValue(setting.m_sKey);
        std::string why;
        if (!settings_.set(setting.m_sKey, setting.m_sValue, why)) {
            return fail("%s", why.c_str());
        }
        settingsWereRead();
        if (settingsChanged()) {
            return true;
        }
        char words[256];
        static_cast<void>(problem_.copy(words, sizeof words));
        static_cast<void>(settings_.set(setting.m_sKey, before, why));
        static_cast<void>(settingsChanged());
        return fail("%s", words);
    }

private:
    const std::string name_;
    std::string programDirectory_;
    std::mutex mutex_;
    Settings settings_;
    Problem problem_;
};

}  // namespace sdk
}  // namespace tarno2

#endif  // TARNO2_DRIVER_DEVICE_H

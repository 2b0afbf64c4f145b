#pragma once

#include <gtest/gtest.h>
#include <string>

#include "core/devices/driver_catalogue.h"
#include "platform/registry.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {

/// A library in the catalogue under that name for as long as this lives; beside it the drivers of the build.
class InstalledDriver {
public:
    InstalledDriver(const std::string& name, const std::string& library) : key_(driverKey(name)) {
        std::string where;
        EXPECT_TRUE(registrySetString(RegistryRoot::LocalMachine, key_, "path", library, where).ok()) << where;
    }
    ~InstalledDriver() {
        std::string where;
        EXPECT_TRUE(registryDeleteKey(RegistryRoot::LocalMachine, key_, where).ok()) << where;
    }
    InstalledDriver(const InstalledDriver&) = delete;
    InstalledDriver& operator=(const InstalledDriver&) = delete;

private:
    std::string key_;
    TemporaryFolder folder_;
    ScopedEnvironment registry_{"TARNO2_REGISTRY", folder_.path() + ":" + TARNO2_BIN + "/registry.d"};
};

/// The driver of modules/settings_driver.cpp, as "Settings".
class InstalledSettingsDriver : public InstalledDriver {
public:
    InstalledSettingsDriver() : InstalledDriver("Settings", SETTINGS_DRIVER) {}
};

}  // namespace tarno2::test

#pragma once

#include <gtest/gtest.h>
#include <string>

#include "core/devices/driver_catalogue.h"
#include "platform/registry.h"
#include "tests/support/temporary_folder.h"

namespace tarno2::test {

/// The driver of modules/settings_driver.cpp in the catalogue, as "Settings", for as long as it lives; beside it the
/// drivers of the build.
class InstalledSettingsDriver {
public:
    InstalledSettingsDriver() {
        std::string where;
        EXPECT_TRUE(
            registrySetString(RegistryRoot::LocalMachine, driverKey("Settings"), "path", SETTINGS_DRIVER, where).ok())
            << where;
    }
    ~InstalledSettingsDriver() {
        std::string where;
        EXPECT_TRUE(registryDeleteKey(RegistryRoot::LocalMachine, driverKey("Settings"), where).ok()) << where;
    }
    InstalledSettingsDriver(const InstalledSettingsDriver&) = delete;
    InstalledSettingsDriver& operator=(const InstalledSettingsDriver&) = delete;

private:
    TemporaryFolder folder_;
    ScopedEnvironment registry_{"TARNO2_REGISTRY", folder_.path() + ":" + TARNO2_BIN + "/registry.d"};
};

}  // namespace tarno2::test

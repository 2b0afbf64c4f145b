#include "core/devices/driver.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

#include "core/devices/board_selection.h"
#include "core/devices/driver_catalogue.h"
#include "core/devices/scoper_library.h"
#include "language/language_table.h"
#include "platform/paths.h"
#include "platform/registry.h"
#include "tests/core/rig.h"

namespace tarno2::test {
namespace {

std::vector<std::string> installed(size_t capacity = 1000) {
    std::vector<std::string> names;
    EnumerateDrivers([&names](const std::string& name) { names.push_back(name); }, capacity);
    return names;
}

std::string libraryOfFault(int fault) {
    return joinPath(executableFolder(), FAULTY_DRIVER_PREFIX + std::to_string(fault) + FAULTY_DRIVER_SUFFIX);
}

/// Entries in the catalogue for the time of a test: in the registry where there is one, else in a folder of texts.
class Catalogue {
public:
    void install(const std::string& name, const std::string& path) { installKey(driverKey(name), path); }
    void installKey(const std::string& key, const std::string& path) {
        std::string where;
        ASSERT_TRUE(registrySetString(RegistryRoot::LocalMachine, key, "path", path, where).ok()) << where;
        keys_.insert(key);
    }
    ~Catalogue() {
        for (const auto& key : keys_) {
            std::string where;
            EXPECT_TRUE(registryDeleteKey(RegistryRoot::LocalMachine, key, where).ok()) << where;
        }
    }

    TemporaryFolder folder;

private:
    ScopedEnvironment texts_{"TARNO2_REGISTRY", folder.path()};
    std::set<std::string> keys_;
};

TEST(Driver, FaultyLibrariesAreRefused) {
    Catalogue catalogue;
    const std::string text = catalogue.folder.write("text.bin", "this is no library");
    struct Case {
        const char* what;
        std::string path;
        bool loads;
        const char* why;
    };
    const Case cases[] = {{"missing", catalogue.folder.file("missing.bin"), false, ""},
                          {"no library", text, false, ""},
                          {"a folder", catalogue.folder.path(), false, ""},
                          {"an empty path", "", false, ""},
                          {"a path of 256 bytes", std::string(256, 'x'), false, ""},
                          {"no factory", libraryOfFault(0), false, "StaticFactory"},
                          {"makes no device", libraryOfFault(1), false, "IADCDevice"},
                          {"throws", libraryOfFault(2), false, ""},
                          {"another version", libraryOfFault(3), false, "version 2"},
                          {"tells no version", libraryOfFault(4), false, "version"},
                          {"loads, has no board", libraryOfFault(5), true, ""}};
    languageTable().select(kLanguageEnglish);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ScopedDebugLog log;
        catalogue.install("Tarno2 test", c.path);
        {
            std::vector<std::string> faults;
            BoardSelection selection([&](const std::string& fault) { faults.push_back(fault); },
                                     catalogue.folder.path());
            EXPECT_EQ(selection.DriverBoxChange("Tarno2 test"), c.loads);
            EXPECT_EQ(selection.driver().loaded(), c.loads);
            EXPECT_FALSE(selection.driver().startAllowed());
            EXPECT_TRUE(selection.boards().empty());
            EXPECT_FALSE(selection.problem().empty());
            EXPECT_NE(selection.problem().find(c.why), std::string::npos) << selection.problem();
            EXPECT_EQ(selection.apply("Tarno2 test", 1),
                      c.loads ? ApplyOutcome::BoardError : ApplyOutcome::DriverError);
            EXPECT_EQ(selection.apply("Tarno2 other", 1), ApplyOutcome::DriverNotFound);
            EXPECT_EQ(selection.apply("", 1), ApplyOutcome::NoDriverName);
            EXPECT_EQ(faults, std::vector<std::string>{});
        }
        EXPECT_EQ(firstMissing(log.finish(), {"Driver load \"Tarno2 test\"",
                                              c.loads ? "--- Driver load OK" : "!!!! Driver load error"}),
                  "");
    }
}

TEST(Driver, FailedLoadLeavesNoEarlierDriver) {
    Catalogue catalogue;
    catalogue.install("Tarno2 test", libraryOfFault(5));
    catalogue.install("Tarno2 faulty", libraryOfFault(3));
    std::vector<std::string> faults;
    std::string why;
    T_DRIVER driver([&](const std::string& fault) { faults.push_back(fault); });
    ASSERT_TRUE(driver.LoadDriver("Tarno2 test", catalogue.folder.path(), why)) << why;
    EXPECT_EQ(driver.name(), "Tarno2 test");
    EXPECT_FALSE(driver.LoadDriver("Tarno2 faulty", catalogue.folder.path(), why));
    EXPECT_FALSE(driver.loaded());
    EXPECT_EQ(driver.maximumBuffer(), 0U);
    EXPECT_EQ(driver.name(), "");
    ASSERT_TRUE(driver.LoadDriver("Tarno2 test", catalogue.folder.path(), why)) << why;
}

TEST(ScoperLibrary, FaultyLibrariesAreRefused) {
    Catalogue catalogue;
    const std::pair<std::string, const char*> cases[] = {
        {catalogue.folder.file("missing.bin"), ""},
        {libraryOfFault(0), "StaticFactory"},
        {libraryOfFault(2), "ISCOPERA"},
        {libraryOfFault(5), "ISCOPERA"},
        {libraryOfFault(6), "interface has version 4, this program's 5"},
        {libraryOfFault(7), "interface has version 6, this program's 5"}};
    for (const auto& [path, reason] : cases) {
        SCOPED_TRACE(path);
        catalogue.installKey(scoperKey(), path);
        ScopedDebugLog log;
        ScoperLibrary library;
        std::string why;
        EXPECT_FALSE(library.load(why));
        EXPECT_EQ(library.object(), nullptr);
        EXPECT_NE(why.find(reason), std::string::npos) << why;
        EXPECT_EQ(firstMissing(log.finish(), {"Scoper not loaded"}), "");
    }
}

TEST(BoardSelection, KeepsWhatIsNotThereAndTakesNothingInItsPlace) {
    Catalogue catalogue;
    BoardSelection selection([](const std::string& fault) { ADD_FAILURE() << fault; }, catalogue.folder.path());
    ProgramSettings settings;
    EXPECT_EQ(selection.applySaved(settings), ApplyOutcome::NoDriverName);
    catalogue.install("Tarno2 test", libraryOfFault(5));
    ASSERT_TRUE(selection.DriverBoxChange("Tarno2 test"));
    settings.wish.driver = "Tarno2 other";
    settings.wish.base = 7;
    ScopedDebugLog log;
    EXPECT_EQ(selection.applySaved(settings), ApplyOutcome::DriverNotFound);
    EXPECT_FALSE(selection.driver().loaded());
    EXPECT_EQ(selection.driverName(), "Tarno2 other");
    EXPECT_EQ(selection.boardNumber(), 7U);
    settings.wish.driver = "Tarno2 test";
    EXPECT_EQ(selection.applySaved(settings), ApplyOutcome::BoardError);
    EXPECT_FALSE(selection.driver().startAllowed());
    EXPECT_EQ(selection.boardNumber(), 7U);
    EXPECT_EQ(firstMissing(log.finish(), {"LoadConfigOk", "Driver not founded", "LoadConfigOk", "Base number Error"}),
              "");
}

TEST(BoardSelection, SetsADrqNumberThatTheBoardOffers) {
    FakeDevice device;
    std::string why;
    BoardSelection selection([](const std::string& fault) { ADD_FAILURE() << fault; }, "");
    ASSERT_TRUE(selection.driver().attach(&device, "Fake", "", why)) << why;
    EXPECT_TRUE(selection.setDrqNumber(3)) << "there is no choice";
    EXPECT_EQ(device.countCalls("Set "), 0U);
    device.drqNumbers = {1, 5, 7};
    ScopedDebugLog log;
    EXPECT_TRUE(selection.setDrqNumber(5));
    EXPECT_FALSE(selection.setDrqNumber(3)) << "not offered";
    EXPECT_FALSE(selection.setDrqNumber(7)) << "taken";
    EXPECT_EQ(firstMissing(log.finish(), {"Drq number Error", "Drq number Error"}), "");
}

TEST(Driver, RegistryTexts) {
    if (kPathSeparator == '\\') {
        GTEST_SKIP() << "the real registry comes first there, and its names are no longer than 255 characters";
    }
    Catalogue catalogue;
    const std::string heading = "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\" + driverCatalogueKey();
    const std::string longName(999, 'n');
    catalogue.folder.write("a.reg", heading + "\\Number]\n\"path\"=dword:1\n" + heading.substr(10) +
                                        "\\Binary]\n\"path\"=hex:61,62\n" + heading.substr(10) +
                                        "\\None]\n\"other\"=\"x\"\n");
    catalogue.folder.write("b.reg", heading + "\\" + longName + "]\n\"path\"=\"sub/driver.so\"\n");
    catalogue.folder.write("c.reg", heading + "\\" + longName + "cut]\n\"path\"=\"/x\"\n");
    catalogue.folder.write("d.txt", heading + "\\NoReg]\n\"path\"=\"/x\"\n");
    EXPECT_EQ(installed(), (std::vector<std::string>{"Number", "Binary", "None", longName, longName}));
    EXPECT_EQ(installed(3), (std::vector<std::string>{"Nu", "Bi", "No", "nn", "nn"}));
    EXPECT_TRUE(installed(1).empty());
    EXPECT_TRUE(installed(0).empty());
    std::string why;
    for (const char* name : {"Number", "Binary", "None", "NoReg", ""}) {
        why.clear();
        EXPECT_FALSE(driverLibraryPath(name, why).has_value()) << name;
        EXPECT_FALSE(why.empty()) << name;
    }
    EXPECT_EQ(driverLibraryPath(longName, why), joinPath(catalogue.folder.path(), "sub/driver.so"));

    const ScopedEnvironment nowhere("TARNO2_REGISTRY", catalogue.folder.file("missing"));
    EXPECT_TRUE(installed().empty()) << "no catalogue";
}

TEST(Driver, HoldersThatDoNotAddUpAreReported) {
    languageTable().select(kLanguageEnglish);
    std::vector<std::string> faults;
    FakeDevice device;
    {
        T_DRIVER driver([&](const std::string& fault) { faults.push_back(fault); });
        std::string why;
        ASSERT_TRUE(driver.attach(&device, "Fake", "folder", why));
        driver.RelBlock();
        driver.AddBlock();
        driver.AddBlock();
        driver.FREE();
        EXPECT_FALSE(driver.loaded());
        EXPECT_EQ(driver.blockCount(), 1);
    }
    EXPECT_EQ(faults, (std::vector<std::string>{"Error: T_DRIVER::RelBlock() \nBlocked count under 0",
                                                "Error: T_DRIVER::FREE() \nBlocked count != 0 when free",
                                                "Error: T_DRIVER::~T_DRIVER() \nBlocked count != 0 when destruct"}));
    EXPECT_EQ(device.calls(), (std::vector<std::string>{"Get " + std::to_string(kADCGetAbiVersion),
                                                        "SetProgramDirectory folder", "Release"}));
}

TEST(Driver, TellsThatItsSettingsFileCanNotBeUsed) {
    FakeDevice device;
    device.settingsUsable = false;
    T_DRIVER driver([](const std::string& fault) { ADD_FAILURE() << fault; });
    std::string why;
    ASSERT_TRUE(driver.attach(&device, "Fake", "folder", why));
    EXPECT_EQ(driver.settingsProblem(), "Driver settings: scripted");
    driver.FREE();
    EXPECT_EQ(driver.settingsProblem(), "");
}

TEST(Driver, ThrowingDriverIsSurvived) {
    for (const char* call : {"Get", "SelectBoard", "Release", "SetProgramDirectory folder"}) {
        SCOPED_TRACE(call);
        FakeDevice device;
        device.throwing = call;
        T_DRIVER driver([](const std::string& fault) { ADD_FAILURE() << fault; });
        std::string why;
        const bool attached = driver.attach(&device, "Fake", "folder", why);
        EXPECT_EQ(attached, std::string(call) != "Get");
        EXPECT_EQ(driver.settingsProblem(), std::string(call) == "SetProgramDirectory folder"
                                                ? "Driver settings: the driver threw an exception: thrown by the driver"
                                                : "");
        EXPECT_EQ(driver.selectBoard(1, why), attached && std::string(call) != "SelectBoard");
        driver.FREE();
        EXPECT_FALSE(driver.loaded());
        EXPECT_EQ(device.countCalls("Release"), 1U);
    }
}

}  // namespace
}  // namespace tarno2::test

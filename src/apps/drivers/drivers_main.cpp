#include <iostream>
#include <string>

#include "apps/drivers/board_search.h"
#include "apps/drivers/driver_check.h"
#include "apps/drivers/settings_table_text.h"
#include "apps/options/usual_options.h"
#include "core/devices/board_selection.h"
#include "core/devices/driver.h"
#include "core/devices/driver_catalogue.h"
#include "language/language_table.h"
#include "platform/paths.h"
#include "platform/registry.h"
#include "platform/run_program.h"

namespace {

using namespace tarno2;

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kBadUse = 2;

void tellFault(const std::string& fault) {
    std::cerr << fault << '\n';
}

// Says of one driver where it lies, and whether it loads and with which boards, or why not.
bool describeDriver(const std::string& name) {
    std::string why;
    const auto path = driverLibraryPath(name, why);
    std::cout << name << "\n    path: " << (path ? *path : "-") << '\n';
    T_DRIVER driver(tellFault);
    if (!driver.LoadDriver(name, programDirectory(), why)) {
        std::cout << "    does not load: " << why << '\n';
        return false;
    }
    const bool searched = waitForBoards(driver.device());
    const auto boards = driver.device().boards();
    std::cout << "    loads, boards: " << boards.size() << (searched ? "\n" : " (still searching)\n");
    for (const ADCBoardEntry& board : boards) {
        std::cout << "        " << board.m_sName << '\n';
    }
    if (boards.empty()) {
        if (const std::string reason = driver.device().lastError(); !reason.empty()) {
            std::cout << "        " << reason << '\n';
        }
    }
    return true;
}

int list() {
    const auto names = BoardSelection::installedDrivers();
    if (names.empty()) {
        std::cout << "No drivers are installed.\n";
    }
    bool good = true;
    for (const std::string& name : names) {
        good = describeDriver(name) && good;
    }
    return good ? kDone : kFailed;
}

int settings(const std::string& name) {
    std::string why;
    T_DRIVER driver(tellFault);
    if (!driver.LoadDriver(name, programDirectory(), why)) {
        std::cerr << "tarno2-drivers: " << name << " does not load: " << why << '\n';
        return kFailed;
    }
    const auto wanted = readDriverSettings(driver.device());
    std::cout << (wanted.empty() ? name + " has no settings.\n" : settingsTableText(wanted));
    return kDone;
}

int add(const std::string& name, const std::string& library) {
    const std::string path = isAbsolutePath(library) ? library : joinPath(currentFolder(), library);
    std::string where;
    const OsError error = registrySetString(RegistryRoot::LocalMachine, driverKey(name), "path", path, where);
    if (!error.ok()) {
        std::cerr << "tarno2-drivers: " << where << ": " << error.text() << '\n';
        return kFailed;
    }
    std::cout << "Listed in " << where << '\n';
    return describeDriver(name) ? kDone : kFailed;
}

int remove(const std::string& name) {
    std::string where;
    const OsError error = registryDeleteKey(RegistryRoot::LocalMachine, driverKey(name), where);
    if (!error.ok()) {
        std::cerr << "tarno2-drivers: " << name << ": " << error.text() << '\n';
        return kFailed;
    }
    std::cout << "Removed from " << where << '\n';
    return kDone;
}

int parseAndRun(int argc, char** argv) {
    languageTable().select(kLanguageEnglish);
    CLI::App app{"Lists, installs and removes the board drivers of Tarno2.", "tarno2-drivers"};
    app.footer(
        "Exit status: 0 done, 1 a driver does not load, something is wrong with it, or the change failed, 2 bad use.");
    addUsualOptions(app);
    app.require_subcommand(1);
    std::string name;
    std::string library;
    app.add_subcommand("list", "Show every installed driver, where it lies, and whether it loads or why not");
    CLI::App* addCommand = app.add_subcommand("add", "List a driver library in the registry");
    addCommand->add_option("name", name, "Name of the driver, as the user sees it")->required();
    addCommand->add_option("library", library, "Path of its library")->required();
    CLI::App* removeCommand = app.add_subcommand("remove", "Take a driver out of the registry; its library stays");
    removeCommand->add_option("name", name, "Name of the driver")->required();
    CLI::App* settingsCommand = app.add_subcommand("settings", "Show what a driver can be told, and what it goes by");
    settingsCommand->add_option("name", name, "Name of the driver")->required();
    CLI::App* checkCommand =
        app.add_subcommand("check", "Call a driver as a recording does; tell what is missing, wrong or slow");
    checkCommand->add_option("name", name, "Name of the driver")->required();
    uint32_t board = 1;
    checkCommand->add_option("board", board, "Number of its board in its list, 1 without it");
    try {
        app.parse(argc, argv);
        if (checkCommand->parsed()) {
            return checkDriver(name, board) ? kDone : kFailed;
        }
        if (addCommand->parsed()) {
            return add(name, library);
        }
        if (settingsCommand->parsed()) {
            return settings(name);
        }
        return removeCommand->parsed() ? remove(name) : list();
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kBadUse;
    }
}

}  // namespace

int main(int argc, char** argv) {
    return runProgram("tarno2-drivers", kFailed, [&] { return parseAndRun(argc, argv); });
}

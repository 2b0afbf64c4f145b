#include "core/devices/board_selection.h"

#include <algorithm>
#include <utility>

#include "config/logs/debug_log.h"
#include "core/devices/driver_catalogue.h"
#include "platform/c_locale.h"

namespace tarno2 {

namespace {

constexpr size_t kBaseDigits = 3;

// The list's texts begin with the board's number as three hexadecimal digits, in either case of letters.
bool beginsWithNumber(const ADCBoardEntry& entry, uint32_t number) {
    const std::string begin = std::string(entry.m_sName).substr(0, kBaseDigits);
    return begin == formatText("%03x", number) || begin == formatText("%03X", number);
}

std::string nameBehindNumber(const ADCBoardEntry& entry) {
    const std::string text = entry.m_sName;
    return text.substr(std::min(text.find_first_not_of(' ', kBaseDigits), text.size()));
}

}  // namespace

TextId boardStatusWord(BoardStatus status) {
    switch (status) {
        case BoardStatus::DriverError:
            return TextId::StatusDriver;
        case BoardStatus::Unplugged:
            return TextId::StatusUnplug;
        case BoardStatus::Error:
            return TextId::StatusError;
        case BoardStatus::Ready:
            break;
    }
    return TextId::StatusReady;
}

BoardStatus statusOf(ApplyOutcome outcome) {
    return outcome == ApplyOutcome::Done         ? BoardStatus::Ready
           : outcome == ApplyOutcome::BoardError ? BoardStatus::Error
           : outcome == ApplyOutcome::Searching  ? BoardStatus::Error
                                                 : BoardStatus::DriverError;
}

BoardSelection::BoardSelection(FaultReporter faults, std::string programDirectory)
    : driver_(std::move(faults)), programDirectory_(std::move(programDirectory)) {}

std::vector<std::string> BoardSelection::installedDrivers() {
    std::vector<std::string> names;
    EnumerateDrivers([&names](const std::string& name) { names.push_back(name); });
    return names;
}

bool BoardSelection::DriverBoxChange(const std::string& name) {
    if (!load(name)) {
        return false;
    }
    if (!boards_.empty()) {
        BaseBoxChange(boards_.front().m_nNumber);
    }
    return true;
}

ApplyOutcome BoardSelection::choose(const std::string& name) {
    if (!DriverBoxChange(name)) {
        return ApplyOutcome::DriverError;
    }
    return driver_.startAllowed()          ? ApplyOutcome::Done
           : boards_.empty() && searching_ ? ApplyOutcome::Searching
                                           : ApplyOutcome::BoardError;
}

ApplyOutcome BoardSelection::chooseFirstUsable() {
    for (const std::string& name : installedDrivers()) {
        if (choose(name) == ApplyOutcome::Done) {
            return ApplyOutcome::Done;
        }
    }
    return ApplyOutcome::DriverError;
}

// What was known of the driver before gives way to the name of the next one.
void BoardSelection::forget(const std::string& nextDriver) {
    driverName_ = nextDriver;
    boardNumber_ = 0;
    anyBoard_ = true;
    boardName_.clear();
    drqNumber_.reset();
    boards_.clear();
    settings_.clear();
    refusals_.clear();
    searching_ = false;
    problem_.clear();
}

// Loads a driver without taking any of its boards, which another program may want.
bool BoardSelection::load(const std::string& name) {
    DEBUG_LOG("Driver load \"%s\"", name.c_str());
    forget(name);
    if (!driver_.LoadDriver(name, programDirectory_, problem_)) {
        DEBUG_LOG("!!!! Driver load error");
        DEBUG_LOG("!!!! %s", problem_.c_str());
        return false;
    }
    DEBUG_LOG("Driver load OK");
    refusals_ = tellDriver(driver_.device(), onlySettings_ ? *onlySettings_ : driverValuesOf(driverSettings_, name));
    readBoards();
    settings_ = readDriverSettings(driver_.device());
    return true;
}

// A driver that has ended its search before it is asked has all boards in its list.
void BoardSelection::readBoards() {
    searching_ = driver_.device().number(kADCGetBoardSearch, 0) == 1;
    boards_ = driver_.device().boards();
    if (boards_.empty()) {
        problem_ = driver_.device().lastError();
    }
}

bool BoardSelection::BaseBoxChange(uint32_t number) {
    DEBUG_LOG("Setup Base = 0x%x , DRQ = %d", number, 0);
    boardNumber_ = number;
    anyBoard_ = false;
    const auto board = std::ranges::find(boards_, number, [](const ADCBoardEntry& entry) { return entry.m_nNumber; });
    boardName_ = board == boards_.end() ? std::string() : nameBehindNumber(*board);
    driver_.setBoardName(boardName_);
    if (!driver_.selectBoard(number, problem_)) {
        DEBUG_LOG("!!!! Board 0x%x can't be used: %s", number, problem_.c_str());
        return false;
    }
    if (driver_.facts().hotPlug) {
        DEBUG_LOG("But hotplug device");
    }
    logCapabilities();
    return true;
}

void BoardSelection::logCapabilities() const {
    const BoardFacts& facts = driver_.facts();
    DEBUG_LOG(facts.frequencies.empty() ? "Driver Freq List = NULL" : "Driver Freq List != NULL");
    DEBUG_LOG("Driver BoardMode accessible = %u", facts.boardModes & 0xFU);
    DEBUG_LOG(facts.cutMode ? "Cut mode accesible" : "Cut mode not accesible");
}

ApplyOutcome BoardSelection::apply(const std::string& driverName, uint32_t baseNumber) {
    DEBUG_LOG("LoadConfigOk");
    if (driverName.empty()) {
        DEBUG_LOG("Driver name = 0");
        return ApplyOutcome::NoDriverName;
    }
    const auto drivers = installedDrivers();
    if (std::find(drivers.begin(), drivers.end(), driverName) == drivers.end()) {
        DEBUG_LOG("Driver not founded");
        driver_.FREE();
        forget(driverName);
        boardNumber_ = baseNumber;
        problem_ = "no driver of this name is installed";
        return ApplyOutcome::DriverNotFound;
    }
    const bool loaded = load(driverName);
    boardNumber_ = baseNumber;
    anyBoard_ = false;
    if (!loaded) {
        return ApplyOutcome::DriverError;
    }
    return chooseFound();
}

const ADCBoardEntry* BoardSelection::wantedBoard() const {
    if (anyBoard_) {
        return boards_.empty() ? nullptr : &boards_.front();
    }
    auto board =
        std::ranges::find_if(boards_, [this](const auto& entry) { return beginsWithNumber(entry, boardNumber_); });
    if (board == boards_.end() && !boardName_.empty()) {
        board = std::ranges::find(boards_, boardName_, nameBehindNumber);
    }
    return board == boards_.end() ? nullptr : &*board;
}

ApplyOutcome BoardSelection::chooseFound() {
    const ADCBoardEntry* const board = wantedBoard();
    if (board == nullptr) {
        driver_.forgetBoard();
        if (searching_) {
            return ApplyOutcome::Searching;
        }
        DEBUG_LOG("Base number Error");
        if (problem_.empty()) {
            problem_ = anyBoard_ || boards_.empty() ? "the driver has found no board"
                                                    : formatText("the driver has no board %03x", boardNumber_);
        }
        return ApplyOutcome::BoardError;
    }
    if (!BaseBoxChange(board->m_nNumber)) {
        return ApplyOutcome::BoardError;
    }
    if (drqNumber_) {
        setDrqNumber(*drqNumber_);
    }
    return ApplyOutcome::Done;
}

ApplyOutcome BoardSelection::changeSetting(const DriverValue& value) {
    if (auto why = tellDriver(driver_.device(), value)) {
        refusal_ = std::move(*why);
        DEBUG_LOG("!!!! Driver setting %s = \"%s\" refused: %s", value.key.c_str(), value.value.c_str(),
                  refusal_.c_str());
        return ApplyOutcome::SettingRefused;
    }
    driverSettings_ = withDriverValue(driverSettings_, driverName_, value);
    return lookAgain();
}

ApplyOutcome BoardSelection::searchAgain() {
    const uint32_t anew = 1;
    if (!driver_.device().set(kADCSetBoardSearch, &anew)) {
        DEBUG_LOG("The driver does not search for boards by itself");
    }
    return lookAgain();
}

ApplyOutcome BoardSelection::lookAgain() {
    problem_.clear();
    readBoards();
    const ApplyOutcome outcome = chooseFound();
    settings_ = readDriverSettings(driver_.device());
    return outcome;
}

bool BoardSelection::followSearch() {
    if (searching_) {
        readBoards();
    }
    return searching_;
}

ApplyOutcome BoardSelection::apply(const std::string& driverName, uint32_t baseNumber, int32_t drqNumber) {
    const ApplyOutcome outcome = apply(driverName, baseNumber);
    drqNumber_ = drqNumber;
    if (outcome == ApplyOutcome::Done) {
        setDrqNumber(drqNumber);
    }
    return outcome;
}

ApplyOutcome BoardSelection::applySaved(const ProgramSettings& settings) {
    const ApplyOutcome outcome = apply(settings.wish.driver, settings.wish.base, settings.drqNumber);
    if (outcome == ApplyOutcome::Done) {
        static_cast<void>(hasFrequency(settings.wish.frequency));
    }
    return outcome;
}

std::vector<int32_t> BoardSelection::drqNumbers() {
    return driver_.device().integers(kADCGetDrqList);
}

bool BoardSelection::setHardwareAverage(bool on) {
    if (!driver_.facts().hardwareAverage) {
        return !on;
    }
    const uint32_t value = on ? 1 : 0;
    if (driver_.device().set(kADCSetHardwareAverage, &value)) {
        return true;
    }
    problem_ = driver_.device().lastError();
    DEBUG_LOG("!!!! Hardware average = %u refused: %s", value, problem_.c_str());
    return false;
}

bool BoardSelection::setDrqNumber(int32_t number) {
    drqNumber_ = number;
    const auto offered = drqNumbers();
    if (offered.empty()) {
        return true;
    }
    const bool known = std::find(offered.begin(), offered.end(), number) != offered.end();
    if (known && driver_.device().set(kADCSetDrq, &number)) {
        return true;
    }
    DEBUG_LOG("Drq number Error");
    return false;
}

bool BoardSelection::hasFrequency(double hertz) const {
    const auto& list = driver_.facts().frequencies;
    const bool found = list.empty() || std::find(list.begin(), list.end(), static_cast<float>(hertz)) != list.end();
    if (!found) {
        DEBUG_LOG("Frequency not founded");
    }
    return found;
}

}  // namespace tarno2

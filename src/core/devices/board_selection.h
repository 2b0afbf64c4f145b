#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "config/settings/program_settings.h"
#include "core/devices/driver.h"
#include "core/devices/driver_settings.h"
#include "language/text_ids.h"

namespace tarno2 {

/// State of the chosen board, as the status bar shows it. The negative ones end console mode.
enum class BoardStatus : int32_t { DriverError = -3, Unplugged = -2, Error = -1, Ready = 0 };
/// Its word for the operator and the log.
[[nodiscard]] TextId boardStatusWord(BoardStatus status);

/// Why settings could not be applied to driver and board.
enum class ApplyOutcome {
    Done,
    NoDriverName,
    DriverNotFound,  ///< no driver of that name is installed
    DriverError,     ///< it is installed but can't be loaded
    BoardError,      ///< the driver has no such board, or the board can't be used
    Searching,       ///< the driver still searches for boards, and has not found this one yet
    SettingRefused   ///< the driver does not take what it was told; all is as before
};

/// The state that a board is in after settings were applied.
[[nodiscard]] BoardStatus statusOf(ApplyOutcome outcome);

/// The choice of a driver and of one of its boards, and what the driver is told: what stands behind the driver and
/// board selectors of the window and behind the names in an autosettings file. One thread at a time.
class BoardSelection {
public:
    /// `programDirectory` is handed to the drivers.
    BoardSelection(FaultReporter faults, std::string programDirectory);

    /// Names of the installed drivers, in the registry's order.
    [[nodiscard]] static std::vector<std::string> installedDrivers();

    /// What the drivers are told as soon as they are loaded, in the form of the settings file. `changeSetting` keeps
    /// it.
    void setDriverSettings(std::string text) { driverSettings_ = std::move(text); }
    [[nodiscard]] const std::string& driverSettings() const { return driverSettings_; }
    /// What the only driver of an unattended recording is told, in place of that.
    void setOnlySettings(std::vector<DriverValue> values) { onlySettings_ = std::move(values); }
    /// What of it did not reach the driver that was loaded last.
    [[nodiscard]] const std::vector<DriverRefusal>& refusals() const { return refusals_; }

    /// Loads a driver and chooses its first usable board. False when it can't be loaded: there is no device then, and
    /// no board. `problem` says why.
    bool DriverBoxChange(const std::string& name);
    /// The same, and tells whether a recording can start.
    [[nodiscard]] ApplyOutcome choose(const std::string& name);
    /// Chooses the first installed driver that has a usable board.
    [[nodiscard]] ApplyOutcome chooseFirstUsable();
    /// Chooses a board of the loaded driver by its number.
    bool BaseBoxChange(uint32_t number);
    /// Chooses driver and board by name and number, as settings name them; a board is found by the three hexadecimal
    /// digits that its text begins with. A driver or board that is not there stays the one that is chosen, and without
    /// it nothing can be started: another board in its place would record what nobody asked for.
    [[nodiscard]] ApplyOutcome apply(const std::string& driverName, uint32_t baseNumber);
    /// The same, and gives the board that DRQ number if it can take it, also when it is found later.
    [[nodiscard]] ApplyOutcome apply(const std::string& driverName, uint32_t baseNumber, int32_t drqNumber);
    /// Brings back the driver, board, DRQ number and frequency of an earlier run, for a program with a window. A DRQ
    /// number or frequency that the board can't take is logged, and the board keeps its own.
    ApplyOutcome applySaved(const ProgramSettings& settings);
    /// Tells the loaded driver a value, keeps it for the next time and looks for the boards anew: the one of the same
    /// number is chosen again, else the one of the same name. With `SettingRefused`, `refusal` has the driver's words.
    [[nodiscard]] ApplyOutcome changeSetting(const DriverValue& value);
    [[nodiscard]] const std::string& refusal() const { return refusal_; }
    /// Has the loaded driver search for boards that were plugged in since, if it can, and looks for them anew likewise.
    [[nodiscard]] ApplyOutcome searchAgain();
    /// The driver still searched for boards when it was asked last.
    [[nodiscard]] bool searching() const { return searching_; }
    /// Asks it again, and takes the boards that it has found so far. Returns soon.
    bool followSearch();
    /// Chooses the board that is wanted out of those that were found.
    [[nodiscard]] ApplyOutcome chooseFound();

    /// Gives the chosen board a DRQ number. A board that offers none has nothing to be set. False when it offers others
    /// or somebody else has taken it.
    bool setDrqNumber(int32_t number);
    /// The DRQ numbers that the chosen board offers; empty when there is nothing to choose.
    [[nodiscard]] std::vector<int32_t> drqNumbers();
    /// Switches the averaging in the chosen board. True when the board did it, and when one that has none is to be
    /// without.
    bool setHardwareAverage(bool on);
    /// The chosen board can make that frequency: it is in the board's list, or the board has none.
    [[nodiscard]] bool hasFrequency(double hertz) const;

    [[nodiscard]] T_DRIVER& driver() { return driver_; }
    /// The driver chosen last, also when it is not installed or could not be loaded.
    [[nodiscard]] const std::string& driverName() const { return driverName_; }
    /// What the loaded driver wants to be told.
    [[nodiscard]] const std::vector<DriverSetting>& settings() const { return settings_; }
    /// The boards of the loaded driver.
    [[nodiscard]] const std::vector<ADCBoardEntry>& boards() const { return boards_; }
    /// Number of the board chosen last, also when it is not there or can't be used; 0 when none was chosen.
    [[nodiscard]] uint32_t boardNumber() const { return boardNumber_; }
    /// The system's or the driver's words for the last failure.
    [[nodiscard]] const std::string& problem() const { return problem_; }

private:
    void forget(const std::string& nextDriver);
    bool load(const std::string& name);
    void readBoards();
    [[nodiscard]] ApplyOutcome lookAgain();
    [[nodiscard]] const ADCBoardEntry* wantedBoard() const;
    void logCapabilities() const;

    T_DRIVER driver_;
    std::string programDirectory_;
    std::string driverSettings_;
    std::optional<std::vector<DriverValue>> onlySettings_;
    std::vector<DriverRefusal> refusals_;
    std::string refusal_;
    std::string driverName_;
    uint32_t boardNumber_ = 0;
    bool anyBoard_ = true;   ///< none was chosen yet: the first one that is found will do
    std::string boardName_;  ///< of the board chosen last in this driver; empty when none was
    std::optional<int32_t> drqNumber_;
    std::vector<DriverSetting> settings_;
    std::vector<ADCBoardEntry> boards_;
    bool searching_ = false;
    std::string problem_;
};

}  // namespace tarno2

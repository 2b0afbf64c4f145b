#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "config/settings/program_settings.h"
#include "core/devices/driver.h"
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
    BoardError       ///< the driver has no such board, or the board can't be used
};

/// The state that a board is in after settings were applied.
[[nodiscard]] BoardStatus statusOf(ApplyOutcome outcome);

/// The choice of a driver and of one of its boards: what stands behind the driver and board selectors of the window and
/// behind the names in an autosettings file. Window thread only.
class BoardSelection {
public:
    /// `programDirectory` is handed to the drivers.
    BoardSelection(FaultReporter faults, std::string programDirectory);

    /// Names of the installed drivers, in the registry's order.
    [[nodiscard]] static std::vector<std::string> installedDrivers();

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
    /// The same, and gives the board that DRQ number if it can take it.
    [[nodiscard]] ApplyOutcome apply(const std::string& driverName, uint32_t baseNumber, int32_t drqNumber);
    /// Brings back the driver, board, DRQ number and frequency of an earlier run, for a program with a window. A DRQ
    /// number or frequency that the board can't take is logged, and the board keeps its own.
    ApplyOutcome applySaved(const ProgramSettings& settings);
    /// Gives the chosen board a DRQ number. A board that offers none has nothing to be set. False when it offers others
    /// or somebody else has taken it.
    bool setDrqNumber(int32_t number);
    /// The DRQ numbers that the chosen board offers; empty when there is nothing to choose.
    [[nodiscard]] std::vector<int32_t> drqNumbers();
    /// Switches the averaging in the chosen board. True when the board did it, and when one that has none is to be
    /// without.
    bool setHardwareAverage(bool on);
    /// Upper end of the input range of a channel at a gain, volts; 0 when the driver does not tell.
    [[nodiscard]] double inputLimit(int32_t channel, int32_t gain);
    /// The chosen board can make that frequency: it is in the board's list, or the board has none.
    [[nodiscard]] bool hasFrequency(double hertz) const;

    [[nodiscard]] T_DRIVER& driver() { return driver_; }
    /// The driver chosen last, also when it is not installed or could not be loaded.
    [[nodiscard]] const std::string& driverName() const { return driverName_; }
    /// The boards of the loaded driver.
    [[nodiscard]] const std::vector<ADCBoardEntry>& boards() const { return boards_; }
    /// Number of the board chosen last, also when it is not there or can't be used; 0 when none was chosen.
    [[nodiscard]] uint32_t boardNumber() const { return boardNumber_; }
    /// The system's or the driver's words for the last failure.
    [[nodiscard]] const std::string& problem() const { return problem_; }

private:
    void forget(const std::string& nextDriver);
    bool load(const std::string& name);
    void logCapabilities() const;

    T_DRIVER driver_;
    std::string programDirectory_;
    std::string driverName_;
    uint32_t boardNumber_ = 0;
    std::vector<ADCBoardEntry> boards_;
    std::string problem_;
};

}  // namespace tarno2

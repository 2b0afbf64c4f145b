#pragma once

#include <cstdint>
#include <string>

#include "core/devices/board_facts.h"
#include "core/devices/device.h"
#include "core/devices/holder_count.h"
#include "core/devices/parameter_blocks.h"
#include "platform/library.h"

namespace tarno2 {

/// One loaded driver library with its device object, the board chosen in it, and a count of holders (board sessions,
/// running threads) that keeps the library alive.
///
/// Loading, choosing and freeing belong to the window's thread; a session's acquisition thread uses the device while
/// it holds a block.
class T_DRIVER {
public:
    explicit T_DRIVER(FaultReporter faults);
    ~T_DRIVER();
    T_DRIVER(const T_DRIVER&) = delete;
    T_DRIVER& operator=(const T_DRIVER&) = delete;

    /// Loads the driver of that name from the catalogue after releasing the one before. `programDirectory` is handed
    /// to it. On failure nothing is loaded and `why` says what is wrong.
    [[nodiscard]] bool LoadDriver(const std::string& name, const std::string& programDirectory, std::string& why);
    /// Takes a device object that the caller made; it is released like a loaded one.
    [[nodiscard]] bool attach(IADCDevice* device, const std::string& name, const std::string& programDirectory,
                              std::string& why);
    /// Chooses a board by its number and reads its facts. Without a usable board nothing can be started.
    [[nodiscard]] bool selectBoard(uint32_t number, std::string& why);

    /// The chosen board is not there any more: nothing can be started until one is chosen.
    void forgetBoard();

    void AddBlock() { holders_.AddBlock(); }
    void RelBlock() { holders_.RelBlock(); }
    /// Releases device and library. Holders that are left are reported, and it goes on.
    void FREE();

    [[nodiscard]] const std::string& name() const { return name_; }
    /// Of the chosen board, as the driver's list has it; empty while nobody has told.
    [[nodiscard]] const std::string& boardName() const { return boardName_; }
    void setBoardName(const std::string& name) { boardName_ = name; }
    /// Why the loaded driver can't use its settings file, for the log; empty when it can, or has none.
    [[nodiscard]] const std::string& settingsProblem() const { return settingsProblem_; }
    [[nodiscard]] Device& device() { return device_; }
    [[nodiscard]] bool loaded() const { return device_.present(); }
    [[nodiscard]] const BoardFacts& facts() const { return facts_; }
    [[nodiscard]] int32_t blockCount() const { return holders_.count(); }
    [[nodiscard]] bool startAllowed() const { return startAllowed_; }
    [[nodiscard]] bool started() const { return started_; }

    /// Largest ring, samples: 0x7FFFFFFF when the driver doesn't tell, 0 without a device.
    [[nodiscard]] uint32_t maximumBuffer();

    /// Hands both blocks to the driver, which may correct them in place: to look at them (`checkOnly`) or to set the
    /// board up. After a set-up the block size is that of the ring which the driver made.
    [[nodiscard]] bool CheckParameters(ParameterBlocks& blocks, bool checkOnly);
    [[nodiscard]] int32_t rez1() const { return rez1_; }  ///< result of the extended block
    [[nodiscard]] int32_t rez2() const { return rez2_; }  ///< result of the base block
    /// The driver's words for the first block that it refused.
    [[nodiscard]] const std::string& setupProblem() const { return setupProblem_; }

    /// Starts the measurement of a board that is set up and not running.
    [[nodiscard]] bool start();
    /// Stops a running measurement; the board has to be set up anew before the next one.
    void stop();

private:
    void releaseDevice();
    [[nodiscard]] int32_t setup(int32_t apply, void* block);
    void initPass(ParameterBlocks& blocks);

    HolderCount holders_;
    Library library_;
    Device device_;
    std::string name_;
    std::string boardName_;
    std::string settingsProblem_;
    std::string setupProblem_;
    BoardFacts facts_;
    bool startAllowed_ = false;
    bool initialised_ = false;
    bool started_ = false;
    int32_t rez1_ = 0;
    int32_t rez2_ = 0;
};

}  // namespace tarno2

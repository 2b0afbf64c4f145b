#pragma once

#include <cstdint>

#include "core/devices/driver.h"
#include "core/recording/session_link.h"
#include "platform/event.h"
#include "platform/os_error.h"

namespace tarno2 {

/// How long a recording waits for its board.
struct WaitPlan {
    double halfMs = 0.0;              ///< that a half of the ring takes; 0: not known
    uint32_t limitMs = kWaitForever;  ///< without a data event for so long the board counts as silent
};

/// The waiting of an acquisition thread: for the driver's data event, for a stop, for a board that is pulled out, and,
/// where the driver counts its samples and a half takes long, for the time of the next look at the count.
class DataWait {
public:
    enum class Wake { Event, Look, Stop, TimedOut, Failed, Unplugged };

    /// Both outlive it.
    DataWait(T_DRIVER& driver, const SessionLink& link) : driver_(driver), link_(link) {}
    /// From now on the board runs. `dataEvent` is the driver's number for its event.
    void begin(uint32_t dataEvent, const WaitPlan& plan);

    /// Waits for the next thing to do. `counted`: the driver tells its count, so there is something to look at.
    /// `dataKnown`: there is something to read, only a stop or a board that went away comes before it.
    [[nodiscard]] Wake next(bool counted, bool dataKnown);
    /// Makes the data event not signalled; returns how often it was set since the last time, where the system counts.
    uint64_t takeEvents();
    /// Halves take so long, or nobody knows how long, that the count is looked at in between.
    [[nodiscard]] bool longHalves() const;
    [[nodiscard]] uint32_t limitMs() const { return plan_.limitMs; }
    /// Why the system refused a wait: `Wake::Failed` came.
    [[nodiscard]] const OsError& error() const { return error_; }

private:
    [[nodiscard]] bool unplugged();
    [[nodiscard]] uint32_t untilLimit() const;
    [[nodiscard]] uint32_t untilLook() const;

    T_DRIVER& driver_;
    const SessionLink& link_;
    WaitPlan plan_;
    Event dataEvent_ = Event::wrap(0);
    OsError error_;
    uint64_t eventAt_ = 0;     ///< ms, of the last data event
    uint64_t presenceAt_ = 0;  ///< ms, when the board's presence was asked last; 0: it is due
};

}  // namespace tarno2

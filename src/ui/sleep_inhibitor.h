#pragma once

#include <QObject>
#include <cstdint>
#include <vector>

class QString;

namespace tarno2 {

/// Asks the desktop's power manager, where there is one on the session's D-Bus, not to let the machine sleep. Nothing
/// waits for its answer. Without D-Bus, and where the system itself is asked (`SleepPrevention`), it does nothing.
class SleepInhibitor final : public QObject {
public:
    using QObject::QObject;
    ~SleepInhibitor() override;

    /// From now on, for this reason, which the desktop may show.
    void hold(const QString& reason);
    /// No longer.
    void release();

private:
    struct Held {
        size_t service = 0;
        uint32_t cookie = 0;
    };
    std::vector<Held> held_;
    int holds_ = 0;  ///< how often `hold` or `release` was called: an answer to an earlier call is given back
};

}  // namespace tarno2

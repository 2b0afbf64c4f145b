#include "core/devices/holder_count.h"

#include <utility>

#include "language/language_table.h"

namespace tarno2 {

HolderCount::HolderCount(const Texts& texts, FaultReporter report) : texts_(texts), report_(std::move(report)) {}

HolderCount::~HolderCount() {
    if (count_ != 0) {
        report_(text(texts_.heldAtDestroy));
    }
}

void HolderCount::RelBlock(const std::string& detail) {
    if (--count_ < 0) {
        report_(text(texts_.underZero) + detail);
    }
}

void HolderCount::checkFree() const {
    if (count_ != 0) {
        report_(text(texts_.heldAtFree));
    }
}

}  // namespace tarno2

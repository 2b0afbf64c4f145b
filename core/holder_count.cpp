#include "core/holder_count.h"

#include <utility>

namespace tarno2 {

HolderCount::HolderCount(std::string owner, FaultReporter report)
    : owner_(std::move(owner)), report_(std::move(report)) {}

HolderCount::~HolderCount() {
    if (count_ != 0) {
        report_("Error: " + owner_ + "::~" + owner_ + "() \nBlocked count != 0 when destruct");
    }
}

void HolderCount::RelBlock(const std::string& detail) {
    if (--count_ < 0) {
        report_("Error: " + owner_ + "::RelBlock() \nBlocked count under 0" + detail);
    }
}

void HolderCount::checkFree() const {
    if (count_ != 0) {
        report_("Error: " + owner_ + "::FREE() \nBlocked count != 0 when free");
    }
}

}  // namespace tarno2

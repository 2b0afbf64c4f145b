#pragma once

#include <cstdint>

#include "platform/event.h"
#include "platform/thread.h"
#include "records/text_conversion.h"

namespace tarno2 {

/// Draws the progress of a conversion on the error output while it lives, on a thread of its own, again and again on
/// one line, which is left blank at the end.
class ProgressLine {
public:
    explicit ProgressLine(const ConversionProgress& progress);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

private:
    void draw() const;

    const ConversionProgress& progress_;
    const uint64_t began_;
    Event ended_;
    Thread thread_;
};

}  // namespace tarno2

#include "core/storage/writer_setup.h"

#include <algorithm>

#include "config/files/recording_name.h"

namespace tarno2 {

namespace {

constexpr double kBufferSeconds = 10.0;

}  // namespace

JournalState WriterSetup::journalState() const {
    JournalState state;
    state.extension = RecordingName(fileName).extension();
    state.sampleWidth = sampleWidth;
    state.channelCount = channelCount;
    state.facts = facts;
    return state;
}

uint64_t bufferFor(double bytesPerSecond, uint64_t limit) {
    const double wanted = bytesPerSecond * kBufferSeconds;
    return bytesPerSecond > 0.0 && wanted < static_cast<double>(limit) ? static_cast<uint64_t>(wanted) : limit;
}

}  // namespace tarno2

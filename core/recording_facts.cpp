#include "core/recording_facts.h"

namespace tarno2 {

void RecordingFacts::describe(RecordDescription& description) const {
    description.setDriverName(driverName);
    description.setFrequency(totalFrequency);
    description.setSynchronousChannels(synchronousChannels ? 1 : 0);
    description.setPacketMode(packetMode ? 1 : 0, packetFrequency, externalClock ? 1 : 0);
    description.setBackwardOrder(backwardOrder ? 1 : 0);
    description.setDataFormat(layout);
    for (const Range& range : ranges) {
        description.addChannelRange(range.upper, range.lower);
    }
}

}  // namespace tarno2

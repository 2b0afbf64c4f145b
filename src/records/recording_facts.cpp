#include "records/recording_facts.h"

namespace tarno2 {

bool RecordingFacts::describe(RecordDescription& description) const {
    bool complete = driverName.empty() || description.setDriverName(driverName);
    description.setFrequency(totalFrequency);
    description.setSynchronousChannels(synchronousChannels ? 1 : 0);
    description.setPacketMode(packetMode ? 1 : 0, packetFrequency, externalClock ? 1 : 0);
    description.setBackwardOrder(backwardOrder ? 1 : 0);
    description.setDataFormat(layout);
    for (const Range& range : ranges) {
        complete = description.addChannelRange(range.upper, range.lower) && complete;
    }
    return complete;
}

}  // namespace tarno2

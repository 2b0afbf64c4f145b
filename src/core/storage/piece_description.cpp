#include "core/storage/piece_description.h"

#include <bit>

namespace tarno2 {

namespace {

int32_t setBits(int32_t mask, uint32_t sampleWidth) {
    const uint32_t word = sampleWidth >= 4 ? 0xFFFFFFFFU : 0xFFFFU;
    return std::popcount(static_cast<uint32_t>(mask) & word);
}

}  // namespace

std::string describeDataFile(const std::string& dataName, uint64_t bytes, const JournalState& state,
                             RecordDescription& description) {
    SampleLayout layout = state.facts.layout;
    layout.analogBits = setBits(layout.analogMask, state.sampleWidth);
    layout.digitalBits = setBits(layout.digitalMask, state.sampleWidth);
    description.setDataFormat(layout);
    description.setDataCountPerChannel(bytes / state.frameBytes());
    if (state.piece && state.piece->recordBytes != 0) {
        // Records that did not reach the file, or that the size limit left out, have no event.
        const uint64_t record = state.piece->recordBytes;
        description.keepSynchroEvents(bytes / record + (bytes % record != 0 ? 1 : 0));
    }
    if (state.piece && state.piece->createTime) {
        description.setCreateTime(*state.piece->createTime);
    }
    if (description.writeForDataFile(dataName)) {
        return {};
    }
    return "\"" + RecordDescription::fileNameFor(dataName) + "\" could not be written: " +
           (description.status() == RecordDescription::NoMemory ? "no memory" : description.writeError().text());
}

}  // namespace tarno2

#include "core/piece_description.h"

#include <bit>

#include "platform/c_locale.h"
#include "platform/file.h"

namespace tarno2 {

namespace {

int32_t setBits(int32_t mask, uint32_t sampleWidth) {
    const uint32_t word = sampleWidth >= 4 ? 0xFFFFFFFFU : 0xFFFFU;
    return std::popcount(static_cast<uint32_t>(mask) & word);
}

OsError flushClosedFile(const std::string& name) {
    File file;
    const OsError error = file.open(name, FileMode::OpenExisting, FileAccess::Write, FileShare::ReadWrite);
    return error.ok() ? file.flush() : error;
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
        description.keepSynchroEvents((bytes + state.piece->recordBytes - 1) / state.piece->recordBytes);
    }
    if (state.piece && state.piece->createTime) {
        description.setCreateTime(*state.piece->createTime);
    }
    const std::string name = RecordDescription::fileNameFor(dataName);
    if (!description.writeForDataFile(dataName)) {
        // Half a description would mislead its reader.
        removeFile(name);
        return formatText("the description could not be written, status = %d", static_cast<int>(description.status()));
    }
    const OsError error = flushClosedFile(name);
    return error.ok() ? std::string() : "the description could not be brought to the disk: " + error.text();
}

}  // namespace tarno2

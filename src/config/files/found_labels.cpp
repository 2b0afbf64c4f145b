#include "config/files/found_labels.h"

#include <utility>

#include "config/files/recording_name.h"
#include "platform/paths.h"
#include "records/found_passport.h"

namespace tarno2 {

FoundLabels findLabels(const std::string& dataFile, uint32_t channelCount) {
    const RecordingName name(dataFile);
    std::string file = name.passport();
    FoundPassport found = findPassport(file);
    uint32_t piece = 0;
    if (const auto whole = name.whole(); !found.there && whole) {
        if (FoundPassport ofWhole = findPassport(whole->passport()); ofWhole.there) {
            found = std::move(ofWhole);
            file = whole->passport();
            piece = whole->pieceOf(fileNameOf(dataFile)).value_or(0);
        }
    }
    if (!found.there) {
        return {{}, {}, file + ": there is no passport"};
    }
    if (!found.passport) {
        return {{}, {}, file + ": " + found.problem};
    }
    if (found.passport->channels.size() != channelCount) {
        return {{},
                {},
                file + ": tells of " + std::to_string(found.passport->channels.size()) + " channels, not " +
                    std::to_string(channelCount)};
    }
    RecordedLabels labels = labelsOf(*found.passport);
    return {std::move(labels), std::move(found.passport), {}, piece};
}

}  // namespace tarno2

#include "apps/verify/recording_files.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "core/storage/recovery_files.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "platform/utf.h"
#include "records/file_extensions.h"
#include "records/record_description.h"
#include "records/recorded_format.h"

namespace tarno2 {

namespace {

bool hasOwnList(const RecordingName& name) {
    return fileExists(name.passport()) || fileExists(name.checksums()) || fileExists(name.journal());
}

/// The first data file with this base, by what stands beside it; empty when none is told.
std::string dataFileOf(const std::string& base) {
    const RecordingName named(base + std::string(kDataExtension));
    if (const FoundPassport found = findPassport(named.passport()); found.passport && !found.passport->pieces.empty()) {
        const std::string extension = RecordingName(utf8ToSystem(found.passport->pieces.front().file)).extension();
        return base + extension;
    }
    if (fileExists(named.data())) {
        return named.data();
    }
    std::vector<std::string> candidates;
    const std::string folder = named.folder();
    for (const std::string& file : listDirectory(folder.empty() ? "." : folder)) {
        const RecordingName name(joinPath(folder, file));
        if (name.base() == base && isDataExtension(name.extension())) {
            candidates.push_back(name.data());
        }
    }
    if (candidates.size() == 1) {
        return candidates.front();
    }
    // Without a data file there is still a recording when its passport says so.
    return fileExists(named.passport()) || fileExists(named.checksums()) ? named.data() : std::string();
}

/// Whether a text is a description, be it a damaged one.
bool describes(const std::string& text) {
    const RecordedKeys keys = readRecordedKeys(text);
    return keys.layout || keys.channelCount || keys.frames;
}

/// The recording that a data file is a piece of; itself when it is none.
std::string wholeOf(const std::string& data) {
    const RecordingName name(data);
    const auto whole = name.whole();
    return whole && !hasOwnList(name) && (fileExists(whole->data()) || hasOwnList(*whole)) ? whole->data() : data;
}

std::string baseOf(const std::string& file) {
    const bool marks = file.ends_with(kMarksEnding);
    return marks ? file.substr(0, file.size() - kMarksEnding.size()) : RecordingName(file).base();
}

}  // namespace

std::string recordingOf(const std::string& file) {
    const RecordingName name(file);
    if (isDataExtension(name.extension()) && !file.ends_with(kMarksEnding)) {
        return wholeOf(file);
    }
    std::string data = dataFileOf(baseOf(file));
    if (data.empty() && name.whole()) {
        data = dataFileOf(name.whole()->base());
    }
    return data.empty() ? data : wholeOf(data);
}

std::set<std::string> recordingsIn(const std::string& folder) {
    std::set<std::string> recordings;
    for (const std::string& file : listDirectory(folder)) {
        const RecordingName name(joinPath(folder, file));
        const bool tells = name.extension() == kPassportExtension || name.extension() == kChecksumExtension;
        const bool described = name.extension() == kDescriptionExtension;
        std::string data = tells || described ? dataFileOf(name.base()) : std::string();
        // Other programs write such texts too, also beside files of theirs.
        const bool foreign = described && RecordingName(data).extension() != kDataExtension && !describes(name.data());
        if (data.empty() || foreign || (described && !fileExists(data)) ||
            (name.extension() == kPassportExtension && !findPassport(name.passport()).passport && !fileExists(data))) {
            continue;
        }
        recordings.insert(wholeOf(data));
    }
    return recordings;
}

std::set<uint32_t> piecesOf(const RecordingName& name) {
    std::set<uint32_t> pieces = piecesUpTo(name, std::numeric_limits<uint32_t>::max());
    std::erase_if(pieces, [&](uint32_t k) { return k != 0 && hasOwnList(RecordingName(name.piece(k))); });
    return pieces;
}

}  // namespace tarno2

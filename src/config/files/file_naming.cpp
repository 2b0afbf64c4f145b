#include "config/files/file_naming.h"

#include <algorithm>

#include "config/files/documents_folder.h"
#include "config/files/file_name_check.h"
#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "platform/paths.h"

namespace tarno2 {

namespace {

std::string folderForNewNames(const std::string& currentName, const std::string& savedName) {
    for (const std::string& name : {currentName, savedName}) {
        if (std::string folder = parentFolder(name); !folder.empty()) {
            return folder;
        }
    }
    const std::string documents = documentsFolder();
    return documents.empty() ? currentFolder() : joinPath(documents, "Data");
}

/// Whether something stands where this recording would write.
bool hasFiles(const RecordingName& name) {
    return fileExists(name.data()) || fileExists(name.description()) || fileExists(name.journal()) ||
           fileExists(name.earlierJournal());
}

}  // namespace

std::string FileNaming::GenerateFileName(const std::string& currentName, const std::string& savedName) {
    const std::string folder = folderForNewNames(currentName, savedName);
    const LocalTime today = localTime();
    RecordingName name = RecordingName::generated(folder, today, runningNumber_);
    while (hasFiles(name)) {
        name = RecordingName::generated(folder, today, ++runningNumber_);
    }
    DEBUG_LOG("New file = \"%s\"", name.data().c_str());
    newest_ = name.data();
    return newest_;
}

std::string FileNaming::NameAtStart(const std::string& savedName) {
    const RecordingName name = RecordingName::typed(savedName);
    if (checkDataFileName(savedName) == NameProblem::None && !name.isGenerated() && !fileExists(name.data())) {
        return savedName;
    }
    return GenerateFileName({}, savedName);
}

std::string shownName(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, '?');
    return name;
}

OsError createFoldersFor(const std::string& fileName) {
    const std::string folder = parentFolder(fileName);
    OsError error;
    for (size_t end = 1; end <= folder.size(); ++end) {
        const bool wholePart = (end == folder.size() || isPathSeparator(folder[end])) &&
                               !isPathSeparator(folder[end - 1]) && folder[end - 1] != ':';
        if (wholePart) {
            error = createDirectory(folder.substr(0, end));
        }
    }
    return folder.empty() || isDirectory(folder) ? OsError() : error;
}

}  // namespace tarno2

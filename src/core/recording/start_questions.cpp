#include "core/recording/start_questions.h"

#include <algorithm>

#include "config/files/disk_info.h"
#include "config/files/file_name_check.h"
#include "config/files/recording_name.h"
#include "platform/file.h"

namespace tarno2 {

StartQuestions startQuestions(const std::string& fileName, double neededBytes) {
    StartQuestions questions;
    DiskFacts disk;
    if (checkDataFileName(fileName) != NameProblem::None || DiskInfo(fileName, disk) < 0) {
        return questions;
    }
    const std::string name = RecordingName::typed(fileName).data();
    if (fileExists(name)) {
        questions.existingFile = name;
    }
    questions.freeBytes = disk.freeBytes;
    if (neededBytes > static_cast<double>(disk.freeBytes)) {
        questions.diskTooSmall = true;
        questions.neededBytes = static_cast<uint64_t>(std::min(neededBytes, 1e19));
    }
    return questions;
}

}  // namespace tarno2

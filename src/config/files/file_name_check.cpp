#include "config/files/file_name_check.h"

#include "config/files/file_naming.h"
#include "config/files/recording_name.h"
#include "config/logs/debug_log.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/file_extensions.h"

namespace tarno2 {

namespace {

std::optional<TextId> diskText(int32_t type) {
    switch (type) {
        case -1:
            return TextId::ModuleFileNameError;
        case -2:
            return TextId::NotLocalDrive;
        case -3:
            return TextId::UnknownDrive;
        default:
            return std::nullopt;
    }
}

void logSpeed(int32_t code, double speed) {
    switch (code) {
        case kDiskSpeedOk:
            DEBUG_LOG("HDD speed: %lf", speed);
            break;
        case kDiskSpeedOff:
            DEBUG_LOG("HDD speed: Check OFF");
            break;
        default:
            DEBUG_LOG("HDD speed: ERROR");
            break;
    }
}

}  // namespace

NameProblem checkDataFileName(const std::string& name) {
    if (name.empty()) {
        return NameProblem::Empty;
    }
    // A line end in a name would make lines of its own in the logs.
    if (!isPossiblePath(name) || shownName(name) != name) {
        return NameProblem::Impossible;
    }
    const std::string last = fileNameOf(name);
    const RecordingName recording = RecordingName::typed(name);
    if (last.empty() || last == "." || last == ".." || isDirectory(name) || isDirectory(recording.data())) {
        return NameProblem::IsFolder;
    }
    return isDataExtension(recording.extension()) && !isMarksName(last) ? NameProblem::None
                                                                        : NameProblem::EqualsDescription;
}

std::optional<TextId> nameText(NameProblem problem) {
    switch (problem) {
        case NameProblem::Empty:
            return TextId::FileNameEmpty;
        case NameProblem::EqualsDescription:
            return TextId::FileNameEqualsDescription;
        case NameProblem::IsFolder:
            return TextId::FileNameIsFolder;
        case NameProblem::Impossible:
            return TextId::FileNameError;
        case NameProblem::None:
            break;
    }
    return std::nullopt;
}

int32_t nameCheckCode(NameProblem problem) {
    switch (problem) {
        case NameProblem::Empty:
            return -5;
        case NameProblem::EqualsDescription:
            return -6;
        case NameProblem::IsFolder:
            return -7;
        case NameProblem::Impossible:
            return -8;
        case NameProblem::None:
            break;
    }
    return 0;
}

FileNameFindings FileNameEditChange(const std::string& name, DiskSpeedTester& tester,
                                    const std::function<void()>& beforeMeasuring) {
    FileNameFindings findings;
    const NameProblem problem = checkDataFileName(name);
    findings.nameCode = nameCheckCode(problem);
    findings.problem = nameText(problem);
    DEBUG_LOG("FileNameEditChange: File = \"%s\" RezultCode = %d", shownName(name).c_str(), findings.nameCode);
    if (findings.problem) {
        return findings;
    }
    const std::string file = RecordingName::typed(name).data();
    findings.problem = diskText(DiskInfo(file, findings.disk));
    if (findings.problem) {
        return findings;
    }
    if (beforeMeasuring && tester.wouldWrite(file.c_str())) {
        beforeMeasuring();
    }
    findings.speedCode = tester.Measure(file.c_str(), findings.speed);
    logSpeed(findings.speedCode, findings.speed);
    return findings;
}

}  // namespace tarno2

#include "config/file_naming.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <set>
#include <string_view>

#include "config/ascii_case.h"
#include "config/debug_log.h"
#include "config/disk_info.h"
#include "platform/c_locale.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "platform/registry.h"
#include "records/record_description.h"

namespace tarno2 {

namespace {

constexpr std::string_view kDataExtension = ".dat";
constexpr std::string_view kDescriptionExtension = ".txt";
constexpr std::string_view kLedgerExtension = ".log";
constexpr std::array kOwnExtensions = {kDescriptionExtension, kLedgerExtension, kJournalExtension,
                                       kEarlierJournalExtension};

bool isOwnExtension(std::string_view extension) {
    return std::any_of(kOwnExtensions.begin(), kOwnExtensions.end(),
                       [extension](std::string_view own) { return sameIgnoringCase(own, extension); });
}

/// A file name cut before the "." of its extension. A "." that begins or ends the last part begins no extension.
struct NameParts {
    std::string base;
    std::string extension;  ///< with its "."; may be empty
};

NameParts splitName(const std::string& name) {
    const std::string last = fileNameOf(name);
    const size_t dot = last.rfind('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == last.size()) {
        return {name, {}};
    }
    const size_t baseLength = name.size() - last.size() + dot;
    return {name.substr(0, baseLength), name.substr(baseLength)};
}

/// The k of a file called "<base>_<k>.<anything>"; nothing for other names.
std::optional<uint32_t> pieceNumber(const std::string& file, const std::string& base) {
    const std::string stem = splitName(file).base;
    if (stem.size() < base.size() + 2 || stem[base.size()] != '_' ||
        !sameIgnoringCase(std::string_view(stem).substr(0, base.size()), base)) {
        return std::nullopt;
    }
    const char* begin = stem.data() + base.size() + 1;
    const char* end = stem.data() + stem.size();
    uint32_t k = 0;
    const auto [stop, error] = std::from_chars(begin, end, k);
    if (error != std::errc() || stop != end || *begin == '0') {
        return std::nullopt;
    }
    return k;
}

/// Numbers of the files that a recording of that name has left, 0 for the one that bears the name itself.
std::set<uint32_t> pieceNumbers(const std::string& name, const std::vector<std::string>& folderContents) {
    const std::string base = fileNameOf(splitName(name).base);
    std::set<uint32_t> numbers{0};
    for (const std::string& file : folderContents) {
        if (const auto k = pieceNumber(file, base)) {
            numbers.insert(*k);
        }
    }
    return numbers;
}

struct Renaming {
    std::string from;
    std::string to;
};

/// The data files and descriptions of a recording that exist, with what they are to be called.
std::vector<Renaming> filesOfRecording(const std::string& name, const std::string& newName,
                                       const std::vector<std::string>& folderContents) {
    std::vector<Renaming> files;
    for (const uint32_t k : pieceNumbers(name, folderContents)) {
        const Renaming data{pieceName(name, k), pieceName(newName, k)};
        const Renaming description{RecordDescription::fileNameFor(data.from), RecordDescription::fileNameFor(data.to)};
        for (const Renaming& file : {data, description}) {
            if (fileExists(file.from)) {
                files.push_back(file);
            }
        }
    }
    const Renaming ledger{lossLedgerNameFor(name), lossLedgerNameFor(newName)};
    if (fileExists(ledger.from)) {
        files.push_back(ledger);
    }
    return files;
}

std::string oldName(const std::string& name, uint32_t n) {
    const NameParts parts = splitName(name);
    return parts.base + formatText("_old%u", n) + parts.extension;
}

std::string folderForNewNames(const std::string& currentName, const std::string& savedName) {
    for (const std::string& name : {currentName, savedName}) {
        if (std::string folder = parentFolder(name); !folder.empty()) {
            return folder;
        }
    }
    const std::string documents = documentsFolder();
    return documents.empty() ? currentFolder() : joinPath(documents, "Data");
}

}  // namespace

std::string FileNaming::GenerateFileName(const std::string& currentName, const std::string& savedName) {
    const std::string folder = folderForNewNames(currentName, savedName);
    const LocalTime today = localTime();
    const auto build = [&] {
        return joinPath(folder,
                        formatText("file_%d_%d_%d_n%u.dat", today.year, today.month, today.day, runningNumber_));
    };
    std::string name = build();
    while (fileExists(name) || fileExists(RecordDescription::fileNameFor(name)) || fileExists(journalNameFor(name)) ||
           fileExists(earlierJournalNameFor(name))) {
        ++runningNumber_;
        name = build();
    }
    DEBUG_LOG("New file = \"%s\"", name.c_str());
    return name;
}

std::string FileNaming::NameAtStart(const std::string& savedName) {
    const bool generated = fileNameOf(savedName).starts_with("file_");
    if (checkDataFileName(savedName) == NameProblem::None && !generated && !fileExists(withDataExtension(savedName))) {
        return savedName;
    }
    return GenerateFileName({}, savedName);
}

std::string documentsFolder() {
    const auto personal = registryValue(
        RegistryRoot::CurrentUser, "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", "Personal");
    if (personal && personal->type == kRegistryString && !personal->data.empty()) {
        return personal->data;
    }
    if (const auto documents = environmentVariable("XDG_DOCUMENTS_DIR"); documents && !documents->empty()) {
        return *documents;
    }
    const auto home = environmentVariable("HOME");
    return home && !home->empty() ? joinPath(*home, "Documents") : std::string();
}

std::string withDataExtension(const std::string& name) {
    const std::string extension = splitName(name).extension;
    if (fileNameOf(name).empty() || isDataExtension(extension) || isOwnExtension(extension)) {
        return name;
    }
    std::string whole = name;
    if (whole.back() == '.') {
        whole.pop_back();
    }
    return whole.append(kDataExtension);
}

std::string pieceName(const std::string& name, uint32_t k) {
    if (k == 0) {
        return name;
    }
    const NameParts parts = splitName(name);
    return parts.base + formatText("_%u", k) + parts.extension;
}

std::string recordingBase(const std::string& dataName) {
    std::string name = RecordDescription::fileNameFor(dataName);
    name.resize(name.size() - kDescriptionExtension.size());
    return name;
}

std::string journalNameFor(const std::string& dataName) {
    return recordingBase(dataName).append(kJournalExtension);
}

std::string earlierJournalNameFor(const std::string& dataName) {
    return recordingBase(dataName).append(kEarlierJournalExtension);
}

bool isDataExtension(std::string_view extension) {
    constexpr size_t kLongest = 16;
    // Letters of other alphabets have more than seven bits.
    const auto fits = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               static_cast<unsigned char>(c) >= 0x80;
    };
    if (extension.size() < 2 || extension.size() > kLongest + 1 || extension.front() != '.' ||
        !std::all_of(extension.begin() + 1, extension.end(), fits)) {
        return false;
    }
    return !isOwnExtension(extension);
}

std::string lossLedgerNameFor(const std::string& dataName) {
    return recordingBase(dataName).append(kLedgerExtension);
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

MovedAside moveEarlierRecordingAside(const std::string& chosenName) {
    const std::string name = withDataExtension(chosenName);
    const std::string parent = parentFolder(name);
    const std::vector<std::string> contents = listDirectory(parent.empty() ? "." : parent);
    MovedAside result;
    uint32_t n = 1;
    while (!filesOfRecording(oldName(name, n), name, contents).empty() ||
           fileExists(journalNameFor(oldName(name, n))) || fileExists(earlierJournalNameFor(oldName(name, n)))) {
        ++n;
    }
    result.newName = oldName(name, n);
    for (const Renaming& file : filesOfRecording(name, result.newName, contents)) {
        result.error = renameFile(file.from, file.to);
        if (!result.error.ok()) {
            DEBUG_LOG("!!!!! Earlier file \"%s\" not renamed: %s", file.from.c_str(), result.error.text().c_str());
            break;
        }
        DEBUG_LOG("Earlier file \"%s\" renamed to \"%s\"", file.from.c_str(), file.to.c_str());
        result.names.push_back(file.to);
    }
    return result;
}

}  // namespace tarno2

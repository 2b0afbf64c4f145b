#include "config/files/recording_name.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "platform/ascii_case.h"
#include "platform/c_locale.h"
#include "platform/paths.h"
#include "records/file_extensions.h"

namespace tarno2 {

namespace {

/// How much of a name stands before the "." of its extension.
size_t baseLengthOf(std::string_view name) {
    const size_t separator = findLastSeparator(name);
    const size_t last = separator == std::string_view::npos ? 0 : separator + 1;
    const size_t dot = name.rfind('.');
    const bool extends = dot != std::string_view::npos && dot > last && dot + 1 < name.size();
    return extends ? dot : name.size();
}

std::string_view lastPart(std::string_view name) {
    return name.substr(findLastSeparator(name) + 1);
}

/// A number as the program writes it, without zeros before it.
std::optional<uint32_t> plainNumber(std::string_view digits) {
    uint32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool whole = error == std::errc() && end == digits.data() + digits.size();
    return whole && (digits.size() == 1 || digits.front() != '0') ? std::optional(number) : std::nullopt;
}

/// The k of "<stem>_<k>", from 1; `stem` gets what stands before it.
std::optional<uint32_t> trailingNumber(std::string_view name, std::string_view& stem) {
    const size_t line = name.rfind('_');
    if (line == std::string_view::npos || line == 0 || isPathSeparator(name[line - 1])) {
        return std::nullopt;
    }
    const auto k = plainNumber(name.substr(line + 1));
    stem = name.substr(0, line);
    return k && *k > 0 ? k : std::nullopt;
}

/// 0 when it is `base` itself, k when it is "<base>_<k>".
std::optional<uint32_t> numberOfBase(std::string_view name, std::string_view base) {
    if (sameIgnoringCase(name, base)) {
        return 0;
    }
    std::string_view stem;
    const auto k = trailingNumber(name, stem);
    return k && sameIgnoringCase(stem, base) ? k : std::nullopt;
}

}  // namespace

RecordingName::RecordingName(std::string dataName) : data_(std::move(dataName)), baseLength_(baseLengthOf(data_)) {}

RecordingName RecordingName::typed(std::string name) {
    const std::string_view extension = std::string_view(name).substr(baseLengthOf(name));
    if (!lastPart(name).empty() && !isExtension(extension) && !isExtensionOfOtherFiles(extension)) {
        if (name.back() == '.') {
            name.pop_back();
        }
        name += kDataExtension;
    }
    return RecordingName(std::move(name));
}

RecordingName RecordingName::generated(const std::string& folder, const LocalTime& day, uint32_t number) {
    return RecordingName(joinPath(folder, formatText("file_%d_%d_%d_n%u.dat", day.year, day.month, day.day, number)));
}

RecordingName RecordingName::ofJournal(std::string_view journalName, std::string_view extension) {
    RecordingName name;
    name.baseLength_ = baseLengthOf(journalName);
    name.data_ = std::string(journalName.substr(0, name.baseLength_)).append(extension);
    return name;
}

std::string RecordingName::folder() const {
    return parentFolder(data_);
}

std::string RecordingName::piece(uint32_t k) const {
    return k == 0 ? data_ : base() + formatText("_%u", k) + extension();
}

std::string RecordingName::description(uint32_t k) const {
    return (k == 0 ? base() : base() + formatText("_%u", k)).append(kDescriptionExtension);
}

std::string RecordingName::journal() const {
    return base().append(kJournalExtension);
}

std::string RecordingName::earlierJournal() const {
    return base().append(kEarlierJournalExtension);
}

std::string RecordingName::losses() const {
    return base().append(kLossExtension);
}

std::string RecordingName::passport() const {
    return base().append(kPassportExtension);
}

std::string RecordingName::marks() const {
    return base().append(kMarksEnding);
}

std::string RecordingName::checksums() const {
    return base().append(kChecksumExtension);
}

std::vector<std::string> RecordingName::companions() const {
    return {passport(), marks(), checksums(), losses(), journal(), earlierJournal()};
}

RecordingName RecordingName::old(uint32_t n) const {
    RecordingName name;
    name.data_ = base() + formatText("_old%u", n);
    name.baseLength_ = name.data_.size();
    name.data_ += extension();
    return name;
}

std::optional<RecordingName> RecordingName::whole() const {
    std::string_view stem;
    if (!trailingNumber(std::string_view(data_).substr(0, baseLength_), stem)) {
        return std::nullopt;
    }
    RecordingName name;
    name.data_ = std::string(stem) + extension();
    name.baseLength_ = stem.size();
    return name;
}

bool RecordingName::isGenerated() const {
    std::array<uint32_t, 4> fields{};
    std::string_view rest = lastPart(data_);
    constexpr std::array<std::string_view, 4> kBefore = {"file_", "_", "_", "_n"};
    for (size_t i = 0; i < fields.size(); ++i) {
        if (!rest.starts_with(kBefore[i])) {
            return false;
        }
        rest.remove_prefix(kBefore[i].size());
        const size_t digits = std::min(rest.find_first_not_of("0123456789"), rest.size());
        const auto number = plainNumber(rest.substr(0, digits));
        if (!number) {
            return false;
        }
        fields[i] = *number;
        rest.remove_prefix(digits);
    }
    return rest == kDataExtension && fields[1] >= 1 && fields[1] <= 12 && fields[2] >= 1 && fields[2] <= 31;
}

std::optional<uint32_t> RecordingName::pieceOf(std::string_view fileName) const {
    const std::string_view file = lastPart(fileName);
    return numberOfBase(file.substr(0, baseLengthOf(file)), lastPart(std::string_view(data_).substr(0, baseLength_)));
}

bool RecordingName::mayShareFilesWith(const RecordingName& other) const {
    const std::string own = fileNameOf(base());
    const std::string others = fileNameOf(other.base());
    return numberOfBase(own, others) || numberOfBase(others, own);
}

}  // namespace tarno2

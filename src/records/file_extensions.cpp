#include "records/file_extensions.h"

#include <algorithm>
#include <array>

#include "platform/ascii_case.h"

namespace tarno2 {

namespace {

constexpr std::array kOtherExtensions = {kDescriptionExtension, kLossExtension,    kPassportExtension,
                                         kChecksumExtension,    kJournalExtension, kEarlierJournalExtension};

}  // namespace

bool isExtension(std::string_view text) {
    constexpr size_t kLongest = 16;
    // Letters of other alphabets have more than seven bits.
    const auto plain = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
               static_cast<unsigned char>(c) >= 0x80;
    };
    return text.size() > 1 && text.size() <= kLongest + 1 && text.front() == '.' &&
           std::all_of(text.begin() + 1, text.end(), plain);
}

bool isExtensionOfOtherFiles(std::string_view extension) {
    return std::any_of(kOtherExtensions.begin(), kOtherExtensions.end(),
                       [extension](std::string_view other) { return sameIgnoringCase(extension, other); });
}

bool isMarksName(std::string_view name) {
    return name.size() >= kMarksEnding.size() &&
           sameIgnoringCase(name.substr(name.size() - kMarksEnding.size()), kMarksEnding);
}

bool isDataExtension(std::string_view extension) {
    return isExtension(extension) && !isExtensionOfOtherFiles(extension);
}

}  // namespace tarno2

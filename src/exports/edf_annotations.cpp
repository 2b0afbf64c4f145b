#include "exports/edf_annotations.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace tarno2 {

namespace {

constexpr char kTextEnd = '\x14';

}  // namespace

EdfAnnotations::EdfAnnotations(const std::map<uint64_t, std::string>& texts, uint64_t recordFrames, double rate,
                               double fraction)
    : texts_(texts), recordFrames_(recordFrames), rate_(rate), fraction_(fraction) {}

/// Seconds since the start that the header tells.
std::string EdfAnnotations::onset(uint64_t frame) const {
    std::array<char, 64> text{};
    const double seconds = static_cast<double>(frame) / rate_ + fraction_;
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), seconds, std::chars_format::fixed, kDecimals);
    std::string onset(text.data(), end.ptr);
    onset.erase(onset.find_last_not_of('0') + 1);
    if (onset.back() == '.') {
        onset.pop_back();
    }
    return '+' + onset;
}

std::string EdfAnnotations::note(uint64_t frame, const std::string& text) const {
    std::string clean = text;
    // What parts the fields can't be in a text.
    std::ranges::replace_if(
        clean, [](char c) { return c >= '\0' && c < ' '; }, ' ');
    return onset(frame) + kTextEnd + clean + kTextEnd + '\0';
}

std::string EdfAnnotations::ofRecord(uint64_t record, const std::string& closing, uint64_t end) const {
    const uint64_t first = record * recordFrames_;
    std::string notes = onset(first) + kTextEnd + kTextEnd + '\0';
    for (auto text = texts_.lower_bound(first); text != texts_.end() && text->first < first + recordFrames_; ++text) {
        notes += note(text->first, text->second);
    }
    return closing.empty() ? notes : notes + note(end, closing);
}

size_t EdfAnnotations::longest(uint64_t records) const {
    // The last record has the longest onset; those with texts are looked at one by one.
    size_t longest = ofRecord(records).size() + 2 * kDecimals;
    for (auto text = texts_.begin(); text != texts_.end() && text->first / recordFrames_ < records;) {
        const uint64_t record = text->first / recordFrames_;
        longest = std::max(longest, ofRecord(record).size());
        text = texts_.lower_bound((record + 1) * recordFrames_);
    }
    return longest;
}

}  // namespace tarno2

#include "records/mark_list.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>

#include "platform/file.h"
#include "platform/utf.h"
#include "records/quoted_field.h"
#include "records/utc_text.h"

namespace tarno2 {

namespace {

constexpr std::string_view kHeader = "mark,frame,utc,source,text";
constexpr std::string_view kMarkLineEnd = "\r\n";
constexpr uint64_t kLongestFile = uint64_t{1} << 30U;
constexpr size_t kFields = 5;
constexpr size_t kLongestLine = 4 * kLongestMarkText;  // bytes

/// The field at the front of a line, with the comma behind it; nothing when its quotes stand where none can be.
std::optional<std::string> takeField(std::string_view& line) {
    const bool quoted = line.starts_with('"');
    std::string field;
    size_t i = quoted ? 1 : 0;
    for (; i < line.size() && (quoted || line[i] != ','); ++i) {
        if (line[i] == '"') {
            // Within quotes two of them are one of the text.
            if (!quoted) {
                return std::nullopt;
            }
            if (i + 1 >= line.size() || line[i + 1] != '"') {
                break;
            }
            ++i;
        }
        field += line[i];
    }
    if (quoted && (i >= line.size() || (++i < line.size() && line[i] != ','))) {
        return std::nullopt;
    }
    line.remove_prefix(i);
    return field;
}

/// The fields of a line; none when it has more than a mark, or stray quotes.
std::vector<std::string> fieldsOf(std::string_view line) {
    std::vector<std::string> fields;
    for (;;) {
        auto field = takeField(line);
        if (!field || fields.size() == kFields) {
            return {};
        }
        fields.push_back(std::move(*field));
        if (line.empty()) {
            return fields;
        }
        line.remove_prefix(1);
    }
}

std::optional<uint64_t> wholeNumber(std::string_view digits) {
    uint64_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc() && end == digits.data() + digits.size() ? std::optional(number) : std::nullopt;
}

std::optional<RecordingMark> markOf(const std::vector<std::string>& fields) {
    if (fields.size() != kFields) {
        return std::nullopt;
    }
    const auto number = wholeNumber(fields[0]), frame = wholeNumber(fields[1]);
    const auto utc = parseUtcText(fields[2]);
    const auto* const source = std::ranges::find(kMarkSources, fields[3]);
    if (!number || *number == 0 || *number > kMostMarks || !frame || !utc || source == kMarkSources.end()) {
        return std::nullopt;
    }
    return RecordingMark{*number, *frame, *utc, static_cast<MarkSource>(source - kMarkSources.begin()),
                         cleanMarkText(fields[4])};
}

}  // namespace

std::string RecordingMark::label() const {
    return text.empty() ? std::to_string(number) : text;
}

std::string marksHeader() {
    return std::string(kHeader).append(kMarkLineEnd);
}

std::string markLine(const RecordingMark& mark) {
    return std::to_string(mark.number) + ',' + std::to_string(mark.frame) + ',' + utcText(mark.utc) + ',' +
           std::string(kMarkSources[static_cast<size_t>(mark.source)]) + ',' +
           quotedField(mark.text, ",\"\r\n").append(kMarkLineEnd);
}

std::string marksText(std::span<const RecordingMark> marks) {
    std::string text = marksHeader();
    for (const RecordingMark& mark : marks) {
        text += markLine(mark);
    }
    return text;
}

MarkList readMarks(std::string_view text) {
    MarkList list;
    text.remove_prefix(text.starts_with("\xEF\xBB\xBF") ? 3 : 0);
    if (!kHeader.starts_with(text.substr(0, text.find_first_of("\r\n")))) {
        list.problem = "it is no list of marks";
        return list;
    }
    std::map<uint64_t, RecordingMark> byNumber;
    size_t line = 1;
    // No text of a mark has a line's end in it, and what stands behind the last one was torn.
    for (size_t end = text.find('\n'); end != std::string_view::npos && list.problem.empty(); ++line) {
        std::string_view row = text.substr(0, end);
        row.remove_suffix(row.ends_with('\r') ? 1 : 0);
        text.remove_prefix(end + 1);
        end = text.find('\n');
        if (line == 1) {
            list.problem = row == kHeader ? "" : "it is no list of marks";
            continue;
        }
        auto mark = row.size() <= kLongestLine ? markOf(fieldsOf(row)) : std::nullopt;
        if (mark) {
            byNumber[mark->number] = std::move(*mark);
        } else {
            list.problem = "line " + std::to_string(line) + " is no mark";
        }
    }
    for (auto& [number, mark] : byNumber) {
        list.marks.push_back(std::move(mark));
    }
    return list;
}

FoundMarks findMarks(const std::string& fileName) {
    FoundMarks found;
    found.there = isPlainFile(fileName);
    if (!found.there) {
        return found;
    }
    found.error = readWholeFile(fileName, kLongestFile, FileShare::ReadWrite, found.text);
    if (found.error.ok()) {
        static_cast<MarkList&>(found) = readMarks(found.text);
    } else {
        found.problem = found.error.text();
    }
    return found;
}

std::string cleanMarkText(std::string_view text) {
    const auto control = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; };
    std::string clean;
    // Letter by letter, so that one that is cut in half takes no other with it.
    for (size_t i = 0; i < text.size();) {
        size_t length = 1;
        const auto lead = static_cast<unsigned char>(text[i]);
        for (size_t tried = lead < 0x80 ? 0 : 2; tried >= 2 && tried <= 4 && i + tried <= text.size(); ++tried) {
            if (utf8ToUtf16(text.substr(i, tried))) {
                length = tried;
                break;
            }
        }
        const bool broken = lead >= 0x80 && length == 1;
        const std::string_view letter = broken ? "\xEF\xBF\xBD" : text.substr(i, length);
        if (clean.size() + letter.size() > kLongestMarkText) {
            break;
        }
        clean += letter.size() == 1 && control(letter.front()) ? " " : letter;
        i += length;
    }
    const size_t last = clean.find_last_not_of(' ');
    clean.resize(last == std::string::npos ? 0 : last + 1);
    return clean.erase(0, clean.find_first_not_of(' '));
}

}  // namespace tarno2

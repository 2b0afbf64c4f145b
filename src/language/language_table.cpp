#include "language/language_table.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "platform/codepage1251.h"

namespace tarno2 {

namespace {

struct TextRow {
    int32_t id;
    std::string_view english;
    std::string_view russian;
};

constexpr TextRow kTexts[] = {
#define TEXT_ROW(name, id, english, russian) {id, english, russian},
#include "language/texts.inc"
#undef TEXT_ROW
};

// A mistake in the table is found when it is compiled.

// Other programs know the texts 1 to 495 by their blocks of 16; what came later has numbers of its own.
constexpr int32_t kHighestId = 495;
constexpr int32_t kFirstLaterId = 1001;
constexpr int32_t kTextsPerBlock = 16;
constexpr int32_t kBlockCount = 31;
static_assert(kHighestId / kTextsPerBlock == kBlockCount - 1);

constexpr bool idsAscendInRange() {
    int32_t previous = 0;
    for (const TextRow& row : kTexts) {
        if (row.id <= previous || (row.id > kHighestId && row.id < kFirstLaterId)) {
            return false;
        }
        previous = row.id;
    }
    return true;
}

/// A text fits a string table: there is one, and its length in characters fits 16 bits.
constexpr bool fitsStringTable(std::string_view text) {
    return !text.empty() && text.size() <= 0xFFFF;
}

constexpr bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Characters that texts may hold beside ASCII; code page 1251 has all of them.
constexpr bool isTextCharacter(char32_t c) {
    return (c >= U'А' && c <= U'я') || std::u32string_view(U"Ёё№«»–—…°±µ").find(c) != std::u32string_view::npos;
}

/// Well-formed UTF-8 of at most three bytes a character, all of them in code page 1251.
constexpr bool fitsCodePage(std::string_view text) {
    for (size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i++]);
        if (lead < 0x80) {
            continue;
        }
        const size_t following = (lead & 0xE0U) == 0xC0U ? 1 : (lead & 0xF0U) == 0xE0U ? 2 : 0;
        if (following == 0 || i + following > text.size()) {
            return false;
        }
        char32_t c = lead & (following == 1 ? 0x1FU : 0x0FU);
        for (size_t k = 0; k < following; ++k) {
            const auto next = static_cast<unsigned char>(text[i++]);
            if ((next & 0xC0U) != 0x80U) {
                return false;
            }
            c = (c << 6U) | (next & 0x3FU);
        }
        if (!isTextCharacter(c)) {
            return false;
        }
    }
    return true;
}

/// Cuts the next printf conversion ("%d", "%5.2lf") off the front of `text`; empty when there is none.
constexpr std::string_view nextConversion(std::string_view& text) {
    const size_t start = text.find('%');
    if (start == std::string_view::npos) {
        return {};
    }
    const size_t letter = text.find_first_of("%cdfgiluopsxX", start + 1);
    size_t end = letter == std::string_view::npos ? text.size() : letter + 1;
    while (end < text.size() && text[end - 1] == 'l') {
        ++end;
    }
    const std::string_view conversion = text.substr(start, end - start);
    text.remove_prefix(end);
    return conversion;
}

constexpr bool sameConversions(std::string_view a, std::string_view b) {
    while (true) {
        const std::string_view ofA = nextConversion(a);
        if (ofA != nextConversion(b)) {
            return false;
        }
        if (ofA.empty()) {
            return true;
        }
    }
}

static_assert(idsAscendInRange(), "ids must ascend within 1 to 495 and from 1001 on, none twice");
static_assert(std::all_of(std::begin(kTexts), std::end(kTexts),
                          [](const TextRow& row) {
                              return fitsStringTable(row.english) && fitsStringTable(row.russian);
                          }),
              "a text is missing or too long");
static_assert(std::all_of(std::begin(kTexts), std::end(kTexts),
                          [](const TextRow& row) { return isAscii(row.english) && fitsCodePage(row.russian); }),
              "a text holds a character that the code page lacks");
static_assert(std::all_of(std::begin(kTexts), std::end(kTexts),
                          [](const TextRow& row) { return sameConversions(row.english, row.russian); }),
              "printf conversions differ between the languages");

std::string_view find(uint16_t language, int32_t id) {
    const auto* row = std::lower_bound(std::begin(kTexts), std::end(kTexts), id,
                                       [](const TextRow& r, int32_t wanted) { return r.id < wanted; });
    if (row == std::end(kTexts) || row->id != id) {
        return {};
    }
    switch (language) {
        case kLanguageEnglish:
            return row->english;
        case kLanguageRussian:
            return row->russian;
        default:
            return {};
    }
}

}  // namespace

void LanguageTable::select(uint16_t languageId) {
    selected_ = languageId;
}

std::string LanguageTable::load(int32_t id) const {
    return utf8ToCp1251(find(selected_, id)).value_or(std::string());
}

std::string LanguageTable::loadUtf8(int32_t id) const {
    return std::string(find(selected_, id));
}

LanguageTable& languageTable() {
    static LanguageTable table;
    return table;
}

std::string text(TextId id) {
    return languageTable().load(static_cast<int32_t>(id));
}

}  // namespace tarno2

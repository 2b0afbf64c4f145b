#pragma once

#include <cstdint>
#include <string>

#include "language/text_ids.h"

namespace tarno2 {

inline constexpr uint16_t kLanguageEnglish = 1033;
inline constexpr uint16_t kLanguageRussian = 1049;

/// The texts that a user sees, by id, in the language chosen last. One table serves the program; it is chosen and read
/// on the window's thread.
class LanguageTable {
public:
    /// Chooses a language. One that the table doesn't hold gives empty texts until another is chosen.
    void select(uint16_t languageId);
    [[nodiscard]] uint16_t selected() const { return selected_; }

    /// The text in the single-byte code page of the program (1251); empty when there is no text of that id.
    [[nodiscard]] std::string load(int32_t id) const;
    /// The same text in UTF-8.
    [[nodiscard]] std::string loadUtf8(int32_t id) const;

private:
    uint16_t selected_ = 0;
};

/// The program's table.
LanguageTable& languageTable();

/// `languageTable().load(id)`.
[[nodiscard]] std::string text(TextId id);

}  // namespace tarno2

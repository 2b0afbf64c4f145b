// Journals of recordings.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "records/journal_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The input is what stands before a half's checksum, which nobody would hit by chance.
    const auto half = tarno2::sealedJournalHalf(std::string(reinterpret_cast<const char*>(data), size));
    if (!half) {
        return 0;
    }
    const auto read = tarno2::readJournal(*half + *half);
    if (!read) {
        return 0;
    }
    // What was read is written and read as the same.
    const auto text = tarno2::journalText(*read);
    if (text) {
        const auto again = tarno2::readJournal(*text + *text);
        if (!again || tarno2::journalText(*again) != text) {
            std::abort();
        }
    }
    return 0;
}

// Recovery in a folder that holds an invented journal, and files that are nobody's business: letters that choose (s:
// its checksum is right, o: it has the old ending, l: its data file is a link, d: it is a folder), the journal, the
// data file, the next piece, the description.

#include "core/storage/recovery.h"
#include "fuzz/scratch_folder.h"
#include "records/journal_text.h"

namespace {

using Files = std::map<std::string, std::string>;

/// Files of others, in the folder and outside of it.
void layBait(const ScratchFolder& folder) {
    std::filesystem::create_directory(folder.file("data"));
    std::filesystem::create_directory(folder.file("outside"));
    folder.write("outside/thesis.odt", "Three years of work.");
    folder.write("outside/empty.dat", "");
    folder.write("data/2026.journal", "A diary.\n");
    folder.write("data/todo.journal", "");
    folder.write("data/letter.txt", "Dear colleague,\n");
    folder.write("data/other.dat", "odd");
    folder.write("data/thesis.odt", "A copy.");
    std::filesystem::create_symlink("../outside/thesis.odt", folder.file("data/run_2.dat"));
    std::filesystem::create_symlink("../outside/empty.dat", folder.file("data/run_3.dat"));
    std::filesystem::create_symlink("../outside/thesis.odt", folder.file("data/run_2.txt"));
}

bool isRecordings(const std::string& name) {
    return name.starts_with("data/run.") || name.starts_with("data/run_1.");
}

/// Nobody's file is another one afterwards; data files lost no whole frame.
void compare(const Files& before, const Files& after, uint64_t frameBytes) {
    for (const auto& [name, contents] : before) {
        const auto found = after.find(name);
        if (!isRecordings(name)) {
            require(found != after.end() && found->second == contents);
        } else if (!name.ends_with(".txt") && name.find("journal") == std::string::npos) {
            const std::string kept = found == after.end() ? std::string() : found->second;
            require(contents.starts_with(kept) && contents.size() - kept.size() < std::max<uint64_t>(frameBytes, 1));
        }
    }
    for (const auto& [name, contents] : after) {
        require(before.contains(name) || isRecordings(name));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const ScratchFolder folder;
    folder.empty();
    layBait(folder);
    InputParts parts(data, size);
    const auto choice = parts.choice();
    std::string journal(parts.next());
    if (choice.has('s')) {
        const auto half = tarno2::sealedJournalHalf(journal + '\n');
        journal = half ? *half + *half : journal;
    }
    folder.write(choice.has('o') ? "data/run.journal" : "data/run.tarno2-journal", journal);
    const std::string dataFile = folder.file("data/run.dat");
    const std::string contents(parts.next());
    if (choice.has('l')) {
        std::filesystem::create_symlink("../outside/thesis.odt", dataFile);
    } else if (choice.has('d')) {
        std::filesystem::create_directory(dataFile);
    } else {
        folder.write("data/run.dat", contents);
    }
    if (const auto piece = parts.next(); !piece.empty()) {
        folder.write("data/run_1.dat", piece);
    }
    if (const auto description = parts.next(); !description.empty()) {
        folder.write("data/run.txt", description);
    }
    const auto state = tarno2::readJournal(journal);
    const Files before = folder.contents();
    static_cast<void>(tarno2::recoverFolder(folder.file("data")));
    const Files after = folder.contents();
    compare(before, after, state ? state->frameBytes() : 0);
    // Once more comes to the same end.
    static_cast<void>(tarno2::recoverFolder(folder.file("data")));
    require(folder.contents() == after);
    return 0;
}

#include "tests/core/bait_files.h"

#include <filesystem>

#include "records/journal_text.h"

namespace tarno2::test {

namespace {

using Files = std::map<std::string, std::string>;

constexpr size_t kHuge = size_t{8} << 20U;

void write(const TemporaryFolder& folder, const std::string& into, const Files& files) {
    for (const auto& [name, contents] : files) {
        folder.write(into + '/' + name, contents);
    }
}

/// A journal whose checksums are right.
std::string sealed(const std::string& version, const std::string& extension, const std::string& piece) {
    const std::string half = sealedJournalHalf("Tarno2 journal " + version + "\nsequence 3\nextension " + extension +
                                               "\nwidth 2\nchannels 2\ndriver Simulator\n" + piece + '\n')
                                 .value_or("");
    return half + half;
}

}  // namespace

void layOwnFiles(const TemporaryFolder& folder, const std::string& into) {
    std::filesystem::create_directories(folder.file(into));
    std::string huge;
    while (huge.size() < kHuge) {
        huge += "Nov 22 02:00:00 host service[1]: Started a service.\n";
    }
    huge.resize(kHuge);
    write(folder, into,
          {{"2026.journal", "A diary of the year.\n"},
           {"system.journal", huge},
           {"todo.journal", ""},
           {"first.journal", "Tarno2 journal 1\nis what I call my own notes.\n"},
           {"run_old1.dat", "an older recording, moved aside by hand"},
           {"run_old.dat", "another one"},
           {"run2.dat", "a neighbour"},
           {"run_x.dat", "one more"},
           {"run_01.dat", "no number of a piece"},
           {"run.dat.bak", "a copy"},
           {".run.dat", "hidden"},
           {"run.wav", "RIFF"},
           {"readme.txt", "Notes of the measurement.\n"}});
}

void laySnares(const TemporaryFolder& folder, const std::string& into, const std::string& outside) {
    std::filesystem::create_directories(folder.file(outside));
    const std::string honest = sealed("1", ".dat", "piece 0");
    write(folder, outside,
          {{"thesis.odt", "Three years of work."},
           {"thesis.txt", "Its summary."},
           {"there.journal", honest},
           {"there.dat", "five."}});
    write(folder, into,
          {{"long.tarno2-journal", honest + "and more\n"},
           {"noise.tarno2-journal", std::string(2 * kJournalHalf, 'x')},
           {"later.journal", sealed("2", ".dat", "colour green")},
           {"later.tarno2-journal", sealed("2", ".dat", "colour green")},
           {"later.dat", "data of a later version"},
           {"planted.journal", sealed("1", "/../../" + outside + "/thesis.odt", "piece 0")},
           {"planted2.tarno2-journal", sealed("1", ".txt", "piece 4294967295")},
           {"planted2.txt", "A text of somebody.\n"},
           {"linked.tarno2-journal", honest}});
    const Files links{{"run_old1.txt", "thesis.txt"},     {"run_old1_1.dat", "thesis.odt"},
                      {"there.journal", "there.journal"}, {"there.dat", "there.dat"},
                      {"gone.tarno2-journal", "gone"},    {"linked.dat", "thesis.odt"},
                      {"linked.txt", "thesis.txt"}};
    for (const auto& [name, target] : links) {
        std::filesystem::create_symlink("../" + outside + '/' + target, folder.file(into + '/' + name));
    }
    std::filesystem::create_directory(folder.file(into + "/folder.journal"));
}

}  // namespace tarno2::test

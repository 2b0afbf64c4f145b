#include "tests/sweep/judge.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <set>
#include <sstream>

#include "drivers/simulator/counter_signal.h"
#include "platform/file.h"
#include "records/passport.h"
#include "records/recorded_format.h"

namespace tarno2::test {

namespace {

constexpr uint32_t kCounterBits = 16;

/// A name of ours: "<base>_<number><extension>", or without a number.
struct Name {
    std::string base;
    uint32_t number = 0;
    std::string extension;
};

Name partsOf(const std::string& file) {
    Name name;
    const size_t dot = std::min(file.rfind('.'), file.size());
    name.extension = file.substr(dot);
    name.base = file.substr(0, dot);
    const size_t digits = name.base.find_last_not_of("0123456789") + 1;
    if (digits >= 2 && digits < name.base.size() && name.base[digits - 1] == '_') {
        std::from_chars(name.base.data() + digits, name.base.data() + name.base.size(), name.number);
        name.base.resize(digits - 1);
    }
    return name;
}

bool isJournal(const std::string& extension) {
    return extension == ".journal" || extension == ".tarno2-journal";
}

/// The data files of one name, by number.
using Pieces = std::map<uint32_t, std::string>;

class Judge {
public:
    explicit Judge(const Field& field) : field_(field), files_(field.files()) {}

    Verdict verdict() {
        for (const auto& [file, contents] : files_) {
            sort(file, contents);
        }
        for (const auto& [base, pieces] : recordings_) {
            if (isEarlier(pieces)) {
                continue;
            }
            checkPieces(base, pieces);
            checkPassport(base, pieces);
        }
        checkEarlier();
        checkCutOff();
        return verdict_;
    }

private:
    void fault(const std::string& what) { verdict_.fault += (verdict_.fault.empty() ? "" : "; ") + what; }
    void unfinished(const std::string& what) {
        verdict_.unfinished += (verdict_.unfinished.empty() ? "" : "; ") + what;
    }

    void sort(const std::string& file, const std::string& contents) {
        const Name name = partsOf(file);
        if (name.extension == ".dat") {
            recordings_[name.base][name.number] = file;
        } else if (isJournal(name.extension)) {
            journals_.insert(name.base);
            unfinished(file + " is there");
        } else if (name.extension == ".txt" && !files_.contains(file.substr(0, file.size() - 3) + "dat")) {
            unfinished(file + " describes nothing");
        } else if (name.extension == ".json") {
            passports_[name.base] = contents;
        } else if (name.extension != ".txt" && name.extension != ".log") {
            unfinished(file + " is left over");
        }
        const bool ours = name.base.starts_with("run") || name.base.starts_with("dead");
        if (!ours) {
            fault(file + " is a name that nobody chose");
        }
        if (contents.empty()) {
            unfinished(file + " is empty");
        }
    }
    [[nodiscard]] bool isEarlier(const Pieces& pieces) const {
        return std::any_of(pieces.begin(), pieces.end(), [this](const auto& piece) {
            const auto own = field_.earlier().find(piece.first == 0 ? "run.dat" : "run_1.dat");
            return own != field_.earlier().end() && files_.at(piece.second) == own->second;
        });
    }

    /// Follows the counter signal through the pieces of a recording.
    void checkPieces(const std::string& base, const Pieces& pieces) {
        uint64_t sample = 0;
        uint32_t number = 0;
        for (const auto& [found, file] : pieces) {
            const std::string& data = files_.at(file);
            if (found != number++) {
                fault("before " + file + " one is missing");
            }
            for (size_t at = 0; at + sizeof(uint16_t) <= data.size() / kFrameBytes * kFrameBytes; at += 2, ++sample) {
                uint16_t word = 0;
                std::memcpy(&word, data.data() + at, sizeof word);
                if (word != drivers::counterWord(sample, kCounterBits)) {
                    fault(file + " has a wrong sample at " + std::to_string(at));
                    break;
                }
            }
            checkDescription(base, file, data.size());
            if (base == "run" && !data.empty()) {
                verdict_.recorded += data.size();
                ++verdict_.recordedFiles;
            }
        }
    }
    void checkDescription(const std::string& base, const std::string& file, uint64_t bytes) {
        RecordedFormat format;
        std::string missing;
        const std::string description = file.substr(0, file.size() - 3) + "txt";
        const auto complain = [&](const std::string& what) {
            journals_.contains(base) ? unfinished(what) : fault(what);
        };
        if (!files_.contains(description)) {
            complain(file + " has no description");
        } else if (!readRecordedFormat(field_.path() + "/data/" + description, format, missing) ||
                   format.frames * kFrameBytes != bytes) {
            complain(description + " does not fit " + std::to_string(bytes) + " bytes " + missing);
        }
        if (bytes % kFrameBytes != 0) {
            complain(file + " ends with a torn frame");
        }
    }

    /// A recording may have no passport, or one that never got its end; one with an end agrees with the files.
    void checkPassport(const std::string& base, const Pieces& pieces) {
        const auto found = passports_.find(base);
        if (found == passports_.end() || journals_.contains(base)) {
            return;
        }
        std::string problem;
        const auto passport = readPassport(found->second, problem);
        if (!passport) {
            fault(base + ".json is no passport: " + problem);
        } else if (passport->state != Passport::State::Recording) {
            // It keeps the names that the pieces had, also when it was moved aside with them.
            for (const PassportPiece& piece : passport->pieces) {
                const auto file = pieces.find(partsOf(piece.file).number);
                if (file == pieces.end() || files_.at(file->second).size() != piece.bytes) {
                    fault(base + ".json tells of another " + piece.file);
                }
            }
            if (passport->pieces.size() != pieces.size() || !passportContradictions(found->second, *passport).empty()) {
                fault(base + ".json does not fit the recording");
            }
        }
    }

    /// All files of the earlier recording have one base, and are what they were.
    void checkEarlier() {
        std::set<std::string> bases;
        for (const auto& [file, contents] : field_.earlier()) {
            const Name own = partsOf(file);
            const auto place =
                std::find_if(files_.begin(), files_.end(), [&, &wanted = contents](const auto& candidate) {
                    const Name name = partsOf(candidate.first);
                    return name.base.starts_with(own.base) && name.number == own.number &&
                           name.extension == own.extension && candidate.second == wanted;
                });
            if (place == files_.end()) {
                fault(file + " of the earlier recording is lost");
            } else {
                bases.insert(partsOf(place->first).base);
            }
        }
        verdict_.earlierMoved = !bases.contains("run");
        if (bases.size() > 1) {
            unfinished("the earlier recording has two names, " + *bases.begin() + " and " + *bases.rbegin());
        }
    }
    /// What was cut off is recovered, or waits for it: nothing but a torn end is missing.
    void checkCutOff() {
        for (const auto& [file, contents] : field_.recovered()) {
            const auto found = files_.find(file);
            const bool waits = journals_.contains(partsOf(file).base);
            if (file.ends_with(".json") && found != files_.end()) {
                continue;  // it tells when it was recovered
            }
            // A description that could not be written whole is removed, data never.
            if (found == files_.end() ? !waits || (file.ends_with(".dat") && field_.cutOff().contains(file))
                                      : found->second != contents && !waits) {
                fault(file + (found == files_.end() ? " is gone" : " is not recovered as it has to be"));
            } else if (found != files_.end() && file.ends_with(".dat") && !found->second.starts_with(contents)) {
                fault(file + " lost data");
            }
        }
    }

    const Field& field_;
    Files files_;
    std::map<std::string, Pieces> recordings_;
    std::map<std::string, std::string> passports_;
    std::set<std::string> journals_;
    Verdict verdict_;
};

std::string withoutNumbers(std::string line) {
    std::erase_if(line, [](unsigned char c) { return std::isdigit(c) != 0 || c == '\r'; });
    return line;
}

}  // namespace

Verdict judge(const Field& field) {
    return Judge(field).verdict();
}

std::string newLines(const std::string& text, const std::string& usual) {
    std::set<std::string> known{""};
    std::istringstream before(usual);
    for (std::string line; std::getline(before, line);) {
        known.insert(withoutNumbers(line));
    }
    std::string fresh;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!known.contains(withoutNumbers(line))) {
            fresh += line + '\n';
        }
    }
    return fresh;
}

}  // namespace tarno2::test

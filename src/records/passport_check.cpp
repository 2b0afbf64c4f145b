#include <algorithm>
#include <cmath>
#include <string>

#include "records/channel_label.h"
#include "records/json_tree.h"
#include "records/passport.h"
#include "records/passport_keys.h"
#include "records/utc_text.h"

namespace tarno2 {

namespace {

using Problems = std::vector<std::string>;

constexpr size_t kMostProblems = 20;

bool isSame(const JsonTree& told, const JsonTree& expected) {
    // Where numbers were rounded on another machine the last digit may differ.
    if (expected.get<double>() != nullptr && told.number()) {
        const double a = *told.number();
        const double b = *expected.number();
        return std::abs(a - b) <= 1e-9 * std::max(std::abs(a), std::abs(b));
    }
    const auto* toldText = told.get<std::string>();
    const auto* expectedText = expected.get<std::string>();
    if (toldText != nullptr && expectedText != nullptr && *toldText != *expectedText) {
        const auto a = parseUtcText(*toldText);
        const auto b = parseUtcText(*expectedText);
        return a && b && std::abs(*a - *b) <= 1;
    }
    return told == expected;
}

/// Holds what is told against what follows; members that only one of both has are of no interest when it is the told
/// one.
void compare(const JsonTree& told, const JsonTree& expected, const std::string& path, Problems& problems) {
    if (problems.size() >= kMostProblems) {
        return;
    }
    const auto* object = expected.get<JsonTree::Object>();
    if (object != nullptr && told.get<JsonTree::Object>() != nullptr) {
        for (size_t i = 0; i < object->keys().size(); ++i) {
            const std::string& key = object->keys()[i];
            const JsonTree* found = told.find(key);
            if (found == nullptr) {
                problems.push_back(path + key + " is missing");
            } else {
                compare(*found, object->values()[i], path + key + '.', problems);
            }
        }
        return;
    }
    const auto* toldList = told.get<JsonTree::List>();
    const auto* expectedList = expected.get<JsonTree::List>();
    const bool lists = toldList != nullptr && expectedList != nullptr;
    if (lists && toldList->size() == expectedList->size()) {
        for (size_t i = 0; i < expectedList->size(); ++i) {
            compare((*toldList)[i], (*expectedList)[i], path + std::to_string(i) + '.', problems);
        }
        return;
    }
    if (!isSame(told, expected)) {
        const std::string name = path.substr(0, path.size() - std::min<size_t>(path.size(), 1));
        if (lists) {
            problems.push_back(name + " has " + std::to_string(toldList->size()) + " entries, not " +
                               std::to_string(expectedList->size()));
        } else {
            problems.push_back(name + " is " + jsonText(told, false) + ", not " + jsonText(expected, false));
        }
    }
}

void checkPieces(const Passport& passport, Problems& problems) {
    const uint64_t frameBytes = uint64_t{passport.sample.bytes} * passport.channels.size();
    const uint64_t length = passport.recordFrames();
    for (const PassportPiece& piece : passport.pieces) {
        // A record may end before its first frame then, too.
        const bool mayBeTorn = passport.mayEndWithinAFrame() && &piece == &passport.pieces.back();
        const bool torn = frameBytes != 0 && piece.bytes % frameBytes != 0;
        if (frameBytes != 0 && ((torn && !mayBeTorn) || piece.bytes / frameBytes != piece.frames)) {
            problems.push_back(piece.file + ": " + std::to_string(piece.frames) + " frames do not have " +
                               std::to_string(piece.bytes) + " bytes");
        }
        const uint64_t records = length == 0 ? 0 : piece.frames / length + (piece.frames % length != 0 ? 1 : 0);
        if (piece.records != records && !(mayBeTorn && piece.records == records + 1)) {
            problems.push_back(piece.file + ": " + std::to_string(piece.frames) + " frames are not " +
                               std::to_string(piece.records) + " records");
        }
    }
}

void checkRanges(const Passport& passport, Problems& problems) {
    const PassportSample& sample = passport.sample;
    if ((sample.bytes != 2 && sample.bytes != 4) ||
        uint64_t{sample.codeBits} + sample.codeShift > uint64_t{sample.bytes} * 8 ||
        sample.codeMinimum > sample.codeMaximum) {
        problems.emplace_back("sample: there is no such code");
    }
    for (size_t i = 0; i < passport.channels.size(); ++i) {
        if (!(passport.channels[i].lower < passport.channels[i].upper)) {
            problems.push_back("channels." + std::to_string(i) + ": its range has no width");
        }
        if (!isScale(passport.channels[i].factor, passport.channels[i].offset)) {
            problems.push_back("channels." + std::to_string(i) + ": its factor is 0");
        }
    }
    for (size_t i = 0; i < passport.lines.size(); ++i) {
        if (passport.lines[i].number != static_cast<int32_t>(i)) {
            problems.push_back("lines." + std::to_string(i) + ": its number is not " + std::to_string(i));
            break;
        }
    }
    const double recorded = passport.rate.given / std::max<uint32_t>(passport.rate.decimation, 1);
    if (!(passport.rate.recorded > 0.0) || passport.rate.decimation == 0 ||
        (!passport.rate.packetsGiven && std::abs(recorded - passport.rate.recorded) > 1e-3 * recorded)) {
        problems.emplace_back("rate: the recorded one does not follow from the one that the board gave");
    }
}

void checkCourse(const Passport& passport, Problems& problems) {
    const auto& clock = passport.end.clock;
    const auto goesBack = [](const ClockPair& a, const ClockPair& b) {
        return b.frame < a.frame || b.monotonic < a.monotonic;
    };
    if (std::ranges::adjacent_find(clock, goesBack) != clock.end()) {
        problems.emplace_back("clock: its pairs go back");
    }
    if (!std::ranges::is_sorted(passport.triggers)) {
        problems.emplace_back("records: their triggers go back");
    }
    const auto badSum = [](const PassportPiece& piece) { return !piece.sha256.empty() && piece.sha256.size() != 64; };
    if (std::ranges::any_of(passport.pieces, badSum)) {
        problems.emplace_back("pieces: a checksum is none");
    }
}

/// Whether as many records are listed as the pieces tell of. Where not, the list that would follow may be of any
/// length.
bool listsItsRecords(const JsonTree& told, const Passport& passport, Problems& problems) {
    uint64_t expected = 0;
    for (const PassportPiece& piece : passport.pieces) {
        expected += std::min(piece.records, uint64_t{kMostPassportTriggers} - expected);
    }
    const JsonTree* records = told.find("records");
    const auto* list = records != nullptr ? records->get<JsonTree::List>() : nullptr;
    const uint64_t listed = list != nullptr ? list->size() : 0;
    if (listed != expected) {
        problems.push_back("records has " + std::to_string(listed) + " entries, not " + std::to_string(expected));
    }
    return listed == expected;
}

}  // namespace

std::vector<std::string> passportContradictions(std::string_view text, const Passport& passport) {
    Problems problems;
    std::string problem;
    const auto told = parseJson(text, problem);
    if (!told) {
        problems.push_back(problem);
    } else if (listsItsRecords(*told, passport, problems)) {
        if (const auto expected = parseJson(passportText(passport), problem)) {
            compare(*told, *expected, "", problems);
        }
    }
    checkRanges(passport, problems);
    if (passport.state != Passport::State::Recording) {
        checkPieces(passport, problems);
        checkCourse(passport, problems);
    }
    return problems;
}

}  // namespace tarno2

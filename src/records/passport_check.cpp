#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

#include "records/passport.h"
#include "records/utc_text.h"

namespace tarno2 {

namespace {

using Json = nlohmann::json;
using Problems = std::vector<std::string>;

constexpr size_t kMostProblems = 20;

bool isSame(const Json& told, const Json& expected) {
    // Where numbers were rounded on another machine the last digit may differ.
    if (expected.is_number_float() && told.is_number()) {
        const double a = told.get<double>();
        const double b = expected.get<double>();
        return std::abs(a - b) <= 1e-9 * std::max(std::abs(a), std::abs(b));
    }
    if (expected.is_string() && told.is_string() && told != expected) {
        const auto a = parseUtcText(told.get<std::string>());
        const auto b = parseUtcText(expected.get<std::string>());
        return a && b && std::abs(*a - *b) <= 1;
    }
    return told == expected;
}

/// Holds what is told against what follows; members that only one of both has are of no interest when it is the told
/// one.
void compare(const Json& told, const Json& expected, const std::string& path, Problems& problems) {
    if (problems.size() >= kMostProblems) {
        return;
    }
    if (expected.is_object() && told.is_object()) {
        for (const auto& [key, value] : expected.items()) {
            const auto found = told.find(key);
            if (found == told.end()) {
                problems.push_back(path + key + " is missing");
            } else {
                compare(*found, value, path + key + '.', problems);
            }
        }
        return;
    }
    if (expected.is_array() && told.is_array() && expected.size() == told.size()) {
        for (size_t i = 0; i < expected.size(); ++i) {
            compare(told[i], expected[i], path + std::to_string(i) + '.', problems);
        }
        return;
    }
    if (!isSame(told, expected)) {
        const std::string name = path.substr(0, path.size() - std::min<size_t>(path.size(), 1));
        if (expected.is_array() && told.is_array()) {
            problems.push_back(name + " has " + std::to_string(told.size()) + " entries, not " +
                               std::to_string(expected.size()));
        } else {
            const auto shown = [](const Json& json) {
                return json.dump(-1, ' ', false, Json::error_handler_t::replace);
            };
            problems.push_back(name + " is " + shown(told) + ", not " + shown(expected));
        }
    }
}

void checkPieces(const Passport& passport, Problems& problems) {
    const uint64_t frameBytes = uint64_t{passport.sample.bytes} * passport.channels.size();
    const uint64_t length = passport.recordFrames();
    for (const PassportPiece& piece : passport.pieces) {
        if (frameBytes != 0 && (piece.bytes % frameBytes != 0 || piece.bytes / frameBytes != piece.frames)) {
            problems.push_back(piece.file + ": " + std::to_string(piece.frames) + " frames do not have " +
                               std::to_string(piece.bytes) + " bytes");
        }
        const uint64_t records = length == 0 ? 0 : piece.frames / length + (piece.frames % length != 0 ? 1 : 0);
        if (piece.records != records) {
            problems.push_back(piece.file + ": " + std::to_string(piece.frames) + " frames are not " +
                               std::to_string(piece.records) + " records");
        }
    }
}

void checkRanges(const Passport& passport, Problems& problems) {
    const PassportSample& sample = passport.sample;
    if ((sample.bytes != 2 && sample.bytes != 4) || sample.codeBits + sample.codeShift > sample.bytes * 8 ||
        sample.codeMinimum > sample.codeMaximum) {
        problems.emplace_back("sample: there is no such code");
    }
    for (size_t i = 0; i < passport.channels.size(); ++i) {
        if (!(passport.channels[i].lower < passport.channels[i].upper)) {
            problems.push_back("channels." + std::to_string(i) + ": its range has no width");
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

}  // namespace

std::vector<std::string> passportContradictions(std::string_view text, const Passport& passport) {
    Problems problems;
    const Json told = Json::parse(text, nullptr, false);
    const Json expected = Json::parse(passportText(passport), nullptr, false);
    compare(told, expected, "", problems);
    checkRanges(passport, problems);
    if (passport.state != Passport::State::Recording) {
        checkPieces(passport, problems);
        checkCourse(passport, problems);
    }
    return problems;
}

}  // namespace tarno2

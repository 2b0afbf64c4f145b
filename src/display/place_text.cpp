#include "display/place_text.h"

#include <charconv>
#include <cmath>
#include <string>

#include "config/settings/field_text.h"
#include "records/utc_text.h"

namespace tarno2 {

namespace {

constexpr int64_t kWholeDay = int64_t{86'400} * 1'000'000;  // microseconds

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// So many digits at most, and nothing else.
std::optional<int64_t> digits(std::string_view text, size_t most) {
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool plain = !text.empty() && text.size() <= most && text.front() != '-';
    return plain && error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

/// Microseconds of "hh:mm:ss.fff"; all but the first number are below 60. Two numbers are minutes and seconds, or of
/// a clock hours and minutes.
std::optional<int64_t> parseTime(std::string_view text, bool ofClock) {
    constexpr size_t kMostDigits = 6;
    const size_t last = text.rfind(':');
    if (last == std::string_view::npos) {
        return std::nullopt;
    }
    int64_t minutes = 0;
    const std::string_view before = text.substr(0, last);
    const size_t first = before.find(':');
    if (first != std::string_view::npos) {
        const auto hours = digits(before.substr(0, first), kMostDigits);
        const auto rest = digits(before.substr(first + 1), 2);
        if (!hours || !rest || *rest > 59) {
            return std::nullopt;
        }
        minutes = *hours * 60 + *rest;
    } else if (const auto only = digits(before, kMostDigits)) {
        minutes = *only;
    } else {
        return std::nullopt;
    }
    const std::string_view tail = text.substr(last + 1);
    const auto seconds =
        tail.find_first_not_of("0123456789.,") == std::string_view::npos ? parseNumberField(tail) : std::nullopt;
    if (!seconds || *seconds >= 60.0) {
        return std::nullopt;
    }
    const bool hours = ofClock && first == std::string_view::npos;
    return (minutes * 60'000'000 + std::llround(*seconds * 1e6)) * (hours ? 60 : 1);
}

/// "2026-11-23", microseconds since 1970.
std::optional<int64_t> parseDate(std::string_view text) {
    constexpr size_t kLength = 10;
    return text.size() == kLength ? parseUtcText(std::string(text) + "T00:00:00.000000Z") : std::nullopt;
}

/// The first moment of that time of day which is not before the signal.
int64_t timeOfDayFrom(int64_t start, int64_t inDay) {
    const int64_t startInDay = ((start % kWholeDay) + kWholeDay) % kWholeDay;
    return start + ((inDay - startInDay) % kWholeDay + kWholeDay) % kWholeDay;
}

/// Nothing counts when there is a problem.
double parseFrame(std::string_view text, const PlaceTerms& terms, PlaceProblem& problem) {
    problem = PlaceProblem::None;
    constexpr size_t kDateDigits = 10;
    if (const auto date = parseDate(text.substr(0, kDateDigits))) {
        const std::string_view rest = trimmed(text.substr(kDateDigits));
        const auto time = parseTime(rest.starts_with('T') ? rest.substr(1) : rest, true);
        problem = !rest.empty() && (!time || *time >= kWholeDay) ? PlaceProblem::NotUnderstood
                  : !terms.clock                                 ? PlaceProblem::NoClock
                                                                 : PlaceProblem::None;
        return problem == PlaceProblem::None ? terms.clock->frameAt(*date + time.value_or(0)) : 0.0;
    }
    const bool ofClock = terms.tellsClock && terms.clock;
    if (const auto time = parseTime(text, ofClock)) {
        if (ofClock && *time < kWholeDay) {
            return terms.clock->frameAt(timeOfDayFrom(terms.clock->start, *time));
        }
        problem = terms.framesPerSecond > 0.0 ? PlaceProblem::None : PlaceProblem::NoRate;
        return static_cast<double>(*time) / 1e6 * terms.framesPerSecond;
    }
    if (text.starts_with('#')) {
        constexpr size_t kMostDigits = 18;
        const auto frame = digits(trimmed(text.substr(1)), kMostDigits);
        problem = frame ? PlaceProblem::None : PlaceProblem::NotUnderstood;
        return static_cast<double>(frame.value_or(0));
    }
    constexpr std::string_view kSeconds[] = {"s", "\xD1\x81"};  // the latter as it is abbreviated in Russian
    const auto* unit = std::ranges::find_if(kSeconds, [text](std::string_view one) { return text.ends_with(one); });
    const bool seconds = unit != std::end(kSeconds);
    const auto number = parseNumberField(seconds ? text.substr(0, text.size() - unit->size()) : text);
    if (!number) {
        problem = PlaceProblem::NotUnderstood;
    } else if (terms.countsFrames && !seconds) {
        return *number;
    } else if (!(terms.framesPerSecond > 0.0)) {
        problem = PlaceProblem::NoRate;
    }
    return number.value_or(0.0) * terms.framesPerSecond;
}

}  // namespace

std::optional<double> parsePlace(std::string_view text, const PlaceTerms& terms, PlaceProblem& problem) {
    const double frame = parseFrame(trimmed(text), terms, problem);
    if (problem == PlaceProblem::None && !(frame >= 0.0 && frame <= static_cast<double>(terms.frames))) {
        problem = PlaceProblem::Outside;
    }
    return problem == PlaceProblem::None ? std::optional(frame) : std::nullopt;
}

}  // namespace tarno2

#include "exports/export_facts.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <utility>

#include "config/files/recording_name.h"
#include "platform/paths.h"
#include "records/clock_pairs.h"
#include "records/found_passport.h"

namespace tarno2 {

namespace {

constexpr int64_t kMicrosecondsPerMinute = 60'000'000;
constexpr double kMicrosecondsPerSecond = 1e6;

/// Where a data file lies among those of its recording.
struct Place {
    uint64_t firstFrame = 0;   ///< of all frames of the recording, one behind the other
    uint64_t firstRecord = 0;  ///< of synchronisation
    uint64_t records = 0;
};

/// By its number, for the files may have been renamed since. Nothing of a piece that the passport doesn't list.
std::optional<Place> placeOf(const Passport& passport, uint32_t piece) {
    if (piece >= passport.pieces.size()) {
        return std::nullopt;
    }
    Place place;
    for (uint32_t k = 0; k < piece; ++k) {
        place.firstFrame += passport.pieces[k].frames;
        place.firstRecord += passport.pieces[k].records;
    }
    place.records = passport.pieces[piece].records;
    return place;
}

/// The frame of the stream that is a frame of a file, if anybody knows.
std::optional<uint64_t> streamFrame(const Passport& passport, const Place& place, uint64_t frame) {
    if (passport.synchronisation.mode == "off") {
        return place.firstFrame + frame;
    }
    const uint32_t length = passport.recordFrames();
    if (length == 0 || frame / length >= place.records ||
        place.firstRecord + frame / length >= passport.triggers.size()) {
        return std::nullopt;
    }
    const uint64_t trigger = passport.triggers[place.firstRecord + frame / length];
    return trigger - std::min<uint64_t>(trigger, passport.synchronisation.prehistory) + frame % length;
}

/// Microseconds of so many frames at that rate, Hz; nothing where no clock could tell them.
std::optional<int64_t> lasting(uint64_t frames, double rate) {
    constexpr double kMostMicroseconds = 1e17;
    const double time = rate > 0.0 ? static_cast<double>(frames) / rate * kMicrosecondsPerSecond : 0.0;
    return time < kMostMicroseconds ? std::optional(static_cast<int64_t>(std::llround(time))) : std::nullopt;
}

std::optional<int64_t> momentOf(const Passport& passport, const Place& place, uint64_t ofFile) {
    const auto frame = streamFrame(passport, place, ofFile);
    if (!frame) {
        return std::nullopt;
    }
    const int64_t offset = passport.startOffset * kMicrosecondsPerMinute;
    if (const auto clock = ClockLine::through(passport.end.clock)) {
        return clock->utcOf(static_cast<double>(*frame)) + offset;
    }
    const double rate = passport.rate.packets().value_or(passport.rate.recorded);
    const auto time = lasting(*frame, rate);
    return time ? std::optional((passport.end.begun != 0 ? passport.end.begun : passport.start) + *time + offset)
                : std::nullopt;
}

std::vector<uint64_t> triggersOf(const Passport& passport, const Place& place) {
    std::vector<uint64_t> frames;
    const uint64_t length = passport.recordFrames();
    for (uint64_t i = 0; i < place.records && place.firstRecord + i < passport.triggers.size(); ++i) {
        const uint64_t trigger = passport.triggers[place.firstRecord + i];
        frames.push_back(i * length + std::min<uint64_t>(trigger, passport.synchronisation.prehistory));
    }
    return frames;
}

int64_t microseconds(const LocalTime& time) {
    using namespace std::chrono;
    const sys_days day = year(time.year) / month(time.month) / time.day;
    return duration_cast<std::chrono::microseconds>(day.time_since_epoch() + hours(time.hour) + minutes(time.minute) +
                                                    seconds(time.second) + milliseconds(time.millisecond))
        .count();
}

/// The description tells when a file was begun, and nothing of the gaps between records.
ExportFacts::MomentOf momentByDescription(const RecordedKeys& described) {
    const auto begun = described.created ? std::optional(microseconds(*described.created)) : std::nullopt;
    return [begun, gaps = described.triggered](uint64_t frame, double rate) {
        const auto time = frame == 0 || (!gaps && rate > 0.0) ? lasting(frame, rate) : std::nullopt;
        return begun && time ? std::optional(*begun + *time) : std::nullopt;
    };
}

}  // namespace

ExportFacts findExportFacts(const std::string& dataFile, const RecordedKeys& described) {
    ExportFacts facts;
    facts.device = described.driverName;
    const RecordingName name(dataFile);
    uint32_t piece = 0;
    FoundPassport found = findPassport(name.passport());
    if (const auto whole = name.whole(); !found.there && whole) {
        found = findPassport(whole->passport());
        piece = whole->pieceOf(fileNameOf(dataFile)).value_or(0);
    }
    facts.momentOf = momentByDescription(described);
    if (found.passport) {
        const auto place = placeOf(*found.passport, piece);
        if (place) {
            facts.triggers = triggersOf(*found.passport, *place);
        }
        facts.comment = found.passport->comment;
        facts.packetRate = found.passport->rate.packets();
        facts.device = found.passport->driver + (found.passport->board.empty() ? "" : " " + found.passport->board);
        const auto passport = std::make_shared<const Passport>(std::move(*found.passport));
        facts.momentOf = [passport, place, piece, roughly = facts.momentOf](uint64_t frame, double rate) {
            const auto moment = place ? momentOf(*passport, *place, frame) : std::nullopt;
            // The first file begins, to the second, when its description tells.
            return moment || piece != 0 || frame != 0 ? moment : roughly(frame, rate);
        };
    }
    facts.start = facts.momentOf(0, 0.0);
    return facts;
}

}  // namespace tarno2

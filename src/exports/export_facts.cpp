#include "exports/export_facts.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "config/files/recording_name.h"
#include "platform/paths.h"
#include "platform/utf.h"
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
    uint64_t frames = 0;
    uint64_t records = 0;
};

Place placeOf(const Passport& passport, const std::string& dataFile) {
    Place place;
    for (const PassportPiece& piece : passport.pieces) {
        place.frames = piece.frames;
        place.records = piece.records;
        if (piece.file == systemToUtf8(fileNameOf(dataFile))) {
            return place;
        }
        place.firstFrame += piece.frames;
        place.firstRecord += piece.records;
    }
    return {};
}

/// The frame of the stream that a file begins with, if anybody knows.
std::optional<uint64_t> streamFrame(const Passport& passport, const Place& place) {
    if (passport.synchronisation.mode == "off") {
        return place.firstFrame;
    }
    if (passport.recordFrames() == 0 || place.firstRecord >= passport.triggers.size()) {
        return std::nullopt;
    }
    const uint64_t trigger = passport.triggers[place.firstRecord];
    return trigger - std::min<uint64_t>(trigger, passport.synchronisation.prehistory);
}

std::optional<double> packetRateOf(const PassportRate& rate) {
    return rate.packetsGiven ? std::optional(*rate.packetsGiven / std::max<uint32_t>(rate.decimation, 1))
                             : std::nullopt;
}

std::optional<int64_t> startOf(const Passport& passport, const Place& place) {
    const auto frame = streamFrame(passport, place);
    if (!frame) {
        return std::nullopt;
    }
    int64_t utc = 0;
    if (const auto clock = ClockLine::through(passport.end.clock)) {
        utc = clock->utcOf(static_cast<double>(*frame));
    } else {
        const double rate = packetRateOf(passport.rate).value_or(passport.rate.recorded);
        const double seconds = rate > 0.0 ? static_cast<double>(*frame) / rate : 0.0;
        utc = (passport.end.begun != 0 ? passport.end.begun : passport.start) +
              std::llround(seconds * kMicrosecondsPerSecond);
    }
    return utc + passport.startOffset * kMicrosecondsPerMinute;
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

}  // namespace

ExportFacts findExportFacts(const std::string& dataFile, const RecordedKeys& described) {
    ExportFacts facts;
    facts.device = described.driverName;
    const RecordingName name(dataFile);
    FoundPassport found = findPassport(name.passport());
    if (const auto whole = name.whole(); !found.there && whole) {
        found = findPassport(whole->passport());
    }
    if (found.passport) {
        const Place place = placeOf(*found.passport, dataFile);
        facts.start = startOf(*found.passport, place);
        facts.triggers = triggersOf(*found.passport, place);
        facts.comment = found.passport->comment;
        facts.packetRate = packetRateOf(found.passport->rate);
        facts.device = found.passport->driver + (found.passport->board.empty() ? "" : " " + found.passport->board);
    }
    if (!facts.start && described.created) {
        facts.start = microseconds(*described.created);
    }
    return facts;
}

}  // namespace tarno2

// A recording of its own: the samples as they are, and a description beside them.

#include <chrono>

#include "config/files/recording_name.h"
#include "exports/make_exporters.h"
#include "platform/file.h"
#include "records/record_description.h"
#include "records/recorded_format.h"

namespace tarno2 {

namespace {

/// Of microseconds since 1970, to the millisecond.
LocalTime localTimeOf(int64_t time) {
    using namespace std::chrono;
    const auto whole = floor<days>(sys_time<microseconds>(microseconds(time)));
    const year_month_day date{whole};
    const hh_mm_ss inDay{floor<milliseconds>(sys_time<microseconds>(microseconds(time)) - whole)};
    LocalTime local;
    local.year = static_cast<uint16_t>(static_cast<int>(date.year()));
    local.month = static_cast<uint16_t>(static_cast<unsigned>(date.month()));
    local.day = static_cast<uint16_t>(static_cast<unsigned>(date.day()));
    local.dayOfWeek = static_cast<uint16_t>(weekday{whole}.c_encoding());
    local.hour = static_cast<uint16_t>(inDay.hours().count());
    local.minute = static_cast<uint16_t>(inDay.minutes().count());
    local.second = static_cast<uint16_t>(inDay.seconds().count());
    local.millisecond = static_cast<uint16_t>(inDay.subseconds().count());
    return local;
}

class DatExporter final : public Exporter {
public:
    DatExporter(const ExportSubject& subject, const RecordedKeys& described) : subject_(subject) {
        if (!described.driverName.empty()) {
            description_.setDriverName(described.driverName);
        }
        // Frames that were packets are counted by the rate of the packets, which is not what a description tells.
        const double every = subject.inputs.frequency / subject.rate;
        const double rate = described.packetMode && described.frequencyPerChannel
                                ? *described.frequencyPerChannel / every
                                : subject.rate;
        description_.setFrequency(rate * subject.inputs.channelCount);
        description_.setSynchronousChannels(static_cast<uint8_t>(described.synchronousChannels.value_or(-1)));
        description_.setPacketMode(described.packetMode ? 1 : 0, packetRate(subject, described, every),
                                   static_cast<uint8_t>(described.externalFrequency.value_or(-1)));
        description_.setBackwardOrder(0);
        description_.setDataFormat(*described.layout);
        description_.setCreateTime(subject.facts.start ? localTimeOf(*subject.facts.start)
                                                       : described.created.value_or(LocalTime{}));
        for (const auto& [upper, lower] : subject.inputs.ranges) {
            description_.addChannelRange(upper, lower);
        }
    }

    // Shows before the first frame whether there can be a description, and leaves none of what was replaced.
    bool begin(ExportSink& sink) override { return end(sink, 0); }

    bool frames(ExportSink& sink, const uint8_t* frames, size_t count) override {
        return sink.write(frames, count * subject_.inputs.frameBytes());
    }

    bool end(ExportSink& /*sink*/, uint64_t frames) override {
        description_.setDataCountPerChannel(frames);
        written_ = description_.writeForDataFile(subject_.outputName);
        return written_;
    }

    [[nodiscard]] std::string unwritten() const override {
        return written_ ? std::string() : RecordDescription::fileNameFor(subject_.outputName);
    }
    [[nodiscard]] OsError error() const override { return description_.writeError(); }

private:
    static double packetRate(const ExportSubject& subject, const RecordedKeys& described, double every) {
        const double told = described.packetFrequency.value_or(0);
        return every > 1.0 ? subject.facts.packetRate.value_or(told) / every : told;
    }

    bool written_ = true;
    const ExportSubject& subject_;
    RecordDescription description_;
};

}  // namespace

std::unique_ptr<Exporter> makeDat(const ExportSubject& subject, ExportNotes& notes, ConversionResult& refusal) {
    const RecordedKeys described = readRecordedKeys(RecordDescription::fileNameFor(subject.dataFile));
    if (!described.layout || described.triggered) {
        refusal.status = described.layout ? ConversionResult::RecordsTorn : ConversionResult::BadInput;
        refusal.subject = "DataFormat";
        return nullptr;
    }
    const RecordingName name(subject.dataFile);
    if (fileExists(name.passport()) || fileExists(name.whole().value_or(name).passport())) {
        notes.push_back({ExportNote::PassportLeftOut, {}});
    }
    return std::make_unique<DatExporter>(subject, described);
}

}  // namespace tarno2

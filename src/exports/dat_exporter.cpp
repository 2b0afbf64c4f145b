// A recording of its own: the samples as they are, and a description beside them.

#include <chrono>

#include "exports/make_exporters.h"
#include "records/export_names.h"
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
        description_.reset();
        if (!described.driverName.empty()) {
            description_.setDriverName(described.driverName);
        }
        description_.setFrequency(subject.rate * subject.inputs.channelCount);
        description_.setSynchronousChannels(0);
        description_.setPacketMode(0, 0.0, 0);
        description_.setBackwardOrder(0);
        description_.setDataFormat(described.layout.value_or(SampleLayout{}));
        description_.setCreateTime(subject.facts.start ? localTimeOf(*subject.facts.start)
                                                       : described.created.value_or(LocalTime{}));
        for (const auto& [upper, lower] : subject.inputs.ranges) {
            description_.addChannelRange(upper, lower);
        }
    }

    bool begin(ExportSink& /*sink*/) override { return true; }

    bool frames(ExportSink& sink, const uint8_t* frames, size_t count) override {
        return sink.write(frames, count * subject_.inputs.frameBytes());
    }

    bool end(ExportSink& /*sink*/, uint64_t frames) override {
        description_.setDataCountPerChannel(frames);
        return description_.writeForDataFile(subject_.outputName);
    }

    [[nodiscard]] OsError error() const override { return description_.writeError(); }

private:
    const ExportSubject& subject_;
    RecordDescription description_;
};

}  // namespace

std::unique_ptr<Exporter> makeDat(const ExportSubject& subject, ExportNotes& /*notes*/, ConversionResult& refusal) {
    const RecordedKeys described = readRecordedKeys(RecordDescription::fileNameFor(subject.dataFile));
    const bool ownName = subject.outputName != kStandardOutput &&
                         RecordDescription::fileNameFor(subject.outputName) != subject.outputName;
    if (!ownName || !described.layout) {
        refusal.status = ownName ? ConversionResult::BadInput : ConversionResult::BadName;
        refusal.subject = ownName ? "DataFormat" : subject.outputName;
        return nullptr;
    }
    return std::make_unique<DatExporter>(subject, described);
}

}  // namespace tarno2

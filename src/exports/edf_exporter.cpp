// EDF+ and BDF+: records of 16 or 24 bits a sample, signal after signal, with what was noted in a signal of its own.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <utility>
#include <vector>

#include "exports/channel_scale.h"
#include "exports/edf_annotations.h"
#include "exports/edf_header.h"
#include "exports/edf_layout.h"
#include "exports/make_exporters.h"
#include "exports/sample_codes.h"

namespace tarno2 {

namespace {

constexpr uint32_t kEdfByteBits = 8;
constexpr size_t kMostSignals = 9999;
constexpr int64_t kSecond = 1'000'000;
const std::string kClosing = "Recording ends";

std::map<uint64_t, std::string> annotatedTexts(const ExportSubject& subject) {
    std::map<uint64_t, std::string> texts = subject.inputs.marks;
    uint64_t number = 0;
    for (const uint64_t frame : subject.facts.triggers) {
        std::string& text = texts[frame];
        text.insert(0, "Trigger " + std::to_string(++number) + (text.empty() ? "" : "; "));
    }
    texts.erase(texts.lower_bound(subject.frames), texts.end());
    return texts;
}

class EdfExporter final : public Exporter {
public:
    EdfExporter(const ExportSubject& subject, uint32_t bits)
        : subject_(subject),
          codes_(subject.inputs, true),
          bytes_(bits / kEdfByteBits),
          dropped_(subject.inputs.codeBits > bits ? subject.inputs.codeBits - bits : 0),
          texts_(annotatedTexts(subject)),
          records_(edfRecords(subject.rate, signalCount() * bytes_, subject.frames)),
          annotations_(texts_, records_.frames, subject.rate, fraction()),
          annotationBytes_(roomForAnnotations()),
          record_(signalCount() * records_.frames * bytes_) {}

    [[nodiscard]] const EdfRecords& records() const { return records_; }
    [[nodiscard]] uint32_t dropped() const { return dropped_; }
    [[nodiscard]] uint64_t padding() const { return countOf(subject_.frames) * records_.frames - subject_.frames; }
    /// Whether the header tells the limits of a channel with all their digits.
    [[nodiscard]] bool exactLimits() const { return std::ranges::all_of(signals(), &EdfSignal::exact); }

    bool begin(ExportSink& sink) override {
        const bool done = sink.write(header(subject_.frames));
        recordsEnd_ = sink.position();
        return done;
    }

    bool frames(ExportSink& sink, const uint8_t* frames, size_t count) override {
        const size_t channels = subject_.inputs.channelCount;
        codeBlock_.resize(count * channels);
        codes_.to32(frames, count * channels, codeBlock_.data());
        for (size_t i = 0; i < count; ++i) {
            takeFrame(&codeBlock_[i * channels], subject_.inputs.port(frames + i * subject_.inputs.frameBytes()));
            if (++filled_ == records_.frames && !writeRecord(sink, {})) {
                return false;
            }
        }
        return true;
    }

    bool end(ExportSink& sink, uint64_t frames) override {
        if (filled_ > 0) {
            padRecord();
            if (!writeRecord(sink, kClosing)) {
                return false;
            }
        }
        return frames == subject_.frames || sink.patch(0, header(frames));
    }

    bool rescue(ExportSink& sink, uint64_t /*bytes*/, uint64_t /*frames*/) override {
        return sink.cutBack(recordsEnd_) && sink.patch(0, header(written_ * records_.frames));
    }

private:
    [[nodiscard]] size_t signalCount() const { return subject_.inputs.channelCount + subject_.inputs.digitalLines; }
    [[nodiscard]] uint64_t countOf(uint64_t frames) const { return (frames + records_.frames - 1) / records_.frames; }
    /// Seconds of the start beyond the whole one.
    [[nodiscard]] double fraction() const {
        const int64_t start = subject_.facts.start.value_or(0);
        return static_cast<double>(((start % kSecond) + kSecond) % kSecond) / static_cast<double>(kSecond);
    }

    [[nodiscard]] size_t roomForAnnotations() const {
        // After a stop the closing one may have decimals that it would not have had at the end.
        const size_t closing =
            annotations_.ofRecord(0, kClosing, subject_.frames).size() - annotations_.ofRecord(0).size();
        const size_t longest = annotations_.longest(countOf(subject_.frames)) + closing + 2 * EdfAnnotations::kDecimals;
        return (longest + bytes_ - 1) / bytes_ * bytes_;
    }

    [[nodiscard]] std::vector<EdfSignal> signals() const {
        const ConversionInputs& inputs = subject_.inputs;
        const auto bits = inputs.codeBits - dropped_;
        std::vector<EdfSignal> signals;
        for (size_t i = 0; i < inputs.channelCount; ++i) {
            const ChannelScale scale(inputs, i, true);
            const int64_t lowest = -(int64_t{1} << (bits - 1));
            const int64_t highest = -lowest - 1;
            const auto told = [&](int64_t stored) {
                return scale.value(std::ldexp(static_cast<double>(stored), static_cast<int>(dropped_)) +
                                   static_cast<double>(codes_.subtracted()));
            };
            signals.push_back(tellable({nameOf(inputs.labels.channelName(i), i), inputs.labels.labelOf(i).unitText(),
                                        told(lowest), told(highest), lowest, highest, records_.frames}));
        }
        for (uint32_t i = 0; i < inputs.digitalLines; ++i) {
            const std::string name = inputs.labels.lineName(i);
            signals.push_back(
                {edfText(name) == name ? name : "Line " + std::to_string(i), "", 0.0, 1.0, 0, 1, records_.frames});
        }
        const int64_t lowest = -(int64_t{1} << (bytes_ * kEdfByteBits - 1));
        signals.push_back({bytes_ == 2 ? "EDF Annotations" : "BDF Annotations", "", -1.0, 1.0, lowest, -lowest - 1,
                           annotationBytes_ / bytes_});
        return signals;
    }

    /// Limits that read the same would make one value of all samples: then codes are told.
    [[nodiscard]] static EdfSignal tellable(EdfSignal signal) {
        constexpr double kExact = 1e-12;
        const auto read = [](double value) {
            return std::strtod(numberText(value, kEdfNumberLength).c_str(), nullptr);
        };
        const auto whole = [&](double value) { return std::fabs(read(value) - value) <= kExact * std::fabs(value); };
        signal.exact = whole(signal.physicalMinimum) && whole(signal.physicalMaximum);
        if (read(signal.physicalMinimum) == read(signal.physicalMaximum)) {
            signal.physicalMinimum = static_cast<double>(signal.digitalMinimum);
            signal.physicalMaximum = static_cast<double>(signal.digitalMaximum);
            signal.dimension = "codes";
            signal.exact = false;
        }
        return signal;
    }

    /// Names in other letters would be question marks: the channel's number says more.
    [[nodiscard]] std::string nameOf(const std::string& name, size_t column) const {
        if (edfText(name) == name) {
            return name;
        }
        const auto& channels = subject_.inputs.labels.channels;
        return "Channel " +
               std::to_string(column < channels.size() ? channels[column].number : static_cast<int>(column));
    }

    [[nodiscard]] std::string header(uint64_t frames) const {
        EdfHeader header;
        header.bdf = bytes_ == 3;
        header.start = subject_.facts.start;
        header.equipment = subject_.facts.device;
        header.records = countOf(frames);
        header.duration = records_.duration;
        header.signals = signals();
        return edfHeader(header);
    }

    void put(size_t signal, uint64_t frame, uint32_t value) {
        uint8_t* const to = &record_[(signal * records_.frames + frame) * bytes_];
        for (uint32_t i = 0; i < bytes_; ++i) {
            to[i] = static_cast<uint8_t>(value >> (kEdfByteBits * i));
        }
    }

    void takeFrame(const int32_t* codes, uint32_t port) {
        const size_t channels = subject_.inputs.channelCount;
        for (size_t i = 0; i < channels; ++i) {
            put(i, filled_, static_cast<uint32_t>(codes[i] >> dropped_));
        }
        for (uint32_t line = 0; line < subject_.inputs.digitalLines; ++line) {
            put(channels + line, filled_, (port >> line) & 1U);
        }
    }

    /// Every signal stays as it was in the last frame.
    void padRecord() {
        for (size_t signal = 0; signal < signalCount(); ++signal) {
            uint8_t* const begin = &record_[signal * records_.frames * bytes_];
            for (uint64_t i = filled_ * bytes_; i < records_.frames * bytes_; ++i) {
                begin[i] = begin[i - bytes_];
            }
        }
    }

    bool writeRecord(ExportSink& sink, const std::string& closing) {
        const uint64_t end = written_ * records_.frames + std::exchange(filled_, 0);
        std::string notes = annotations_.ofRecord(written_, end % records_.frames == 0 ? std::string() : closing, end);
        notes.resize(annotationBytes_, '\0');
        if (!sink.write(record_.data(), record_.size()) || !sink.write(notes)) {
            return false;
        }
        recordsEnd_ = sink.position();
        ++written_;
        return true;
    }

    const ExportSubject& subject_;
    const SampleCodes codes_;
    const uint32_t bytes_;
    const uint32_t dropped_;  ///< lowest bits of a code for which there is no room
    const std::map<uint64_t, std::string> texts_;
    const EdfRecords records_;
    const EdfAnnotations annotations_;
    const size_t annotationBytes_;
    std::vector<uint8_t> record_;
    std::vector<int32_t> codeBlock_;
    uint64_t filled_ = 0;      ///< frames of the record
    uint64_t written_ = 0;     ///< records
    uint64_t recordsEnd_ = 0;  ///< bytes up to the end of the last one
};

std::unique_ptr<Exporter> makeWithBits(const ExportSubject& subject, uint32_t bits, ExportNotes& notes,
                                       ConversionResult& refusal) {
    const ConversionInputs& inputs = subject.inputs;
    const auto refuse = [&](ConversionResult::Status status, const std::string& what) {
        refusal.status = status;
        refusal.subject = what;
        return nullptr;
    };
    constexpr uint32_t kEdfBits = 16;
    constexpr double kSlowest = 1e-5;
    constexpr double kFastest = 1e8;
    if (bits == kEdfBits && inputs.codeBits > bits) {
        return refuse(ConversionResult::CodesTooWide, std::to_string(bits));
    }
    if (inputs.channelCount + inputs.digitalLines >= kMostSignals) {
        return refuse(ConversionResult::TooManyChannels, std::to_string(kMostSignals - 1));
    }
    if (!(subject.rate >= kSlowest && subject.rate <= kFastest)) {
        return refuse(ConversionResult::RateImpossible, {});
    }
    auto exporter = std::make_unique<EdfExporter>(subject, bits);
    const auto note = [&](bool holds, ExportNote::Kind kind, const std::string& detail) {
        if (holds) {
            notes.push_back({kind, detail});
        }
    };
    const EdfRecords& records = exporter->records();
    bool replaced = false;
    for (size_t i = 0; i < inputs.channelCount; ++i) {
        const std::string name = inputs.labels.channelName(i);
        const std::string unit = inputs.labels.labelOf(i).unitText();
        replaced = replaced || edfText(name) != name || edfText(unit) != unit;
    }
    note(exporter->dropped() > 0, ExportNote::LowBitsLeftOut, std::to_string(exporter->dropped()));
    note(!records.exactRate, ExportNote::RateRounded,
         numberText(static_cast<double>(records.frames) / std::strtod(records.duration.c_str(), nullptr), 17));
    note(exporter->padding() > 0, ExportNote::LastRecordPadded, std::to_string(exporter->padding()));
    note(replaced, ExportNote::NamesReplaced, {});
    note(!exporter->exactLimits(), ExportNote::LimitsRounded, {});
    return exporter;
}

}  // namespace

std::unique_ptr<Exporter> makeEdf(const ExportSubject& subject, ExportNotes& notes, ConversionResult& refusal) {
    constexpr uint32_t kBits = 16;
    return makeWithBits(subject, kBits, notes, refusal);
}

std::unique_ptr<Exporter> makeBdf(const ExportSubject& subject, ExportNotes& notes, ConversionResult& refusal) {
    constexpr uint32_t kBits = 24;
    return makeWithBits(subject, kBits, notes, refusal);
}

}  // namespace tarno2

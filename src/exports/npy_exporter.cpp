// An array of NumPy: a header in the words of Python, then one record a frame, so that it can be mapped into memory.

#include <algorithm>
#include <array>
#include <cstring>
#include <set>
#include <vector>

#include "exports/channel_scale.h"
#include "exports/little_endian.h"
#include "exports/make_exporters.h"
#include "exports/sample_codes.h"

namespace tarno2 {

namespace {

constexpr size_t kAlignment = 64;
constexpr size_t kLongest16 = 0xFFFF;
/// What numpy.load takes without being asked to.
constexpr size_t kUsualHeader = 10000;

/// Bytes behind values and lines that copies may touch.
constexpr size_t kSlack = 16;

/// Eight lines of a port as a byte each.
constexpr uint32_t kTableLines = 8;
constexpr auto kLineBytes = [] {
    std::array<std::array<uint8_t, kTableLines>, 1U << kTableLines> table{};
    for (uint32_t port = 0; port < table.size(); ++port) {
        for (uint32_t line = 0; line < kTableLines; ++line) {
            table[port][line] = (port >> line) & 1U;
        }
    }
    return table;
}();

bool isAscii(const std::string& text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<signed char>(c) > 0; });
}

std::string pythonText(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'' || c == '\\') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted + '\'';
}

/// Names that are all different, in the order of the fields.
std::vector<std::string> fieldNames(const ConversionInputs& inputs) {
    std::vector<std::string> names;
    std::set<std::string> taken;
    const auto add = [&](const std::string& wanted) {
        std::string name = wanted;
        for (int i = 2; !taken.insert(name).second; ++i) {
            name = wanted + '_' + std::to_string(i);
        }
        names.push_back(name);
    };
    for (size_t i = 0; i < inputs.channelCount; ++i) {
        add(inputs.labels.channelName(i));
    }
    for (size_t i = 0; i < inputs.digitalLines; ++i) {
        add(inputs.labels.lineName(i));
    }
    return names;
}

class NpyExporter final : public Exporter {
public:
    explicit NpyExporter(const ExportSubject& subject)
        : subject_(subject), codes_(subject.inputs, false), valueBytes_(widthOf(subject)) {
        if (subject.format.volts) {
            for (size_t i = 0; i < subject.inputs.channelCount; ++i) {
                scales_.emplace_back(subject.inputs, i, subject.format.units);
            }
        }
    }

    [[nodiscard]] std::string header(uint64_t frames) const {
        std::string fields;
        const std::vector<std::string> names = fieldNames(subject_.inputs);
        for (size_t i = 0; i < names.size(); ++i) {
            fields += "(" + pythonText(names[i]) + ", '" +
                      (i < subject_.inputs.channelCount ? valueType() : std::string("|u1")) + "'), ";
        }
        const std::string words = "{'descr': [" + fields + "], 'fortran_order': False, 'shape': (";
        // The count may become smaller, so that its digits get room.
        std::string shape = std::to_string(frames) + ",), }";
        shape.resize(std::to_string(subject_.frames).size() + 5, ' ');
        return framed(words + shape);
    }

    bool begin(ExportSink& sink) override { return sink.write(header(subject_.frames)); }

    bool frames(ExportSink& sink, const uint8_t* frames, size_t count) override {
        const ConversionInputs& inputs = subject_.inputs;
        const bool words = scales_.empty() && inputs.digitalLines == 0 &&
                           (valueBytes_ == 2 ? codes_.areWords16() : codes_.areWords32());
        if (words) {
            return sink.write(frames, count * inputs.frameBytes());
        }
        const size_t values = count * inputs.channelCount;
        if (scales_.empty() && valueBytes_ == 2) {
            out_.resize(values * 2 + kSlack);
            codes_.to16(frames, values, reinterpret_cast<int16_t*>(out_.data()));
        } else {
            out_.resize(values * 4 + kSlack);
            codes_.to32(frames, values, reinterpret_cast<int32_t*>(out_.data()));
        }
        if (!scales_.empty()) {
            toValues(count);
        }
        if (inputs.digitalLines > 0) {
            addLines(frames, count);
        }
        return sink.write(out_.data(), count * recordBytes());
    }

    bool end(ExportSink& sink, uint64_t frames) override {
        return frames == subject_.frames || sink.patch(0, header(frames));
    }

private:
    static size_t widthOf(const ExportSubject& subject) {
        constexpr uint32_t kNarrow = 16;
        return subject.format.volts ? sizeof(double) : subject.inputs.codeBits <= kNarrow ? 2 : 4;
    }

    [[nodiscard]] size_t recordBytes() const {
        return subject_.inputs.channelCount * valueBytes_ + subject_.inputs.digitalLines;
    }

    [[nodiscard]] std::string valueType() const {
        const char* const kind = subject_.format.volts ? "<f" : subject_.inputs.codeSigned ? "<i" : "<u";
        return kind + std::to_string(valueBytes_);
    }

    /// Magic, version, length; blanks up to where the data begins. Letters beyond ASCII take version 3.
    static std::string framed(std::string words) {
        const char version = !isAscii(words) ? '\3' : words.size() + kAlignment > kLongest16 ? '\2' : '\1';
        const size_t lengthBytes = version == '\1' ? 2 : 4;
        const size_t before = 8 + lengthBytes;
        const size_t whole = (before + words.size() + 1 + kAlignment - 1) / kAlignment * kAlignment;
        words.resize(whole - before - 1, ' ');
        words += '\n';
        return std::string("\x93NUMPY") + version + '\0' + littleEndian(words.size(), lengthBytes) + words;
    }

    void toValues(size_t count) {
        const size_t channels = scales_.size();
        const bool plainUnsigned = !subject_.inputs.codeSigned;
        values_.resize(count * channels * sizeof(double) + kSlack);
        for (size_t first = 0; first < count * channels; first += channels) {
            for (size_t channel = 0; channel < channels; ++channel) {
                const size_t i = first + channel;
                int32_t code = 0;
                std::memcpy(&code, &out_[i * sizeof code], sizeof code);
                const double number = plainUnsigned ? static_cast<double>(static_cast<uint32_t>(code)) : code;
                const double value = scales_[channel].value(number);
                std::memcpy(&values_[i * sizeof value], &value, sizeof value);
            }
        }
        out_.swap(values_);
    }

    /// Puts a byte a line behind the values of each frame.
    void addLines(const uint8_t* frames, size_t count) {
        const ConversionInputs& inputs = subject_.inputs;
        const size_t valuesBytes = inputs.channelCount * valueBytes_;
        const size_t frameBytes = inputs.frameBytes();
        values_.resize(count * recordBytes() + kSlack);
        uint8_t* to = values_.data();
        const uint8_t* from = out_.data();
        for (size_t i = 0; i < count; ++i, from += valuesBytes, frames += frameBytes) {
            // Copies of a fixed size are one instruction; what is too much is overwritten by what follows.
            for (size_t done = 0; done < valuesBytes; done += kSlack) {
                std::memcpy(to + done, from + done, kSlack);
            }
            to += valuesBytes;
            uint32_t port = inputs.port(frames);
            for (uint32_t left = inputs.digitalLines; left > 0; port >>= kTableLines) {
                std::memcpy(to, kLineBytes[port % kLineBytes.size()].data(), kTableLines);
                const uint32_t taken = std::min(left, kTableLines);
                to += taken;
                left -= taken;
            }
        }
        out_.swap(values_);
    }

    const ExportSubject& subject_;
    const SampleCodes codes_;
    const size_t valueBytes_;
    std::vector<ChannelScale> scales_;  ///< of values that are no codes
    std::vector<uint8_t> out_;
    std::vector<uint8_t> values_;
};

}  // namespace

std::unique_ptr<Exporter> makeNpy(const ExportSubject& subject, ExportNotes& notes, ConversionResult& /*refusal*/) {
    auto exporter = std::make_unique<NpyExporter>(subject);
    if (const size_t header = exporter->header(subject.frames).size(); header > kUsualHeader) {
        notes.push_back({ExportNote::LongHeader, std::to_string(header)});
    }
    return exporter;
}

}  // namespace tarno2

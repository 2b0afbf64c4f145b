// The sample recording that is installed with the program: a bar that rings after three blows. It is recorded when the
// program is built, by the recorder itself out of a file that this program writes, and gets a fixed time afterwards, so
// that two builds give the same files.
//
//   tarno2-sample-maker signal FILE        writes the signal, a .wav file of three channels
//   tarno2-sample-maker settle RECORDING   gives the recording its time and its marks; RECORDING: its base name

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/codepage1251.h"
#include "platform/file.h"
#include "platform/sha256.h"
#include "records/checksum_list.h"
#include "records/mark_list.h"
#include "records/passport.h"

namespace tarno2 {

namespace {

constexpr uint32_t kRate = 8000;
constexpr uint32_t kFrames = 4 * kRate;
constexpr uint32_t kChannels = 3;
constexpr uint64_t kLongestText = 1'000'000;
constexpr int64_t kStart = 1'793'620'800'000'000;  // 2026-11-02 12:00 UTC
constexpr std::string_view kStartTold = "Время 12:00:00 Дата 02.11.2026";

struct Blow {
    uint32_t frame;
    double force;     ///< of full scale
    double length;    ///< seconds: a soft hammer stays longer
    double overtone;  ///< what a hard hammer wakes beside the fundamental
    const char* text;
};
constexpr std::array<Blow, 3> kBlows = {{{4000, 0.8, 0.001, 0.5, "steel hammer"},
                                         {13600, 0.5, 0.004, 0.1, "rubber hammer"},
                                         {22400, 0.6, 0.001, 0.5, "steel hammer, lighter"}}};

/// Noise of some codes, the same every time.
class Noise {
public:
    double next() {
        state_ = state_ * 1664525U + 1013904223U;
        return (static_cast<double>(state_ >> 8U) / 16777216.0 - 0.5) * 0.002;
    }

private:
    uint32_t state_ = 1;
};

/// Hammer, bar, microphone at a moment after a blow, of full scale.
std::array<double, kChannels> after(const Blow& blow, double seconds) {
    constexpr double kTurn = 6.283185307179586;
    constexpr double kDelay = 0.003;  // the microphone stands a metre away
    const auto ring = [&blow](double t) {
        return t < 0.0 ? 0.0
                       : blow.force * (std::exp(-3.0 * t) * std::sin(kTurn * 210.0 * t) +
                                       blow.overtone * std::exp(-9.0 * t) * std::sin(kTurn * 1160.0 * t));
    };
    const double hit = seconds < blow.length ? blow.force * std::sin(kTurn / 2.0 * seconds / blow.length) : 0.0;
    return {hit, 0.6 * ring(seconds), 0.4 * ring(seconds - kDelay)};
}

void append(std::string& text, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        text.push_back(static_cast<char>(value >> (8 * i) & 0xFFU));
    }
}

std::string waveFile() {
    constexpr uint32_t kFrameBytes = 2 * kChannels;
    std::string text = "RIFF";
    append(text, 36 + kFrames * kFrameBytes, 4);
    text += "WAVEfmt ";
    append(text, 16, 4);
    append(text, 1, 2);
    append(text, kChannels, 2);
    append(text, kRate, 4);
    append(text, kRate * kFrameBytes, 4);
    append(text, kFrameBytes, 2);
    append(text, 16, 2);
    text += "data";
    append(text, kFrames * kFrameBytes, 4);
    Noise noise;
    for (uint32_t frame = 0; frame < kFrames; ++frame) {
        std::array<double, kChannels> values = {noise.next(), noise.next(), noise.next()};
        for (const Blow& blow : kBlows) {
            if (frame >= blow.frame) {
                const auto part = after(blow, static_cast<double>(frame - blow.frame) / kRate);
                for (size_t i = 0; i < kChannels; ++i) {
                    values[i] += part[i];
                }
            }
        }
        for (const double value : values) {
            append(text, static_cast<uint32_t>(std::lround(value * 32767.0)), 2);
        }
    }
    return text;
}

std::vector<RecordingMark> marks() {
    std::vector<RecordingMark> made;
    made.reserve(kBlows.size());
    for (const Blow& blow : kBlows) {
        made.push_back({made.size() + 1, blow.frame, kStart + int64_t{blow.frame} * 1'000'000 / kRate,
                        MarkSource::Operator, blow.text});
    }
    return made;
}

/// Throws std::string with the reason.
std::string read(const std::string& name) {
    std::string text;
    if (const OsError error = readWholeFile(name, kLongestText, FileShare::Read, text); !error.ok()) {
        throw name + ": " + error.text();
    }
    return text;
}

void write(const std::string& name, std::string_view text) {
    if (const OsError error = replaceWholeFile(name, text); !error.ok()) {
        throw name + ": " + error.text();
    }
}

void settlePassport(const std::string& name, const std::string& marksFile) {
    std::string problem;
    auto passport = readPassport(read(name), problem);
    if (!passport) {
        throw name + ": " + problem;
    }
    passport->computer = "sample";
    passport->start = kStart;
    passport->startOffset = 0;
    passport->end.utc = kStart + int64_t{kFrames} * 1'000'000 / kRate;
    passport->end.clock = {{0, 0, kStart}};
    passport->end.words.clear();
    passport->marks = PassportMarks{marksFile, kBlows.size()};
    write(name, passportText(*passport));
}

void settleDescription(const std::string& name) {
    std::string text = read(name);
    constexpr std::string_view kKey = "CreateTime = \"";
    const size_t begin = text.find(kKey);
    const size_t end = begin == std::string::npos ? begin : text.find('"', begin + kKey.size());
    if (end == std::string::npos) {
        throw name + ": no time in it";
    }
    text.replace(begin + kKey.size(), end - begin - kKey.size(), utf8ToCp1251(kStartTold).value_or(""));
    write(name, text);
}

/// The marks come after the checksums were taken.
void addChecksum(const std::string& list, const std::string& file, const std::string& text) {
    Sha256 sum;
    sum.add(std::as_bytes(std::span(text)));
    const FileChecksum line{file, sum.take()};
    write(list, read(list) + checksumListText(std::span(&line, 1)));
}

int run(const std::string& what, const std::string& name) {
    try {
        if (what == "signal") {
            write(name, waveFile());
        } else {
            const std::string base = name.substr(name.find_last_of("/\\") + 1);
            settlePassport(name + ".json", base + ".marks.csv");
            settleDescription(name + ".txt");
            write(name + ".marks.csv", marksText(marks()));
            addChecksum(name + ".sha256", base + ".marks.csv", marksText(marks()));
        }
    } catch (const std::string& why) {
        std::fprintf(stderr, "%s\n", why.c_str());
        return 1;
    }
    return 0;
}

}  // namespace

}  // namespace tarno2

int main(int argc, char** argv) {
    const std::string what = argc == 3 ? argv[1] : "";
    if (what != "signal" && what != "settle") {
        std::fprintf(stderr, "usage: tarno2-sample-maker signal FILE | settle RECORDING\n");
        return 2;
    }
    return tarno2::run(what, argv[2]);
}

// Bytes of a serial line: whatever comes, frames are found in it that are whole, and little is kept.

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "drivers/serial/framing.h"

namespace {

using tarno2::drivers::FrameParser;
using tarno2::drivers::Parsed;

constexpr uint32_t kChannels = 3;
constexpr size_t kMostHeld = 40000;  // more than the longest line and the longest frame

/// Feeds the parser in pieces; each has a length that is among the bytes.
void run(FrameParser& parser, const uint8_t* data, size_t size) {
    std::vector<std::byte> words(size_t{kChannels} * 4);
    uint64_t frames = 0;
    const auto drain = [&] {
        for (;;) {
            const Parsed next = parser.next(words.data());
            if (next.kind == Parsed::Kind::More) {
                return;
            }
            if (next.kind == Parsed::Kind::Damaged && next.lost == 0) {
                std::abort();
            }
            frames += next.kind == Parsed::Kind::Frame ? 1 : 0;
        }
    };
    const auto* bytes = reinterpret_cast<const std::byte*>(data);
    for (size_t at = 0; at < size;) {
        const size_t piece = std::min<size_t>(size - at, size_t{data[at]} + 1);
        parser.feed({bytes + at, piece});
        drain();
        if (parser.held() > kMostHeld) {
            std::abort();
        }
        at += piece;
    }
    parser.end();
    drain();
    // A frame takes at least as many bytes as it has channels.
    if (frames * kChannels > size) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tarno2::drivers;
    if (size < 2) {
        return 0;
    }
    const auto& formats = wireFormats();
    const SampleDecoder decoder(formats[data[0] % formats.size()], -1, 1);
    const uint8_t kind = data[1];
    data += 2;
    size -= 2;
    if (kind % 4 == 0) {
        TextFrames text({",; \t"[kind / 4 % 4], kind / 16 % 2 == 0},
                        kind / 16 % 2 == 0 ? SampleDecoder(*findWireFormat("f64le"), -1, 1) : decoder, kChannels);
        run(text, data, size);
    } else if (kind % 4 == 1) {
        PlainFrames plain(decoder, kChannels);
        run(plain, data, size);
    } else {
        MarkedFrames::Layout layout;
        layout.start.assign(1 + kind / 4 % 2, std::byte{0xAA});
        layout.hasCounter = kind / 8 % 2 == 1;
        layout.checksStart = kind / 16 % 2 == 1;
        layout.check = static_cast<Checksum>(kind / 32 % 7);
        MarkedFrames frames(layout, decoder, kChannels);
        run(frames, data, size);
    }
    return 0;
}

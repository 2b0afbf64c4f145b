#pragma once

#include <cstdint>

#include <tarno2/ISCOPERA.h>

namespace tarno2 {

/// Bytes of a sample of that format; 0 for an unknown one.
[[nodiscard]] inline uint32_t sampleBytes(uint32_t format) {
    switch (format) {
        case kScoperaSigned16:
        case kScoperaUnsigned16:
            return 2;
        case kScoperaSigned32:
        case kScoperaUnsigned32:
            return 4;
        default:
            return 0;
    }
}

/// Calls `use` with the samples as a pointer of their own type.
template <typename Use>
void withSamples(const SCOPERAFrames& frames, Use use) {
    switch (frames.m_nSampleFormat) {
        case kScoperaSigned16:
            use(static_cast<const int16_t*>(frames.m_pSamples));
            break;
        case kScoperaUnsigned16:
            use(static_cast<const uint16_t*>(frames.m_pSamples));
            break;
        case kScoperaSigned32:
            use(static_cast<const int32_t*>(frames.m_pSamples));
            break;
        default:
            use(static_cast<const uint32_t*>(frames.m_pSamples));
            break;
    }
}

}  // namespace tarno2

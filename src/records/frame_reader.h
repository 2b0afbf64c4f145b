#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/file.h"
#include "records/conversion_inputs.h"
#include "records/frame_choice.h"

namespace tarno2 {

/// Reads the chosen frames of a data file, one behind the other. A frame then holds the chosen channels alone; the
/// lines of the digital port stand in the first of them, as they do in every frame. One thread at a time.
class FrameReader {
public:
    /// `inputs`: of the file's own frames, complete; `frames`: how many it holds. The file stays alive. Throws
    /// std::bad_alloc.
    FrameReader(File& data, const ConversionInputs& inputs, const FrameChoice& choice, uint64_t frames);

    [[nodiscard]] uint64_t total() const { return total_; }        ///< chosen frames
    [[nodiscard]] uint64_t taken() const { return taken_; }        ///< read so far
    [[nodiscard]] size_t frameBytes() const { return outBytes_; }  ///< of a chosen frame

    /// Reads the next `count` frames, of which there must be as many left. `done`: fewer when the file has become
    /// shorter, or with an error.
    OsError read(uint8_t* out, size_t count, size_t& done);

private:
    OsError readPlain(uint8_t* out, size_t count, size_t& done);
    OsError readPicked(uint8_t* out, size_t count, size_t& done);
    void pick(const uint8_t* frame, uint8_t* out) const;

    File& data_;
    const FrameChoice choice_;
    const size_t bytes_;    ///< of a sample
    const size_t inBytes_;  ///< of a frame in the file
    const size_t outBytes_;
    const uint32_t portMask_;
    const uint64_t total_;
    const bool plain_;  ///< every frame as it is
    uint64_t taken_ = 0;
    bool placed_ = false;  ///< the file stands at the next frame
    std::vector<uint8_t> block_;
};

}  // namespace tarno2

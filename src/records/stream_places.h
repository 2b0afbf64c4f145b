#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "records/passport.h"

namespace tarno2 {

/// Which frame of a recording's files, one behind the other, is a frame of its stream.
class StreamPlaces {
public:
    /// Every frame of the stream is in the files, or it is not known which.
    explicit StreamPlaces(bool all = true) : all_(all) {}
    /// As the passport tells. What a level chose has no places that anybody knows.
    explicit StreamPlaces(const Passport& passport);

    /// Nothing when it is in no file.
    [[nodiscard]] std::optional<uint64_t> of(uint64_t streamFrame) const;

private:
    struct Record {
        uint64_t streamFrame;  ///< that it begins with
        uint64_t fileFrame;
        uint64_t frames;
    };

    bool all_;
    std::vector<Record> records_;  ///< in the order of the stream
};

}  // namespace tarno2

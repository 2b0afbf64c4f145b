#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace tarno2 {

/// What is noted in an EDF+ file: of each record when it begins, and the texts of its frames.
class EdfAnnotations {
public:
    static constexpr int kDecimals = 9;  ///< of a time in seconds, at most

    /// `texts`: by frames, UTF-8; `rate`: Hz. `fraction`: seconds of the start beyond the whole second that the header
    /// tells. A record has `recordFrames` frames.
    EdfAnnotations(const std::map<uint64_t, std::string>& texts, uint64_t recordFrames, double rate, double fraction);

    /// Bytes that no record needs more of.
    [[nodiscard]] size_t longest(uint64_t records) const;
    /// Those of a record; `closing`, unless empty, is noted at the frame `end`.
    [[nodiscard]] std::string ofRecord(uint64_t record, const std::string& closing = {}, uint64_t end = 0) const;

private:
    [[nodiscard]] std::string onset(uint64_t frame) const;
    [[nodiscard]] std::string note(uint64_t frame, const std::string& text) const;

    const std::map<uint64_t, std::string>& texts_;
    uint64_t recordFrames_;
    double rate_;
    double fraction_;
};

}  // namespace tarno2

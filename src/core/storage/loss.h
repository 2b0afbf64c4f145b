#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace tarno2 {

/// Why samples did not reach the file.
enum class LossCause {
    Overwritten,  ///< the board's ring was, or was about to be, overwritten before it was read
    Transfer,     ///< the board did not hand them over
    Disk,         ///< the disk did not take them
    Board         ///< the board lost them before they came into its ring
};

/// Samples that a recording has lost for certain.
struct Loss {
    LossCause cause = LossCause::Overwritten;
    uint64_t sample = 0;  ///< the first one: of the board's stream, or of the recorded one when the disk is the cause
    uint64_t count = 0;   ///< as many as are known to be lost; 0 of the board: it does not know

    friend bool operator==(const Loss&, const Loss&) = default;
};

/// What the list of losses calls it: "overwritten", "transfer", "disk", "board".
[[nodiscard]] const char* lossCauseName(LossCause cause);

/// What to tell the user of a loss, in the current language. Window thread.
[[nodiscard]] std::string lossText(const Loss& loss);

/// Writes the list of losses beside the data files of a recording (docs/formats.md) and logs it. False when the list
/// could not be written.
bool writeLossLedger(const std::string& dataName, std::span<const Loss> losses);

}  // namespace tarno2

#include "drivers/simulator/boards.h"

namespace tarno2::drivers {

namespace {

/// `bits` wide code at `codeShift`, `lines` digital lines at `lineShift`.
ADCSampleFormat layout(uint32_t bytes, uint32_t bits, uint32_t codeShift, uint32_t lines, uint32_t lineShift) {
    ADCSampleFormat format{};
    format.m_nBytes = bytes;
    format.m_nCodeBits = bits;
    format.m_nCodeShift = codeShift;
    format.m_nCodeMask = ((1U << bits) - 1U) << codeShift;
    format.m_nDigitalShift = lineShift;
    format.m_nDigitalMask = ((1U << lines) - 1U) << lineShift;
    format.m_nDigitalLines = lines;
    format.m_nSignedCodes = 1;
    format.m_nFormatFlags = lines > 0 && lineShift > codeShift ? 1 : 0;
    return format;
}

sdk::Board packedBoard() {
    sdk::Board board;
    board.id = "SIM14";
    board.name = "SIM14 (14 bits, 16 channels, 2 digital lines)";
    board.format = layout(2, 14, 2, 2, 0);
    board.codes = {-8192, 8191};
    board.channels = 16;
    board.range = 5.0;
    board.gains = {1, 2, 5, 10};
    board.minimumFrequency = 1.0F;
    board.maximumFrequency = 2e6F;
    board.usualFrequency = 100e3F;
    board.modes = kADCModeExternalStart | kADCModeDifferential | kADCModePacket | kADCModeExternalClock;
    board.maximumRing = 4U << 20;
    return board;
}

sdk::Board wideBoard() {
    sdk::Board board;
    board.id = "SIM16";
    board.name = "SIM16 (16 bits, 160 channels)";
    board.format = layout(2, 16, 0, 0, 0);
    board.codes = {-32768, 32767};
    board.channels = 160;
    board.range = 10.0;
    board.gains = {1, 10, 100};
    board.minimumFrequency = 1.0F;
    board.maximumFrequency = 40e6F;
    board.usualFrequency = 1e6F;
    board.modes = kADCModePacket;
    board.maximumRing = 16U << 20;
    return board;
}

sdk::Board preciseBoard() {
    sdk::Board board;
    board.id = "SIM24";
    board.name = "SIM24 (24 bits, 8 channels, 8 digital lines)";
    board.format = layout(4, 24, 0, 8, 24);
    board.codes = {-8388608, 8388607};
    board.channels = 8;
    board.range = 2.5;
    board.gains = {1, 4, 16};
    board.frequencies = {1000.0F, 2000.0F, 5000.0F, 10e3F, 20e3F, 50e3F, 100e3F, 200e3F, 400e3F, 800e3F};
    board.minimumFrequency = 1000.0F;
    board.maximumFrequency = 800e3F;
    board.usualFrequency = 50e3F;
    board.modes = kADCModeExternalStart;
    board.maximumRing = 2U << 20;
    return board;
}

sdk::Board pluggedBoard() {
    sdk::Board board;
    board.id = "SIM12U";
    board.name = "SIM12U (12 bits, 4 channels, hot plug)";
    board.format = layout(2, 12, 0, 0, 0);
    board.format.m_nSignedCodes = 0;
    board.codes = {0, 4095};
    board.channels = 4;
    board.range = 5.0;
    board.minimumFrequency = 1.0F;
    board.maximumFrequency = 200e3F;
    board.usualFrequency = 10e3F;
    board.maximumRing = 256U << 10;
    board.hotPlug = true;
    return board;
}

}  // namespace

std::vector<sdk::Board> simulatedBoards() {
    return {packedBoard(), wideBoard(), preciseBoard(), pluggedBoard()};
}

}  // namespace tarno2::drivers

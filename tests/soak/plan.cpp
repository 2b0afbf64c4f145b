#include "tests/soak/plan.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>

namespace tarno2::test {

namespace {

struct SimulatedBoard {
    uint32_t number;
    uint32_t sampleWidth;
    uint32_t counterBits;
    uint32_t channels;
    double fastest;  // Hz
};
constexpr SimulatedBoard kBoards[] = {
    {1, 2, 16, 16, 2e6}, {2, 2, 16, 160, 5e6}, {3, 4, 32, 8, 800e3}, {4, 2, 12, 4, 200e3}};

uint64_t draw(std::mt19937_64& dice, uint64_t least, uint64_t most) {
    return std::uniform_int_distribution<uint64_t>(least, std::max(least, most))(dice);
}

double drawReal(std::mt19937_64& dice, double least, double most) {
    return std::uniform_real_distribution<double>(least, most)(dice);
}

bool chance(std::mt19937_64& dice, double probability) {
    return drawReal(dice, 0.0, 1.0) < probability;
}

void drawDiskTrouble(std::mt19937_64& dice, uint64_t bytes, Plan& plan) {
    plan.disk = static_cast<DiskTrouble>(draw(dice, 0, static_cast<uint64_t>(DiskTrouble::NoClose)));
    plan.diskBytes = draw(dice, 0, bytes + bytes / 4);
    switch (plan.disk) {
        case DiskTrouble::Stalls:
            plan.diskNumber = static_cast<uint32_t>(draw(dice, 1, 20));
            plan.stallMs = static_cast<uint32_t>(draw(dice, 1, 500));
            break;
        case DiskTrouble::LongStall:
            plan.diskNumber = static_cast<uint32_t>(draw(dice, 0, 2));
            plan.stallMs = static_cast<uint32_t>(draw(dice, 1500, 5000));
            break;
        case DiskTrouble::SlowClose:
            plan.stallMs = static_cast<uint32_t>(draw(dice, 1, 300));
            break;
        case DiskTrouble::NoFile:
            plan.diskNumber = static_cast<uint32_t>(draw(dice, 1, 5));
            break;
        default:
            break;
    }
}

void drawBoardTrouble(std::mt19937_64& dice, uint64_t samples, Plan& plan) {
    if (!chance(dice, 0.3)) {
        return;
    }
    const auto last = plan.board == 4 ? BoardTrouble::Unplugged : BoardTrouble::Silence;
    plan.trouble = static_cast<BoardTrouble>(draw(dice, 1, static_cast<uint64_t>(last)));
    plan.troubleAt = draw(dice, 0, samples + samples / 4);
}

}  // namespace

const char* nameOf(DiskTrouble trouble) {
    constexpr std::array kNames{"none",        "stalls",          "a long stall", "slow closes", "full",
                                "short write", "no further file", "no flush",     "no close"};
    return kNames.at(static_cast<size_t>(trouble));
}

const char* nameOf(BoardTrouble trouble) {
    constexpr std::array kNames{"none", "overflow", "failed transfer", "silence", "unplugged"};
    return kNames.at(static_cast<size_t>(trouble));
}

std::string Plan::simulatorSettings() const {
    constexpr std::array<const char*, 5> kKeys{"", "OverflowAfter", "FailGetDataAt", "SilentAfter", "UnplugAfter"};
    std::ostringstream out;
    out << "Signal = \"Counter\"\r\nRealTime = " << (realTime ? 1 : 0) << "\r\n";
    if (trouble != BoardTrouble::None) {
        out << kKeys.at(static_cast<size_t>(trouble)) << " = " << troubleAt << "\r\n";
    }
    return out.str();
}

std::string Plan::text() const {
    std::ostringstream out;
    out << "board " << board << ", " << channels << " channels, " << frequency << " Hz"
        << (realTime ? "" : ", as fast as can be") << ", decimation " << decimation << ", limit " << limitBytes
        << ", stop after " << stopAfterMs << " ms, pieces of " << pieceBytes << ", memory " << bufferLimit
        << ", longest wait " << longestWaitMs << " ms; disk: " << nameOf(disk) << " (" << diskBytes << " bytes, number "
        << diskNumber << ", " << stallMs << " ms); board: " << nameOf(trouble) << " at " << troubleAt;
    return out.str();
}

Plan drawPlan(std::mt19937_64& dice) {
    constexpr double kSlowest = 100.0;
    constexpr uint64_t kMostAtOnce = uint64_t{64} << 20U;
    Plan plan;
    const SimulatedBoard& board = kBoards[draw(dice, 0, std::size(kBoards) - 1)];
    plan.board = board.number;
    plan.sampleWidth = board.sampleWidth;
    plan.counterBits = board.counterBits;
    plan.channels = static_cast<uint32_t>(draw(dice, 1, chance(dice, 0.2) ? board.channels : 8));
    plan.channels = std::min(plan.channels, board.channels);
    plan.frequency = std::floor(std::exp(drawReal(dice, std::log(kSlowest), std::log(board.fastest))));
    plan.realTime = chance(dice, 0.7);
    plan.decimation = chance(dice, 0.2) ? static_cast<uint32_t>(draw(dice, 2, 10)) : 1;
    plan.longestWaitMs = chance(dice, 0.5) ? 1000 : static_cast<uint32_t>(draw(dice, 10, 2000));
    plan.bufferLimit = draw(dice, 1, 64) << 20U;

    const double seconds = drawReal(dice, 0.1, 3.0);
    const uint64_t samples =
        plan.realTime ? static_cast<uint64_t>(plan.frequency * seconds) : draw(dice, 1, kMostAtOnce / plan.sampleWidth);
    const uint64_t frames = std::max<uint64_t>(samples / plan.channels / plan.decimation, 1);
    if (plan.realTime && chance(dice, 0.5)) {
        plan.stopAfterMs = static_cast<uint32_t>(seconds * 1000.0);
    } else {
        plan.limitBytes = frames * plan.frameBytes();
    }
    if (chance(dice, 0.5)) {
        plan.pieceBytes = std::max<uint64_t>(frames / draw(dice, 1, 20), 1) * plan.frameBytes();
    }
    if (chance(dice, 0.7)) {
        drawDiskTrouble(dice, frames * plan.frameBytes(), plan);
    }
    drawBoardTrouble(dice, samples, plan);
    return plan;
}

}  // namespace tarno2::test

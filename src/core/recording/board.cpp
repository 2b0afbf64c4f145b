#include "core/recording/board.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "config/logs/debug_log.h"
#include "core/recording/acquisition_thread.h"
#include "language/language_table.h"
#include "platform/c_locale.h"

namespace tarno2 {

namespace {

constexpr HolderCount::Texts kHolderTexts{TextId::BoardReleasedTooOften, TextId::BoardFreedWhileHeld,
                                          TextId::BoardDestroyedWhileHeld};

}  // namespace

T_BOARD::T_BOARD(T_DRIVER& driver, uint32_t number, FaultReporter faults)
    : evaluator(std::make_unique<PassThrough>()),
      driver_(driver),
      number_(number),
      holders_(kHolderTexts, std::move(faults)) {
    driver_.AddBlock();
}

T_BOARD::~T_BOARD() {
    endThread();
    writer_.Close();
    driver_.RelBlock();
}

bool T_BOARD::ready() const {
    return writer_.ready() && readyEvent_.valid() && startEvent_.valid() && stopEvent_.valid();
}

double T_BOARD::sampleRate() const {
    const double channels = settings.channelCount();
    if (settings.packetMode) {
        return static_cast<double>(settings.packetFrequency) * channels;
    }
    return static_cast<double>(settings.frequency) * (driver_.facts().perChannelFrequency ? channels : 1.0);
}

bool T_BOARD::StartThread(NotificationTarget* target, ProgressCallback progress) {
    endThread();
    target_ = target;
    progress_ = std::move(progress);
    noDataCheck_ = !settings.externalStart && !settings.externalClock;
    stopRequest_ = false;
    stopEvent_.reset();
    readyEvent_.reset();
    holders_.AddBlock();
    if (!thread_.create([this] { AcquisitionThread(*this).run(); })) {
        holders_.RelBlock();
        threadError_ = true;
        problem_ = "The system has no thread or memory left for the recording.";
        DEBUG_LOG("!!!!! Thread could not be created");
        return false;
    }
    startEvent_.reset();
    DEBUG_LOG("Thread priority: %s", describe(thread_.raisePriority()));
    thread_.resume();
    if (readyEvent_.wait(kWaitForever) != WaitResult::Signalled) {
        threadError_ = true;
        endThread();
        return false;
    }
    return !initError_ && !memoryError_ && !startError_ && !threadError_;
}

void T_BOARD::Begin() {
    startEvent_.set();
}

void T_BOARD::requestStop() {
    stopRequest_ = true;
    stopEvent_.set();
}

void T_BOARD::endThread() {
    if (!thread_.joinable()) {
        return;
    }
    requestStop();
    thread_.resume();
    startEvent_.set();
    thread_.join();
    holders_.RelBlock(text(TextId::OfBoard) + driver_.name());
}

bool T_BOARD::dataBegun() {
    uint64_t written = 0;
    return samplesRead() > 0 || (driver_.device().get(kADCGetSamplesWritten, written) && written > 0);
}

InitOutcome T_BOARD::Init() {
    DEBUG_LOG("INIT start");
    initError_ = true;
    noDataCheck_ = !settings.externalStart && !settings.externalClock;
    if (settings.channelCount() > kMaximumChannels || !fitsBaseBlock()) {
        return refused("CHECK", "The board can't record this list of channels and gains.");
    }
    ParameterBlocks blocks;
    blocks.build(settings, SetupPass::Check, driver_.maximumBuffer());
    DEBUG_LOG("CHECK to driver");
    if (!driver_.CheckParameters(blocks, true)) {
        return refused("CHECK", driver_.setupProblem());
    }
    if (!takeOver(blocks, SetupPass::Check)) {
        return refused("CHECK", problem_);
    }
    DEBUG_LOG("CHECK REZULT = OK");

    const uint32_t maximumBuffer = driver_.maximumBuffer();
    blocks.build(settings, SetupPass::Init, maximumBuffer);
    DEBUG_LOG("INIT to driver");
    if (!initPass(blocks)) {
        return InitOutcome::Refused;
    }
    if (const InitOutcome fit = fitRing(blocks, maximumBuffer); fit != InitOutcome::Done) {
        return fit;
    }
    DEBUG_LOG("INIT REZULT = OK");
    maxBufferSamples_ = static_cast<uint32_t>(blocks.dma.m_nDMABlockSize);
    initError_ = false;
    DEBUG_LOG("Max Buffer Size = %u\n", maxBufferSamples_);
    return InitOutcome::Done;
}

InitOutcome T_BOARD::refused(const char* pass, const std::string& problem) {
    DEBUG_LOG("!!!!! %s error Rez1 = %d, Rez2 = %d", pass, driver_.rez1(), driver_.rez2());
    problem_ = problem;
    if (!problem.empty()) {
        DEBUG_LOG("!!!!! %s", problem.c_str());
    }
    return InitOutcome::Refused;
}

// A board without the extended block is told only its first channel, the count and one gain.
bool T_BOARD::fitsBaseBlock() const {
    if (driver_.facts().extendedBlock) {
        return true;
    }
    for (size_t i = 1; i < settings.channels.size(); ++i) {
        if (settings.channels[i] != settings.channels[i - 1] + 1 || settings.gains[i] != settings.gains[0]) {
            return false;
        }
    }
    return true;
}

// Takes over what the driver corrected. In the check pass it may shorten the channel list, not lengthen it; the board
// is set up with as many as it agreed to, else frames would be torn.
bool T_BOARD::takeOver(const ParameterBlocks& blocks, SetupPass pass) {
    const bool extended = driver_.facts().extendedBlock;
    const int32_t count = extended ? blocks.extended.m_nSize : blocks.dma.m_nChannelNumber;
    const auto asked = static_cast<int32_t>(settings.channelCount());
    if (pass == SetupPass::Check && (count <= 0 || count > asked)) {
        problem_ = formatText("The driver made %d channels of %d.", count, asked);
        return false;
    }
    if (pass == SetupPass::Init && count != asked) {
        problem_ = formatText("The driver set %d channels up and had agreed to %d.", count, asked);
        return false;
    }
    const auto usable = [](float hertz) { return std::isfinite(hertz) && hertz > 0.0F; };
    if (!settings.externalClock) {
        settings.frequency = blocks.dma.m_fFreqStart;
    }
    if (settings.packetMode) {
        settings.packetFrequency = blocks.dma.m_fFreqPack;
    }
    if (!usable(settings.frequency) || (settings.packetMode && !usable(settings.packetFrequency))) {
        problem_ = formatText("The driver gave a frequency of %f Hz, packets of %f Hz.",
                              static_cast<double>(settings.frequency), static_cast<double>(settings.packetFrequency));
        return false;
    }
    settings.channels.resize(static_cast<size_t>(count));
    settings.gains.resize(static_cast<size_t>(count));
    for (int32_t i = 0; i < count; ++i) {
        const auto place = static_cast<size_t>(i);
        settings.channels[place] = extended ? blocks.channels[place] : blocks.dma.m_nFirstChannel + i;
        settings.gains[place] = extended ? blocks.gains[place] : blocks.dma.m_nGain;
    }
    return true;
}

bool T_BOARD::initPass(ParameterBlocks& blocks) {
    if (!driver_.CheckParameters(blocks, false)) {
        refused("INIT", driver_.setupProblem());
        return false;
    }
    if (!takeOver(blocks, SetupPass::Init)) {
        refused("INIT", problem_);
        return false;
    }
    return true;
}

// Halves of whole frames are what the thread reads, so a ring of another size is asked for once more with the nearest
// one that has them.
InitOutcome T_BOARD::fitRing(ParameterBlocks& blocks, uint32_t maximumBuffer) {
    const auto misfit = [this, &blocks] {
        return blocks.dma.m_nDMABlockSize <= 0 ||
               blocks.dma.m_nDMABlockSize % static_cast<int32_t>(2 * settings.channelCount()) != 0;
    };
    if (misfit()) {
        const auto given = static_cast<uint32_t>(std::max(blocks.dma.m_nDMABlockSize, 0));
        const uint32_t wanted = ringOfWholeFrames(given, settings.channelCount(), maximumBuffer);
        DEBUG_LOG("Ring of %u samples has no whole frames in its halves, %u asked for", given, wanted);
        if (wanted != 0) {
            blocks.build(settings, SetupPass::Init, maximumBuffer);
            blocks.dma.m_nDMABlockSize = static_cast<int32_t>(wanted);
            if (!initPass(blocks)) {
                return InitOutcome::Refused;
            }
        }
    }
    if (misfit()) {
        problem_ = formatText("A ring of %d samples can't hold whole frames of %u channels in each half.",
                              blocks.dma.m_nDMABlockSize, settings.channelCount());
        DEBUG_LOG("!!!!! %s", problem_.c_str());
        return InitOutcome::Incompatible;
    }
    return InitOutcome::Done;
}

}  // namespace tarno2

#include "core/board.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "config/debug_log.h"
#include "core/acquisition_thread.h"
#include "language/language_table.h"

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
    return !initError_ && !memoryError_ && !startError_;
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

InitOutcome T_BOARD::Init() {
    DEBUG_LOG("INIT start");
    initError_ = true;
    noDataCheck_ = !settings.externalStart && !settings.externalClock;
    ParameterBlocks blocks;
    blocks.build(settings, SetupPass::Check, driver_.maximumBuffer());
    DEBUG_LOG("CHECK to driver");
    if (!driver_.CheckParameters(blocks, true) || !acceptChecked(blocks)) {
        DEBUG_LOG("!!!!! CHECK error Rez1 = %d, Rez2 = %d", driver_.rez1(), driver_.rez2());
        return InitOutcome::Refused;
    }
    DEBUG_LOG("CHECK REZULT = OK");

    const uint32_t maximumBuffer = driver_.maximumBuffer();
    blocks.build(settings, SetupPass::Init, maximumBuffer);
    DEBUG_LOG("INIT to driver");
    if (!driver_.CheckParameters(blocks, false)) {
        DEBUG_LOG("!!!!! INIT error Rez1 = %d, Rez2 = %d", driver_.rez1(), driver_.rez2());
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

// Takes over what the driver corrected in the check pass. It may shorten the channel list, not lengthen it.
bool T_BOARD::acceptChecked(const ParameterBlocks& blocks) {
    const int32_t count = blocks.extended.m_nSize;
    if (count <= 0 || count > static_cast<int32_t>(settings.channelCount())) {
        DEBUG_LOG("!!!!! CHECK gave %d channels for %u", count, settings.channelCount());
        return false;
    }
    if (!settings.externalClock) {
        const float frequency = blocks.dma.m_fFreqStart;
        if (!std::isfinite(frequency) || !(frequency > 0.0F)) {
            DEBUG_LOG("!!!!! CHECK gave a frequency of %f", static_cast<double>(frequency));
            return false;
        }
        settings.frequency = frequency;
    }
    settings.channels.assign(blocks.channels.begin(), blocks.channels.begin() + count);
    settings.gains.assign(blocks.gains.begin(), blocks.gains.begin() + count);
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
            if (!driver_.CheckParameters(blocks, false)) {
                DEBUG_LOG("!!!!! INIT error Rez1 = %d, Rez2 = %d", driver_.rez1(), driver_.rez2());
                return InitOutcome::Refused;
            }
        }
    }
    if (misfit()) {
        DEBUG_LOG("!!!!! Ring of %d samples can't hold whole frames of %u channels in each half",
                  blocks.dma.m_nDMABlockSize, settings.channelCount());
        return InitOutcome::Incompatible;
    }
    if (blocks.extended.m_nSize != static_cast<int32_t>(settings.channelCount())) {
        DEBUG_LOG("!!!!! INIT gave %d channels, CHECK gave %u", blocks.extended.m_nSize, settings.channelCount());
        return InitOutcome::Refused;
    }
    return InitOutcome::Done;
}

}  // namespace tarno2

#include "core/recording/board.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "config/logs/debug_log.h"
#include "core/recording/acquisition_thread.h"
#include "language/language_table.h"
#include "platform/c_locale.h"
#include "platform/clock.h"

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
    writer_->Close();
    driver_.RelBlock();
}

bool T_BOARD::ready() const {
    return writer_->ready() && link_.valid();
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
    link_.prepare(target, std::move(progress));
    holders_.AddBlock();
    if (!thread_.create([this] { AcquisitionThread(*this, link_).run(); })) {
        holders_.RelBlock();
        failure_ = {StartFailure::Kind::Thread, "The system has no thread or memory left for the recording."};
        DEBUG_LOG("!!!!! Thread could not be created");
        return false;
    }
    DEBUG_LOG("Thread priority: %s", describe(thread_.raisePriority()));
    thread_.resume();
    failure_ = link_.waitForAnswer();
    if (failure_.kind == StartFailure::Kind::Thread) {
        endThread();
    }
    return !failure_.failed();
}

void T_BOARD::endThread() {
    if (!thread_.joinable()) {
        return;
    }
    requestStop();
    thread_.resume();
    link_.begin();
    thread_.join();
    writer_->Close();  // of a thread that was never to keep anything
    holders_.RelBlock(text(TextId::OfBoard) + driver_.name());
}

void T_BOARD::Begin() {
    static_cast<void>(link_.keep());
    link_.setFramesBefore(0);
    link_.begin();
}

bool T_BOARD::dataBegun() {
    uint64_t written = 0;
    return samplesRead() > 0 || (driver_.device().get(kADCGetSamplesWritten, written) && written > 0);
}

// The newest frame that the board is known to have given: what it has counted, or what was read of one that counts not.
std::optional<RecordingMark> T_BOARD::mark() {
    const int64_t now = utcMicroseconds();
    // Until the thread has come to what it is to keep, the recording begins with what it reads next.
    const uint64_t before = framesBefore().value_or(samplesRead() / settings.channelCount() / decimation);
    if (!link_.keepAsked()) {
        return std::nullopt;
    }
    uint64_t written = 0;
    static_cast<void>(driver_.device().get(kADCGetSamplesWritten, written));
    const uint64_t frames = std::max(written, samplesRead()) / settings.channelCount();
    // A board that is gone tells no count any more.
    newestMark_ = std::max(newestMark_, frames / decimation - std::min(frames / decimation, before));
    return marks_.add(newestMark_, now);
}

StartFailure T_BOARD::Init() {
    DEBUG_LOG("INIT start");
    if (settings.channelCount() > kMaximumChannels || !fitsBaseBlock()) {
        return refused("CHECK", "The board can't record this list of channels and gains.");
    }
    ParameterBlocks blocks;
    blocks.build(settings, SetupPass::Check, driver_.maximumBuffer());
    DEBUG_LOG("CHECK to driver");
    if (!driver_.CheckParameters(blocks, true)) {
        return refused("CHECK", driver_.setupProblem());
    }
    if (std::string problem = takeOver(blocks, SetupPass::Check); !problem.empty()) {
        return refused("CHECK", std::move(problem));
    }
    DEBUG_LOG("CHECK REZULT = OK");

    const uint32_t maximumBuffer = driver_.maximumBuffer();
    blocks.build(settings, SetupPass::Init, maximumBuffer);
    DEBUG_LOG("INIT to driver");
    if (StartFailure failure = initPass(blocks); failure.failed()) {
        return failure;
    }
    if (StartFailure failure = fitRing(blocks, maximumBuffer); failure.failed()) {
        return failure;
    }
    DEBUG_LOG("INIT REZULT = OK");
    maxBufferSamples_ = static_cast<uint32_t>(blocks.dma.m_nDMABlockSize);
    DEBUG_LOG("Max Buffer Size = %u\n", maxBufferSamples_);
    return {};
}

StartFailure T_BOARD::refused(const char* pass, std::string problem) const {
    DEBUG_LOG("!!!!! %s error Rez1 = %d, Rez2 = %d", pass, driver_.rez1(), driver_.rez2());
    if (!problem.empty()) {
        DEBUG_LOG("!!!!! %s", problem.c_str());
    }
    return {StartFailure::Kind::Init, std::move(problem)};
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
// is set up with as many as it agreed to, else frames would be torn. Returns what is wrong with the corrections.
std::string T_BOARD::takeOver(const ParameterBlocks& blocks, SetupPass pass) {
    const bool extended = driver_.facts().extendedBlock;
    const int32_t count = extended ? blocks.extended.m_nSize : blocks.dma.m_nChannelNumber;
    const auto asked = static_cast<int32_t>(settings.channelCount());
    if (pass == SetupPass::Check && (count <= 0 || count > asked)) {
        return formatText("The driver made %d channels of %d.", count, asked);
    }
    if (pass == SetupPass::Init && count != asked) {
        return formatText("The driver set %d channels up and had agreed to %d.", count, asked);
    }
    const auto usable = [](float hertz) { return std::isfinite(hertz) && hertz > 0.0F; };
    if (!settings.externalClock) {
        settings.frequency = blocks.dma.m_fFreqStart;
    }
    if (settings.packetMode) {
        settings.packetFrequency = blocks.dma.m_fFreqPack;
    }
    if (!usable(settings.frequency) || (settings.packetMode && !usable(settings.packetFrequency))) {
        return formatText("The driver gave a frequency of %f Hz, packets of %f Hz.",
                          static_cast<double>(settings.frequency), static_cast<double>(settings.packetFrequency));
    }
    settings.channels.resize(static_cast<size_t>(count));
    settings.gains.resize(static_cast<size_t>(count));
    for (int32_t i = 0; i < count; ++i) {
        const auto place = static_cast<size_t>(i);
        settings.channels[place] = extended ? blocks.channels[place] : blocks.dma.m_nFirstChannel + i;
        settings.gains[place] = extended ? blocks.gains[place] : blocks.dma.m_nGain;
    }
    return {};
}

StartFailure T_BOARD::initPass(ParameterBlocks& blocks) {
    if (!driver_.CheckParameters(blocks, false)) {
        return refused("INIT", driver_.setupProblem());
    }
    if (std::string problem = takeOver(blocks, SetupPass::Init); !problem.empty()) {
        return refused("INIT", std::move(problem));
    }
    return {};
}

// Halves of whole frames are what the thread reads, so a ring of another size is asked for once more with the nearest
// one that has them.
StartFailure T_BOARD::fitRing(ParameterBlocks& blocks, uint32_t maximumBuffer) {
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
            if (StartFailure failure = initPass(blocks); failure.failed()) {
                return failure;
            }
        }
    }
    if (misfit()) {
        std::string problem = formatText("A ring of %d samples can't hold whole frames of %u channels in each half.",
                                         blocks.dma.m_nDMABlockSize, settings.channelCount());
        DEBUG_LOG("!!!!! %s", problem.c_str());
        return {StartFailure::Kind::Incompatible, std::move(problem)};
    }
    return {};
}

}  // namespace tarno2

#include "bench/simulated_board.h"

#include <algorithm>
#include <cstdio>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

#include "bench/stopwatch.h"
#include "core/recording/board.h"
#include "core/recording/static_parameters.h"
#include "platform/file.h"
#include "platform/paths.h"
#include "records/key_value_file.h"

namespace tarno2::bench {

namespace {

constexpr uint32_t kWideBoard = 2;
constexpr uint64_t kLargestBuffer = uint64_t{256} << 20;

void require(bool done, const std::string& what) {
    if (!done) {
        throw std::runtime_error(what);
    }
}

// May come from a destructor, so it does not throw.
void complain(const std::string& fault) {
    std::fprintf(stderr, "!!!! %s\n", fault.c_str());
}

/// Waits for a recording's last notification.
class LastWord final : public NotificationTarget {
public:
    void post(const Notification& notification) override {
        if (notification.result.code != StopCode::Running) {
            word_.set_value(notification.result);
        }
    }
    [[nodiscard]] RecordingResult wait() { return word_.get_future().get(); }

private:
    std::promise<RecordingResult> word_;
};

/// Measures how long the acquisition thread takes for a block: from here until it is written.
class PassWatch final : public BlockEvaluator {
public:
    int32_t evaluate(std::span<const std::byte> block, EvaluatedBlock& out) override {
        watch_.emplace();
        out = {block, 0, {}, {}};
        return 0;
    }
    void written() { worst_ = std::max(worst_, watch_->seconds()); }
    [[nodiscard]] double worst() const { return worst_; }

private:
    std::optional<Stopwatch> watch_;
    double worst_ = 0.0;
};

const char* nameOf(Signal signal) {
    switch (signal) {
        case Signal::Counter:
            return "Counter";
        case Signal::Noise:
            return "Noise";
        default:
            return "Level";
    }
}

}  // namespace

SimulatedBoard::SimulatedBoard(const std::string& folder, uint32_t channels, uint64_t halfBytes, Pace pace,
                               Signal signal)
    : driver_(complain), pace_(pace) {
    KeyValueFile cfg;
    require(cfg.createForWriting(joinPath(folder, "Simulator.cfg")), folder + ": no settings can be written");
    cfg.writeUInt32("RealTime", pace == Pace::RealTime ? 1 : 0);
    cfg.writeString("Signal", nameOf(signal));
    require(cfg.close(), folder + ": no settings can be written");

    std::string why;
    require(driver_.LoadDriver("Simulator", folder, why), "Simulator: " + why);
    require(driver_.selectBoard(kWideBoard, why), "Simulator: " + why);
    for (uint32_t i = 0; i < channels; ++i) {
        settings_.channels.push_back(static_cast<int32_t>(i));
        settings_.gains.push_back(1);
    }
    // The host asks for a ring of half a second, so the frequency decides how much comes at once.
    const uint64_t frame = uint64_t{channels} * driver_.facts().sampleWidth();
    require(frame != 0, "a board without channels");
    const uint64_t ringSamples = 2 * (halfBytes / frame) * channels;
    settings_.frequency = static_cast<float>(2 * ringSamples);
    halfBytes_ = halfBytes / frame * frame;
}

RecordedRun SimulatedBoard::run(WriterSetup setup, LiveTap* tap) {
    LastWord lastWord;
    RecordDescription description;
    T_BOARD board(driver_, 1, complain);
    require(board.ready(), "no memory for a session");
    board.settings = settings_;
    board.liveTap = tap;
    auto watchedPasses = std::make_unique<PassWatch>();
    PassWatch& passes = *watchedPasses;
    board.evaluator = std::move(watchedPasses);
    require(board.StartThread(&lastWord, [&passes](int, int) { passes.written(); }), "the session does not start");
    // In real time the board announces what there is, whatever the ring.
    require(
        pace_ == Pace::RealTime || uint64_t{board.maxBufferSamples()} * driver_.facts().sampleWidth() == 2 * halfBytes_,
        "another ring");
    std::string missing;
    require(calculateStaticParameters(driver_, board, setup.facts, missing), "the driver does not tell " + missing);
    setup.sampleWidth = driver_.facts().sampleWidth();
    setup.channelCount = settings_.channelCount();

    const Stopwatch watch;
    require(board.writer().open(setup, description) == 0, setup.fileName + ": " + board.writer().openError());
    board.writer().setCreateTime(localTime());
    board.Begin();
    RecordedRun run;
    run.result = lastWord.wait();
    run.seconds = watch.seconds();
    board.endThread();
    run.worstPass = passes.worst();
    run.worstLoad = board.worstLoad() / 1000.0;
    return run;
}

double SimulatedBoard::record(const std::string& file, uint64_t bytes, LiveTap* tap) {
    WriterSetup setup;
    setup.fileName = file;
    setup.limitBytes = bytes;
    const RecordedRun recorded = run(setup, tap);
    require(recorded.result.code == StopCode::StopMeasuring && recorded.result.bytes == bytes,
            "the recording ended early");
    return recorded.seconds;
}

// `take` gets each half as it is fetched.
template <typename Take>
double SimulatedBoard::stream(uint64_t bytes, Take take) {
    ParameterBlocks blocks;
    blocks.build(settings_, SetupPass::Init, driver_.maximumBuffer());
    require(driver_.CheckParameters(blocks, false), driver_.device().lastError());
    ADCRingInfo info{};
    require(driver_.device().get(kADCGetRing, info), driver_.device().lastError());
    const uint32_t width = driver_.facts().sampleWidth();
    require(uint64_t{info.m_nRingSize} * width == 2 * halfBytes_, "another ring");
    Event halfFilled = Event::wrap(info.m_hDataEvent);
    std::vector<std::byte> half(halfBytes_);

    const Stopwatch watch;
    require(driver_.start(), driver_.device().lastError());
    uint32_t offset = 0;
    for (uint64_t done = 0; done < bytes; done += halfBytes_) {
        require(halfFilled.wait(10000) == WaitResult::Signalled, "the board gives no data");
        static_cast<void>(halfFilled.reset());
        const int32_t mode = width == 4 ? kADCDataLong : kADCDataShort;
        const uint32_t samples = info.m_nRingSize / 2;
        require(driver_.device().getData(mode, half.data(), samples, offset) != kADCDataFailed, "a transfer failed");
        offset = (offset + samples) % info.m_nRingSize;
        take(half);
    }
    driver_.stop();
    return watch.seconds();
}

double SimulatedBoard::start(const std::string& file) {
    LastWord lastWord;
    RecordDescription description;
    WriterSetup setup;
    setup.fileName = file;
    setup.bufferBytes = kLargestBuffer;
    setup.keepDiskMargin = true;
    const Stopwatch watch;
    T_BOARD board(driver_, 1, complain);
    require(board.ready(), "no memory for a session");
    board.settings = settings_;
    require(board.StartThread(&lastWord, {}), "the session does not start");
    std::string missing;
    require(calculateStaticParameters(driver_, board, setup.facts, missing), "the driver does not tell " + missing);
    setup.sampleWidth = driver_.facts().sampleWidth();
    setup.channelCount = settings_.channelCount();
    setup.bytesPerSecond = board.sampleRate() * setup.sampleWidth;
    require(board.writer().open(setup, description) == 0, setup.fileName + ": " + board.writer().openError());
    board.Begin();
    while (!board.dataBegun()) {
        std::this_thread::yield();
    }
    const double seconds = watch.seconds();
    board.requestStop();
    static_cast<void>(lastWord.wait());
    board.endThread();
    return seconds;
}

double SimulatedBoard::fetchAndWrite(const std::string& file, uint64_t bytes) {
    File output;
    require(output.open(file, FileMode::CreateNew, FileAccess::Write, FileShare::ReadWrite).ok(), file);
    return stream(bytes, [&](const std::vector<std::byte>& half) {
        size_t done = 0;
        require(output.write(half.data(), half.size(), done).ok() && done == half.size(), file + ": write failed");
    });
}

double SimulatedBoard::fetch(uint64_t bytes) {
    return stream(bytes, [](const std::vector<std::byte>&) {});
}

}  // namespace tarno2::bench

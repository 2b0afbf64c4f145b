#include "core/recording/run_watch.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "config/files/recording_name.h"
#include "platform/file.h"

namespace tarno2 {

namespace {

constexpr uint32_t kHighLoad = 800;  // thousandths of the ring; what is left is a tenth of a second or so

}  // namespace

void TimerTicks::start(std::chrono::milliseconds period, Clock::time_point now) {
    period_ = std::max(period, std::chrono::milliseconds(1));
    next_ = now + period_;
    running_ = true;
}

bool TimerTicks::take(Clock::time_point now) {
    if (!running_ || now < next_) {
        return false;
    }
    next_ += period_;
    return true;
}

void RunWatch::blockCame(const Notification& progress, uint64_t now) noexcept {
    newestBlock_.put({progress.session, progress.result.bytes, now});
}

void RunWatch::starting() {
    passing_ = RunState::Starting;
    end_ = RunState::Ready;
}

void RunWatch::begin(RunFacts facts, uint64_t now) {
    facts_ = std::move(facts);
    figures_ = {};
    running_ = true;
    begun_ = !facts_.externalStart;
    end_ = RunState::Ready;
    beginProgress(now);
}

void RunWatch::beginProgress(uint64_t now) {
    progress_.begin(facts_.stopRule, facts_.stopSeconds, facts_.stopBytes, now);
}

void RunWatch::sessionGone() {
    running_ = false;
    // How it ended comes with its last word.
    if (end_ == RunState::Ready) {
        end_ = RunState::Stopped;
    }
}

void RunWatch::update(const RunCounts& counts, uint64_t now) {
    if (!begun_ && counts.dataBegun) {
        begun_ = true;
        beginProgress(now);
    }
    if (const auto block = newestBlock_.get(); block && block->session == facts_.session) {
        progress_.block(block->bytes, block->time);
    }
    static_cast<RecordingFigures&>(figures_) = progress_.update(counts.bytes, now);
    if (!begun_) {
        figures_.elapsedSeconds = 0;
    }
    figures_.bytes = counts.bytes;
    figures_.frames = frames(counts.bytes);
    figures_.load = counts.worstLoad / 10;
    figures_.loadWarns = counts.worstLoad >= kHighLoad;
    figures_.files = counts.files;
    figures_.events = counts.events;
}

// The figures were looked up before its last moment.
void RunWatch::ruleReached() {
    figures_.percent = 100;
    figures_.remainingSeconds = 0;
    if (facts_.stopRule == StopRule::Time) {
        figures_.elapsedSeconds = static_cast<uint64_t>(std::ceil(facts_.stopSeconds));
    }
}

void RunWatch::ended(uint32_t session, const RecordingResult& result, const RunEnd& end) {
    if (session != facts_.session) {
        return;
    }
    end_ = end.state;
    if (result.bytes == 0) {
        return;
    }
    // What came in after the last look counts too.
    figures_.bytes = result.bytes;
    figures_.frames = frames(result.bytes);
    figures_.files = result.files;
    figures_.events = result.events;
    if (result.sizeReached) {
        ruleReached();
    }
}

RunState RunWatch::state() const {
    if (passing_) {
        return *passing_;
    }
    if (running_) {
        return runningState();
    }
    return end_ == RunState::Ready && board_ != BoardStatus::Ready ? RunState::Error : end_;
}

RunState RunWatch::runningState() const {
    if (!begun_) {
        return RunState::WaitingForStart;
    }
    if (facts_.monitored) {
        return RunState::Monitoring;
    }
    if (facts_.conditions && figures_.bytes == 0) {
        return RunState::WaitingForTrigger;
    }
    return figures_.loadWarns ? RunState::Warning : RunState::Recording;
}

uint64_t RunWatch::frames(uint64_t bytes) const {
    return facts_.frameBytes == 0 ? 0 : bytes / facts_.frameBytes;
}

KnownInputs RunWatch::knownInputs(const std::string& dataFile) const {
    if (facts_.file.empty()) {
        return {};
    }
    const RecordingName name(facts_.file);
    for (uint32_t piece = 0; fileExists(name.piece(piece)); ++piece) {
        if (isSameFile(dataFile, name.piece(piece))) {
            return facts_.inputs;
        }
    }
    return {};
}

}  // namespace tarno2

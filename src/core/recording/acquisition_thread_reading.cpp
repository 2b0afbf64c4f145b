#include <algorithm>
#include <cmath>
#include <utility>

#include "config/logs/debug_log.h"
#include "core/recording/acquisition_thread.h"
#include "platform/c_locale.h"
#include "platform/clock.h"

// How samples come out of the ring and on their way; the life of the thread stands in acquisition_thread.cpp.

namespace tarno2 {

namespace {

int32_t secondsBetween(const LocalTime& from, const LocalTime& to) {
    return (to.hour - from.hour) * 3600 + (to.minute - from.minute) * 60 + (to.second - from.second);
}

std::string oneLine(std::string words) {
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; };
    std::replace_if(words.begin(), words.end(), isControl, ' ');
    return words;
}

}  // namespace

void AcquisitionThread::measure() {
    DataWait::Wake wake = DataWait::Wake::Event;
    while (!link_.stopRequested() && !end_ && result_ == kGoOn && report_.code == StopCode::Running) {
        wake = wait_.next(counts_, !countAnswered_ && ring_->nextHalves().count > 0);
        if (wake != DataWait::Wake::Event && wake != DataWait::Wake::Look) {
            break;
        }
        updatePositions();
        if (end_) {
            break;  // read as a whole, to the last frame
        }
        if (countAnswered_ && (wait_.longHalves() || wake == DataWait::Wake::Look)) {
            readCounted();
        } else {
            readHalves();
        }
        notifyProgress();
    }
    const bool stopAsked = link_.stopRequested();
    link_.requestStop();
    // A recording that ended by its own rule has what it wants; one that was ended gets what the board still holds.
    if (report_.code == StopCode::Running && (result_ == kGoOn || result_ == kNoData)) {
        drain(wake);
    }
    if (end_) {
        tellEnd(stopAsked);
    }
    if (report_.code == StopCode::Running && !wait_.error().ok()) {
        fail(ErrorDetail::Unknown);
    }
}

// Why nothing more is waited for, unless somebody asked for a stop.
void AcquisitionThread::explain(DataWait::Wake wake) {
    if (wake == DataWait::Wake::Unplugged) {
        DEBUG_LOG("!!!!! Board unplug.... Thread stop");
        unplugged_ = true;
    } else if (wake == DataWait::Wake::Failed) {
        report_.problem = formatText("The wait for the board's data event failed: %s", wait_.error().text().c_str());
        DEBUG_LOG("!!!!! %s", report_.problem.c_str());
    } else if (wake == DataWait::Wake::TimedOut) {
        report_.problem = formatText("The board gave no data event in %u ms", wait_.limitMs());
        DEBUG_LOG("!!!!! %s", report_.problem.c_str());
        result_ = kNoData;
    }
}

void AcquisitionThread::updatePositions() {
    const uint64_t halves = wait_.takeEvents();
    eventCame_ = halves > 0;
    ring_->halvesFilled(halves);
    askCount();
    askEnd();
    takeUp();
    askMarks();
    noteClock(false);
    const auto load = static_cast<uint32_t>(std::min(ring_->load(), 1000.0) * 1000.0);
    if (load > link_.worstLoad()) {
        link_.setWorstLoad(load);
    }
}

// A driver that has counted may stop answering, when its board is pulled out: then its events count.
void AcquisitionThread::askCount() {
    uint64_t written = 0;
    countAnswered_ = counts_ && driver_.device().get(kADCGetSamplesWritten, written);
    if (countAnswered_) {
        ring_->samplesWritten(written);
    }
}

// The newest frame that the board is known to have given, as close to the moment as the driver tells it. Nothing
// follows from the count of a source that has ended.
void AcquisitionThread::noteClock(bool last) {
    const uint64_t now = monotonicNanoseconds();
    if (keeps_ && !end_ && (last || clock_.isDue(now))) {
        clock_.add({keptFrame(ring_->written()), now, utcMicroseconds()});
    }
}

// Whatever the driver has told before, the end of its stream tells how many samples there are.
void AcquisitionThread::askEnd() {
    ADCStreamEnd end{};
    if (!tellsEnd_ || end_ || !driver_.device().get(kADCGetStreamEnd, end) || end.m_nCause == kADCEndNone) {
        return;
    }
    end_ = end;
    endWords_ = oneLine(driver_.device().lastError());
    ring_->streamEnds(end.m_nPosition);
    DEBUG_LOG("Stream end: cause = %u, position = %llu, lost = %llu, taken at %llu", end.m_nCause,
              static_cast<unsigned long long>(end.m_nPosition), static_cast<unsigned long long>(end.m_nLost),
              static_cast<unsigned long long>(ring_->written()));
}

// How long ago the sample at that position came, microseconds: by its distance to the newest one.
int64_t AcquisitionThread::age(uint64_t position) const {
    const uint64_t newest = std::max(ring_->written(), position);
    const double rate = board_.settings.externalClock ? 0.0 : board_.sampleRate();
    return rate > 0.0 ? std::llround(static_cast<double>(newest - position) / rate * 1e6) : 0;
}

// The recording's frame, at its rate, that holds a sample at or behind the origin.
uint64_t AcquisitionThread::keptFrame(uint64_t position) const {
    return (position - origin_) / board_.settings.channelCount() / board_.decimation;
}

void AcquisitionThread::readHalves() {
    const RingReader::Part part = ring_->nextHalves();
    if (ring_->overflows(part)) {
        overflow();
        return;
    }
    if (part.belowThreshold && eventCame_ && timing_.maximumSleep > 0) {
        static_cast<void>(link_.stopEvent().wait(timing_.maximumSleep));
    }
    if (part.count == 0) {
        watchForData();
    } else {
        static_cast<void>(read(part));
    }
}

// The board fills its halves slowly: what is there now is moved on, and nobody waits for the rest.
void AcquisitionThread::readCounted() {
    const uint64_t end = ring_->written();
    const RingReader::Part part = ring_->unread(end);
    if (ring_->overflows(part)) {
        // A board that ran over its ring without an event is a silent one.
        if (eventCame_) {
            overflow();
        }
    } else if (part.count == 0) {
        watchForData();
    } else {
        readUpTo(end);
    }
}

void AcquisitionThread::readUpTo(uint64_t end) {
    bool going = true;
    while (going) {
        const RingReader::Part part = ring_->nextStretch(end);
        going = part.count > 0 && read(part);
    }
}

// Copies a part of the ring and brings it on its way. False when nothing more is to be read.
bool AcquisitionThread::read(const RingReader::Part& part) {
    noDataSince_.reset();
    if (!transfer(part)) {
        return false;
    }
    const int32_t processed = processBlock(part.count);
    ring_->advance(part.count);
    lastHalves_ = ring_->halvesPosition();
    link_.setSamplesRead(ring_->readPosition());
    if (processed != kGoOn) {
        result_ = processed;
    }
    return processed == kGoOn;
}

// Passes without data while the board's events go on: a board that counts nothing.
void AcquisitionThread::watchForData() {
    const bool moved = ring_->halvesPosition() != lastHalves_;
    lastHalves_ = ring_->halvesPosition();
    if (!eventCame_ || !checksForData() || moved) {
        return;
    }
    const LocalTime now = localTime();
    const int32_t elapsed = noDataSince_ ? secondsBetween(*noDataSince_, now) : -1;
    if (elapsed < 0) {
        noDataSince_ = now;
    } else if (elapsed > timing_.checkSeconds) {
        DEBUG_LOG("Time out!!!");
        result_ = kNoData;
    }
}

// Copies a part of the ring to the start of the buffer. False when there is nothing to process: an error was noted.
bool AcquisitionThread::transfer(const RingReader::Part& part) {
    const uint32_t ringSize = board_.maxBufferSamples();
    bool done = false;
    block_ = buffer_.get();
    if (uint64_t{part.offset} + part.count > ringSize) {
        // Two halves that begin within one, when the driver has stopped telling its count.
        const uint32_t first = ringSize - part.offset;
        done = fetch(buffer_.get(), first, part.offset, 2) && fetch(buffer_.get() + first, part.count - first, 0, 1);
    } else {
        const bool inPlace = keeps_ && !decimator_ && board_.evaluator->takesWholeBlocks();
        std::byte* room = !inPlace ? nullptr : board_.writer().room(uint64_t{part.count} * sampleWidth_);
        block_ = room != nullptr ? room : buffer_.get();
        done = fetch(block_, part.count, part.offset, 2);
    }
    if (!done) {
        return false;
    }
    // What came meanwhile may have overwritten what was copied.
    askCount();
    if (!countAnswered_) {
        ring_->halvesFilled(wait_.takeEvents());
        askEnd();  // an event that was for the end told of no half
    }
    return !overwritten();
}

bool AcquisitionThread::fetch(std::byte* destination, uint32_t count, uint32_t offset, int32_t partNumber) {
    if (driver_.device().getData(dataMode_, destination, count, offset) != kADCDataFailed) {
        return true;
    }
    if (additionalMode_) {
        // The board's pre-history is at its end: the same part follows in the normal mode.
        additionalMode_ = false;
        dataMode_ = sampleWidth_ == 4 ? kADCDataLong : kADCDataShort;
        lastProgress_ = tickCount();
        notify();
        return fetch(destination, count, offset, partNumber);
    }
    report_.getData = {dataMode_, count, offset, destination, block_, board_.maxBufferSamples(), partNumber};
    result_ = kTransferFailed;
    lose(LossCause::Transfer);
    report_.problem = driver_.device().lastError();
    DEBUG_LOG("!!!!! GetData error at sample %llu: %s", static_cast<unsigned long long>(ring_->readPosition()),
              report_.problem.c_str());
    return false;
}

int32_t AcquisitionThread::processBlock(uint32_t samples) {
    std::span<const std::byte> block{block_, size_t{samples} * sampleWidth_};
    if (edges_) {
        markEdges(block);
    }
    if (decimator_) {
        block = decimator_->process(block);
    }
    int32_t result = kGoOn;
    if (!block.empty()) {
        if (keeps_ && !begun_ && board_.settings.externalStart) {
            const uint64_t ago = board_.writer().millisecondsOf(block.size());
            board_.writer().setCreateTime(localTime(ago));
            begunAt_ = utcMicroseconds() - static_cast<int64_t>(ago) * 1000;
        }
        begun_ = true;
        if (board_.liveTap != nullptr) {
            board_.liveTap->put(block);
        }
        result = keeps_ ? evaluate(block) : kGoOn;
        if (result == kAnalyzeFailed) {
            return result;
        }
    }
    if (link_.progress()) {
        link_.progress()(0, static_cast<int>(sampleWidth_));
    }
    return result;
}

int32_t AcquisitionThread::evaluate(std::span<const std::byte> block) {
    EvaluatedBlock out;
    int32_t result = kGoOn;
    for (out.rest = block; !out.rest.empty() && result == kGoOn;) {
        const std::span<const std::byte> part = std::exchange(out, {}).rest;
        const int32_t verdict = board_.evaluator->evaluate(part, out);
        if (verdict < 0) {
            return kAnalyzeFailed;
        }
        if (!out.data.empty()) {
            result = write(out);
        }
        if (verdict > 0 && result == kGoOn) {
            result = kFinished;
        }
    }
    return result;
}

int32_t AcquisitionThread::write(const EvaluatedBlock& block) {
    const uint64_t frame = uint64_t{sampleWidth_} * board_.settings.channelCount();
    const uint64_t unit = block.recordFrames == 0 ? frame : frame * block.recordFrames;
    const uint64_t before = board_.writer().totalBytes();
    const int32_t result = board_.writer().Write(block.data.data(), block.data.size(), unit, block.events);
    // Records that the size limit left out are not in the file, and no events of it.
    const uint64_t records = (board_.writer().totalBytes() - before + unit - 1) / unit;
    const auto events = std::min<uint64_t>(records, block.events.size());
    link_.setEventCount(link_.eventCount() + events);
    report_.sizeReached = result == kFinished && !board_.writer().diskNearlyFull();
    return result;
}

// Reads what the ring holds at this moment: filled halves, and the part of the next one that the driver has counted. Of
// a stream that has ended, all that lies before its end.
void AcquisitionThread::drain(DataWait::Wake wake) {
    draining_ = true;
    updatePositions();
    noteClock(true);
    if (end_) {
        result_ = kGoOn;
        unplugged_ = end_->m_nCause == kADCEndUnplugged;
    } else {
        explain(wake);
    }
    const uint64_t end = ring_->written();
    const int32_t ended = result_;
    if (overwritten()) {
        return;
    }
    readUpTo(end);
    if (unplugged_ && result_ == kTransferFailed) {
        // The board went away with what it held: what came before is kept.
        result_ = ended;
    }
}

// How the recording ends whose stream has ended by itself, and what the board lost by that. An error that kept samples
// before the end from being recorded stays the reason.
void AcquisitionThread::tellEnd(bool stopAsked) {
    if (result_ == kFinished) {
        return;
    }
    const uint32_t cause = end_->m_nCause;
    const uint64_t position = ring_->written();
    if (cause == kADCEndLost || (cause != kADCEndOfSource && end_->m_nLost > 0)) {
        report_.losses.push_back({LossCause::Board, position - origin_, end_->m_nLost});
    }
    // Nothing is missing of a source that was stopped just when it ended.
    const bool stopped = cause == kADCEndOfSource && stopAsked;
    if (report_.code == StopCode::Running && result_ == kGoOn && !stopped) {
        endAs(cause, position);
    }
}

void AcquisitionThread::endAs(uint32_t cause, uint64_t position) {
    switch (cause) {
        case kADCEndLost:
            failAt(position, endWords_);
            return;
        case kADCEndUnplugged:
            report_.code = StopCode::Unplug;
            break;
        case kADCEndOfSource:
            report_.code = StopCode::SourceEnd;
            break;
        default:  // an error, or what only later drivers tell
            report_.code = StopCode::TransferError;
            break;
    }
    report_.problem = endWords_;
}

// Unread samples are gone. A board that gave no event in time has run over its ring unseen: that it gave none stays the
// reason why the recording ends.
bool AcquisitionThread::overwritten() {
    if (!ring_->overwritten()) {
        return false;
    }
    if (draining_ && result_ == kNoData) {
        lose(LossCause::Overwritten);
        DEBUG_LOG("!!!!! Samples from %llu on were overwritten unread",
                  static_cast<unsigned long long>(ring_->readPosition()));
    } else {
        overflow();
    }
    return true;
}

void AcquisitionThread::overflow() {
    askEnd();  // a board that has lost samples too says so while it runs
    driver_.stop();
    DEBUG_LOG("!!!!! FIFO Overflow");
    lose(LossCause::Overwritten);
    failAt(ring_->readPosition(), {});
}

void AcquisitionThread::failAt(uint64_t position, const std::string& problem) {
    position -= origin_;
    report_.overflowPosition = position;
    const std::string where =
        formatText("First lost sample = %llu, frame = %llu", static_cast<unsigned long long>(position),
                   static_cast<unsigned long long>(position / board_.settings.channelCount()));
    fail(ErrorDetail::Overflow, problem.empty() ? where : problem);
}

// From the read position on nothing is recorded any more, of what the board is known to have delivered.
void AcquisitionThread::lose(LossCause cause) {
    const uint64_t position = ring_->readPosition();
    report_.losses.push_back({cause, position - origin_, ring_->written() - position});
}

}  // namespace tarno2

#include "drivers/serial/serial_source.h"

#include <utility>

#include "platform/clock.h"

namespace tarno2::drivers {

namespace {

using Kind = SourceRead::Kind;

constexpr uint32_t kReadMilliseconds = 200;
constexpr size_t kInputBytes = 65536;

}  // namespace

SerialSource::SerialSource(std::unique_ptr<SerialPort> port, const SerialPlan& plan, std::shared_ptr<Counts> counts)
    : port_(std::move(port)),
      parser_(plan.parser()),
      endsWithDamage_(plan.endsWithDamage),
      stopCommand_(plan.stopCommand),
      choice_(1, {0}, wordBytes(plan.samples.format)),
      words_(size_t{plan.samples.channels} * wordBytes(plan.samples.format)),
      input_(kInputBytes),
      counts_(std::move(counts)) {}

SerialSource::~SerialSource() {
    if (!stopCommand_.empty() && end_.kind != Kind::Unplugged) {
        static_cast<void>(port_->write(stopCommand_.data(), stopCommand_.size()));
    }
    if (atEnd_) {
        atEnd_();
    }
}

void SerialSource::record(ChannelChoice choice, std::function<void()> atEnd) {
    choice_ = std::move(choice);
    atEnd_ = std::move(atEnd);
    counts_->good = 0;
}

SourceRead SerialSource::read(std::byte* destination, size_t frames) {
    SourceRead parsed = parse(destination, frames);
    if (parsed.kind != Kind::Nothing || !receive()) {
        return parsed;
    }
    return parse(destination, frames);
}

/// What the bytes that have come in hold.
SourceRead SerialSource::parse(std::byte* destination, size_t frames) {
    size_t done = 0;
    while (done < frames && end_.kind != Kind::Lost) {
        const Parsed parsed = parser_->next(words_.data());
        if (parsed.kind == Parsed::Kind::More) {
            break;
        }
        if (parsed.kind == Parsed::Kind::Frame) {
            choice_.take(words_.data(), destination, 1);
            destination += choice_.bytes();
            ++done;
            continue;
        }
        if (counts_->damaged == 0) {
            counts_->firstDamaged = counts_->good + done;
        }
        counts_->damaged += parsed.lost;
        if (endsWithDamage_ && end_.kind == Kind::Nothing) {
            end_ = SourceRead::loss(parsed.lost * choice_.channels());
        }
    }
    counts_->good += done;
    return done > 0 ? SourceRead::some(done) : end_;
}

/// Waits for bytes. False when there are none and nothing else has changed.
bool SerialSource::receive() {
    if (end_.kind != Kind::Nothing) {
        return false;
    }
    const TimedRead got = port_->read(input_.data(), input_.size(), kReadMilliseconds);
    switch (got.end) {
        case ReadEnd::Data:
            break;
        case ReadEnd::TimedOut:
        case ReadEnd::Cancelled:
            return false;
        case ReadEnd::Closed:
        case ReadEnd::Gone:
            end_ = SourceRead::end(Kind::Unplugged, "The port is not there any more.");
            parser_->end();
            return true;
        case ReadEnd::Failed:
            end_ = SourceRead::end(Kind::Failed, "The port can't be read: " + got.error.text());
            parser_->end();
            return true;
    }
    // Where nothing in a frame tells of damage, what has come since the line was last seen in order is not believed.
    if (!parser_->seesDamage() && lineIsFaulty()) {
        end_ = SourceRead::loss(0);
        return true;
    }
    parser_->feed({input_.data(), got.bytes});
    return true;
}

bool SerialSource::lineIsFaulty() {
    const SerialPort::Faults now = port_->faults();
    const bool faulty = now.damaged != faults_.damaged || now.overruns != faults_.overruns;
    faults_ = now;
    return faulty;
}

double SerialSource::measureRate(uint32_t milliseconds) {
    std::vector<std::byte> frame(choice_.bytes());
    uint64_t begin = 0;
    uint64_t last = 0;
    uint64_t frames = 0;
    const uint64_t deadline = monotonicNanoseconds() + uint64_t{milliseconds} * 1'000'000;
    while (monotonicNanoseconds() < deadline && end_.kind == Kind::Nothing) {
        size_t now = 0;
        while (parse(frame.data(), 1).kind == Kind::Frames) {
            ++now;
        }
        if (now > 0) {
            last = monotonicNanoseconds();
            // What came together with the first frame may have waited for long.
            frames = begin == 0 ? 0 : frames + now;
            begin = begin == 0 ? last : begin;
        }
        static_cast<void>(receive());
    }
    return frames > 0 ? static_cast<double>(frames) * 1e9 / static_cast<double>(last - begin) : 0.0;
}

}  // namespace tarno2::drivers

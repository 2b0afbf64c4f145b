#include "drivers/comedi/source.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace tarno2::drivers::comedi {

namespace {

constexpr uint32_t kWait = 100;  // milliseconds

using Kind = SourceRead::Kind;

}  // namespace

Source::Source(comedi_t* device, const Input& input, Command command)
    : device_(device),
      input_(input),
      command_(std::move(command)),
      reader_(comedi_fileno(device)),
      part_(command_.channels() * input.bytesPerSample()) {}

Source::~Source() {
    if (running_) {
        comedi_cancel(device_, input_.subdevice);
    }
}

bool Source::start(std::string& why) {
    if (!reader_.valid()) {
        why = "The system gives no more events.";
        return false;
    }
    running_ = command_.start(device_, why);
    return running_;
}

SourceRead Source::read(std::byte* destination, size_t frames) {
    std::memcpy(destination, part_.data(), partBytes_);
    const DeviceReader::Result result =
        reader_.read(destination + partBytes_, frames * part_.size() - partBytes_, kWait);
    switch (result.outcome) {
        case DeviceReader::Outcome::Data:
            break;
        case DeviceReader::Outcome::Nothing:
            // Of boards that keep samples to themselves until they have many, some can be made to hand them over.
            comedi_poll(device_, input_.subdevice);
            return {};
        case DeviceReader::Outcome::Ended:
            return stopped();
        case DeviceReader::Outcome::Failed:
            return failed(result.error.code());
    }
    const size_t bytes = partBytes_ + result.done;
    const size_t whole = bytes / part_.size();
    partBytes_ = bytes % part_.size();
    std::memcpy(part_.data(), destination + whole * part_.size(), partBytes_);
    return SourceRead::some(whole);
}

SourceRead Source::failed(int error) {
    switch (error) {
        case EPIPE:
            return SourceRead::loss(0);
        case ENODEV:
        case ENXIO:
            return SourceRead::end(Kind::Unplugged, "The board is not there any more.");
        case EINVAL:
            return stopped();
        default:
            return SourceRead::end(Kind::Failed, std::string("The board can't be read: ") + comedi_strerror(error));
    }
}

// A command that nobody has cancelled ends when the board is taken away, too: the system forgets it first.
SourceRead Source::stopped() {
    if (comedi_get_subdevice_flags(device_, input_.subdevice) >= 0) {
        return SourceRead::end(Kind::Failed, "The board has stopped by itself.");
    }
    const int error = comedi_errno();
    return failed(error == EINVAL ? ENODEV : error);
}

}  // namespace tarno2::drivers::comedi

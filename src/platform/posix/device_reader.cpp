#include "platform/device_reader.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace tarno2 {

DeviceReader::DeviceReader(int descriptor) : device_(Event::wrap(static_cast<uint32_t>(descriptor))) {
    const int flags = fcntl(descriptor, F_GETFL);
    if (flags >= 0) {
        fcntl(descriptor, F_SETFL, flags | O_NONBLOCK);
    }
}

DeviceReader::Result DeviceReader::read(void* destination, size_t size, uint32_t milliseconds) {
    const Event::Either waited = Event::waitEither(device_, cancelled_, milliseconds);
    if (waited.second) {
        return {};
    }
    ssize_t done = 0;
    do {
        done = ::read(static_cast<int>(device_.number()), destination, size);
    } while (done < 0 && errno == EINTR);
    if (done > 0) {
        return {Outcome::Data, static_cast<size_t>(done), {}};
    }
    if (done == 0) {
        return {Outcome::Ended, 0, {}};
    }
    if (errno != EAGAIN) {
        return {Outcome::Failed, 0, OsError::last()};
    }
    // A descriptor that can't be waited for, but has nothing either, would be asked without a pause.
    return {waited.result == WaitResult::Failed ? Outcome::Failed : Outcome::Nothing, 0, waited.error};
}

}  // namespace tarno2

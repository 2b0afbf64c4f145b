// The kernel's own structures, in which every baud rate can be told; they can't be included together with <termios.h>.
#include "platform/posix/serial/line_settings.h"

#include <asm/termbits.h>
#include <cerrno>
#include <cstdlib>
#include <sys/ioctl.h>

namespace tarno2 {

namespace {

/// A receiver follows a sender whose rate differs by up to so much.
constexpr uint32_t kBaudTolerancePerMille = 25;

tcflag_t sizeFlag(uint32_t bits) {
    switch (bits) {
        case 5:
            return CS5;
        case 6:
            return CS6;
        case 7:
            return CS7;
        default:
            return CS8;
    }
}

tcflag_t parityFlags(Parity parity) {
    switch (parity) {
        case Parity::Odd:
            return PARENB | PARODD;
        case Parity::Even:
            return PARENB;
        case Parity::Mark:
            return PARENB | PARODD | CMSPAR;
        case Parity::Space:
            return PARENB | CMSPAR;
        case Parity::None:
            break;
    }
    return 0;
}

}  // namespace

OsError setLine(int descriptor, const SerialLine& line) {
    termios2 settings{};
    if (ioctl(descriptor, TCGETS2, &settings) != 0) {
        return OsError::last();
    }
    settings.c_iflag = line.flow == FlowControl::Software ? IXON | IXOFF : 0;
    settings.c_iflag |= line.parity != Parity::None ? INPCK : IGNBRK;
    settings.c_oflag = 0;
    settings.c_lflag = 0;
    settings.c_cflag = CREAD | CLOCAL | HUPCL | sizeFlag(line.dataBits) | parityFlags(line.parity) |
                       (line.stopBits == 2 ? CSTOPB : 0U) | (line.flow == FlowControl::Hardware ? CRTSCTS : 0U) |
                       BOTHER | (static_cast<tcflag_t>(BOTHER) << IBSHIFT);
    settings.c_ispeed = line.baud;
    settings.c_ospeed = line.baud;
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    if (ioctl(descriptor, TCSETS2, &settings) != 0) {
        return OsError::last();
    }
    // A driver takes what it can do and says nothing of the rest.
    termios2 taken{};
    if (ioctl(descriptor, TCGETS2, &taken) != 0) {
        return OsError::last();
    }
    const tcflag_t compared = CSIZE | PARENB | PARODD | CMSPAR | CSTOPB;
    const int64_t difference = std::llabs(int64_t{taken.c_ospeed} - int64_t{line.baud});
    const bool same = ((taken.c_cflag ^ settings.c_cflag) & compared) == 0 &&
                      difference * 1000 <= int64_t{line.baud} * kBaudTolerancePerMille;
    return same ? OsError() : OsError(EOPNOTSUPP);
}

}  // namespace tarno2

#pragma once

#include "platform/os_error.h"
#include "platform/serial_port.h"

namespace tarno2 {

/// Gives an open terminal these settings and switches all treatment of its bytes off. An error when it is no terminal,
/// and EOPNOTSUPP when it does not take them.
OsError setLine(int descriptor, const SerialLine& line);

}  // namespace tarno2

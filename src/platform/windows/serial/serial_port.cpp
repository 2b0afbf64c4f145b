#include "platform/serial_port.h"

#include <algorithm>
#include <array>
#include <windows.h>

#include "platform/windows/native_handle.h"

namespace tarno2 {

namespace {

/// Between two looks at the port. Its driver holds what comes in meanwhile.
constexpr DWORD kLookMilliseconds = 2;
constexpr DWORD kInputBuffer = 1U << 20U;
constexpr DWORD kWriteMilliseconds = 1000;

BYTE parityOf(Parity parity) {
    switch (parity) {
        case Parity::Odd:
            return ODDPARITY;
        case Parity::Even:
            return EVENPARITY;
        case Parity::Mark:
            return MARKPARITY;
        case Parity::Space:
            return SPACEPARITY;
        case Parity::None:
            break;
    }
    return NOPARITY;
}

OsError setLine(HANDLE port, const SerialLine& line) {
    DCB settings{};
    settings.DCBlength = sizeof settings;
    if (GetCommState(port, &settings) == 0) {
        return OsError::last();
    }
    const bool hardware = line.flow == FlowControl::Hardware;
    const bool software = line.flow == FlowControl::Software;
    settings.BaudRate = line.baud;
    settings.fBinary = TRUE;
    settings.fParity = line.parity != Parity::None ? TRUE : FALSE;
    settings.fOutxCtsFlow = hardware ? TRUE : FALSE;
    settings.fOutxDsrFlow = FALSE;
    settings.fDtrControl = DTR_CONTROL_ENABLE;
    settings.fDsrSensitivity = FALSE;
    settings.fOutX = software ? TRUE : FALSE;
    settings.fInX = software ? TRUE : FALSE;
    settings.fErrorChar = FALSE;
    settings.fNull = FALSE;
    settings.fRtsControl = hardware ? RTS_CONTROL_HANDSHAKE : RTS_CONTROL_ENABLE;
    settings.fAbortOnError = FALSE;
    settings.ByteSize = static_cast<BYTE>(line.dataBits);
    settings.Parity = parityOf(line.parity);
    settings.StopBits = line.stopBits == 2 ? TWOSTOPBITS : ONESTOPBIT;
    if (SetCommState(port, &settings) == 0) {
        const OsError error = OsError::last();
        return error.code() == ERROR_INVALID_PARAMETER ? OsError(ERROR_NOT_SUPPORTED) : error;
    }
    // A read takes what is there and never waits.
    COMMTIMEOUTS timeouts{};
    timeouts.ReadIntervalTimeout = MAXDWORD;
    timeouts.WriteTotalTimeoutConstant = kWriteMilliseconds;
    SetupComm(port, kInputBuffer, kInputBuffer / 16);  // a wish; many drivers have a size of their own
    return SetCommTimeouts(port, &timeouts) != 0 ? OsError() : OsError::last();
}

}  // namespace

OsError SerialPort::open(const std::string& name, const SerialLine& line) {
    close();
    if (!cancel_.valid()) {
        return OsError(ERROR_NO_SYSTEM_RESOURCES);
    }
    cancel_.reset();
    // Only with this prefix are there ports above COM9.
    const std::string path = name.starts_with("\\\\") ? name : "\\\\.\\" + name;
    const HANDLE port = CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (port == INVALID_HANDLE_VALUE) {
        const OsError error = OsError::last();
        return error.code() == ERROR_ACCESS_DENIED ? OsError(ERROR_SHARING_VIOLATION) : error;
    }
    static_assert(kClosed == -1, "the value of INVALID_HANDLE_VALUE");
    handle_ = reinterpret_cast<intptr_t>(port);
    if (OsError error = setLine(port, line); !error.ok()) {
        return settle(error);
    }
    DWORD errors = 0;
    if (ClearCommError(port, &errors, nullptr) == 0) {
        return settle(OsError::last());
    }
    before_ = {};
    return {};
}

OsError SerialPort::settle(OsError error) {
    close();
    return error;
}

void SerialPort::close() {
    if (isOpen()) {
        CloseHandle(nativeHandle(handle_));
        handle_ = kClosed;
    }
}

TimedRead SerialPort::read(void* data, size_t size, uint32_t milliseconds) {
    const ULONGLONG deadline = GetTickCount64() + milliseconds;
    const auto wanted = static_cast<DWORD>(std::min<size_t>(size, kInputBuffer));
    for (;;) {
        if (cancel_.wait(0) == WaitResult::Signalled) {
            return {ReadEnd::Cancelled, 0, {}};
        }
        DWORD got = 0;
        if (ReadFile(nativeHandle(handle_), data, wanted, &got, nullptr) == 0) {
            return {ReadEnd::Gone, 0, OsError::last()};
        }
        if (got > 0) {
            return {ReadEnd::Data, got, {}};
        }
        // A port that was pulled out may go on reading as silent; its state can't be asked any more.
        if (Faults seen; !countFaults(seen)) {
            return {ReadEnd::Gone, 0, OsError::last()};
        }
        if (GetTickCount64() >= deadline) {
            return {ReadEnd::TimedOut, 0, {}};
        }
        static_cast<void>(cancel_.wait(kLookMilliseconds));
    }
}

OsError SerialPort::write(const void* data, size_t size) {
    DWORD taken = 0;
    if (WriteFile(nativeHandle(handle_), data, static_cast<DWORD>(size), &taken, nullptr) == 0) {
        return OsError::last();
    }
    return taken == size ? OsError() : OsError(ERROR_TIMEOUT);
}

SerialPort::Faults SerialPort::faults() {
    Faults seen;
    static_cast<void>(countFaults(seen));
    return before_;
}

/// The system tells each kind of fault once, however often it happened: they are added up in `before_`.
bool SerialPort::countFaults(Faults& counted) {
    DWORD errors = 0;
    if (ClearCommError(nativeHandle(handle_), &errors, nullptr) == 0) {
        return false;
    }
    before_.damaged += (errors & (CE_FRAME | CE_RXPARITY)) != 0 ? 1 : 0;
    before_.overruns += (errors & (CE_OVERRUN | CE_RXOVER)) != 0 ? 1 : 0;
    counted = before_;
    return true;
}

std::vector<SerialPortName> serialPorts() {
    std::vector<SerialPortName> ports;
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, "HARDWARE\\DEVICEMAP\\SERIALCOMM", 0, KEY_QUERY_VALUE, &key) !=
        ERROR_SUCCESS) {
        return ports;
    }
    for (DWORD index = 0;; ++index) {
        std::array<char, 256> device{};
        std::array<char, 256> port{};
        DWORD deviceLength = device.size();
        DWORD portLength = port.size() - 1;
        DWORD type = 0;
        if (RegEnumValueA(key, index, device.data(), &deviceLength, nullptr, &type,
                          reinterpret_cast<BYTE*>(port.data()), &portLength) != ERROR_SUCCESS) {
            break;
        }
        if (type == REG_SZ) {
            const std::string path(device.data());
            ports.push_back({port.data(), path.substr(path.find_last_of('\\') + 1)});
        }
    }
    RegCloseKey(key);
    std::sort(ports.begin(), ports.end(), [](const SerialPortName& a, const SerialPortName& b) {
        return a.name.size() != b.name.size() ? a.name.size() < b.name.size() : a.name < b.name;
    });
    return ports;
}

}  // namespace tarno2

// SPDX-License-Identifier: MIT
#include "controllers/grbl/SerialPort.h"

#include "device/moverStatus.h"

#include <algorithm>
#include <cmath>
#include <utility>

#if defined(_WIN32)
#include <windows.h>
#else
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>
#endif

namespace grbl {

using namespace moverStatus;

#if defined(_WIN32)

namespace {

constexpr DWORD patienceMs = 1000; // with a driver that was told to give up

/** Bytes on their way to or from the port: the driver's until it says that it has them. */
struct Operation {
    Operation() { state.hEvent = done; }
    ~Operation() { CloseHandle(done); }
    Operation(const Operation &) = delete;
    Operation &operator=(const Operation &) = delete;

    bool begin(HANDLE port, bool reads, std::size_t count)
    {
        const auto size = static_cast<DWORD>(std::min(count, sizeof buffer));
        return (reads ? ReadFile(port, buffer, size, nullptr, &state)
                      : WriteFile(port, buffer, size, nullptr, &state)) ||
               GetLastError() == ERROR_IO_PENDING;
    }
    /**
     * Waits for it to be done: how many bytes; -1 when the port is gone. One that does not end though it is told to is
     * left to the driver, and is none then.
     */
    static int finish(std::unique_ptr<Operation> &operation, HANDLE port)
    {
        if (WaitForSingleObject(operation->done, patienceMs) != WAIT_OBJECT_0) {
            CancelIoEx(port, &operation->state);
            if (WaitForSingleObject(operation->done, patienceMs) != WAIT_OBJECT_0) {
                operation.release();
                return -1;
            }
        }
        DWORD count = 0;
        return GetOverlappedResult(port, &operation->state, &count, FALSE) ? static_cast<int>(count) : -1;
    }

    HANDLE done = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    OVERLAPPED state{};
    char buffer[512];
};

DWORD milliseconds(double seconds)
{
    return static_cast<DWORD>(std::ceil(seconds * 1000));
}

} // namespace

struct SerialPort::Handles {
    HANDLE port = INVALID_HANDLE_VALUE;
    HANDLE woken = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    std::unique_ptr<Operation> reading; // of the next byte; under way from one read() to another
};

SerialPort::SerialPort()
    : m_handles(std::make_unique<Handles>())
{
}

SerialPort::~SerialPort()
{
    close();
    CloseHandle(m_handles->woken);
}

bool SerialPort::exists(const std::string &path)
{
    char target[256];
    return QueryDosDeviceA(path.c_str(), target, sizeof target) > 0;
}

int SerialPort::open(const std::string &path)
{
    close();
    // Not shared: whoever has the port has it alone.
    const HANDLE port = CreateFileA(
        ("\\\\.\\" + path).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_FLAG_OVERLAPPED,
        nullptr);
    if (port == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_ACCESS_DENIED ? PortInUse : LinkLost;
    DCB settings{};
    settings.DCBlength = sizeof settings;
    COMMTIMEOUTS timeouts{};
    // A read gives what is there, or waits for the first byte.
    timeouts.ReadIntervalTimeout = MAXDWORD;
    timeouts.ReadTotalTimeoutMultiplier = MAXDWORD;
    timeouts.ReadTotalTimeoutConstant = 60000;
    timeouts.WriteTotalTimeoutConstant = 20;
    if (!GetCommState(port, &settings)) {
        CloseHandle(port);
        return LinkLost;
    }
    settings.BaudRate = CBR_115200;
    settings.ByteSize = 8;
    settings.Parity = NOPARITY;
    settings.StopBits = ONESTOPBIT;
    settings.fBinary = TRUE;
    settings.fOutxCtsFlow = FALSE;
    settings.fOutxDsrFlow = FALSE;
    settings.fOutX = FALSE;
    settings.fInX = FALSE;
    settings.fDtrControl = DTR_CONTROL_ENABLE;
    settings.fRtsControl = RTS_CONTROL_ENABLE;
    if (!SetCommState(port, &settings) || !SetCommTimeouts(port, &timeouts)) {
        CloseHandle(port);
        return LinkLost;
    }
    m_handles->port = port;
    return Ok;
}

void SerialPort::close()
{
    if (m_handles->reading) {
        CancelIoEx(m_handles->port, &m_handles->reading->state);
        Operation::finish(m_handles->reading, m_handles->port);
        m_handles->reading.reset();
    }
    if (m_handles->port != INVALID_HANDLE_VALUE)
        CloseHandle(m_handles->port);
    m_handles->port = INVALID_HANDLE_VALUE;
}

bool SerialPort::write(std::string *bytes)
{
    if (bytes->empty())
        return true;
    auto writing = std::make_unique<Operation>();
    bytes->copy(writing->buffer, sizeof writing->buffer);
    const int written =
        writing->begin(m_handles->port, false, bytes->size()) ? Operation::finish(writing, m_handles->port) : -1;
    bytes->erase(0, static_cast<std::size_t>(std::max(written, 0)));
    return written >= 0;
}

bool SerialPort::read(std::string *bytes, double seconds, bool)
{
    const HANDLE port = m_handles->port;
    if (port == INVALID_HANDLE_VALUE) {
        WaitForSingleObject(m_handles->woken, milliseconds(seconds));
        return true;
    }
    auto &reading = m_handles->reading;
    if (!reading) {
        reading = std::make_unique<Operation>();
        if (!reading->begin(port, true, 1)) {
            reading.reset();
            return false;
        }
    }
    const HANDLE events[] = {reading->done, m_handles->woken};
    if (WaitForMultipleObjects(2, events, FALSE, milliseconds(seconds)) != WAIT_OBJECT_0)
        return true;
    auto first = std::move(reading);
    const auto take = [bytes, port](std::unique_ptr<Operation> &operation) {
        const int count = Operation::finish(operation, port);
        if (count > 0)
            bytes->append(operation->buffer, static_cast<std::size_t>(count));
        return count;
    };
    if (const int count = take(first); count <= 0)
        return count == 0;
    // What has come behind it is there already.
    COMSTAT status{};
    if (!ClearCommError(port, nullptr, &status))
        return false;
    if (status.cbInQue == 0)
        return true;
    auto rest = std::make_unique<Operation>();
    return rest->begin(port, true, status.cbInQue) && take(rest) >= 0;
}

void SerialPort::wake()
{
    SetEvent(m_handles->woken);
}

#else

struct SerialPort::Handles {
    int port = -1;
    int wake[2] = {-1, -1};
};

SerialPort::SerialPort()
    : m_handles(std::make_unique<Handles>())
{
    if (pipe(m_handles->wake) == 0) {
        for (const int end : m_handles->wake) {
            fcntl(end, F_SETFL, O_NONBLOCK);
            fcntl(end, F_SETFD, FD_CLOEXEC);
        }
    }
}

SerialPort::~SerialPort()
{
    close();
    for (const int end : m_handles->wake)
        ::close(end);
}

bool SerialPort::exists(const std::string &path)
{
    struct stat about {
    };
    return stat(path.c_str(), &about) == 0 && S_ISCHR(about.st_mode);
}

int SerialPort::open(const std::string &path)
{
    close();
    const int port = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (port < 0)
        return errno == EBUSY ? PortInUse : errno == EACCES ? NoPermission : LinkLost;
    // The lock is for programs that ask for one, the exclusive mode for those that do not.
    if (flock(port, LOCK_EX | LOCK_NB) != 0) {
        ::close(port);
        return PortInUse;
    }
    termios settings{};
    if (ioctl(port, TIOCEXCL) != 0 || tcgetattr(port, &settings) != 0) {
        ::close(port);
        return LinkLost;
    }
    cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD;
    settings.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS | CSTOPB | HUPCL); // closing must not reset the board
    settings.c_cc[VMIN] = 0;
    settings.c_cc[VTIME] = 0;
    cfsetispeed(&settings, B115200);
    cfsetospeed(&settings, B115200);
    if (tcsetattr(port, TCSANOW, &settings) != 0) {
        ::close(port);
        return LinkLost;
    }
    tcflush(port, TCIOFLUSH);
    m_handles->port = port;
    return Ok;
}

void SerialPort::close()
{
    if (m_handles->port >= 0) {
        ioctl(m_handles->port, TIOCNXCL);
        ::close(m_handles->port);
    }
    m_handles->port = -1;
}

bool SerialPort::write(std::string *bytes)
{
    while (!bytes->empty()) {
        const ssize_t count = ::write(m_handles->port, bytes->data(), bytes->size());
        if (count < 0)
            return errno == EAGAIN || errno == EINTR;
        bytes->erase(0, static_cast<std::size_t>(count));
    }
    return true;
}

bool SerialPort::read(std::string *bytes, double seconds, bool hasMoreToWrite)
{
    pollfd waiting[] = {
        {m_handles->wake[0], POLLIN, 0},
        {m_handles->port, static_cast<short>(hasMoreToWrite ? POLLIN | POLLOUT : POLLIN), 0}};
    if (::poll(waiting, m_handles->port < 0 ? 1 : 2, static_cast<int>(std::ceil(seconds * 1000))) < 0)
        return errno == EINTR;
    char buffer[512];
    while (waiting[0].revents != 0 && ::read(m_handles->wake[0], buffer, sizeof buffer) > 0) {
    }
    if (m_handles->port < 0 || waiting[1].revents == 0)
        return true;
    const ssize_t count = ::read(m_handles->port, buffer, sizeof buffer);
    if (count > 0)
        bytes->append(buffer, static_cast<std::size_t>(count));
    else if ((waiting[1].revents & (POLLHUP | POLLERR | POLLNVAL)) != 0 || (count < 0 && errno != EAGAIN))
        return false;
    return true;
}

void SerialPort::wake()
{
    const char byte = 0;
    // A full pipe wakes as well.
    [[maybe_unused]] const ssize_t count = ::write(m_handles->wake[1], &byte, 1);
}

#endif

} // namespace grbl

// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

namespace grbl {

/** A serial port at 115200 baud, 8N1, held by this program alone. wake() may be called by any thread. */
class SerialPort
{
public:
    SerialPort();
    ~SerialPort();
    SerialPort(const SerialPort &) = delete;
    SerialPort &operator=(const SerialPort &) = delete;

    /** Whether there is a port of this name, without opening it. */
    static bool exists(const std::string &path);

    /** Opens the port. Returns Ok, PortInUse, NoPermission, or LinkLost when it is not there or no serial port. */
    int open(const std::string &path);
    void close();

    /** Writes what the port takes now and removes it from `bytes`. False when the port is gone. */
    bool write(std::string *bytes);
    /** Waits for bytes, for wake(), or for `seconds`; appends what has come. False when the port is gone. */
    bool read(std::string *bytes, double seconds, bool hasMoreToWrite);
    void wake();

private:
    struct Handles;
    std::unique_ptr<Handles> m_handles;
};

} // namespace grbl

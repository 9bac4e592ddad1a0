// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVector>

/** The serial ports of this computer, found without opening one. */
namespace SerialPorts {

struct Port {
    QString device;          ///< /dev/ttyUSB0, COM3
    QString lasting;         ///< a name that it keeps when others come and go; the device's where there is none
    QString product;         ///< of the USB device; may be empty
    QString serialNumber;    ///< of the USB device; may be empty
    QString socket;          ///< where it is plugged in; may be empty
    bool isBySocket = false; ///< the lasting name is the socket's: nothing else tells the device from others
};

/**
 * Those that somebody could have plugged a board into, in the order of their names. `system` and `devices`: where
 * Linux shows them.
 */
QVector<Port> list(
    const QString &system = QStringLiteral("/sys/class/tty"), const QString &devices = QStringLiteral("/dev"));

} // namespace SerialPorts

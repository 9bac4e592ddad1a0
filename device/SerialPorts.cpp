// SPDX-License-Identifier: MIT
#include "device/SerialPorts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_WIN
#include <QMap>
#include <QSettings>
#endif

#include <algorithm>

namespace {

#ifdef Q_OS_WIN

/** The USB devices behind ports, by the ports' names. */
QMap<QString, SerialPorts::Port> usbDevices()
{
    QMap<QString, SerialPorts::Port> found;
    const QString root = QStringLiteral("HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Enum\\");
    for (const QString &bus : {QStringLiteral("USB"), QStringLiteral("FTDIBUS")}) {
        const QStringList models = QSettings(root + bus, QSettings::NativeFormat).childGroups();
        for (const QString &model : models) {
            const QString path = root + bus + QLatin1Char('\\') + model;
            const QStringList units = QSettings(path, QSettings::NativeFormat).childGroups();
            for (const QString &unit : units) {
                const QSettings device(path + QLatin1Char('\\') + unit, QSettings::NativeFormat);
                const QString port = device.value(QStringLiteral("Device Parameters/PortName")).toString();
                // Windows makes up a name with "&" for devices without a serial number.
                const QString serial = unit.contains(QLatin1Char('&')) ? QString() : unit;
                if (!port.isEmpty())
                    found.insert(
                        port, {port, port, device.value(QStringLiteral("FriendlyName")).toString(), serial,
                               device.value(QStringLiteral("LocationInformation")).toString(), false});
            }
        }
    }
    return found;
}

#else

QString firstLine(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readLine()).trimmed() : QString();
}

/** The links of a folder, by the devices that they lead to. */
QString linkTo(const QString &device, const QString &folder)
{
    const QString target = QFileInfo(device).canonicalFilePath();
    const QFileInfoList links = QDir(folder).entryInfoList(QDir::Files | QDir::System, QDir::Name);
    const auto found = std::find_if(
        links.begin(), links.end(), [&](const QFileInfo &link) { return link.canonicalFilePath() == target; });
    return found == links.end() ? QString() : found->filePath();
}

#endif

} // namespace

#ifdef Q_OS_WIN

QVector<SerialPorts::Port> SerialPorts::list(const QString &, const QString &)
{
    const QMap<QString, Port> usb = usbDevices();
    const QSettings map(QStringLiteral("HKEY_LOCAL_MACHINE\\HARDWARE\\DEVICEMAP\\SERIALCOMM"), QSettings::NativeFormat);
    QVector<Port> ports;
    const QStringList keys = map.allKeys();
    for (const QString &key : keys) {
        const QString name = map.value(key).toString();
        ports.append(usb.value(name, {name, name, {}, {}, {}, false}));
    }
    std::sort(ports.begin(), ports.end(), [](const Port &a, const Port &b) { return a.device < b.device; });
    return ports;
}

#else

QVector<SerialPorts::Port> SerialPorts::list(const QString &system, const QString &devices)
{
    QVector<Port> ports;
    const QStringList names = QDir(system).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &name : names) {
        const QString entry = system + QLatin1Char('/') + name;
        const QFileInfo device(entry + QStringLiteral("/device"));
        // Consoles have no device; the built-in driver shows ports without a chip, which are of type 0.
        if (!device.exists() || firstLine(entry + QStringLiteral("/type")) == QLatin1String("0"))
            continue;
        Port port;
        port.device = devices + QLatin1Char('/') + name;
        QDir usb(device.canonicalFilePath());
        for (int up = 0; up < 6 && !usb.exists(QStringLiteral("idVendor")) && usb.cdUp(); ++up) {
        }
        if (usb.exists(QStringLiteral("idVendor"))) {
            port.product = firstLine(usb.filePath(QStringLiteral("product")));
            port.serialNumber = firstLine(usb.filePath(QStringLiteral("serial")));
            port.socket = usb.dirName();
        }
        ports.append(port);
    }
    for (Port &port : ports) {
        const auto isTwin = [&port](const Port &other) {
            return other.device != port.device && other.serialNumber == port.serialNumber;
        };
        port.isBySocket = !port.socket.isEmpty() &&
                          (port.serialNumber.isEmpty() || std::any_of(ports.cbegin(), ports.cend(), isTwin));
        port.lasting = linkTo(
            port.device,
            devices + (port.isBySocket ? QStringLiteral("/serial/by-path") : QStringLiteral("/serial/by-id")));
        if (port.lasting.isEmpty())
            port.lasting = port.device;
    }
    return ports;
}

#endif

// SPDX-License-Identifier: MIT
#include "shell/PortEventMonitor.h"

#include <QLoggingCategory>
#include <QSocketNotifier>

#ifdef Q_OS_LINUX
#include <libudev.h>

#include <cstring>

namespace {

Q_LOGGING_CATEGORY(diagnostics, "mover.shell")

} // namespace
#endif

PortEventMonitor::PortEventMonitor(QObject *parent)
    : QObject(parent)
#ifdef Q_OS_LINUX
    , m_udev(udev_new(), &udev_unref)
    , m_monitor(nullptr, &udev_monitor_unref)
#endif
{
    m_burstTimer.setSingleShot(true);
    m_burstTimer.setInterval(200);
    connect(&m_burstTimer, &QTimer::timeout, this, &PortEventMonitor::signal_portsChanged);

#ifdef Q_OS_LINUX
    if (!openMonitor())
        qCDebug(diagnostics) << "PortEventMonitor: no udev, serial ports are not watched";
#endif
}

PortEventMonitor::~PortEventMonitor() = default;

void PortEventMonitor::slot_notePortEvent()
{
    // Not restarted by further events: a device that keeps coming and going must not hold back the report.
    if (!m_burstTimer.isActive())
        m_burstTimer.start();
}

#ifdef Q_OS_LINUX

bool PortEventMonitor::openMonitor()
{
    if (!m_udev)
        return false;
    m_monitor.reset(udev_monitor_new_from_netlink(m_udev.get(), "udev"));
    if (!m_monitor || udev_monitor_filter_add_match_subsystem_devtype(m_monitor.get(), "tty", nullptr) < 0 ||
        udev_monitor_enable_receiving(m_monitor.get()) < 0)
        return false;

    m_notifier = std::make_unique<QSocketNotifier>(udev_monitor_get_fd(m_monitor.get()), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &PortEventMonitor::readEvents);
    return true;
}

void PortEventMonitor::readEvents()
{
    // The monitor's socket does not block: no device means that all events have been read.
    using Device = std::unique_ptr<udev_device, udev_device *(*)(udev_device *)>;
    while (const Device device{udev_monitor_receive_device(m_monitor.get()), &udev_device_unref}) {
        const char *action = udev_device_get_action(device.get());
        if (action && (std::strcmp(action, "add") == 0 || std::strcmp(action, "remove") == 0))
            slot_notePortEvent();
    }
}

#endif

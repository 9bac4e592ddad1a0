// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QTimer>

#include <memory>

class QSocketNotifier;
struct udev;
struct udev_monitor;

/**
 * Reports that serial ports came or went. Listens to udev on Linux; elsewhere, and where udev is not available
 * (containers), it hears nothing by itself. GUI thread.
 */
class PortEventMonitor final : public QObject
{
    Q_OBJECT

public:
    explicit PortEventMonitor(QObject *parent = nullptr);
    ~PortEventMonitor() override;

public slots:
    /**
     * Notes that a port came or went. One plug makes a burst of events: they are joined into one
     * signal_portsChanged(), 200 ms after the first.
     */
    void slot_notePortEvent();

signals:
    void signal_portsChanged();

private:
    QTimer m_burstTimer;

#ifdef Q_OS_LINUX
    bool openMonitor();
    void readEvents();

    // In this order, so that they are released from the last to the first.
    std::unique_ptr<udev, udev *(*)(udev *)> m_udev;
    std::unique_ptr<udev_monitor, udev_monitor *(*)(udev_monitor *)> m_monitor;
    std::unique_ptr<QSocketNotifier> m_notifier;
#endif
};

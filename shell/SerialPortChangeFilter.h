// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

class QWidget;

/**
 * Tells the main window that the machine's devices have changed, so that it can check whether its controller is still
 * there. Windows says so in a message to the main window, for which this object is installed as the application's
 * native event filter; on Linux a PortEventMonitor does. GUI thread.
 */
class SerialPortChangeFilter final : public QObject, public QAbstractNativeEventFilter
{
    Q_OBJECT

public:
    /** The main window owns the filter. */
    explicit SerialPortChangeFilter(QWidget *mainWindow);

    /** Looks only; always false, so every message is passed on. */
    bool nativeEventFilter(const QByteArray &eventType, void *message, long *result) override;

signals:
    void signal_usbDevPortChanged();

private:
    QWidget *m_mainWindow;
};

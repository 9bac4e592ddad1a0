// SPDX-License-Identifier: MIT
#include "shell/SerialPortChangeFilter.h"

#include "shell/NativeMessage.h"
#include "shell/PortEventMonitor.h"

#include <QWidget>

namespace {

/** effectiveWinId() does not make a window native. It is 0 for one that is not, and no message is addressed to 0. */
bool isAddressedTo(const QWidget *window, const NativeMessage &message)
{
    return message.hwnd && reinterpret_cast<WId>(message.hwnd) == window->effectiveWinId();
}

} // namespace

SerialPortChangeFilter::SerialPortChangeFilter(QWidget *mainWindow)
    : QObject(mainWindow)
    , m_mainWindow(mainWindow)
{
    connect(
        new PortEventMonitor(this), &PortEventMonitor::signal_portsChanged, this,
        &SerialPortChangeFilter::signal_usbDevPortChanged);
}

bool SerialPortChangeFilter::nativeEventFilter(const QByteArray &eventType, void *message, long *result)
{
    Q_UNUSED(result)
    if (message && (eventType == "windows_generic_MSG" || eventType == "windows_dispatcher_MSG")) {
        const auto &native = *static_cast<const NativeMessage *>(message);
        if (native.message == WM_DEVICECHANGE && native.wParam == DBT_DEVNODES_CHANGED &&
            isAddressedTo(m_mainWindow, native))
            emit signal_usbDevPortChanged();
    }
    return false;
}

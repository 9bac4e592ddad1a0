// SPDX-License-Identifier: MIT
// Bytes as native events: the port watch reports the one message it waits for, and no other; bursts are joined.
#include "shell/NativeMessage.h"
#include "shell/PortEventMonitor.h"
#include "shell/SerialPortChangeFilter.h"

#include "Application.h"

#include <QElapsedTimer>
#include <QWidget>

namespace {

const char *const eventTypes[] = {"windows_generic_MSG", "windows_dispatcher_MSG", "xcb_generic_event_t"};

/** Begins with an operation; what follows it depends on which. */
enum Operation { AddressedMessage, AnyMessage, NoMessage, PortEvent, Wait, OperationCount };

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    Fuzz::makeApplication();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static auto *const window = [] {
        auto *native = new QWidget;
        native->winId();
        return native;
    }();
    static auto *const filter = new SerialPortChangeFilter(window);
    static auto *const monitor = new PortEventMonitor(window);
    static int notices = 0;
    static int bursts = 0;
    static QElapsedTimer running;
    if (!running.isValid()) {
        running.start();
        QObject::connect(filter, &SerialPortChangeFilter::signal_usbDevPortChanged, [] { ++notices; });
        QObject::connect(monitor, &PortEventMonitor::signal_portsChanged, [] { ++bursts; });
    }
    const bool isNative = size % 2 == 0;
    QWidget plain; // was never shown: it has no window that a message could be for
    SerialPortChangeFilter ofPlain(&plain);
    int plainNotices = 0;
    QObject::connect(&ofPlain, &SerialPortChangeFilter::signal_usbDevPortChanged, [&plainNotices] { ++plainNotices; });

    Fuzz::Input input(data, size);
    while (!input.isEmpty()) {
        const int operation = input.take<uint8_t>() % OperationCount;
        const int noticesBefore = notices;
        const int burstsBefore = bursts;
        if (operation <= NoMessage) {
            NativeMessage message = {};
            message.message = input.take<uint16_t>();
            message.wParam = input.take<uint8_t>();
            message.hwnd = operation == AddressedMessage ? reinterpret_cast<void *>(window->winId())
                                                         : reinterpret_cast<void *>(quintptr(input.take<uint16_t>()));
            const uint8_t typeIndex = input.take<uint8_t>();
            const QByteArray type = typeIndex < 3 ? QByteArray(eventTypes[typeIndex]) : input.takeLine();
            const bool windows = type == eventTypes[0] || type == eventTypes[1];
            const bool mine = message.hwnd && WId(message.hwnd) == window->winId();
            const bool reports =
                operation != NoMessage && windows && mine && message.message == 0x219 && message.wParam == 7;
            long result = 4711;
            NativeMessage *const given = operation == NoMessage ? nullptr : &message;
            Fuzz::require(!filter->nativeEventFilter(type, given, &result), "the message is kept from others");
            Fuzz::require(result == 4711, "the result is touched");
            Fuzz::require(notices - noticesBefore == (reports ? 1 : 0), reports ? "missed" : "reported");
            ofPlain.nativeEventFilter(type, given, isNative ? &result : nullptr);
            Fuzz::require(plainNotices == 0, "a message to no window");
        } else if (operation == PortEvent) {
            monitor->slot_notePortEvent();
            Fuzz::require(bursts == burstsBefore, "reported at once");
        } else {
            QCoreApplication::processEvents();
        }
    }
    Fuzz::require(bursts <= 1 + running.elapsed() / 200, "bursts are not joined");
    return 0;
}

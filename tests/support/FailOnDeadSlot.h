// SPDX-License-Identifier: MIT
#pragma once

#include <QtTest>

/** While it lives, an on_<object>_<signal> slot that no object of the form answers to fails the running test. */
class FailOnDeadSlot final
{
public:
    FailOnDeadSlot() { previous() = qInstallMessageHandler(&handle); }
    ~FailOnDeadSlot() { qInstallMessageHandler(previous()); }

private:
    Q_DISABLE_COPY(FailOnDeadSlot)

    static QtMessageHandler &previous()
    {
        static QtMessageHandler handler = nullptr;
        return handler;
    }
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        if (message.startsWith(QLatin1String("QMetaObject::connectSlotsByName: No matching signal")))
            QTest::qFail(qPrintable(message), __FILE__, __LINE__);
        previous()(type, context, message);
    }
};

// SPDX-License-Identifier: MIT
#pragma once

#include "device/DeviceRecords.h"
#include "device/SerialComDev.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/DebugLog.h"

#include <QtTest>

#include <optional>

/**
 * What a test of a window that talks to the worker stands on: the default controller, open, with axes 0 and 1 read, and
 * a record of what the window asks of the worker. Use begin() in init() and end() in cleanup(), which fails the test
 * for a Qt warning, a slot without its signal and an overlap of library calls.
 */
class WorkerFixture : public QObject
{
public:
    static constexpr int Device = 1001;

    void begin()
    {
        registerDeviceRecords();
        m_log.emplace();
        simulator::reset();
        const auto worker = SerialComDev::instance();
        QCOMPARE(worker->open(Device), Device);
        QCOMPARE(worker->readAxisParams(0), 0);
        QCOMPARE(worker->readAxisParams(1), 0);
        simulator::clearJournal();
        record();
    }
    void end()
    {
        m_requests.clear();
        QVERIFY(SerialComDev::endThread(5000));
        QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
        const QStringList warnings = m_log->warnings();
        m_log.reset();
        QCOMPARE(warnings, QStringList());
    }

    /** The requests emitted since begin() or the last call of this, oldest first, without the polls. */
    QStringList takeRequests()
    {
        QStringList requests;
        requests.swap(m_requests);
        return requests;
    }
    /** What the library was asked for, without what the panels poll for. */
    static QStringList calls()
    {
        QStringList list;
        for (const simulator::Call &call : simulator::journal()) {
            if (call.function != "getCurrentPos" && call.function != "getRuningState")
                list.append(QString::fromStdString(call.function + '(' + call.arguments + ')'));
        }
        return list;
    }

protected:
    /** Further requests or signals that are to stand in the same order as those of the worker. */
    void note(const QString &text) { m_requests.append(text); }

private:
    template <typename... Args>
    void record(const char *name, void (SerialComDev::*request)(Args...))
    {
        connect(
            SerialComDev::instance().data(), request, this,
            [this, name](Args... args) {
                QStringList texts;
                (texts.append(QVariant::fromValue(args).toString()), ...);
                m_requests.append(QLatin1String(name) + '(' + texts.join(QLatin1String(", ")) + ')');
            },
            Qt::DirectConnection);
    }
    void record()
    {
        m_requests.clear();
        record("setSpeedParams", &SerialComDev::signal_setSpeedParams);
        record("setRelativeDispParams", &SerialComDev::signal_setRelativeDispParams);
        record("setAbsoluteDispParams", &SerialComDev::signal_setAbsoluteDispParams);
        record("setJogParams", &SerialComDev::signal_setJogParams);
        record("setCircleParams", &SerialComDev::signal_setCircleParams);
        record("stopMotor", &SerialComDev::signal_stopMotor);
        record("startMotor", &SerialComDev::signal_startMotor);
        record("home", &SerialComDev::signal_home);
        record("enableMotor", &SerialComDev::signal_enableMotor);
        record("setTriggerParams", &SerialComDev::signal_setTriggerParams);
        record("setMotorConfig", &SerialComDev::signal_setMotorConfig);
        record("setRockerEnabled", &SerialComDev::signal_setRockerEnabled);
        record("setTriggerInDisp", &SerialComDev::signal_setTriggerInDisp);
        record("setPosConpenEnable", &SerialComDev::signal_setPosConpenEnable);
    }

    std::optional<DebugLog> m_log;
    QStringList m_requests;
};

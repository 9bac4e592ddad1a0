// SPDX-License-Identifier: MIT
#include "controllers/emulator/SerialPort.h"
#include "device/MotionLibrary.h"
#include "device/SerialComDev.h"
#include "device/moverStatus.h"

#include <QFile>
#include <QMutex>
#include <QTemporaryDir>
#include <QTest>

using namespace moverStatus;

/** What the program's log says of a board: through the loaded library and the worker, as a panel hears it. */
class tst_GrblWords : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void aRefusalHasItsWords();
    void homingNamesAllAxesThatMove();
    void oldStatusesLookAsEver();
    void whatTheLibrarySaysReachesTheLog();
    void setUpShowsTheCapOfTheSpeed();
    void aReportIsToldOnceWithItsTime();

private:
    QStringList logOf(int axis)
    {
        const QMutexLocker lock(&m_mutex);
        return m_log.value(axis);
    }
    bool says(int axis, const QString &text)
    {
        emit SerialComDev::instance()->signal_getCurrentPos(axis);
        return logOf(axis).join(QLatin1Char('\n')).contains(text);
    }

    static constexpr int s_id = 2001;
    QTemporaryDir m_folder;
    std::unique_ptr<emulator::SerialPort> m_port;
    QMutex m_mutex;
    QMap<int, QStringList> m_log;
    QMetaObject::Connection m_connection;
};

void tst_GrblWords::initTestCase()
{
    emulator::Options options;
    options.storeTime = 0.001;
    options.settings = {{10, 3}, {22, 1}, {120, 50}};
    m_port = std::make_unique<emulator::SerialPort>(options, 1, m_folder.filePath("board").toStdString());
    QFile file(m_folder.filePath("controllers.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        R"({"controllers": [{"id": 2001, "kind": "grbl", "port": ")" + m_folder.filePath("board").toUtf8() +
        R"(", "axes": [{}, {}, {}]}]})");
    file.close();
    qputenv("MOVER_CONTROLLERS", file.fileName().toUtf8());
    QVERIFY(!MotionLibrary::load(QStringLiteral(GRBL_LIBRARY)));
    QCOMPARE(MotionLibrary::inUse().mark(), QStringLiteral("grbl"));
    const auto worker = SerialComDev::instance();
    m_connection = connect(
        worker.data(), &SerialComDev::signal_showOperationMsg, worker.data(),
        [this](int axis, int, int, const QString &text) {
            const QMutexLocker lock(&m_mutex);
            m_log[axis].append(text);
        },
        Qt::DirectConnection);
    QCOMPARE(worker->open(s_id), s_id);
}

void tst_GrblWords::cleanupTestCase()
{
    disconnect(m_connection);
    SerialComDev::instance()->close();
    QVERIFY(SerialComDev::endThread(5000));
}

void tst_GrblWords::aRefusalHasItsWords()
{
    emit SerialComDev::instance()->signal_startMotor(0, MOVE_CODE_MOVE); // locked since it was switched on
    QTRY_VERIFY(says(0, QStringLiteral("Move -16 (控制板处于报警或锁定状态")));
    QCOMPARE(SerialComDev::instance()->statusText(NotAvailable), QStringLiteral("-17 (此控制器没有该功能)"));
}

void tst_GrblWords::homingNamesAllAxesThatMove()
{
    emit SerialComDev::instance()->signal_home(1);
    QTRY_VERIFY(says(1, QStringLiteral("此控制板的所有轴都将移动：Axis1, Axis2, Axis3；请再按一次")));
}

void tst_GrblWords::oldStatusesLookAsEver()
{
    QCOMPARE(SerialComDev::instance()->statusText(UnknownDevice), QStringLiteral("-1"));
    emit SerialComDev::instance()->signal_startMotor(7, MOVE_CODE_MOVE); // no such axis
    QTRY_COMPARE(logOf(7), QStringList{QStringLiteral("Move")});
}

void tst_GrblWords::whatTheLibrarySaysReachesTheLog()
{
    // From the opening: every axis has it, whenever it is polled first.
    for (int axis = 0; axis < 3; ++axis)
        QTRY_VERIFY(says(axis, QStringLiteral("$1 不是 255")));
    emit SerialComDev::instance()->signal_enableMotor(2, false);
    QTRY_VERIFY(says(2, QStringLiteral("电机电流不会切断")));
    QVERIFY(!says(0, QStringLiteral("电机电流不会切断")));
    emit SerialComDev::instance()->signal_enableMotor(2, true); // unlocks
    QTRY_VERIFY(SerialComDev::instance()->setMotorEnable(0, 1) == 0);
    emit SerialComDev::instance()->signal_setSpeedParams(0, 50, 10);
    emit SerialComDev::instance()->signal_setRelativeDispParams(0, 0.1234, true);
    QTRY_VERIFY(
        (emit SerialComDev::instance()->signal_startMotor(0, MOVE_CODE_DRIVE_NEGATIVE),
         says(0, QStringLiteral("速度限制为 4：由控制板参数 $120 决定"))));
    QTRY_VERIFY(says(0, QStringLiteral("该轴的分辨率是 0.004")));
}

void tst_GrblWords::setUpShowsTheCapOfTheSpeed()
{
    const auto worker = SerialComDev::instance();
    MotorParams params{};
    QTRY_COMPARE(worker->getMotorParams(1, params), 0);
    params.maxSpeed = 60;
    QTRY_COMPARE(worker->setMotorParams(1, params), 0);
    QTRY_VERIFY(says(1, QStringLiteral("速度限制为 40：由控制板参数 $121 决定")));
}

void tst_GrblWords::aReportIsToldOnceWithItsTime()
{
    struct Listener final : AnswerListener {
        void positionAnswered(int axis, double, Time at) override
        {
            if (axis == 1) // polls of others may still be under way
                times.push_back(at);
        }
        void stateAnswered(int, const MotorStageState &, Time) override {}
        void pollFailed(int, Time) override {}
        void commandAnswered(const MotionCommand &, Time) override {}
        std::vector<Time> times;
    } listener;
    const auto worker = SerialComDev::instance();
    const auto begin = AnswerListener::Time::clock::now();
    worker->answers().add(&listener);
    std::chrono::duration<double> passed{};
    for (int polls = 0; polls < 60 || passed.count() < 1; ++polls) {
        emit worker->signal_getCurrentPos(1);
        QTest::qWait(5);
        passed = AnswerListener::Time::clock::now() - begin;
    }
    worker->answers().remove(&listener);
    QVERIFY2(
        listener.times.size() >= 4 && double(listener.times.size()) <= 40 * passed.count(),
        qPrintable(QString::number(listener.times.size())));
    for (std::size_t i = 1; i < listener.times.size(); ++i)
        QVERIFY(listener.times[i] > listener.times[i - 1]);
}

QTEST_GUILESS_MAIN(tst_GrblWords)
#include "tst_GrblWords.moc"

// SPDX-License-Identifier: MIT
#include "device/SerialComDev.h"

#include "device/LibraryLock.h"
#include "device/LibraryText.h"
#include "device/MotionLibrary.h"
#include "device/StatusWords.h"

#include <QCoreApplication>
#include <QDebug>
#include <QSemaphore>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <iterator>
#include <limits>
#include <type_traits>

namespace {

Q_LOGGING_CATEGORY(diagnostics, "mover.device")

struct Singleton {
    QMutex creation; // guards only the creation
    QSharedPointer<SerialComDev> worker;
    std::atomic<SerialComDev *> created{nullptr}; // tells without the mutex that `worker` is set
};

// Never destroyed: at exit the worker's thread may still hang in a library call.
Singleton &singleton()
{
    static auto *const instance = new Singleton;
    return *instance;
}

constexpr std::chrono::milliseconds slowCall(20);
constexpr std::chrono::seconds behindPatience(1);
constexpr int maxAxes = 8;   // more than any controller has
constexpr int usualAxes = 3; // of a controller that has not told
constexpr int mostMessages = 200;

using Library = const MoverFunctions &; // of a LibraryLock

QEvent::Type behindEvent()
{
    static const auto type = QEvent::Type(QEvent::registerEventType());
    return type;
}

struct StartMode {
    int mode;
    int (*start)(Library library, int id, int axis);
    const char *text;
    OperationType type;
    int direction;
};

constexpr StartMode startModes[] = {
    {MOVE_CODE_MOVE, [](Library library, int id, int axis) { return library.startMove(id, axis); },
     QT_TRANSLATE_NOOP("SerialComDev", "Move"), OPERATION_TYPE_MOVE, 0},
    {MOVE_CODE_DRIVE_POSITIVE, [](Library library, int id, int axis) { return library.startDrive(id, axis, 1); },
     QT_TRANSLATE_NOOP("SerialComDev", "正方向Drive"), OPERATION_TYPE_DRIVE, 1},
    {MOVE_CODE_DRIVE_NEGATIVE, [](Library library, int id, int axis) { return library.startDrive(id, axis, 2); },
     QT_TRANSLATE_NOOP("SerialComDev", "负方向Drive"), OPERATION_TYPE_DRIVE, -1},
    {MOVE_CODE_JOG_POSITIVE, [](Library library, int id, int axis) { return library.startJog(id, axis, 1); },
     QT_TRANSLATE_NOOP("SerialComDev", "正方向Jog"), OPERATION_TYPE_JOG, 1},
    {MOVE_CODE_JOG_NEGATIVE, [](Library library, int id, int axis) { return library.startJog(id, axis, 2); },
     QT_TRANSLATE_NOOP("SerialComDev", "负方向Jog"), OPERATION_TYPE_JOG, -1},
    {MOVE_CODE_CIRCLE_POSITIVE, [](Library library, int id, int axis) { return library.startCircle(id, axis, 1); },
     QT_TRANSLATE_NOOP("SerialComDev", "正方向循环"), OPERATION_TYPE_LOOP, 1},
    {MOVE_CODE_CIRCLE_NEGATIVE, [](Library library, int id, int axis) { return library.startCircle(id, axis, 2); },
     QT_TRANSLATE_NOOP("SerialComDev", "负方向循环"), OPERATION_TYPE_LOOP, -1},
};

/** Values as messages show them: as few digits as possible, without losing any that the number fields take. */
QString shown(double value)
{
    return QString::number(value, 'g', 12);
}

/** One read of readAxisParams(): false when the library reports failure. */
using AxisRead = bool (*)(Library library, int id, int axis, MotorDevInfo &info);

/** Stores a value whose failures are below 0. */
template <typename Value, typename Field>
bool store(Value value, Field &field)
{
    if (value < 0)
        return false;
    field = value;
    return true;
}

/** In the order in which they are made; a failure of the n-th one is reported as -n. */
constexpr AxisRead axisReads[] = {
    [](Library library, int id, int axis, MotorDevInfo &info) {
        LibraryText text;
        const bool ok = library.getMotorModelName(id, axis, text.data(), text.length()) >= 0;
        info.modelName = text.toString();
        return ok;
    },
    [](Library library, int id, int axis, MotorDevInfo &info) {
        LibraryText text;
        const bool ok = library.getMotorSerialNumber(id, axis, text.data(), text.length()) >= 0;
        info.serialNumber = text.toString();
        return ok;
    },
    [](Library library, int id, int axis, MotorDevInfo &info) {
        int status = 0;
        info.currentPos = library.getCurrentPos(id, axis, &status);
        return status >= 0;
    },
    [](Library library, int id, int axis, MotorDevInfo &info) { return store(library.getSpeed(id, axis), info.speed); },
    [](Library library, int id, int axis, MotorDevInfo &info) {
        return store(library.getAcceleration(id, axis), info.acceleration);
    },
    [](Library library, int id, int axis, MotorDevInfo &info) {
        return store(library.getRelativeDisp(id, axis), info.relativeDisp);
    },
    [](Library library, int id, int axis, MotorDevInfo &info) {
        unsigned char success = 0;
        info.targetPos = library.getTargetPos(id, axis, &success);
        return success != 0;
    },
    [](Library library, int id, int axis, MotorDevInfo &info) {
        return store(library.getRelativeDispEnable(id, axis), info.relativeDispEnable);
    },
    [](Library library, int id, int axis, MotorDevInfo &info) {
        return store(library.getJogStep(id, axis), info.jogStep);
    },
    [](Library library, int id, int axis, MotorDevInfo &info) {
        return store(library.getJogDelay(id, axis), info.jogDelay);
    },
    [](Library library, int id, int axis, MotorDevInfo &info) {
        return store(library.getJogCount(id, axis), info.jogCount);
    },
    [](Library library, int id, int axis, MotorDevInfo &info) {
        return store(library.getCircleCount(id, axis), info.circleCount);
    },
    [](Library library, int id, int axis, MotorDevInfo &info) {
        return store(library.getCircleDisp(id, axis), info.circleDisp);
    },
    [](Library library, int id, int axis, MotorDevInfo &info) {
        return store(library.getCircleDelay(id, axis), info.circleDelay);
    },
};

} // namespace

QSharedPointer<SerialComDev> SerialComDev::instance()
{
    Singleton &single = singleton();
    if (single.created.load(std::memory_order_acquire))
        return single.worker;

    const QMutexLocker creation(&single.creation);
    if (!single.worker) {
        single.worker = QSharedPointer<SerialComDev>(new SerialComDev);
        auto *thread = new QThread;
        thread->setObjectName(QStringLiteral("SerialComDev"));
        single.worker->moveToThread(thread);
        thread->start();
        single.created.store(single.worker.data(), std::memory_order_release);
    }
    return single.worker;
}

bool SerialComDev::endThread(int limitMs)
{
    Singleton &single = singleton();
    const QMutexLocker creation(&single.creation);
    if (!single.worker)
        return true;

    const QDeadlineTimer deadline(limitMs);
    QThread *thread = single.worker->thread();
    QCoreApplication::removePostedEvents(single.worker.data());
    LibraryLock::retractAll(thread); // its stops are among the events removed
    thread->quit();
    if (!thread->wait(deadline) || !single.worker->endStopThread(deadline)) {
        qDebug() << "SerialComDev: a library call still runs, its thread is left behind";
        return false;
    }
    single.created.store(nullptr, std::memory_order_release);
    single.worker.reset();
    delete thread;
    return true;
}

SerialComDev::SerialComDev()
    : m_stopThread([this] { sendStops(); })
{
    m_stopThread.start();

    // Polls are gathered in the thread that requests them: calling the worker for each costs more than the poll itself.
    connect(
        this, &SerialComDev::signal_getCurrentPos, this,
        [this](int axis) {
            requestPoll({PollQueue::Position, axis});
        },
        Qt::DirectConnection);
    connect(
        this, &SerialComDev::signal_getDevState, this,
        [this](int axis) {
            requestPoll({PollQueue::State, axis});
        },
        Qt::DirectConnection);
    connect(
        this, &SerialComDev::signal_requestHeartBeat, this,
        [this] {
            requestPoll({PollQueue::Beat, PollQueue::WholeController});
        },
        Qt::DirectConnection);
    connect(
        this, &SerialComDev::signal_requestConsoleHeartBeat, this,
        [this] {
            requestPoll({PollQueue::ConsoleBeat, PollQueue::WholeController});
        },
        Qt::DirectConnection);

    // Answers are looked at in the thread that gives them: most repeat the last one, and every hop to the panels costs
    // more than the poll itself.
    connect(
        this, &SerialComDev::signal_updateCurrentPos, this,
        [this](int axis, double position) {
            if (m_positions.isNews(axis, position))
                emit signal_positionChanged(axis, position);
        },
        Qt::DirectConnection);
    connect(
        this, &SerialComDev::signal_updateDevState, this,
        [this](int axis, MotorStageState state) {
            if (m_states.isNews(axis, state) || state.runCount != 0)
                emit signal_devStateChanged(axis, state);
        },
        Qt::DirectConnection);

    connectParameters(&SerialComDev::signal_setSpeedParams, &SerialComDev::slot_setSpeedParams);
    connectParameters(&SerialComDev::signal_setRelativeDispParams, &SerialComDev::slot_setRelativeDispParams);
    connectParameters(&SerialComDev::signal_setAbsoluteDispParams, &SerialComDev::slot_setAbsoluteDispParams);
    connectParameters(&SerialComDev::signal_setJogParams, &SerialComDev::slot_setJogParams, OPERATION_TYPE_JOG_PARAMS);
    connectParameters(
        &SerialComDev::signal_setCircleParams, &SerialComDev::slot_setCircleParams, OPERATION_TYPE_LOOP_PARAMS);
    connectParameters(
        &SerialComDev::signal_setTriggerParams, &SerialComDev::slot_setTriggerParams, OPERATION_TYPE_LOOP_PARAMS);
    connectCommand(&SerialComDev::signal_setMotorConfig, &SerialComDev::slot_setMotorConfig);
    // A stop waits only for the call in flight; on a slow link the polls would stand in front of it.
    connect(
        this, &SerialComDev::signal_stopMotor, this,
        [this] {
            m_uStopRound = m_polls.lastRound();
            if (LibraryLock::heldFor() > slowCall)
                m_polls.drop(m_uStopRound); // the next timer asks again
            ++m_iStopsWaiting;
            LibraryLock::announce(LibraryLock::Urgency::Stop, thread());
        },
        Qt::DirectConnection);
    connectCommand(&SerialComDev::signal_stopMotor, [this](int axis) {
        slot_stopMotor(axis);
        LibraryLock::retract(LibraryLock::Urgency::Stop);
        --m_iStopsWaiting;
    });

    // A start remembers when it was asked for: one from before a stop of all is not made any more.
    connect(
        this, &SerialComDev::signal_startMotor, this,
        [this](int axis, int mode) {
            ++m_iCommandsWaiting;
            QMetaObject::invokeMethod(this, [this, axis, mode, stops = m_uStopAlls.load()] {
                start(axis, mode, stops);
                --m_iCommandsWaiting;
            });
            m_polls.endRound();
        },
        Qt::DirectConnection);
    connect(
        this, &SerialComDev::signal_home, this,
        [this](int axis) {
            ++m_iCommandsWaiting;
            QMetaObject::invokeMethod(this, [this, axis, stops = m_uStopAlls.load()] {
                home(axis, stops);
                --m_iCommandsWaiting;
            });
            m_polls.endRound();
        },
        Qt::DirectConnection);
    connectCommand(&SerialComDev::signal_enableMotor, &SerialComDev::slot_enableMotor);
    // Handing the axes to the joystick is a start, too. No message is expected when it is cancelled.
    connect(
        this, &SerialComDev::signal_setRockerEnabled, this,
        [this](bool on) {
            QMetaObject::invokeMethod(this, [this, on, stops = m_uStopAlls.load()] {
                if (!on || stops == m_uStopAlls)
                    slot_setRockerEnabled(on);
            });
            m_polls.endRound();
        },
        Qt::DirectConnection);
    connectParameters(
        &SerialComDev::signal_setTriggerInDisp, &SerialComDev::slot_setTriggerInDisp, OPERATION_TYPE_LOOP_PARAMS);
    connectParameters(&SerialComDev::signal_setPosConpenEnable, &SerialComDev::slot_setPosConpenEnable);
}

void SerialComDev::runBehind(std::function<void()> step)
{
    {
        const QMutexLocker lock(&m_behindMutex);
        m_behind.push_back({std::move(step), QDeadlineTimer(behindPatience)});
    }
    QCoreApplication::postEvent(this, new QEvent(behindEvent()), Qt::LowEventPriority);
}

void SerialComDev::customEvent(QEvent *event)
{
    if (event->type() == behindEvent())
        runNextBehind();
}

/** A step that has had its turn early leaves an event behind, for which there may be nothing to do. */
void SerialComDev::runNextBehind()
{
    std::function<void()> step;
    {
        const QMutexLocker lock(&m_behindMutex);
        if (m_behind.empty())
            return;
        step = std::move(m_behind.front().step);
        m_behind.pop_front();
    }
    if (!m_bLeft)
        step();
}

/** Runs the slot in the worker thread, in the order of emission, polls included. */
template <typename Signal, typename Slot>
void SerialComDev::connectCommand(Signal signal, Slot slot)
{
    connect(
        this, signal, this, [this] { ++m_iCommandsWaiting; }, Qt::DirectConnection);
    // First: the command must be on its way before the round ends. One event for all of it: while it is worked on,
    // nobody else is at the worker's queue.
    connect(this, signal, this, [this, slot](auto... values) {
        if constexpr (std::is_member_function_pointer_v<Slot>)
            (this->*slot)(values...);
        else
            slot(values...);
        --m_iCommandsWaiting;
    });
    connect(
        this, signal, this, [this] { m_polls.endRound(); }, Qt::DirectConnection);
}

/** As connectCommand(), unless somebody else has the axis. */
template <typename... Values>
void SerialComDev::connectParameters(
    void (SerialComDev::*signal)(int, Values...), void (SerialComDev::*slot)(int, Values...), OperationType type)
{
    connectCommand(signal, [this, slot, type](int axis, Values... values) {
        if (!isRefused(axis, type))
            (this->*slot)(axis, values...);
    });
}

void SerialComDev::requestPoll(const PollQueue::Poll &poll)
{
    const QMutexLocker request(&m_requestMutex);
    if (const auto round = m_polls.add(poll))
        QMetaObject::invokeMethod(
            this, [this, round = *round] { runPolls(round); }, Qt::QueuedConnection);
}

void SerialComDev::runPolls(quint32 round)
{
    while (const auto poll = m_polls.take(round)) {
        QElapsedTimer timer;
        timer.start();
        switch (poll->kind) {
        case PollQueue::Position:
            slot_getCurrentPos(poll->axis);
            break;
        case PollQueue::State:
            slot_getCurrentState(poll->axis);
            break;
        case PollQueue::Beat:
            slot_heartBeat();
            break;
        case PollQueue::ConsoleBeat:
            slot_consoleHeartBeat();
            break;
        }
        // When the stop was emitted, the call in flight had not yet taken long enough to count as slow.
        if (m_iStopsWaiting > 0 && timer.elapsed() > slowCall.count())
            m_polls.drop(m_uStopRound);
    }
    // Where polls fill the link, low priority would never have its turn.
    QMutexLocker lock(&m_behindMutex);
    const bool isOverdue = !m_behind.empty() && m_behind.front().patience.hasExpired();
    lock.unlock();
    if (isOverdue && m_iStopsWaiting == 0)
        runNextBehind();
}

SerialComDev::~SerialComDev()
{
    endStopThread(QDeadlineTimer::Forever);
    if (!m_bOpened)
        return;
    qDebug() << "~SerialComDev";
    closeOpenDevice(QDeadlineTimer::Forever);
}

/** False when it hangs in a library call beyond the deadline. */
bool SerialComDev::endStopThread(QDeadlineTimer deadline)
{
    if (!m_stopThread.end(deadline))
        return false;
    LibraryLock::retractAll(&m_stopThread); // its stops are no longer sent
    return true;
}

int SerialComDev::open(int id)
{
    const LibraryLock library;
    library->addDev(id);
    const int result = library->openTSDevice(id);
    if (result < 0) {
        library->removeDev(id);
        return result;
    }
    m_iDeviceId = id;
    m_bLeft = false;
    m_iAxisCount = 0;
    m_reports.clear();
    m_bRockerOn = true; // for all that is known: a stop switches it off until it has been read
    return id;
}

int SerialComDev::close()
{
    closeWithin(QDeadlineTimer::Forever);
    return 0;
}

bool SerialComDev::tryClose(int limitMs)
{
    return closeWithin(QDeadlineTimer(limitMs));
}

bool SerialComDev::closeAtExit(int limitMs)
{
    m_bLeft = true;
    return tryClose(limitMs);
}

bool SerialComDev::closeWithin(QDeadlineTimer deadline)
{
    if (waitForRequests(deadline) && closeOpenDevice(deadline))
        return true;
    qDebug() << "SerialComDev: a library call still runs, the device is left open";
    return false;
}

bool SerialComDev::closeOpenDevice(QDeadlineTimer deadline)
{
    const LibraryLock library(int(deadline.remainingTime()));
    if (!library.isLocked())
        return false;
    if (m_iDeviceId != 0) {
        library->closeTSDevice(m_iDeviceId);
        library->removeDev(m_iDeviceId);
    }
    m_iDeviceId = 0;
    m_bOpened = false;
    return true;
}

/** Waits until the worker has run what was requested before, so that no close overtakes a stop. */
bool SerialComDev::waitForRequests(QDeadlineTimer deadline)
{
    if (QThread::currentThread() == thread() || !thread()->isRunning())
        return true;
    // Shared with the worker, which may release it long after this thread has given up.
    const auto reached = QSharedPointer<QSemaphore>::create();
    QMetaObject::invokeMethod(
        this, [reached] { reached->release(); }, Qt::QueuedConnection);
    return reached->tryAcquire(1, int(deadline.remainingTime()));
}

int SerialComDev::setMotorEnable(int axis, int enable)
{
    const LibraryLock library;
    return library->setMotorEnable(m_iDeviceId, axis, enable);
}

int SerialComDev::setRockerEnable(int enable)
{
    const LibraryLock library;
    const int result = library->setRockerEnable(m_iDeviceId, enable);
    if (result >= 0)
        m_bRockerOn = enable != 0;
    return result;
}

int SerialComDev::getRockerEnable()
{
    const LibraryLock library;
    const int enabled = library->getRockerEnable(m_iDeviceId);
    if (enabled >= 0)
        m_bRockerOn = enabled != 0;
    return enabled;
}

int SerialComDev::setPosConpenEnable(int axis, int enable)
{
    const LibraryLock library;
    const int result = library->setPosConpenEnable(m_iDeviceId, axis, enable);
    if (result >= 0)
        noteParametersWritten(axis);
    return result;
}

int SerialComDev::getPosConpenEnable(int axis)
{
    const LibraryLock library;
    return library->getPosConpenEnable(m_iDeviceId, axis);
}

int SerialComDev::getTriggerState(int axis, TriggerState &state)
{
    const LibraryLock library;
    const int in = library->getTriggerInEnable(m_iDeviceId, axis);
    if (in < 0)
        return in;
    const int out = library->getTriggerOutEnable(m_iDeviceId, axis);
    if (out < 0)
        return out;
    // A failure is a negative whole number, and so are many steps. The enables have just been read, so the link is
    // there: a step reads the same again, a passing failure does not.
    const double step = library->getTriggerStep(m_iDeviceId, axis);
    const bool isStatus = step < 0 && step >= std::numeric_limits<int>::min() && step == std::floor(step);
    if (isStatus && step != library->getTriggerStep(m_iDeviceId, axis))
        return int(step);
    state = {in != 0, out != 0, step};
    return 0;
}

int SerialComDev::getRuningState(int axis, MotorStageState &state)
{
    state = {};
    const LibraryLock library;
    return library->getRuningState(m_iDeviceId, axis, &state);
}

int SerialComDev::getDevAxisCount()
{
    const LibraryLock library;
    const int count = library->getDevAxisCount(m_iDeviceId);
    noteAxisCount(count);
    return count;
}

QString SerialComDev::getMotorModelName(int axis)
{
    LibraryText text;
    const LibraryLock library;
    return library->getMotorModelName(m_iDeviceId, axis, text.data(), text.length()) < 0 ? QString() : text.toString();
}

int SerialComDev::setMotorModelName(int axis, const QString &name)
{
    const QByteArray bytes = name.toLatin1();
    const LibraryLock library;
    const int result = library->setMotorModelName(m_iDeviceId, axis, bytes.constData(), bytes.size());
    if (result >= 0)
        noteParametersWritten(axis);
    return result;
}

int SerialComDev::getMotorParams(int axis, MotorParams &params)
{
    const LibraryLock library;
    return library->getMotorParams(m_iDeviceId, axis, &params);
}

int SerialComDev::setMotorParams(int axis, const MotorParams &params)
{
    const LibraryLock library;
    const int result = library->setMotorParams(m_iDeviceId, axis, params);
    if (result >= 0)
        noteParametersWritten(axis);
    return result;
}

QString SerialComDev::getDevSoftVersion()
{
    LibraryText text;
    const LibraryLock library;
    return library->getDevSoftVersion(m_iDeviceId, text.data(), text.length()) < 0 ? QString() : text.toString();
}

bool SerialComDev::readMotorAutoDetect(int axis, int *code)
{
    const LibraryLock library;
    if (library->getMotorAutoDetect(m_iDeviceId, axis, code) < 0)
        return false;
    qDebug() << "readMotorAutoDetect " << *code;
    const QMutexLocker registry(&m_registryMutex);
    m_autoDetect.insert(axis, *code);
    return true;
}

int SerialComDev::getAxisAutoDetect(int axis) const
{
    const QMutexLocker registry(&m_registryMutex);
    return m_autoDetect.value(axis);
}

int SerialComDev::readAxisParams(int axis)
{
    const LibraryLock library;
    MotorDevInfo info;
    info.axis = axis;
    int step = 0;
    for (const AxisRead read : axisReads) {
        --step;
        if (!read(*library, m_iDeviceId, axis, info))
            return step;
    }
    const QMutexLocker registry(&m_registryMutex);
    m_axisInfo.insert(axis, info);
    qDebug() << "readAxisParams";
    return 0;
}

MotorDevInfo SerialComDev::axisInfo(int axis) const
{
    const QMutexLocker registry(&m_registryMutex);
    return m_axisInfo.value(axis);
}

QString SerialComDev::getAxisSerialNo(int axis) const
{
    const MotorDevInfo info = axisInfo(axis);
    qDebug() << "getAxisSerialNo";
    return info.serialNumber;
}

QString SerialComDev::getAxisModelName(int axis) const
{
    return axisInfo(axis).modelName;
}
double SerialComDev::getAxisCurrentPos(int axis) const
{
    return axisInfo(axis).currentPos;
}
double SerialComDev::getAxisSpeed(int axis) const
{
    return axisInfo(axis).speed;
}
double SerialComDev::getAxisAcceleration(int axis) const
{
    return axisInfo(axis).acceleration;
}
double SerialComDev::getAxisRelativeDisp(int axis) const
{
    return axisInfo(axis).relativeDisp;
}
double SerialComDev::getAxisTargetPos(int axis) const
{
    return axisInfo(axis).targetPos;
}
bool SerialComDev::getAxisRelativeDispEnable(int axis) const
{
    return axisInfo(axis).relativeDispEnable;
}
double SerialComDev::getAxisJogStep(int axis) const
{
    return axisInfo(axis).jogStep;
}
int SerialComDev::getAxisJogDelay(int axis) const
{
    return axisInfo(axis).jogDelay;
}
int SerialComDev::getAxisJogCount(int axis) const
{
    return axisInfo(axis).jogCount;
}
int SerialComDev::getAxisCircleCount(int axis) const
{
    return axisInfo(axis).circleCount;
}
double SerialComDev::getAxisCircleDisp(int axis) const
{
    return axisInfo(axis).circleDisp;
}
int SerialComDev::getAxisCircleDelay(int axis) const
{
    return axisInfo(axis).circleDelay;
}

void SerialComDev::announceAnew(int axis)
{
    m_positions.forget(axis);
    m_states.forget(axis);
}

/** Keeps what is known of an axis in step with a write that the controller accepted. */
template <typename Change>
void SerialComDev::updateAxisInfo(int axis, Change change)
{
    const QMutexLocker registry(&m_registryMutex);
    const auto info = m_axisInfo.find(axis);
    if (info != m_axisInfo.end())
        change(*info);
}

/** Whether a sequence of calls goes on; if not, its failure is reported. */
bool SerialComDev::accepted(int result, int axis, OperationType failureType, const QString &failure)
{
    if (result >= 0)
        return true;
    emit signal_showOperationMsg(axis, OPERATION_STATE_FAIL, failureType, withWords(failure, result));
    return false;
}

/** Reports a single call whose text is the same whether it succeeded or failed. */
void SerialComDev::report(const MotionCommand &command, const QString &text)
{
    noteCommand(command);
    emit signal_showOperationMsg(
        command.axis, command.isAccepted() ? OPERATION_STATE_OK : OPERATION_STATE_FAIL, command.type,
        withWords(text, command.status));
}

/** `text`, and behind it the status with its words, where it has any. */
QString SerialComDev::withWords(const QString &text, int status) const
{
    const QString words = statusText(status);
    return words == QString::number(status) ? text : text + QLatin1Char(' ') + words;
}

QString SerialComDev::statusText(int status) const
{
    return StatusWords::numberAndWords(status, m_iAxisCount > 0 ? m_iAxisCount.load() : usualAxes);
}

/** Hands what the library has to say of an axis to whoever listens; that of others waits until they are polled. */
void SerialComDev::tellMessages(int axis)
{
    for (MoverMessage message; MotionLibrary::inUse().takeMessage(&message);) {
        qCInfo(diagnostics, "controller %d: %s", message.id, message.text);
        if (message.id != m_iDeviceId)
            continue;
        m_feed.tell(
            [&message](AnswerListener &listener, AnswerListener::Time at) { listener.messageHeard(message, at); });
        const int count = m_iAxisCount > 0 ? m_iAxisCount.load() : usualAxes;
        for (int one = 0; one < count; ++one) {
            if (message.axis >= 0 && message.axis != one)
                continue;
            m_messages.append(message);
            m_messages.last().axis = one;
        }
    }
    while (m_messages.size() > mostMessages)
        m_messages.removeFirst();
    for (int i = 0; i < m_messages.size();) {
        if (m_messages.at(i).axis != axis) {
            ++i;
            continue;
        }
        const QString words = StatusWords::of(m_messages.takeAt(i));
        if (!words.isEmpty())
            emit signal_showOperationMsg(axis, OPERATION_STATE_NONE, OPERATION_TYPE_WARNING, words);
    }
}

void SerialComDev::slot_getCurrentPos(int Axis)
{
    const LibraryLock library;
    if (m_bLeft)
        return;
    tellMessages(Axis);
    double position = 0;
    if (readPosition(library, Axis, &position) < 0)
        reportFailedPoll(Axis, tr("读取当前位置出错"));
    else
        emit signal_updateCurrentPos(Axis, position);
}

/** Tells the listeners. Returns the library's status. */
int SerialComDev::readPosition(const LibraryLock &library, int axis, double *position)
{
    int status = 0;
    *position = library->getCurrentPos(m_iDeviceId, axis, &status);
    if (status < 0)
        return status;
    // Reports of the controller are told once, with the time that they are of.
    MoverReport report{};
    const bool fromReport = MotionLibrary::inUse().lastReport(m_iDeviceId, &report);
    if (!fromReport || std::exchange(m_reports[axis], report.number) != report.number) {
        const auto age = std::chrono::duration_cast<AnswerListener::Time::duration>(
            std::chrono::duration<double>(fromReport ? report.age : 0));
        m_feed.tell([&](AnswerListener &listener, AnswerListener::Time at) {
            listener.positionAnswered(axis, *position, at - age);
        });
    }
    return status;
}

void SerialComDev::setCapture(const QVector<int> &axes, int hz)
{
    QMetaObject::invokeMethod(this, [this, axes, hz] {
        const quint32 generation = m_capture.generation + 1;
        m_capture = {};
        m_capture.generation = generation;
        if (axes.isEmpty() || hz <= 0)
            return;
        m_capture.axes = axes;
        m_capture.interval = std::chrono::microseconds(1000000 / hz);
        m_capture.due = std::chrono::steady_clock::now();
        capture(generation);
    });
}

/** Reads one axis and comes again for the next: what was requested meanwhile is done in between. */
void SerialComDev::capture(quint32 generation)
{
    using Clock = std::chrono::steady_clock;
    if (generation != m_capture.generation || m_iDeviceId == 0 || m_bLeft)
        return;
    const auto again = [this, generation](std::chrono::milliseconds delay) {
        QTimer::singleShot(delay, Qt::PreciseTimer, this, [this, generation] { capture(generation); });
    };
    if (m_iCommandsWaiting > 0 || m_iStopsWaiting > 0) {
        again(std::chrono::milliseconds(0));
        return;
    }
    const int axis = m_capture.axes.at(m_capture.next);
    bool failed = false;
    {
        const LibraryLock library;
        const auto begin = Clock::now();
        double position = 0;
        failed = readPosition(library, axis, &position) < 0;
        m_capture.spent += Clock::now() - begin;
    }
    if (failed)
        m_feed.tell([axis](AnswerListener &listener, AnswerListener::Time at) { listener.pollFailed(axis, at); });
    m_capture.next = (m_capture.next + 1) % m_capture.axes.size();
    if (m_capture.next != 0) {
        again(std::chrono::milliseconds(0));
        return;
    }
    // The link is left to others for as long as it was used, and a link that is lost is asked ten times a second.
    const auto now = Clock::now();
    const auto rest =
        std::max<Clock::duration>(std::exchange(m_capture.spent, {}), std::chrono::milliseconds(failed ? 100 : 0));
    m_capture.due = std::max(m_capture.due + m_capture.interval, now + rest);
    again(std::chrono::round<std::chrono::milliseconds>(m_capture.due - now));
}

void SerialComDev::slot_getCurrentState(int Axis)
{
    const LibraryLock library;
    if (m_bLeft)
        return;
    MotorStageState state = {};
    if (library->getRuningState(m_iDeviceId, Axis, &state) < 0) {
        reportFailedPoll(Axis, tr("获取设备状态出错"));
        return;
    }
    m_feed.tell([&](AnswerListener &listener, AnswerListener::Time at) { listener.stateAnswered(Axis, state, at); });
    emit signal_updateDevState(Axis, state);
}

void SerialComDev::reportFailedPoll(int axis, const QString &text)
{
    m_feed.tell([axis](AnswerListener &listener, AnswerListener::Time at) { listener.pollFailed(axis, at); });
    emit signal_showOperationMsg(axis, OPERATION_STATE_FAIL, OPERATION_TYPE_GENERAL, text);
}

void SerialComDev::slot_setSpeedParams(int Axis, double acc, double speed)
{
    const LibraryLock library;
    if (!accepted(library->setSpeed(m_iDeviceId, Axis, speed), Axis, OPERATION_TYPE_GENERAL, tr("设置速度参数出错")))
        return;
    updateAxisInfo(Axis, [speed](MotorDevInfo &info) { info.speed = speed; });
    if (!accepted(
            library->setAcceleration(m_iDeviceId, Axis, acc), Axis, OPERATION_TYPE_GENERAL, tr("设置加速度参数出错")))
        return;
    updateAxisInfo(Axis, [acc](MotorDevInfo &info) { info.acceleration = acc; });
    emit signal_showOperationMsg(
        Axis, OPERATION_STATE_OK, OPERATION_TYPE_GENERAL,
        tr("设置参数，速度：%1，加速度：%2").arg(shown(speed), shown(acc)));
}

void SerialComDev::slot_setRelativeDispParams(int Axis, double disp, bool enable)
{
    const LibraryLock library;
    if (!accepted(
            library->setRelativeDisp(m_iDeviceId, Axis, disp), Axis, OPERATION_TYPE_GENERAL,
            tr("设置相对位移参数出错")))
        return;
    updateAxisInfo(Axis, [disp](MotorDevInfo &info) { info.relativeDisp = disp; });
    if (!accepted(
            library->setRelativeDispEnable(m_iDeviceId, Axis, enable), Axis, OPERATION_TYPE_GENERAL,
            tr("设置相对位移使能参数出错")))
        return;
    updateAxisInfo(Axis, [enable](MotorDevInfo &info) { info.relativeDispEnable = enable; });
    emit signal_showOperationMsg(
        Axis, OPERATION_STATE_OK, OPERATION_TYPE_DISPLACEMENT,
        tr("设置参数，相对位移：%1，使能：%2").arg(shown(disp), QString::number(int(enable))));
}

void SerialComDev::slot_setAbsoluteDispParams(int Axis, double disp)
{
    const LibraryLock library;
    if (!accepted(
            library->setTargetPos(m_iDeviceId, Axis, disp), Axis, OPERATION_TYPE_GENERAL, tr("设置目标位置参数出错")))
        return;
    updateAxisInfo(Axis, [disp](MotorDevInfo &info) { info.targetPos = disp; });
    emit signal_showOperationMsg(
        Axis, OPERATION_STATE_OK, OPERATION_TYPE_TARGET, tr("设置参数，目标位置：%1").arg(shown(disp)));
}

void SerialComDev::slot_setJogParams(int Axis, double step, int count, int delay)
{
    constexpr OperationType type = OPERATION_TYPE_JOG_PARAMS;
    const LibraryLock library;
    if (!accepted(library->setJogStep(m_iDeviceId, Axis, step), Axis, type, tr("设置JOG步长失败")))
        return;
    updateAxisInfo(Axis, [step](MotorDevInfo &info) { info.jogStep = step; });
    if (!accepted(library->setJogCount(m_iDeviceId, Axis, count), Axis, type, tr("设置JOG次数失败")))
        return;
    updateAxisInfo(Axis, [count](MotorDevInfo &info) { info.jogCount = count; });
    if (!accepted(library->setJogDelay(m_iDeviceId, Axis, delay), Axis, type, tr("设置JOG延时时间失败")))
        return;
    updateAxisInfo(Axis, [delay](MotorDevInfo &info) { info.jogDelay = delay; });
    emit signal_showOperationMsg(
        Axis, OPERATION_STATE_OK, type,
        tr("JOG步长：%1, JOG次数：%2, JOG延时:%3").arg(shown(step), QString::number(count), QString::number(delay)));
}

void SerialComDev::slot_setCircleParams(int Axis, int count, double disp, int delay)
{
    constexpr OperationType type = OPERATION_TYPE_LOOP_PARAMS;
    const LibraryLock library;
    if (!accepted(library->setCircleCount(m_iDeviceId, Axis, count), Axis, type, tr("设置循环次数失败")))
        return;
    updateAxisInfo(Axis, [count](MotorDevInfo &info) { info.circleCount = count; });
    if (!accepted(library->setCircleDisp(m_iDeviceId, Axis, disp), Axis, type, tr("设置循环位移量失败")))
        return;
    updateAxisInfo(Axis, [disp](MotorDevInfo &info) { info.circleDisp = disp; });
    if (!accepted(library->setCircleDelay(m_iDeviceId, Axis, delay), Axis, type, tr("设置循环停留时间失败")))
        return;
    updateAxisInfo(Axis, [delay](MotorDevInfo &info) { info.circleDelay = delay; });
    emit signal_showOperationMsg(
        Axis, OPERATION_STATE_OK, type, tr("循环次数：%1, 循环位移：%2").arg(QString::number(count), shown(disp)));
}

void SerialComDev::slot_setTriggerParams(int Axis, int intput, int output)
{
    constexpr OperationType type = OPERATION_TYPE_LOOP_PARAMS;
    const LibraryLock library;
    if (accepted(
            library->setTriggerInEnable(m_iDeviceId, Axis, intput), Axis, type,
            tr("设置触发输入参数失败，轴:%1").arg(Axis)))
        accepted(
            library->setTriggerOutEnable(m_iDeviceId, Axis, output), Axis, type,
            tr("设置触发输出参数失败，轴:%1").arg(Axis));
}

void SerialComDev::slot_setTriggerInDisp(int Axis, double disp)
{
    const LibraryLock library;
    accepted(
        library->setTriggerStep(m_iDeviceId, Axis, disp), Axis, OPERATION_TYPE_LOOP_PARAMS,
        tr("设置触发输入位移量失败，轴:%1").arg(Axis));
}

void SerialComDev::slot_setMotorConfig(int ID, QString model, QString fileName)
{
    // The controller has no operation for it: the request is accepted and does nothing.
    Q_UNUSED(ID)
    Q_UNUSED(model)
    Q_UNUSED(fileName)
}

void SerialComDev::stopAll()
{
    if (m_iDeviceId == 0)
        return;
    ++m_uStopAlls;
    ++m_iStoppingAll;
    LibraryLock::announce(LibraryLock::Urgency::StopAll, &m_stopThread);
    m_stopThread.press();
}

/** Runs in the thread that only stops. */
void SerialComDev::sendStops()
{
    {
        const LibraryLock library;
        const int id = m_iDeviceId;
        if (id != 0 && m_bRockerOn && library->setRockerEnable(id, 0) >= 0)
            m_bRockerOn = false;
        const int count = m_iAxisCount > 0 ? std::min(m_iAxisCount.load(), maxAxes) : usualAxes;
        for (int axis = 0; id != 0 && axis < count; ++axis)
            report(
                {axis, OPERATION_TYPE_STOP, 0, MotionCommand::StopAll, library->stopRuning(id, axis)}, tr("停止运行"));
    }
    LibraryLock::retract(LibraryLock::Urgency::StopAll);
    --m_iStoppingAll;
    emit signal_stopAllDone();
}

void SerialComDev::noteCommand(const MotionCommand &command)
{
    m_feed.tell([&](AnswerListener &listener, AnswerListener::Time at) { listener.commandAnswered(command, at); });
}

void SerialComDev::noteParametersWritten(int axis)
{
    m_feed.tell([&](AnswerListener &listener, AnswerListener::Time at) { listener.parametersWritten(axis, at); });
}

/**
 * Whether somebody else has the axis, or everything was stopped after a start was asked for. `stopsBefore` is how often
 * that had happened when it was asked for; without it (nobody asked through a request) the start is never cancelled.
 * The caller holds the lock.
 */
bool SerialComDev::isCancelled(std::optional<quint32> stopsBefore, int axis, OperationType type, const QString &text)
{
    if (!stopsBefore)
        return false;
    if (isRefused(axis, type))
        return true;
    if (*stopsBefore == m_uStopAlls)
        return false;
    emit signal_showOperationMsg(axis, OPERATION_STATE_CANCELLED, type, text);
    return true;
}

/** Whether the axis is reserved, which is told then. Of requests only: the holder's orders take another way. */
bool SerialComDev::isRefused(int axis, OperationType type)
{
    if (!isReserved(axis))
        return false;
    emit signal_showOperationMsg(axis, OPERATION_STATE_CANCELLED, type, tr("该轴正由序列使用"));
    return true;
}

void SerialComDev::reserve(const QVector<int> &axes)
{
    quint32 bits = 0;
    for (const int axis : axes)
        bits |= 1U << axis;
    m_uReserved = bits;
}

int SerialComDev::obey(const LibraryLock &library, const AxisOrder &order)
{
    const double value = order.value;
    int status = 0;
    switch (order.kind) {
    case AxisOrder::Speed:
        status = library->setSpeed(m_iDeviceId, order.axis, value);
        if (status >= 0)
            updateAxisInfo(order.axis, [value](MotorDevInfo &info) { info.speed = value; });
        break;
    case AxisOrder::Target:
        status = library->setTargetPos(m_iDeviceId, order.axis, value);
        if (status >= 0)
            updateAxisInfo(order.axis, [value](MotorDevInfo &info) { info.targetPos = value; });
        break;
    case AxisOrder::Move:
        status = library->startMove(m_iDeviceId, order.axis);
        noteCommand({order.axis, OPERATION_TYPE_MOVE, 0, MotionCommand::Holder, status});
        break;
    case AxisOrder::Home:
        status = library->home(m_iDeviceId, order.axis);
        noteCommand({order.axis, OPERATION_TYPE_HOME, 0, MotionCommand::Holder, status});
        break;
    }
    return status;
}

void SerialComDev::carryOut(int ticket, const QVector<AxisOrder> &orders, std::function<bool()> areWanted)
{
    ++m_iCommandsWaiting;
    QMetaObject::invokeMethod(
        this,
        [this, ticket, orders, areWanted = std::move(areWanted), stops = m_uStopAlls.load()] {
            int axis = -1;
            int status = 0;
            bool isWanted = true;
            for (const AxisOrder &order : orders) {
                const LibraryLock library; // for each call: a stop waits for one at most
                isWanted = areWanted() && stops == m_uStopAlls && m_iDeviceId != 0 && !m_bLeft;
                if (!isWanted)
                    break;
                axis = order.axis;
                status = obey(library, order);
                if (status < 0)
                    break;
            }
            --m_iCommandsWaiting;
            if (isWanted)
                emit signal_ordersDone(ticket, axis, status);
        },
        Qt::QueuedConnection);
    m_polls.endRound();
}

void SerialComDev::watch(int ticket, const QVector<int> &axes)
{
    QMetaObject::invokeMethod(
        this,
        [this, ticket, axes] {
            for (const int axis : axes) {
                if (m_iDeviceId == 0 || m_bLeft)
                    return;
                MotorStageState state = {};
                double position = 0;
                int status = 0;
                {
                    const LibraryLock library;
                    status = library->getRuningState(m_iDeviceId, axis, &state);
                    if (status >= 0)
                        m_feed.tell([&](AnswerListener &listener, AnswerListener::Time at) {
                            listener.stateAnswered(axis, state, at);
                        });
                }
                if (status >= 0) {
                    const LibraryLock library;
                    status = readPosition(library, axis, &position);
                }
                if (status < 0)
                    m_feed.tell(
                        [axis](AnswerListener &listener, AnswerListener::Time at) { listener.pollFailed(axis, at); });
                emit signal_axisWatched(ticket, axis, status, state, position);
            }
        },
        Qt::QueuedConnection);
}

void SerialComDev::slot_stopMotor(int Axis)
{
    const LibraryLock library;
    const int result = library->stopRuning(m_iDeviceId, Axis); // before its text is looked up
    report({Axis, OPERATION_TYPE_STOP, 0, MotionCommand::Request, result}, tr("停止运行"));
}

void SerialComDev::slot_startMotor(int Axis, int mode)
{
    start(Axis, mode, std::nullopt);
}

void SerialComDev::start(int Axis, int mode, std::optional<quint32> stopsBefore)
{
    const auto *start = std::find_if(
        std::begin(startModes), std::end(startModes), [mode](const StartMode &row) { return row.mode == mode; });
    if (start == std::end(startModes))
        return;
    const LibraryLock library;
    if (isCancelled(stopsBefore, Axis, start->type, tr(start->text)))
        return;
    const int result = start->start(*library, m_iDeviceId, Axis);
    report({Axis, start->type, start->direction, MotionCommand::Request, result}, tr(start->text));
}

void SerialComDev::slot_homeMotor(int Axis)
{
    home(Axis, std::nullopt);
}

void SerialComDev::home(int Axis, std::optional<quint32> stopsBefore)
{
    const LibraryLock library;
    if (isCancelled(stopsBefore, Axis, OPERATION_TYPE_HOME, tr("电机复位")))
        return;
    const int result = library->home(m_iDeviceId, Axis);
    report({Axis, OPERATION_TYPE_HOME, 0, MotionCommand::Request, result}, tr("电机复位"));
}

void SerialComDev::slot_enableMotor(int Axis, bool enable)
{
    setMotorEnable(Axis, enable);
}

void SerialComDev::slot_setRockerEnabled(bool b)
{
    setRockerEnable(b);
}

void SerialComDev::slot_setPosConpenEnable(int Axis, bool b)
{
    setPosConpenEnable(Axis, b);
}

void SerialComDev::slot_heartBeat()
{
    const LibraryLock library;
    if (m_bLeft)
        return;
    CONTROLER_STATE state = {};
    const int result = library->getRockerInfo(m_iDeviceId, &state);
    emit signal_heartBeatInfo(state, result);
}

void SerialComDev::slot_consoleHeartBeat()
{
    const LibraryLock library;
    if (m_bLeft)
        return;
    CONTROLER_STATE state = {};
    const int result = library->getRockerInfo(m_iDeviceId, &state);
    emit signal_consoleHeartBeatInfo(state, result);
}

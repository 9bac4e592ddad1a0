// SPDX-License-Identifier: MIT
#include "session/ControlSession.h"

#include "device/LibraryLock.h"
#include "device/LibraryText.h"
#include "device/MotionLibrary.h"
#include "device/SerialComDev.h"
#include "session/MoveWatchdog.h"
#include "session/Recorder.h"
#include "session/SequenceRunner.h"

#include <QWeakPointer>

#include <algorithm>

namespace {

constexpr int maxControllers = 10;
constexpr int maxAxes = 8;               // more than any controller has
constexpr int identifiedStage = 2;       // the chip's code of a stage that names itself
constexpr int disconnectLimitMs = 30000; // longer than all the calls that can wait on a working link
constexpr int probeLimitMs = 5000;       // longer than any one call

struct ControllerList {
    int ids[maxControllers] = {};
    int count = 0; // or the library's negative status

    void read(const LibraryLock &library) { count = library->listTSMotorControlerDevices(ids, maxControllers); }
    const int *begin() const { return ids; }
    const int *end() const { return ids + std::clamp(count, 0, maxControllers); }
};

/** Null when it cannot be read. */
QString readSerialNumber(int id)
{
    LibraryText text;
    const LibraryLock library;
    return library->getDevSerialNumber(id, text.data(), text.length()) < 0 ? QString() : text.toString();
}

/**
 * Serial number of a controller that is not open; null when it does not answer. Leaves nothing added. Takes the lock
 * for each call separately, so that the worker never waits for more than one call. `failure`: why it was not opened.
 */
QString probe(int id, int *failure)
{
    LibraryLock()->addDev(id);
    const int opened = LibraryLock()->openTSDevice(id);
    QString serialNumber = opened >= 0 ? readSerialNumber(id) : QString();
    if (opened < 0)
        *failure = opened;
    LibraryLock()->removeDev(id);
    return serialNumber;
}

} // namespace

QSharedPointer<ControlSession> ControlSession::instance()
{
    static QWeakPointer<ControlSession> inUse;
    QSharedPointer<ControlSession> session = inUse.toStrongRef();
    if (!session) {
        registerDeviceRecords(); // before the first connection that carries them
        session.reset(new ControlSession);
        inUse = session;
    }
    return session;
}

ControlSession::ControlSession()
    : m_worker(SerialComDev::instance())
    , m_recorder(std::make_unique<Recorder>())
    , m_watchdog(
          std::make_unique<MoveWatchdog>([worker = m_worker.data()](int axis) { return worker->axisInfo(axis); }))
    , m_told(state())
    , m_iDeviceId(m_worker->isOpened() ? m_worker->deviceId() : 0)
{
    m_worker->answers().add(this);
    m_worker->answers().add(m_recorder.get());
    m_worker->answers().add(m_watchdog.get());
    m_sequences = std::make_unique<SequenceRunner>(this);
    if (isConnected())
        m_recorder->begin(m_sSerialNumber);
}

ControlSession::~ControlSession()
{
    m_sequences.reset();
    m_worker->answers().remove(m_recorder.get());
    m_worker->answers().remove(m_watchdog.get());
    m_worker->answers().remove(this);
}

const MotionLibrary &ControlSession::library()
{
    return MotionLibrary::inUse();
}

ControlSession::State ControlSession::state() const
{
    if (m_bConnecting)
        return State::Connecting;
    return m_worker->isOpened() ? State::Connected : State::Disconnected;
}

void ControlSession::change(bool connecting, bool opened)
{
    m_bConnecting = connecting;
    m_worker->setOpened(opened);
    if (state() == m_told)
        return;
    m_told = state();
    if (m_told == State::Connected) {
        m_recorder->begin(m_sSerialNumber);
    } else if (m_told == State::Disconnected) {
        m_recorder->end();
    }
    emit stateChanged();
}

// ---- Controller ----------------------------------------------------------------------------------------------------

std::optional<QVector<ControlSession::Controller>> ControlSession::findControllers()
{
    ControllerList listed;
    {
        const LibraryLock library(probeLimitMs);
        if (!library.isLocked())
            return std::nullopt;
        listed.read(library);
    }
    QVector<Controller> found;
    m_iProbeFailure = 0;
    for (const int id : listed) {
        const QString serialNumber = id == m_iDeviceId ? m_sSerialNumber : probe(id, &m_iProbeFailure);
        if (!serialNumber.isNull())
            found.append({id, serialNumber});
    }
    return found;
}

int ControlSession::connectTo(const Controller &controller)
{
    const bool wasOpened = m_worker->isOpened();
    change(true, wasOpened);
    const int result = m_worker->open(controller.id);
    if (result < 0) {
        change(false, wasOpened);
        return result;
    }
    m_iDeviceId = controller.id;
    m_sSerialNumber = controller.serialNumber;
    change(false, true);
    return result;
}

bool ControlSession::disconnectController()
{
    m_sequences->abort(SequenceEnd::Disconnected); // its stops go ahead of the close
    if (!m_worker->tryClose(disconnectLimitMs))
        return false;
    m_iDeviceId = 0;
    clearAxes();
    change(false, false);
    return true;
}

void ControlSession::leave(int limitMs)
{
    m_sequences->abort(SequenceEnd::Quit);
    m_worker->closeAtExit(limitMs);
}

std::optional<bool> ControlSession::isPortLost() const
{
    if (m_iDeviceId == 0)
        return false;
    const LibraryLock library(0);
    if (!library.isLocked())
        return std::nullopt;
    ControllerList listed;
    listed.read(library);
    // On purpose, an empty list does not count as a loss.
    if (listed.count == 0)
        return false;
    return std::find(listed.begin(), listed.end(), m_iDeviceId) == listed.end();
}

bool ControlSession::reconnect(int limitMs)
{
    if (m_iDeviceId == 0 || !m_worker->tryClose(limitMs))
        return false;
    change(true, m_worker->isOpened());
    if (m_worker->open(m_iDeviceId) < 0)
        return false;
    if (readSerialNumber(m_iDeviceId) != m_sSerialNumber) { // another one has its place
        m_worker->close();
        return false;
    }
    change(false, true);
    return true;
}

// ---- Axes ----------------------------------------------------------------------------------------------------------

void ControlSession::beginSetUp()
{
    m_iAxisCount = m_worker->getDevAxisCount();
}

ControlSession::AxisSetUp ControlSession::setUpAxis(int index)
{
    AxisSetUp axis;
    int code = 0;
    if (!m_worker->readMotorAutoDetect(index, &code)) {
        axis.outcome = AxisSetUp::ChipNotRead;
    } else if (code == identifiedStage) {
        axis.modelName = m_worker->getMotorModelName(index);
        if (!axis.modelName.isNull()) {
            axis.step = m_worker->readAxisParams(index);
            axis.outcome = axis.step < 0 ? AxisSetUp::ParamsNotRead : AxisSetUp::Ready;
        }
    }
    if (axis.outcome == AxisSetUp::Ready) {
        m_worker->getMotorParams(index, axis.stage);
        addAxis(describe(index, axis.modelName, axis.stage));
    }
    // A count that cannot be true: one failure is told, not one for each axis.
    axis.isLast = index + 1 >= m_iAxisCount || (axis.failed() && index >= maxAxes);
    return axis;
}

void ControlSession::readFirmwareVersion()
{
    m_sFirmwareVersion = m_worker->getDevSoftVersion();
}

bool ControlSession::readJoystick()
{
    return m_worker->getRockerEnable() > 0;
}

int ControlSession::readAxis(int index)
{
    return m_worker->readAxisParams(index);
}

QSharedPointer<const ControlAxis> ControlSession::addAxis(const AxisDescription &description)
{
    AxisDescription whole = description;
    // Boards home all axes together, and lose their position by more than a lost link.
    whole.tellsHoming = library().mark() == QLatin1String("grbl");
    const QSharedPointer<ControlAxis> before = find(description.index);
    const auto axis =
        before ? QSharedPointer<ControlAxis>::create(whole, *before) : QSharedPointer<ControlAxis>::create(whole);
    {
        const QMutexLocker lock(&m_mutex);
        m_axes.insert(description.index, axis);
    }
    m_recorder->describe(whole);
    m_watchdog->describe(whole);
    if (!before)
        emit axisAdded(description.index);
    return axis;
}

void ControlSession::noteParameters(int index, const MotorParams &params)
{
    const QSharedPointer<ControlAxis> axis = find(index);
    if (!axis)
        return;
    axis->noteParameters(params);
    m_watchdog->describe(axis->currentDescription());
    emit axisChanged(index);
}

QSharedPointer<const ControlAxis> ControlSession::axis(int index) const
{
    return find(index);
}

void ControlSession::clearAxes()
{
    m_iAxisCount = 0;
    m_watchdog->clear();
    const QMutexLocker lock(&m_mutex);
    m_axes.clear();
}

QSharedPointer<ControlAxis> ControlSession::find(int index) const
{
    const QMutexLocker lock(&m_mutex);
    return m_axes.value(index);
}

void ControlSession::positionAnswered(int axis, double position, Time at)
{
    if (const auto known = find(axis))
        known->notePosition(position, at);
}

void ControlSession::stateAnswered(int axis, const MotorStageState &state, Time at)
{
    if (const auto known = find(axis))
        known->noteState(state, at);
}

void ControlSession::pollFailed(int axis, Time at)
{
    if (const auto known = find(axis))
        known->noteFailure(at);
}

void ControlSession::commandAnswered(const MotionCommand &command, Time)
{
    if (!command.isAccepted())
        return;
    if (const auto known = find(command.axis))
        known->noteCommand(command.type == OPERATION_TYPE_HOME);
}

// ---- Stop ----------------------------------------------------------------------------------------------------------

void ControlSession::stopAll()
{
    m_worker->stopAll();
    emit stopAllRequested();
}

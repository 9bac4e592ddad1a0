// SPDX-License-Identifier: MIT
#include "session/ParameterHistory.h"

#include "device/LibraryLock.h"
#include "device/MotionLibrary.h"
#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "session/SequenceRunner.h"
#include "session/SmallFile.h"

#include <QStandardPaths>
#include <QWeakPointer>

#include <algorithm>
#include <atomic>
#include <utility>

namespace {

constexpr int tableCapacity = 256; // pairs
constexpr qint64 maxImport = 64 * 1024 * 1024;

using Library = const MoverFunctions &;

/** Nothing when it cannot be read. */
std::optional<ParameterSnapshot::Pairs> readTable(
    Library library, decltype(MoverFunctions::getPositivePosConpen) get, int id, int axis)
{
    Q_UNUSED(library)
    ParameterSnapshot::Pairs pairs(2 * tableCapacity);
    int count = tableCapacity;
    if (get(id, axis, pairs.data(), &count) < 0 || count < 0 || count > tableCapacity)
        return std::nullopt;
    pairs.resize(2 * count);
    return pairs;
}

/** One call each, so that whoever is urgent waits for one at most. */
constexpr void (*reads[])(Library library, int id, ParameterSnapshot &snapshot) = {
    [](Library library, int id, ParameterSnapshot &snapshot) {
        MotorParams params = {};
        if (library.getMotorParams(id, snapshot.axis, &params) >= 0)
            snapshot.params = params;
    },
    [](Library library, int id, ParameterSnapshot &snapshot) {
        const int on = library.getPosConpenEnable(id, snapshot.axis);
        if (on >= 0)
            snapshot.compensation = on != 0;
    },
    [](Library library, int id, ParameterSnapshot &snapshot) {
        snapshot.positive = readTable(library, library.getPositivePosConpen, id, snapshot.axis);
    },
    [](Library library, int id, ParameterSnapshot &snapshot) {
        snapshot.negative = readTable(library, library.getNegativePosConpen, id, snapshot.axis);
    },
};

} // namespace

/** Library calls that follow each other in the worker's thread. */
struct ParameterHistory::Job {
    using Step = std::function<void(Library library, int id)>;
    int id = 0;
    std::vector<Step> steps;
    size_t done = 0;
    std::function<void(bool isWhole)> then; // GUI thread
};

/** To the history, from jobs that may outlive it. */
struct ParameterHistory::Link {
    QMutex mutex;
    ParameterHistory *history = nullptr;
};

QSharedPointer<ParameterHistory> ParameterHistory::instance()
{
    static QWeakPointer<ParameterHistory> inUse;
    QSharedPointer<ParameterHistory> history = inUse.toStrongRef();
    if (!history) {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
        history.reset(new ParameterHistory(folder + QStringLiteral("/parameterHistory")));
        inUse = history;
    }
    return history;
}

ParameterHistory::ParameterHistory(const QString &folder)
    : m_session(ControlSession::instance())
    , m_worker(SerialComDev::instance())
    , m_store(folder)
    , m_link(std::make_shared<Link>())
{
    m_link->history = this;
    m_files.setMaxThreadCount(1);
    m_files.setExpiryTimeout(1000);
    connect(m_session.data(), &ControlSession::axisAdded, this, [this](int axis) {
        keep(axis, ParameterSnapshot::Connected);
    });
    connect(m_session.data(), &ControlSession::stateChanged, this, [this] {
        if (!m_session->isConnected())
            m_waiting.clear();
    });
    m_worker->answers().add(this);
}

ParameterHistory::~ParameterHistory()
{
    m_worker->answers().remove(this);
    {
        const QMutexLocker lock(&m_link->mutex);
        m_link->history = nullptr;
    }
    m_files.waitForDone();
}

bool ParameterHistory::isConnected(const ParameterSnapshot &snapshot) const
{
    return m_session->isConnected() && snapshot.controller == m_session->serialNumber() &&
           snapshot.axis < m_session->axisCount();
}

void ParameterHistory::parametersWritten(int axis, Time)
{
    QMetaObject::invokeMethod(
        this,
        [this, axis] {
            if (!m_bRestoring) // which reads back by itself
                keep(axis, ParameterSnapshot::Written);
        },
        Qt::QueuedConnection);
}

// ---- Reading -------------------------------------------------------------------------------------------------------

ParameterSnapshot ParameterHistory::blank(int axis, ParameterSnapshot::Why why) const
{
    ParameterSnapshot snapshot;
    snapshot.controller = m_session->serialNumber();
    snapshot.axis = axis;
    snapshot.why = why;
    return snapshot;
}

/** Runs the next step of the job in the worker's thread; each takes its own place in the queue. */
void ParameterHistory::run(const std::shared_ptr<Job> &job)
{
    m_worker->runBehind([job, link = m_link, worker = m_worker.data()] {
        bool isOpen = false;
        {
            const LibraryLock library;
            isOpen = job->id != 0 && worker->deviceId() == job->id;
            if (isOpen)
                job->steps[job->done++](*library, job->id);
        }
        const QMutexLocker lock(&link->mutex);
        if (!link->history)
            return;
        if (isOpen && job->done < job->steps.size())
            link->history->run(job);
        else
            QMetaObject::invokeMethod(
                link->history, [job, isOpen] { job->then(isOpen); }, Qt::QueuedConnection);
    });
}

void ParameterHistory::read(int axis, ParameterSnapshot::Why why, Then then)
{
    const auto snapshot = std::make_shared<ParameterSnapshot>(blank(axis, why));
    const auto job = std::make_shared<Job>();
    job->id = m_session->deviceId();
    for (const auto read : reads)
        job->steps.emplace_back([read, snapshot](Library library, int id) { read(library, id, *snapshot); });
    job->then = [this, snapshot, then = std::move(then)](bool isWhole) {
        // Each has a time of its own: by that it is known.
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        m_lastTime = now > m_lastTime || now < m_lastTime - 1000 ? now : m_lastTime + 1;
        snapshot->time = QDateTime::fromMSecsSinceEpoch(m_lastTime, Qt::UTC);
        if (isWhole && snapshot->why == ParameterSnapshot::Written && snapshot->params)
            m_session->noteParameters(snapshot->axis, *snapshot->params);
        then(isWhole ? snapshot.get() : nullptr);
    };
    run(job);
}

void ParameterHistory::keep(int axis, ParameterSnapshot::Why why)
{
    if (!m_session->isConnected() || axis < 0)
        return;
    const bool waits = m_waiting.contains(axis);
    if (!waits || why == ParameterSnapshot::Written)
        m_waiting.insert(axis, why);
    if (waits)
        return;
    // Its turn comes with the first step; what is asked for until then is part of it.
    const auto job = std::make_shared<Job>();
    job->id = m_session->deviceId();
    job->steps.emplace_back([](Library, int) {});
    job->then = [this, axis](bool isWhole) {
        const auto waiting = m_waiting.find(axis);
        if (waiting == m_waiting.end())
            return;
        const ParameterSnapshot::Why why = *waiting;
        m_waiting.erase(waiting);
        if (!isWhole)
            return;
        read(axis, why, [this](const ParameterSnapshot *snapshot) {
            if (snapshot)
                save(*snapshot, {});
        });
    };
    run(job);
}

void ParameterHistory::readNow(int axis)
{
    if (m_session->isConnected())
        read(axis, ParameterSnapshot::ByHand, [this](const ParameterSnapshot *snapshot) {
            if (snapshot)
                emit signal_readNow(*snapshot);
        });
}

// ---- Restoring -----------------------------------------------------------------------------------------------------

void ParameterHistory::end(const ParameterRestore &result)
{
    m_bRestoring = false;
    emit signal_restored(result);
}

void ParameterHistory::restore(const ParameterSnapshot &wanted)
{
    if (m_bRestoring || !isConnected(wanted))
        return;
    m_bRestoring = true;
    read(wanted.axis, ParameterSnapshot::BeforeRestore, [this, wanted](const ParameterSnapshot *before) {
        ParameterRestore result;
        result.wanted = wanted;
        if (!before || !before->params) {
            result.outcome = before ? ParameterRestore::NotRead : ParameterRestore::Vanished;
            end(result);
            return;
        }
        save(*before, [this, result, before = *before](bool isSaved) mutable {
            if (!isSaved)
                result.outcome = ParameterRestore::NotKept;
            else if (!isConnected(before))
                result.outcome = ParameterRestore::Vanished;
            else if (m_session->sequences().uses(before.axis))
                result.outcome = ParameterRestore::InUse;
            else {
                write(result.wanted, before);
                return;
            }
            end(result);
        });
    });
}

void ParameterHistory::write(const ParameterSnapshot &wanted, const ParameterSnapshot &before)
{
    const auto status = std::make_shared<int>(0);
    const auto job = std::make_shared<Job>();
    job->id = m_session->deviceId();
    const auto add = [&job, status](auto call) {
        job->steps.emplace_back([status, call](Library library, int id) {
            const int result = call(library, id);
            if (result < 0 && *status == 0)
                *status = result;
        });
    };
    const QVector<int> different = differences(wanted, before);
    const int axis = wanted.axis;
    const QVector<ParameterField> &fields = parameterFields();
    const auto isOfRecord = [&fields](int field) { return field < fields.size() - 3; };
    if (wanted.params && std::any_of(different.begin(), different.end(), isOfRecord)) {
        MotorParams params = *wanted.params;
        params.alignment1 = before.params->alignment1;
        params.alignment2 = before.params->alignment2;
        add([axis, params](Library library, int id) { return library.setMotorParams(id, axis, params); });
    }
    const auto addTable = [&](const auto &table, const auto &now, auto set) {
        if (table && table != now)
            add([axis, pairs = *table, set](Library library, int id) {
                return (library.*set)(id, axis, pairs.constData(), pairs.size() / 2);
            });
    };
    addTable(wanted.positive, before.positive, &MoverFunctions::setPositivePosConpen);
    addTable(wanted.negative, before.negative, &MoverFunctions::setNegativePosConpen);
    if (wanted.compensation && wanted.compensation != before.compensation)
        add([axis, on = int(*wanted.compensation)](Library library, int id) {
            return library.setPosConpenEnable(id, axis, on);
        });
    add([](Library, int) { return 0; }); // there may be nothing to write
    job->then = [this, wanted, status](bool isWhole) {
        ParameterRestore result;
        result.wanted = wanted;
        result.status = *status;
        result.outcome = ParameterRestore::Vanished;
        if (!isWhole) {
            end(result);
            return;
        }
        read(wanted.axis, ParameterSnapshot::Written, [this, result](const ParameterSnapshot *after) mutable {
            if (after) {
                result.outcome = ParameterRestore::Done;
                result.after = *after;
                const QVector<int> different = differences(result.wanted, *after);
                for (const int field : different) {
                    if (!parameterFields()[field].get(result.wanted).isUndefined())
                        result.missing.append(field);
                }
                save(*after, {});
            }
            end(result);
        });
    };
    run(job);
}

// ---- Files ---------------------------------------------------------------------------------------------------------

void ParameterHistory::save(const ParameterSnapshot &snapshot, const std::function<void(bool)> &then)
{
    m_files.start([this, snapshot, then] {
        m_unsaved.append(snapshot);
        const bool isSaved = m_store.add(m_unsaved, &m_damaged);
        if (isSaved)
            m_unsaved.clear();
        while (m_unsaved.size() > ParameterStore::MostOfAnAxis)
            m_unsaved.removeFirst();
        QMetaObject::invokeMethod(
            this,
            [this, snapshot, then, isSaved, isDamaged = !m_damaged.isEmpty()] {
                emit signal_kept(snapshot);
                if (isDamaged && m_bLoaded)
                    load();
                if (!isSaved)
                    emit signal_saveFailed();
                if (then)
                    then(isSaved);
            },
            Qt::QueuedConnection);
    });
}

void ParameterHistory::load()
{
    m_bLoaded = true;
    m_files.start([this] {
        ParameterStore::Contents contents = m_store.load();
        contents.snapshots += m_unsaved;
        contents.damaged = std::exchange(m_damaged, {}) + contents.damaged;
        QMetaObject::invokeMethod(
            this,
            [this, contents, isSaved = m_unsaved.isEmpty()] {
                if (!isSaved) // which nobody may have heard then
                    emit signal_saveFailed();
                emit signal_loaded(contents.snapshots, contents.damaged);
            },
            Qt::QueuedConnection);
    });
}

void ParameterHistory::importFrom(const QString &file)
{
    m_files.start([this, file] {
        bool isWhole = false;
        const QVector<ParameterSnapshot> snapshots =
            ParameterStore::fromText(SmallFile::read(file, maxImport), &isWhole);
        const int count = isWhole || !snapshots.isEmpty() ? snapshots.size() : -1;
        const bool isSaved = count >= 0 && m_store.add(snapshots, &m_damaged);
        QMetaObject::invokeMethod(
            this,
            [this, count, isWhole, isSaved] {
                emit signal_imported(count, isWhole, isSaved);
                if (isSaved)
                    load();
            },
            Qt::QueuedConnection);
    });
}

void ParameterHistory::exportTo(const QString &file, const QVector<ParameterSnapshot> &snapshots)
{
    m_files.start([this, file, snapshots] {
        const bool isSaved = SmallFile::save(file, ParameterStore::toText(snapshots));
        QMetaObject::invokeMethod(
            this, [this, file, isSaved] { emit signal_exported(file, isSaved); }, Qt::QueuedConnection);
    });
}

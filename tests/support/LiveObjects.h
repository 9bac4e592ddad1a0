// SPDX-License-Identifier: MIT
#pragma once

#include <QMutex>
#include <QObject>
#include <QSet>
#include <QTimer>

extern Q_CORE_EXPORT quintptr qtHookData[]; // Qt's list of hooks for debuggers

/** Knows every object that was created since install(), in all threads, and has not been destroyed. */
class LiveObjects final
{
public:
    static void install()
    {
        constexpr int addObject = 3;
        constexpr int removeObject = 4;
        qtHookData[addObject] = reinterpret_cast<quintptr>(&add);
        qtHookData[removeObject] = reinterpret_cast<quintptr>(&remove);
    }

    /** Those whose class is `Object`, or derived from it. While no other thread creates or destroys any. */
    template <typename Object>
    static int count()
    {
        const QMutexLocker lock(&mutex());
        int result = 0;
        for (const QObject *object : qAsConst(objects()))
            result += qobject_cast<const Object *>(object) ? 1 : 0;
        return result;
    }
    /** Those themselves, in no particular order; while no other thread destroys any. */
    template <typename Object>
    static QList<Object *> all()
    {
        const QMutexLocker lock(&mutex());
        QList<Object *> result;
        for (QObject *object : qAsConst(objects())) {
            if (auto *found = qobject_cast<Object *>(object))
                result.append(found);
        }
        return result;
    }
    /** Those that repeat; the others end by themselves. */
    static int runningTimers()
    {
        const QMutexLocker lock(&mutex());
        int result = 0;
        for (const QObject *object : qAsConst(objects())) {
            const auto *timer = qobject_cast<const QTimer *>(object);
            result += timer && timer->isActive() && !timer->isSingleShot() ? 1 : 0;
        }
        return result;
    }

private:
    static QMutex &mutex()
    {
        static auto *const instance = new QMutex; // objects may go after everything static
        return *instance;
    }
    static QSet<QObject *> &objects()
    {
        static auto *const instance = new QSet<QObject *>;
        return *instance;
    }
    static void add(QObject *object)
    {
        const QMutexLocker lock(&mutex());
        objects().insert(object);
    }
    static void remove(QObject *object)
    {
        const QMutexLocker lock(&mutex());
        objects().remove(object);
    }
};

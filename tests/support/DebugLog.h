// SPDX-License-Identifier: MIT
#pragma once

#include <QMutex>
#include <QStringList>
#include <QtGlobal>

/** Collects what is written to the debug log, from all threads, while it lives. One at a time. */
class DebugLog final
{
public:
    DebugLog()
    {
        const QMutexLocker lock(mutex());
        self() = this;
        m_previous = qInstallMessageHandler(&handle);
    }
    ~DebugLog()
    {
        const QMutexLocker lock(mutex());
        qInstallMessageHandler(m_previous);
        self() = nullptr;
    }

    QStringList lines() const
    {
        const QMutexLocker lock(mutex());
        return m_lines;
    }
    bool contains(const QString &part) const { return !lines().filter(part).isEmpty(); }
    /** Warnings and worse: Qt's, and the program's own. */
    QStringList warnings() const
    {
        const QMutexLocker lock(mutex());
        return m_warnings;
    }

private:
    Q_DISABLE_COPY(DebugLog)

    /** Never destroyed: another thread may write to the end, with no log alive. */
    static QMutex *mutex()
    {
        static auto *const instance = new QMutex;
        return instance;
    }
    static DebugLog *&self()
    {
        static DebugLog *instance = nullptr;
        return instance;
    }
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        // The offscreen platform complains about every window; the program cannot help it.
        if (message.startsWith(QLatin1String("This plugin does not support")))
            return;
        // On a desktop Qt may still ask for a window that the window manager has just let go.
        if (message.startsWith(QLatin1String("QXcbConnection: XCB error: 3 (BadWindow)")))
            return;
        // Qt asks the desktop for the pictures of its message boxes, and Wine has none.
        if (message.startsWith(QLatin1String("QPixmap::fromWinHICON()")))
            return;
        const QMutexLocker lock(mutex());
        if (!self()) // another thread wrote while the log was destroyed
            return;
        self()->m_lines.append(message);
        if (type != QtDebugMsg && type != QtInfoMsg) {
            self()->m_warnings.append(message);
            self()->m_previous(type, context, message);
        }
    }

    QStringList m_lines;
    QStringList m_warnings;
    QtMessageHandler m_previous = nullptr;
};

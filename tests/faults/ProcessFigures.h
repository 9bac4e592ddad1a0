// SPDX-License-Identifier: MIT
#pragma once

#include <QDir>
#include <QString>

#include <cstddef>
#include <malloc.h>

#if defined(MOVER_SANITIZED)
// GCC brings the sanitizer, but not its headers.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

/** What this process holds of the machine at the moment. */
struct ProcessFigures {
    qint64 bytes = allocated(); // asked for and not given back
    int handles = entries("fd");
    int threads = entries("task");

    /** What has grown since `before`, "" when nothing has; memory may by `slackBytes`. */
    QString grownSince(const ProcessFigures &before, qint64 slackBytes) const
    {
        QString text;
        if (bytes > before.bytes + slackBytes)
            text += QStringLiteral("%1 bytes more ").arg(bytes - before.bytes);
        if (handles > before.handles)
            text += QStringLiteral("%1 handles more ").arg(handles - before.handles);
        if (threads > before.threads)
            text += QStringLiteral("%1 threads more").arg(threads - before.threads);
        return text.trimmed();
    }

private:
    static qint64 allocated()
    {
#if defined(MOVER_SANITIZED)
        return qint64(__sanitizer_get_current_allocated_bytes());
#else
        return qint64(mallinfo2().uordblks);
#endif
    }
    static int entries(const char *what)
    {
        return QDir(QStringLiteral("/proc/self/") + QLatin1String(what))
            .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
            .size();
    }
};

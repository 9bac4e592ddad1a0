// SPDX-License-Identifier: MIT
#include "device/MotionLibrary.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QLoggingCategory>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <type_traits>

namespace {

Q_LOGGING_CATEGORY(diagnostics, "mover.device")

#ifdef Q_OS_WIN
constexpr char libraryName[] = "moverLibrary.dll";
#else
constexpr char libraryName[] = "libmoverLibrary.so";
#endif

/** The data symbol by which a library of ours says what it is. */
constexpr char markSymbol[] = "moverLibraryMark";
/** The one by which it says more than statuses. */
constexpr char messagesSymbol[] = "moverLibraryMessages";
constexpr char reportsSymbol[] = "moverLibraryReports";

std::mutex loading;
// Never destroyed: at exit a thread may still hang in one of its functions.
std::atomic<const MotionLibrary *> library{nullptr};

/** The file that the user names; empty for none. */
QString namedFile(const QString &chosen)
{
    const QString named = chosen.isEmpty() ? qEnvironmentVariable("MOVER_LIBRARY") : chosen;
    return named.isEmpty() ? named : QFileInfo(named).absoluteFilePath();
}

/** The file that is there. */
QString foundFile()
{
    const QDir program(QCoreApplication::applicationDirPath());
    const QFileInfo makers(program.filePath(QLatin1String(libraryName)));
    if (makers.exists() || makers.isSymLink()) // a link that leads nowhere was meant too
        return makers.filePath();
    return program.filePath(QStringLiteral("simulator/") + QLatin1String(libraryName));
}

} // namespace

QString MotionLibrary::Fault::message() const
{
    const QString names = missing.join(QLatin1String(", "));
    const QStringList lines{
        QStringLiteral("无法使用运动控制库 %1").arg(QDir::toNativeSeparators(file)),
        missing.isEmpty() ? reason : QStringLiteral("缺少函数：") + names,
        QString(),
        QStringLiteral("The motion library %1 cannot be used.").arg(QDir::toNativeSeparators(file)),
        missing.isEmpty() ? reason : QStringLiteral("missing functions: ") + names,
    };
    return lines.join(QLatin1Char('\n'));
}

std::optional<MotionLibrary::Fault> MotionLibrary::load(const QString &chosen)
{
    const std::lock_guard lock(loading);
    const QString named = namedFile(chosen);
    if (!named.isEmpty())
        return loadFile(named);
    return library ? std::nullopt : loadFile(foundFile()); // functions that are linked in need no file
}

std::optional<MotionLibrary::Fault> MotionLibrary::loadFile(const QString &file)
{
    // The loader would try other names than the one that was meant, and wait for a pipe.
    if (!QFileInfo::exists(file))
        return Fault{file, QStringLiteral("no such file"), {}};
    if (!QFileInfo(file).isFile())
        return Fault{file, QStringLiteral("not a file"), {}};

    // Every symbol at once: what it lacks itself is told now and not in the middle of a move.
    QLibrary shared(file);
    shared.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    if (!shared.load())
        return Fault{file, shared.errorString(), {}};

    auto *const found = new MotionLibrary;
    found->m_sFile = file;
    QStringList missing;
    visitFunctions(found->m_functions, [&](const char *name, auto &function) {
        function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(shared.resolve(name));
        if (!function)
            missing.append(QLatin1String(name));
    });
    if (!missing.isEmpty()) {
        delete found;
        return Fault{file, QString(), missing};
    }
    if (const auto *mark = reinterpret_cast<const char *>(shared.resolve(markSymbol)))
        found->m_sMark = QString::fromLatin1(mark);
    if (const auto *messages = reinterpret_cast<MoverNextMessage *const *>(shared.resolve(messagesSymbol)))
        found->m_nextMessage = *messages;
    if (const auto *reports = reinterpret_cast<MoverLastReport *const *>(shared.resolve(reportsSymbol)))
        found->m_lastReport = *reports;
    library = found;
    qCDebug(diagnostics) << "motion library:" << qUtf8Printable(found->description());
    return std::nullopt;
}

void MotionLibrary::use(const MoverFunctions &functions, const QString &mark, MoverNextMessage *nextMessage)
{
    auto *const linked = new MotionLibrary;
    linked->m_functions = functions;
    linked->m_sMark = mark;
    linked->m_nextMessage = nextMessage;
    library = linked;
}

const MotionLibrary &MotionLibrary::inUse()
{
    if (const MotionLibrary *used = library)
        return *used;
    const std::lock_guard lock(loading);
    if (!library) {
        const QString named = namedFile(QString());
        if (const auto fault = loadFile(named.isEmpty() ? foundFile() : named)) {
            std::fprintf(stderr, "%s\n", qUtf8Printable(fault->message()));
            std::fflush(nullptr);
            std::_Exit(FaultExitCode); // from whichever thread: the others stay as they are
        }
    }
    return *library;
}

const MotionLibrary *MotionLibrary::loaded()
{
    return library;
}

QString MotionLibrary::description() const
{
    const QString file = QDir::toNativeSeparators(m_sFile);
    return m_sMark.isEmpty() ? file : QStringLiteral("%1 (%2)").arg(file, m_sMark);
}

// SPDX-License-Identifier: MIT
#include "device/MotionLibrary.h"

#include "device/ControllersFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QLoggingCategory>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <type_traits>

namespace {

Q_LOGGING_CATEGORY(libraryDiagnostics, "mover.device")

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

using Kind = MotionLibrary::Kind;

struct Place {
    Kind kind;
    const char *word;
    const char *folder; // below the program's
};
constexpr Place places[] = {
    {Kind::Makers, "makers", ""}, {Kind::Grbl, "grbl", "grbl/"}, {Kind::Simulated, "simulated", "simulator/"}};

Kind automaticWith(const ControllersFile &controllers)
{
    const QFileInfo makers(MotionLibrary::fileOf(Kind::Makers));
    if (makers.exists() || makers.isSymLink()) // a link that leads nowhere was meant too
        return Kind::Makers;
    return controllers.boards().isEmpty() ? Kind::Simulated : Kind::Grbl;
}

} // namespace

QString MotionLibrary::word(Kind kind)
{
    return QLatin1String(places[int(kind)].word);
}

QString MotionLibrary::fileOf(Kind kind)
{
    return QDir(QCoreApplication::applicationDirPath())
        .filePath(QLatin1String(places[int(kind)].folder) + QLatin1String(libraryName));
}

MotionLibrary::Kind MotionLibrary::automatic()
{
    return automaticWith(ControllersFile());
}

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

std::optional<MotionLibrary::Fault> MotionLibrary::load(const QString &chosen, bool ignoresStored)
{
    const std::lock_guard lock(loading);
    const QString named = namedFile(chosen);
    if (!named.isEmpty())
        return loadFile(named, Origin::Named);
    return library ? std::nullopt : loadFound(ignoresStored); // functions that are linked in need no file
}

/** The library that nobody has named. */
std::optional<MotionLibrary::Fault> MotionLibrary::loadFound(bool ignoresStored)
{
    const ControllersFile controllers;
    const QString stored = ignoresStored ? QString() : controllers.library();
    if (stored.isEmpty())
        return loadFile(fileOf(automaticWith(controllers)), Origin::Automatic);
    const auto *const place = std::find_if(
        std::begin(places), std::end(places), [&](const Place &one) { return stored == QLatin1String(one.word); });
    std::optional<Fault> fault =
        place == std::end(places) ? Fault{stored, QStringLiteral("\"library\" in %1").arg(ControllersFile::path()), {}}
                                  : loadFile(fileOf(place->kind), Origin::Chosen);
    if (fault)
        fault->wasStored = true;
    return fault;
}

std::optional<MotionLibrary::Fault> MotionLibrary::loadFile(const QString &file, Origin origin)
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
    found->m_origin = origin;
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
    qCDebug(libraryDiagnostics) << "motion library:" << qUtf8Printable(found->description());
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
        if (const auto fault = named.isEmpty() ? loadFound(false) : loadFile(named, Origin::Named)) {
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

// SPDX-License-Identifier: MIT
#pragma once

#include "device/MoverFunctions.h"
#include "device/moverMessages.h"

#include <QString>
#include <QStringList>

#include <optional>

/**
 * The motion library in use: one shared library with the functions of device/moverLibrary.h, loaded at run time and
 * never unloaded. Its functions are reached through LibraryLock, the two that go without the lock through
 * UnlockedCalls.
 */
class MotionLibrary final
{
public:
    /** Why a library cannot be used. */
    struct Fault {
        QString file;
        QString reason;         // the loader's own words; empty when functions are missing
        QStringList missing;    // functions that it lacks
        bool wasStored = false; // it is what the user has chosen in the program, earlier

        /** In Chinese and English: nobody has chosen a language yet. */
        QString message() const;
    };
    static constexpr int FaultExitCode = 3;

    /** Those that come into question without being named. */
    enum class Kind { Makers, Grbl, Simulated };
    /** The word for it in the file of controllers; for a library of ours it is what it says it is. */
    static QString word(Kind kind);
    /** Where it lies; the file need not be there. */
    static QString fileOf(Kind kind);
    /** The one that counts where none is named or chosen. */
    static Kind automatic();

    /** Who said which library to take. */
    enum class Origin { Named, Chosen, Automatic };

    /**
     * Looks for the library and loads it; call it once, before anything else uses the library. In this order: `chosen`,
     * the environment variable MOVER_LIBRARY, the one that the file of controllers says (unless `ignoresStored`), the
     * maker's file beside the program, the one for Grbl boards if such a board is set up, the simulated controller. The
     * first that is named or found counts; whatever is wrong with it, no other takes its place. `chosen`: a path,
     * relative to the working folder; empty for none. GUI thread.
     */
    static std::optional<Fault> load(const QString &chosen = QString(), bool ignoresStored = false);
    /**
     * Uses functions that are linked into the executable; only a file that is named takes their place. `mark`: what
     * mark() then returns.
     */
    static void use(const MoverFunctions &functions, const QString &mark, MoverNextMessage *nextMessage = nullptr);

    /**
     * The library in use. Without a load() before, the first call makes it: a program other than ours (a test, a
     * server) gets the same search. A fault then goes to stderr and ends the process with FaultExitCode. Any thread.
     */
    static const MotionLibrary &inUse();

    /** As inUse(), but null as long as nobody has used it. */
    static const MotionLibrary *loaded();

    /** Absolute path; empty for functions that are linked in. */
    QString file() const { return m_sFile; }
    Origin origin() const { return m_origin; }
    /** What a library of ours says it is ("simulated"); empty for any other. */
    QString mark() const { return m_sMark; }
    bool isSimulated() const { return m_sMark == QLatin1String("simulated"); }
    /** Takes the next message of a library of ours; false if there is none. Any thread. */
    bool takeMessage(MoverMessage *message) const { return m_nextMessage && m_nextMessage(message) == 1; }
    /** The report that positions of the controller rest on; false where each call asks again. Any thread. */
    bool lastReport(int id, MoverReport *report) const { return m_lastReport && m_lastReport(id, report) == 1; }
    /** File and mark, for whoever wants to know which library it is. */
    QString description() const;

private:
    friend class LibraryLock;
    friend class UnlockedCalls;

    static std::optional<Fault> loadFile(const QString &file, Origin origin);
    static std::optional<Fault> loadFound(bool ignoresStored);

    MoverFunctions m_functions = {};
    QString m_sFile;
    Origin m_origin = Origin::Named;
    QString m_sMark;
    MoverNextMessage *m_nextMessage = nullptr;
    MoverLastReport *m_lastReport = nullptr;
};

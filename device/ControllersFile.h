// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonObject>
#include <QString>
#include <QVector>

/**
 * The file of the controllers that are set up, and of the motion library that was chosen (docs/controllers.md). What
 * this does not know of is kept. GUI thread.
 */
class ControllersFile final
{
public:
    struct Axis {
        QString letter;
        QJsonObject stage; ///< empty: none is assigned
    };
    /** A board of the Grbl family. */
    struct Board {
        int id = 0; ///< 0: not in the file yet
        QString name;
        QString port;
        QVector<Axis> axes;
    };

    /** What MOVER_CONTROLLERS names, or controllers.json in the user's configuration folder. */
    static QString path();

    /** Reads the file; what is missing, damaged or newer holds nothing. */
    explicit ControllersFile(const QString &path = ControllersFile::path());

    /** Why the file was not read; empty when it was, or when there is none. */
    QString fault() const { return m_sFault; }

    /** The word for the library that was chosen; empty when none was. */
    QString library() const;
    void setLibrary(const QString &word);

    QVector<Board> boards() const;
    /**
     * Adds a board, or replaces the one of the same id. Returns its id. A new one gets an id that no other ever had:
     * the library in use may yet keep values of a board that has been removed.
     */
    int put(const Board &board);
    void remove(int id);

    /** Replaces the file as a whole. False on failure: the file is then as it was. */
    bool save() const;
    /** Forgets what the library has kept for a board beside the file. */
    void forgetKept(int id) const;
    /** Renames the file, to .bak or, where that is taken, to .bak2 and so on. The new name; empty on failure. */
    static QString setAside(const QString &path);

private:
    int newId() const;
    void noteId(int id);
    QString keptPath(int id) const;

    QString m_sPath;
    QString m_sFault;
    QJsonObject m_content;
};

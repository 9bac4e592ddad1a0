// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QSet>
#include <QString>

class MoverWidget;
class QWidget;

/** What holds whenever the program has nothing to do, whatever happened before. */
class Invariants final
{
public:
    /** What does not hold; empty when everything does. GUI thread, with nothing left to do in the other ones. */
    QString broken(const MoverWidget &window);
    /**
     * What does not hold although no message box is open and everything that was to be deleted is; empty when
     * everything does.
     */
    static QString brokenAtRest(const MoverWidget &window);
    /** What is left of the windows once the main window is gone; empty when nothing is. */
    static QString leftBehind();

    /** Whether the console waits, with the library held, for its message to be read. */
    static bool isLibraryHeld();
    /** The windows that a user sees, in an order that does not depend on addresses. */
    static QList<QWidget *> visibleWindows();

private:
    void readJournal();

    QMap<int, QSet<QString>> m_reported; // by axis, the positions that the controller gave since the last look
    QMap<int, QString> m_shown;
};

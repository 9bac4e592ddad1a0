// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QTextBrowser;

/**
 * The operation log of a panel: entries of two lines, the time and below it "word text word", where the words tell
 * type and state. It grows for as long as its panel lives; only a run-count entry replaces the one before it.
 */
class OperationLog final
{
public:
    explicit OperationLog(QTextBrowser *browser);

    /** type: OperationType; state: OperationState. Those without a word, also unknown ones, show none. */
    void append(int type, const QString &text, int state);
    /** All of it. */
    QString text() const;

private:
    void removeLastEntry();

    QTextBrowser *m_browser;
    bool m_bEndsWithRunCount = false;
};

// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QTextBrowser;

/** Entry types that the panel itself writes; the others come from the worker, see SerialComDev. */
enum LogType {
    LOG_RUN_COUNT = 12, // live counter of a loop run
    LOG_WARNING = 98,   // red
    LOG_PLAIN = 99,     // no leading word
};

/** Entry states, beside OperationState. */
enum LogState {
    LOG_STATE_RUNNING = 0,
    LOG_STATE_COMPLETED = 4,
    LOG_STATE_NONE = 99, // no trailing word
};

/**
 * The operation log of a panel: entries of two lines, the time and below it "word text word", where the words tell
 * type and state. It grows for as long as its panel lives; only a run-count entry replaces the one before it.
 */
class OperationLog final
{
public:
    explicit OperationLog(QTextBrowser *browser);

    void append(int type, const QString &text, int state);

private:
    void removeLastEntry();

    QTextBrowser *m_browser;
    bool m_bEndsWithRunCount = false;
};

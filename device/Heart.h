// SPDX-License-Identifier: MIT
#pragma once

#include "device/AnswerFilter.h"
#include "device/DeviceRecords.h"

#include <QObject>
#include <QThread>
#include <QTimer>

#include <atomic>

/**
 * The sign of life: every 500 ms it asks, through sendHeart(), for the controller's joystick information, keeps the
 * latest answer and counts the missed ones.
 *
 * Lives in a thread of its own; its timer belongs to the thread that constructed it (the GUI thread), which is also
 * the one that calls startHeart(), stopHeart() and the destructor.
 */
class Heart final : public QObject
{
    Q_OBJECT

public:
    static constexpr int IntervalMs = 500;

    Heart();
    ~Heart() override;

    /**
     * Takes the answers to sendHeart() from `worker`: those of its signal `answer`, a SIGNAL() with the arguments of
     * rcvHeartInfo(). Once in a life. GUI thread.
     */
    void listenTo(const QObject *worker, const char *answer);

    /** The latest good answer; all zero before the first. Any thread. */
    CONTROLER_STATE controlerState() const { return m_state; }

signals:
    /** A beat was missed; `count` counts all of them since construction and is never reset by a good one. */
    void heartBreak(int count);
    /** A good answer was stored. */
    void receivedControlerState();
    /**
     * Follows receivedControlerState() when the answer differs from the one before it, and for the first one after
     * startHeart().
     */
    void controlerStateChanged();
    /** Asks for one answer, to be delivered to rcvHeartInfo(). */
    void sendHeart();

public slots:
    void startHeart();
    void singleHeart();
    void stopHeart();
    /** The answer to sendHeart(); ret below 0 is a missed beat. Runs in the Heart's thread. */
    void rcvHeartInfo(CONTROLER_STATE state, int ret);

private:
    std::atomic<CONTROLER_STATE> m_state{CONTROLER_STATE{}};
    AnswerFilter<CONTROLER_STATE> m_answers;
    QMetaObject::Connection m_answered;
    QThread m_thread;
    QTimer m_timer;
    int m_iMissed = 0;
};

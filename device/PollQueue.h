// SPDX-License-Identifier: MIT
#pragma once

#include <QMutex>

#include <algorithm>
#include <deque>
#include <optional>

/**
 * Polls, beats among them, on their way to the worker. Those that no command separates make a round, for which the
 * worker is called once. Polls that a slow link cannot keep up with do not pile up in front of a command: of each kind
 * and axis at most Limit wait, later ones are dropped until one has run. Thread-safe.
 */
class PollQueue final
{
public:
    static constexpr int Limit = 2;

    enum Kind { Position, State, Beat, ConsoleBeat };
    static constexpr int WholeController = -1; // the axis of a beat

    struct Poll {
        Kind kind;
        int axis;

        bool operator==(const Poll &other) const { return kind == other.kind && axis == other.axis; }
    };

    /** A poll is requested. Returns the round that it begins, for which the worker has to be called. */
    std::optional<quint32> add(const Poll &poll)
    {
        const QMutexLocker lock(&m_mutex);
        const auto waiting = std::count_if(
            m_waiting.begin(), m_waiting.end(), [&poll](const Waiting &other) { return other.poll == poll; });
        if (waiting >= Limit)
            return {};
        const bool begins = !m_bOpen;
        if (begins) {
            m_bOpen = true;
            ++m_uRound;
        }
        m_waiting.push_back({poll, m_uRound});
        return begins ? std::optional(m_uRound) : std::nullopt;
    }

    /** A command is requested: polls after it run after it. */
    void endRound()
    {
        const QMutexLocker lock(&m_mutex);
        m_bOpen = false;
    }

    /** The number of the last round so far. */
    quint32 lastRound()
    {
        const QMutexLocker lock(&m_mutex);
        return m_uRound;
    }
    /** Drops the polls that wait in rounds up to this one. */
    void drop(quint32 lastRound)
    {
        const QMutexLocker lock(&m_mutex);
        const auto isDropped = [lastRound](const Waiting &each) { return qint32(each.round - lastRound) <= 0; };
        m_waiting.erase(std::remove_if(m_waiting.begin(), m_waiting.end(), isDropped), m_waiting.end());
        m_bOpen = m_bOpen && m_uRound != lastRound;
    }

    /** The next poll of the round, which the worker now runs: nothing is added to it any more. */
    std::optional<Poll> take(quint32 round)
    {
        const QMutexLocker lock(&m_mutex);
        if (round == m_uRound)
            m_bOpen = false;
        if (m_waiting.empty() || m_waiting.front().round != round)
            return {};
        const Poll poll = m_waiting.front().poll;
        m_waiting.pop_front();
        return poll;
    }

private:
    struct Waiting {
        Poll poll;
        quint32 round;
    };

    QMutex m_mutex;
    std::deque<Waiting> m_waiting;
    quint32 m_uRound = 0;
    bool m_bOpen = false; // more polls may join the last round
};

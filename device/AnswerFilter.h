// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QMutex>

#include <cstring>
#include <type_traits>

/**
 * Tells which answers to polls of one kind are news, so that an answer that repeats the one before it wakes nobody.
 * Answers are told apart by their bytes. Thread-safe.
 */
template <typename Answer>
class AnswerFilter final
{
    static_assert(std::is_trivially_copyable_v<Answer>);

public:
    /** Whether the answer differs from the axis's last one. */
    bool isNews(int axis, const Answer &answer)
    {
        const QMutexLocker lock(&m_mutex);
        const auto last = m_last.find(axis);
        if (last == m_last.end()) {
            m_last.insert(axis, answer);
            return true;
        }
        // Bit by bit is meant. NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
        if (std::memcmp(&*last, &answer, sizeof answer) == 0)
            return false;
        *last = answer;
        return true;
    }

    /** The next answer of the axis is news, whatever it is. */
    void forget(int axis)
    {
        const QMutexLocker lock(&m_mutex);
        m_last.remove(axis);
    }

private:
    QMutex m_mutex;
    QHash<int, Answer> m_last;
};

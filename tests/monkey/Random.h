// SPDX-License-Identifier: MIT
#pragma once

#include <QList>

#include <random>

/** The choices of one run: the same for the same seed, on every machine. */
class Random final
{
public:
    explicit Random(unsigned seed)
        : m_engine(seed)
    {
    }

    /** 0 to count - 1; `count` is at least 1. */
    int below(int count) { return int(m_engine() % unsigned(count)); }
    int between(int lowest, int highest) { return lowest + below(highest - lowest + 1); }
    bool oneIn(int count) { return below(count) == 0; }
    template <typename List>
    auto of(const List &list) -> decltype(list[0])
    {
        return list[below(int(std::size(list)))];
    }

private:
    std::mt19937 m_engine; // its numbers are laid down by the language, those of the distributions are not
};

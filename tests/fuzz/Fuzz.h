// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QDebug>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

/** What the fuzz targets have in common: how they complain, and how they take an input apart. */
namespace Fuzz {

/** Ends the process as a finding. */
[[noreturn]] inline void fail(const char *what, const QString &details = QString())
{
    std::fprintf(stderr, "== finding: %s %s\n", what, qPrintable(details));
    std::abort();
}

inline void require(bool holds, const char *what, const QString &details = QString())
{
    if (!holds)
        fail(what, details);
}

/** Debug output is dropped; what Qt warns of is a finding. */
inline void watchMessages()
{
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &, const QString &message) {
        if (type != QtDebugMsg && type != QtInfoMsg && !message.startsWith(QLatin1String("This plugin does not")))
            fail("Qt warns:", message);
    });
}

/** Takes values from the front of an input; zeros when it is used up. */
class Input final
{
public:
    Input(const uint8_t *data, size_t size)
        : m_data(reinterpret_cast<const char *>(data))
        , m_size(size)
    {
    }

    bool isEmpty() const { return m_size == 0; }

    template <typename Value>
    Value take()
    {
        Value value = {};
        const size_t count = qMin(sizeof value, m_size);
        std::memcpy(&value, m_data, count);
        skip(count);
        return value;
    }
    /** Up to the next line end, or everything that is left. */
    QByteArray takeLine()
    {
        const void *end = std::memchr(m_data, '\n', m_size);
        const size_t count = end ? size_t(static_cast<const char *>(end) - m_data) : m_size;
        const QByteArray line(m_data, int(count));
        skip(end ? count + 1 : count);
        return line;
    }
    QByteArray rest() const { return QByteArray(m_data, int(m_size)); }

private:
    void skip(size_t count)
    {
        m_data += count;
        m_size -= count;
    }

    const char *m_data;
    size_t m_size;
};

} // namespace Fuzz

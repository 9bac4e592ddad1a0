// SPDX-License-Identifier: MIT
#include "Measurements.h"

#include "axis/OperationLog.h"
#include "device/SerialComDev.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTextBrowser>

#include <algorithm>
#include <malloc.h>

namespace {

double medianOf(QVector<double> values)
{
    if (values.isEmpty())
        return 0;
    const auto middle = values.begin() + values.size() / 2;
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

int entriesIn(const char *folder)
{
    return QDir(QLatin1String(folder)).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

} // namespace

qint64 Measurements::heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return qint64(info.uordblks + info.hblkhd);
}

qint64 Measurements::anonymousBytes()
{
    malloc_trim(0); // the pages of logs that are gone are not in use
    QFile file(QStringLiteral("/proc/self/smaps_rollup"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith("Pss_Anon:"))
            return line.mid(9).simplified().split(' ').first().toLongLong() * 1024;
    }
    return 0;
}

int Measurements::openHandles()
{
    return entriesIn("/proc/self/fd") - 1; // without the one that looks
}

int Measurements::threads()
{
    return entriesIn("/proc/self/task");
}

double Measurements::bytesPerLogEntry()
{
    constexpr int entries = 10000;
    QTextBrowser browser;
    OperationLog log(&browser);
    browser.show(); // or its lines are not laid out
    const auto append = [&log](int count) {
        for (int k = 0; k < count; ++k)
            log.append(OPERATION_TYPE_MOVE, QStringLiteral("Move"), OPERATION_STATE_OK);
        QCoreApplication::processEvents();
    };
    append(100); // what comes with the first ones
    const qint64 before = heapBytes();
    append(entries);
    return double(heapBytes() - before) / entries;
}

double Measurements::Series::rise() const
{
    QVector<double> slopes;
    for (int from = 0; from < values.size(); ++from) {
        for (int to = from + 1; to < values.size(); ++to)
            slopes.append((values[to] - values[from]) / (to - from));
    }
    return medianOf(slopes) * (values.size() - 1);
}

double Measurements::Series::median(int from, int to) const
{
    return medianOf(values.mid(from, to - from));
}

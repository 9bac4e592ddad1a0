// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QVector>

/** What a long run must not use more and more of, and how that is judged. */
namespace Measurements {

/** Bytes that the program has allocated and not released. */
qint64 heapBytes();
/** Bytes of memory of this process alone: not its files, which weigh less the more programs have them open. */
qint64 anonymousBytes();
int openHandles();
int threads();

/** Bytes that one entry of the operation log keeps, measured on a log of its own. */
double bytesPerLogEntry();

/** One quantity over the run. */
struct Series {
    QString name;
    QString unit;
    double limit; ///< by how much it may rise from the beginning to the end of the run
    QVector<double> values = {};

    /**
     * The rise over the run along the straight line that fits best: the median of the slopes between all pairs of
     * values, so that single outliers (another program's turn on the processor) do not count.
     */
    double rise() const;
    double median(int from, int to) const;
};

} // namespace Measurements

// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>

#include <functional>
#include <vector>

/** What the rows of the performance table share that are measured inside one process. */
namespace Measure {

/** Does something once and returns the nanoseconds it took. */
using Sample = std::function<qint64()>;

template <typename Step>
Sample timed(Step step, int repeats = 1)
{
    return [step, repeats] {
        QElapsedTimer timer;
        timer.start();
        for (int k = 0; k < repeats; ++k)
            step();
        return timer.nsecsElapsed() / repeats;
    };
}

/** `share` of 0.5 is the median. Takes the values by copy: their order is lost. */
double quantile(std::vector<double> values, double share);

/** What a row of pairs came to, in µs. */
struct Pairs {
    std::vector<double> subject;
    std::vector<double> baseline;
    double ratio;      // median of the pairs' ratios
    double difference; // median of the pairs' differences
};

/** Measures both in turns, so that whatever else the machine does meets both; the first tenth only warms up. */
Pairs inTurns(const Sample &subject, const Sample &baseline, int pairs);

/** Prints a row's figure, which the table compares with its limit, and what else there is to say about it. */
void report(const char *row, double figure, const char *format, ...) __attribute__((format(printf, 3, 4)));

} // namespace Measure

// SPDX-License-Identifier: MIT
#include "steps/Measure.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

double Measure::quantile(std::vector<double> values, double share)
{
    const auto at = values.begin() + std::ptrdiff_t(double(values.size() - 1) * share);
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

Measure::Pairs Measure::inTurns(const Sample &subject, const Sample &baseline, int pairs)
{
    Pairs result;
    std::vector<double> ratios;
    std::vector<double> differences;
    for (int pair = -pairs / 10; pair < pairs; ++pair) {
        double first = double(pair % 2 ? subject() : baseline());
        double second = double(pair % 2 ? baseline() : subject());
        if (pair % 2 == 0)
            std::swap(first, second);
        if (pair < 0)
            continue;
        result.subject.push_back(first / 1000);
        result.baseline.push_back(second / 1000);
        ratios.push_back(first / std::max(second, 1.0));
        differences.push_back((first - second) / 1000);
    }
    result.ratio = quantile(ratios, 0.5);
    result.difference = quantile(differences, 0.5);
    return result;
}

void Measure::report(const char *row, double figure, const char *format, ...)
{
    std::printf("%s\t%.6g\t", row, figure);
    std::va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
    std::printf("\n");
    std::fflush(stdout);
}

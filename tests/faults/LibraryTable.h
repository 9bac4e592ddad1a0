// SPDX-License-Identifier: MIT
#pragma once

#include "controllers/simulated/SimulatorControl.h"

#include <QFile>
#include <QRegularExpression>
#include <QtTest>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <string>
#include <vector>

/** A way in which one library function lets the program down. */
struct Fault {
    QString name;
    std::function<void(const std::string &function)> set;
    int status = 0;   // below 0: what every call returns
    int takesMs = 0;  // what each call takes
    bool once = true; // or only the next call
};

/** The faults that a function can have, by its declaration in the library's header. */
class LibraryTable final
{
public:
    static constexpr int Device = 1001;
    static constexpr int Axes = 3;

    LibraryTable()
    {
        QFile header(QStringLiteral(MOVER_LIBRARY_HEADER));
        if (!header.open(QIODevice::ReadOnly))
            qFatal("no header of the library");
        static const QRegularExpression declaration(QStringLiteral("^MOVER_API (\\w+) (\\w+)\\((.*)\\);"));
        const QStringList lines = QString::fromUtf8(header.readAll()).split(QLatin1Char('\n'));
        for (const QString &line : lines) {
            const QRegularExpressionMatch match = declaration.match(line);
            if (match.hasMatch())
                m_faults[match.captured(2).toStdString()] =
                    faultsOf(match.captured(1), match.captured(2), match.captured(3));
        }
    }

    const std::vector<Fault> &faultsOf(const std::string &function) const { return m_faults.at(function); }
    std::size_t functions() const { return m_faults.size(); }

private:
    using Faults = std::vector<Fault>;

    static void addNumbers(Faults &faults, std::initializer_list<double> numbers)
    {
        for (const double number : numbers)
            faults.push_back({QStringLiteral("answers %1").arg(number), [number](const std::string &function) {
                                  simulator::answerNumber(function, number);
                              }});
    }
    static void addCounts(Faults &faults, std::initializer_list<int> counts)
    {
        for (const int count : counts)
            faults.push_back({QStringLiteral("says it has %1").arg(count), [count](const std::string &function) {
                                  simulator::answerCount(function, count);
                              }});
    }
    static void addStates(Faults &faults)
    {
        for (const int16_t flag : {int16_t(-1), int16_t(32767)}) {
            faults.push_back({QStringLiteral("flags %1").arg(flag), [flag](const std::string &) {
                                  MotorStageState state = {};
                                  int16_t *const flags[] = {
                                      &state.isCanRun,        &state.isStop,           &state.isEnable,
                                      &state.isHome,          &state.isLeftLimit,      &state.isRightLimit,
                                      &state.isLeftOptoFault, &state.isRightOptoFault, &state.isHomeOptoFault};
                                  for (int16_t *each : flags)
                                      *each = flag;
                                  state.runCount = std::numeric_limits<uint32_t>::max();
                                  for (int axis = 0; axis < Axes; ++axis)
                                      simulator::setState(Device, axis, state);
                              }});
        }
    }
    static void addRecords(Faults &faults)
    {
        const double inf = std::numeric_limits<double>::infinity();
        for (const double number : {std::nan(""), inf, -inf, 1e308}) {
            faults.push_back({QStringLiteral("fields %1").arg(number), [number](const std::string &) {
                                  MotorParams params = {};
                                  std::memset(&params, 0xE9, sizeof params); // no text ends, integers are large
                                  for (double *each :
                                       {&params.dispOneCircle, &params.restoreSpeed, &params.maxSpeed, &params.maxAcc,
                                        &params.minPos, &params.maxPos, &params.maxRockerSpeed})
                                      *each = number;
                                  for (int axis = 0; axis < Axes; ++axis)
                                      simulator::setParams(Device, axis, params);
                              }});
        }
    }
    static void addTexts(Faults &faults)
    {
        faults.push_back({QStringLiteral("text without an end"), [](const std::string &function) {
                              simulator::answerText(function, std::string(32, 'W'));
                          }});
        faults.push_back({QStringLiteral("text that is not ASCII"), [](const std::string &function) {
                              simulator::answerText(function, std::string(32, '\xFC'));
                          }});
    }

    static Faults faultsOf(const QString &result, const QString &name, const QString &arguments)
    {
        Faults faults;
        for (const int status : {-1, -3, -9, -1000, std::numeric_limits<int>::min()}) {
            faults.push_back(
                {QStringLiteral("fails with %1").arg(status),
                 [status](const std::string &function) { simulator::failAlways(function, status); }, status});
        }
        faults.push_back(
            {QStringLiteral("takes 200 ms"),
             [](const std::string &function) { simulator::delayCall(function, 200, -1); }, 0, 200, false});
        faults.push_back(
            {QStringLiteral("takes 2 s"), [](const std::string &function) { simulator::delayCall(function, 2000); }, 0,
             2000});
        faults.push_back(
            {QStringLiteral("hangs until released"), [](const std::string &function) { simulator::hangCall(function); },
             0, 500});

        const double inf = std::numeric_limits<double>::infinity();
        const bool getter = name.startsWith(QLatin1String("get"));
        if (result == QLatin1String("double"))
            addNumbers(faults, {std::nan(""), inf, -inf, 1e308});
        else if (arguments.contains(QLatin1String("char *buffer")))
            addTexts(faults);
        else if (arguments.contains(QLatin1String("MotorStageState *")))
            addStates(faults);
        else if (arguments.contains(QLatin1String("MotorParams *")))
            addRecords(faults);
        else if (arguments.contains(QLatin1String("int *ids")))
            addCounts(faults, {0, 11, 1000});
        else if (name == QLatin1String("getDevAxisCount"))
            addNumbers(faults, {0, -1, 4, 1000});
        else if (getter && arguments.contains(QLatin1String("int *count"))) {
            addCounts(faults, {-1, 11, 1000});
            addNumbers(faults, {std::nan(""), inf, -inf, 1e308});
        } else if (getter)
            addNumbers(faults, {-1, 32767});
        return faults;
    }

    std::map<std::string, Faults> m_faults;
};

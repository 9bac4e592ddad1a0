// SPDX-License-Identifier: MIT
#pragma once

#include "session/ParameterSnapshot.h"

#include <QCoreApplication>

/** The words for the values of a snapshot. GUI thread. */
class ParameterTexts final
{
    Q_DECLARE_TR_FUNCTIONS(ParameterTexts)

public:
    /** Of the field at this place of parameterFields(). */
    static QString name(int field);
    /** Without its unit. */
    static QString value(int field, const ParameterSnapshot &snapshot);
    /** "" where there is none, or no value. */
    static QString unit(int field, const ParameterSnapshot &snapshot);
    static QString valueAndUnit(int field, const ParameterSnapshot &snapshot);
    static QString why(ParameterSnapshot::Why why);
    /** Local time, to the second. */
    static QString time(const ParameterSnapshot &snapshot);
};

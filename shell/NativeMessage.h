// SPDX-License-Identifier: MIT
#pragma once

// For sources only: the Windows headers make macros of many plain words, "MessageBox" among them.

#include <QtGlobal>

#ifdef Q_OS_WIN

#include <qt_windows.h>

#include <dbt.h>

using NativeMessage = MSG;

#else

/** A Windows message as Windows lays it out, so that its decoding is the same code everywhere. */
struct NativeMessage {
    void *hwnd;
    unsigned int message;
    quintptr wParam;
    qintptr lParam;
    quint32 time;
    qint32 x;
    qint32 y;
};

constexpr unsigned int WM_DEVICECHANGE = 0x219;
constexpr quintptr DBT_DEVNODES_CHANGED = 7;

#endif

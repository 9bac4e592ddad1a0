// SPDX-License-Identifier: MIT
#pragma once

#include <QCursor>
#include <QGuiApplication>

/** Shows the busy cursor for as long as it lives: around whatever makes the GUI thread wait for the controller. */
class BusyCursor final
{
public:
    BusyCursor() { QGuiApplication::setOverrideCursor(Qt::WaitCursor); }
    ~BusyCursor() { QGuiApplication::restoreOverrideCursor(); }

private:
    Q_DISABLE_COPY(BusyCursor)
};

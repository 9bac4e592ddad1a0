// SPDX-License-Identifier: MIT
// Uses the worker without the program's start-up, as a script or a server would: asks for the state of an axis.

#include "device/SerialComDev.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    emit SerialComDev::instance()->signal_getDevState(0); // answered in the worker's thread
    SerialComDev::instance()->close();
    return SerialComDev::endThread(5000) ? 0 : 1;
}

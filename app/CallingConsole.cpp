// SPDX-License-Identifier: MIT
#include "app/CallingConsole.h"

#include <QByteArray>

#ifdef Q_OS_WIN

#include <cstdio>
#include <qt_windows.h>

void CallingConsole::join()
{
    qputenv("QT_COMMAND_LINE_PARSER_NO_GUI_MESSAGE_BOXES", "1");
    if (!AttachConsole(ATTACH_PARENT_PROCESS))
        return;
    // One that goes to a file or a pipe has a descriptor already.
    for (FILE *stream : {stdout, stderr}) {
        if (_fileno(stream) < 0)
            std::freopen("CONOUT$", "w", stream);
    }
}

#else

void CallingConsole::join() {}

#endif

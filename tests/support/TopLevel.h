// SPDX-License-Identifier: MIT
#pragma once

#include <QApplication>
#include <QWidget>

/** The top-level window of this class; null when there is none. */
template <typename Window>
Window *topLevel()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (auto *found = qobject_cast<Window *>(window))
            return found;
    }
    return nullptr;
}

// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QWidget;

/** The one message box of the program: it informs, or asks for consent. */
namespace MessageBox {

/** Who asks; each has its own size and order of buttons. */
enum class Kind {
    Tip,         ///< the main window and the dialogs: "取消", "确认"
    MotionPopup, ///< the motion parameter popups: "确认", "取消"
    LoopRun,     ///< the loop-run dialog: "确认", "取消"
};

/**
 * Asks `text` modally over `parent`: true for "确认" alone. Escape, the window's close and a box that goes with its
 * parent do not consent. The event loop runs meanwhile: whoever calls this must be ready to be gone afterwards. GUI
 * thread.
 */
bool confirm(QWidget *parent, const QString &text, Kind kind = Kind::Tip);

/** The same box where there is nothing to decide. */
void inform(QWidget *parent, const QString &text, Kind kind = Kind::Tip);

} // namespace MessageBox

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
 * Asks `text` in a modal box over `parent`. Returns true for "确认" only: not for Escape, not when the box is closed,
 * and not when it goes with its parent. The event loop runs meanwhile, so the caller may be destroyed before this
 * returns. GUI thread.
 */
bool confirm(QWidget *parent, const QString &text, Kind kind = Kind::Tip);

/** The same box where there is nothing to decide. */
void inform(QWidget *parent, const QString &text, Kind kind = Kind::Tip);

} // namespace MessageBox

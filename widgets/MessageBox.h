// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class QWidget;

/** The one message box of the program: it informs, or asks for consent. */
namespace MessageBox {

/** Who asks; each has its own size and order of buttons. */
enum class Kind {
    Tip,         ///< the main window and the dialogs: "取消" (0), "确认" (1)
    MotionPopup, ///< the motion parameter popups: "确认" (0), "取消" (1)
    LoopRun,     ///< the loop-run dialog: "确认" (0), "取消" (1)
};

/**
 * Shows `text` modally over `parent` and returns the index of the button that closed it, in the order given with the
 * kind. Escape and the window's close count as "取消". The event loop runs meanwhile: whoever calls this must be ready
 * to be gone afterwards. GUI thread.
 */
int exec(QWidget *parent, const QString &text, Kind kind = Kind::Tip);

} // namespace MessageBox

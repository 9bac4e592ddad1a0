// SPDX-License-Identifier: MIT
#pragma once

#include <QMargins>

class QScreen;
class QWidget;

/** What the program's frameless dialogs have in common. */
namespace Dialogs {

/** Frameless, translucent, application-modal top-level window; `body` carries the gray shadow (radius 10, no offset).
 */
void makeFrameless(QWidget *dialog, QWidget *body);

/**
 * Has the widgets of `window` forget, whenever it is hidden, that the mouse was over them: nobody tells a button that
 * went with its window from under the mouse, and it would look hovered when the window is shown again.
 */
void forgetMouseWhenHidden(QWidget *window);

/**
 * For the focusNextPrevChild of a widget that lies over its siblings: moves the focus to the next (or previous) of its
 * own controls, round and round. False when it has none.
 */
bool focusWithin(QWidget *overlay, bool next);

/** Moves `popup` over the middle of `window` (integer division), for just before it is shown. */
void centreOn(QWidget *popup, const QWidget *window);

/** The screen that a window's middle lies on; the one it belongs to when that is on none. */
QScreen *screenOf(const QWidget *window);

/** Moves `popup` by as little as it takes to have it on its screen, the top left corner first. `frame`: what to leave
 * for a frame that it does not have yet. */
void keepOnScreen(QWidget *popup, const QMargins &frame = QMargins());

/**
 * Has the style of each window made so far looked up when that window is first shown. Qt would do it for all of them
 * at start: 20 ms more and 2.6 MiB for dialogs that may never be opened. GUI thread.
 */
void polishWhenShown();

/** Paints the style-sheet background of a plain QWidget subclass; for its paintEvent. */
void paintBackground(QWidget *widget);

} // namespace Dialogs

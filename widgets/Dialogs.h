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
 * Leaves it to the first showing of each window that was made so far to look up its style and load its pictures. Qt
 * would do so for all of them once control returns to the event loop. GUI thread.
 */
void polishWhenShown();

/**
 * Has Qt's style forget the fields of the number boxes in `window`, which is hidden and about to be deleted, and takes
 * them out of their boxes. Qt keeps what it looked up for a widget until that is destroyed, but not for one that is a
 * part of another widget (QStyleSheetStyle::initObject): what it kept for such fields, it would keep for good.
 */
void forgetFields(QWidget *window);

/** Paints the style-sheet background of a plain QWidget subclass; for its paintEvent. */
void paintBackground(QWidget *widget);

} // namespace Dialogs

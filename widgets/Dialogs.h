// SPDX-License-Identifier: MIT
#pragma once

class QScreen;
class QWidget;

/** What the program's frameless dialogs have in common. */
namespace Dialogs {

/** Frameless, translucent, application-modal top-level window; `body` carries the gray shadow (radius 10, no offset).
 */
void makeFrameless(QWidget *dialog, QWidget *body);

/** Moves `popup` over the middle of `window` (integer division), for just before it is shown. */
void centreOn(QWidget *popup, const QWidget *window);

/** The screen that a window's middle lies on; the one it belongs to when that is on none. */
QScreen *screenOf(const QWidget *window);

/** Moves `popup` by as little as it takes to have it on its screen, the top left corner first. */
void keepOnScreen(QWidget *popup);

/**
 * Leaves it to the first showing of each window that was made so far to look up its style and load its pictures. Qt
 * would do so for all of them once control returns to the event loop. GUI thread.
 */
void polishWhenShown();

/** Paints the style-sheet background of a plain QWidget subclass; for its paintEvent. */
void paintBackground(QWidget *widget);

} // namespace Dialogs

// SPDX-License-Identifier: MIT
#pragma once

#include <QMargins>

class QScreen;
class QWidget;

/** What the program's frameless dialogs have in common. */
namespace Dialogs {

/** Makes `dialog` a frameless, translucent, application-modal window. `body` gets a gray shadow. */
void makeFrameless(QWidget *dialog, QWidget *body);

/**
 * Makes the widgets of `window` forget, each time it is hidden, that the mouse was over them. Otherwise a button that
 * was under the mouse when its window went would still look hovered when the window is shown again.
 */
void forgetMouseWhenHidden(QWidget *window);

/**
 * Moves the focus to the next (or previous) control of `overlay`, from the last one to the first. For the
 * focusNextPrevChild() of a widget that lies over its siblings. False when no control takes the focus.
 */
bool focusWithin(QWidget *overlay, bool next);

/** Centres `popup` on `window`. Call it before showing the popup. */
void centreOn(QWidget *popup, const QWidget *window);

/** The screen under the middle of the window, or the window's own screen when there is none. */
QScreen *screenOf(const QWidget *window);

/**
 * Moves `popup` onto its screen, by as little as that takes. When it is larger than the screen, its top left corner
 * stays visible. `frame` is kept free for a window frame that is not there yet.
 */
void keepOnScreen(QWidget *popup, const QMargins &frame = QMargins());

/**
 * Lets each window made so far look up its style when it is first shown. By default Qt does so for all of them at
 * start, which takes 17 ms of processor time and 2.6 MiB for dialogs that may never be opened. GUI thread.
 */
void polishWhenShown();

/** Paints the background that the style sheet gives to a plain QWidget subclass. For its paintEvent(). */
void paintBackground(QWidget *widget);

} // namespace Dialogs

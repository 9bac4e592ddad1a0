// SPDX-License-Identifier: MIT
#pragma once

#include <QElapsedTimer>
#include <QObject>

class QAbstractButton;
class QWidget;

/**
 * Tells a click that opens a popup from the click that has just closed it. A click on the toggle of an open popup
 * first takes the activation from the popup, which closes it and releases the toggle; the same click then presses
 * the toggle again, and would reopen what the user wanted closed.
 */
class PopupToggle final : public QObject
{
    Q_OBJECT

public:
    /** Both must outlive this object. */
    PopupToggle(QAbstractButton *toggle, QWidget *popup);

    /** The popup has lost the activation and closed: releases the toggle. */
    void popupClosed();
    /** Whether the click that has just checked the toggle opens the popup; releases the toggle when it does not. */
    bool opensPopup();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QAbstractButton *m_toggle;
    QWidget *m_popup;
    QElapsedTimer m_sinceClosed;
    bool m_bPressClosesPopup = false;
};

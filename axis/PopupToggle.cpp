// SPDX-License-Identifier: MIT
#include "axis/PopupToggle.h"

#include <QAbstractButton>
#include <QEvent>

namespace {

// The press that takes the activation is the next event in the queue; a person's next press comes later than this.
constexpr int samePressMs = 150;

} // namespace

PopupToggle::PopupToggle(QAbstractButton *toggle, QWidget *popup)
    : QObject(toggle)
    , m_toggle(toggle)
    , m_popup(popup)
{
    toggle->installEventFilter(this);
}

void PopupToggle::popupClosed()
{
    m_sinceClosed.start();
    m_toggle->setChecked(false);
}

bool PopupToggle::opensPopup()
{
    const bool opens = !m_bPressClosesPopup;
    m_bPressClosesPopup = false;
    if (!opens)
        m_toggle->setChecked(false);
    return opens;
}

bool PopupToggle::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        // One that comes before the deactivation finds the popup still open, one that comes after finds it just closed.
        m_bPressClosesPopup =
            m_popup->isVisible() || (m_sinceClosed.isValid() && m_sinceClosed.elapsed() < samePressMs);
        break;
    case QEvent::KeyPress: // takes nothing from the popup, and nothing of an earlier press counts
        m_bPressClosesPopup = false;
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

// SPDX-License-Identifier: MIT
#include "widgets/LinkLabel.h"

#include <QDesktopServices>
#include <QKeyEvent>
#include <QUrl>

LinkLabel::LinkLabel(QWidget *parent)
    : QLabel(parent)
{
    setFocusPolicy(Qt::TabFocus);
}

void LinkLabel::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        if (event->isAutoRepeat())
            break;
        if (openExternalLinks())
            QDesktopServices::openUrl(QUrl(m_sTarget));
        else
            emit linkActivated(m_sTarget);
        break;
    default:
        QLabel::keyPressEvent(event);
    }
}

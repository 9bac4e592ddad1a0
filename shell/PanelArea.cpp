// SPDX-License-Identifier: MIT
#include "shell/PanelArea.h"

#include "widgets/Dialogs.h"

#include <QPainter>

void PanelArea::setHint(const QString &hint)
{
    m_sHint = hint;
    setAccessibleDescription(hint); // painted, it can be read by nobody else
    update();
}

void PanelArea::childEvent(QChildEvent *event)
{
    QWidget::childEvent(event);
    update(); // the hint is wider than what a panel uncovers
}

void PanelArea::paintEvent(QPaintEvent *)
{
    Dialogs::paintBackground(this);
    if (!childrenRect().isEmpty()) // hidden children do not count
        return;
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(rect(), Qt::AlignCenter, m_sHint);
}

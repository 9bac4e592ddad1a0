// SPDX-License-Identifier: MIT
#include "shell/PanelBoard.h"

#include "axis/MoverControlWidget.h"

#include <QGridLayout>
#include <QSpacerItem>

#include <algorithm>

namespace {

void retire(MoverControlWidget *panel)
{
    panel->hide();
    panel->stopPolling(); // the controller may be closed, and it lives on until control returns to the event loop
    panel->deleteLater(); // it may be the one whose button is being handled
}

} // namespace

PanelBoard::PanelBoard(QWidget *content)
    : m_content(content)
{
}

void PanelBoard::add(MoverControlWidget *panel)
{
    m_panels.append(panel);
    relay();
    panel->show();
}

void PanelBoard::remove(MoverControlWidget *panel)
{
    m_panels.removeOne(panel);
    retire(panel);
    for (MoverControlWidget *other : qAsConst(m_panels))
        other->show(); // the removed one may have been expanded
    relay();
}

void PanelBoard::clear()
{
    for (MoverControlWidget *panel : qAsConst(m_panels))
        retire(panel);
    m_panels.clear();
    relay();
}

void PanelBoard::expand(MoverControlWidget *panel)
{
    for (MoverControlWidget *other : qAsConst(m_panels))
        other->hide();
    panel->show();
    panel->setFixedSize(1060, 560);
}

void PanelBoard::collapse(MoverControlWidget *panel)
{
    for (MoverControlWidget *other : qAsConst(m_panels))
        other->show();
    panel->setFixedSize(530, 280); // less than a panel begins with; it stays that way
    relay();
}

void PanelBoard::relay()
{
    const int count = m_panels.size();
    m_content->resize(count >= 2 ? 1630 : 820, (count + 1) / 2 * 450 + 140);

    delete m_content->layout();
    auto *grid = new QGridLayout(m_content);
    grid->setSpacing(4);
    grid->setContentsMargins(3, 3, 3, 3);
    for (int k = 0; k < count; ++k)
        grid->addWidget(m_panels.at(k), k / 2, k % 2, Qt::AlignLeft | Qt::AlignTop);
    const int below = (count + 1) / 2;
    grid->addItem(new QSpacerItem(0, 0, QSizePolicy::Minimum, QSizePolicy::Expanding), below, 0);
    grid->setRowStretch(below, 1);
    grid->setColumnStretch(1, 1); // keeps both columns to the left in a wider window
}

MoverControlWidget *PanelBoard::find(const QString &axisName) const
{
    const auto panel = std::find_if(m_panels.begin(), m_panels.end(), [&](const MoverControlWidget *candidate) {
        return candidate->axisName() == axisName;
    });
    return panel == m_panels.end() ? nullptr : *panel;
}

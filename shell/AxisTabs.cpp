// SPDX-License-Identifier: MIT
#include "shell/AxisTabs.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>

#include <algorithm>

namespace {

constexpr char tabSheet[] =
    ".QPushButton{border-right:2px solid rgb(66, 66, 66);text-align: center;padding-left:10px;padding-right:10px;"
    "font-size: 20px;color: #FFFFFF;}"
    ".QPushButton:hover{background-color: rgb(140, 140, 140);}"
    ".QPushButton:pressed{background-color: rgb(22,110,215);}"
    ".QPushButton:!enabled{background-color: rgb(200, 200, 200);}";

} // namespace

AxisTabs::AxisTabs(QWidget *menuBar)
    : m_menuBar(menuBar)
{
}

QPushButton *AxisTabs::add(const QString &axisName, bool shown)
{
    auto *tab = new QPushButton(axisName, m_menuBar);
    tab->setObjectName(axisName);
    tab->setCheckable(true);
    tab->setFixedSize(120, 60);
    tab->setStyleSheet(QLatin1String(tabSheet));
    m_shown.insert(tab, shown);
    rebuild();
    tab->show();
    return tab;
}

void AxisTabs::remove(const QString &axisName)
{
    const QList<QPushButton *> tabs = m_shown.keys();
    for (QPushButton *tab : tabs) {
        if (tab->objectName() == axisName)
            discard(tab);
    }
    rebuild();
}

void AxisTabs::clear()
{
    const QList<QPushButton *> tabs = m_shown.keys();
    for (QPushButton *tab : tabs)
        discard(tab);
    rebuild();
}

void AxisTabs::discard(QPushButton *tab)
{
    m_shown.remove(tab);
    tab->hide();
    tab->setParent(nullptr); // no longer found in the menu bar
    tab->deleteLater();
}

/** Connect button, tabs in the order of their texts, add button, space, joystick switch. */
void AxisTabs::rebuild()
{
    auto *rocker = m_menuBar->findChild<QRadioButton *>(QStringLiteral("radioButton_Rocker"));
    auto *layout = qobject_cast<QHBoxLayout *>(m_menuBar->layout());
    if (!layout)
        layout = new QHBoxLayout(m_menuBar);
    while (QLayoutItem *item = layout->takeAt(0))
        delete item;
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);

    QList<QPushButton *> tabs = m_shown.keys();
    std::sort(
        tabs.begin(), tabs.end(), [](const QPushButton *a, const QPushButton *b) { return a->text() < b->text(); });

    QList<QWidget *> order{m_menuBar->findChild<QPushButton *>(QStringLiteral("pushButton_connect"))};
    for (QPushButton *tab : qAsConst(tabs))
        order.append(tab);
    order.append(m_menuBar->findChild<QPushButton *>(QStringLiteral("pushButton_addAsix")));
    for (QWidget *widget : qAsConst(order))
        layout->addWidget(widget, 0, Qt::AlignVCenter); // the connect button keeps the height of its picture
    layout->addStretch();
    layout->addWidget(rocker);

    order.append(rocker);
    for (int k = 1; k < order.size(); ++k)
        QWidget::setTabOrder(order.at(k - 1), order.at(k));
}

// SPDX-License-Identifier: MIT
#pragma once

#include <QMap>
#include <QString>

class QPushButton;
class QWidget;

/** The tab buttons of the axis panels in the menu bar, and the order of everything that stands there. */
class AxisTabs final
{
public:
    /** `menuBar` is the parent of the buttons "pushButton_connect", "pushButton_addAsix" and "radioButton_Rocker". */
    explicit AxisTabs(QWidget *menuBar);

    /** Creates the button of an axis; its text and object name are the axis name. */
    QPushButton *add(const QString &axisName, bool shown);
    void remove(const QString &axisName);
    void clear();

    /** Whether the panel of this button counts as shown. */
    bool isShown(QPushButton *tab) const { return m_shown.value(tab); }
    void setShown(QPushButton *tab) { m_shown[tab] = true; }
    int count() const { return m_shown.size(); }

private:
    void discard(QPushButton *tab);
    void rebuild();

    QWidget *m_menuBar;
    QMap<QPushButton *, bool> m_shown;
};

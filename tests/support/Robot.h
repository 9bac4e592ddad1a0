// SPDX-License-Identifier: MIT
#pragma once

#include "models/AddControlsWidget.h"
#include "shell/ConnectionWidget.h"
#include "shell/MoverWidget.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QMessageBox>
#include <QPushButton>

#include <functional>

/** What a user does with the main window and its dialogs, by the names of what is in them. How it clicks, it is told.
 */
class Robot final
{
public:
    using Click = std::function<void(QAbstractButton *button)>;

    Robot(MoverWidget *window, Click click)
        : m_window(window)
        , m_click(std::move(click))
    {
    }

    void click(const QObject *in, const char *name) const
    {
        m_click(in->findChild<QPushButton *>(QLatin1String(name)));
    }

    /** Chooses among the controllers that the connection dialog offers. False when this one is not offered. */
    bool choose(int id) const
    {
        click(m_window, "pushButton_connect");
        auto *list = connection()->findChild<QComboBox *>(QStringLiteral("comboBox_comList"));
        list->setCurrentIndex(list->findData(id));
        return list->currentIndex() >= 0;
    }
    void connectChosen() const { click(connection(), "pushButton_connectSerial"); }
    void connectTo(int id) const
    {
        choose(id);
        connectChosen();
    }
    void disconnect() const
    {
        click(m_window, "pushButton_connect");
        click(connection(), "pushButton_disConnect");
        connection()->hide();
    }
    /** Through the add-axis dialog: the axis index, and a model of its first stage type. */
    void addAxis(int axis, const QString &model) const
    {
        click(m_window, "pushButton_addAsix");
        auto *add = m_window->findChild<AddControlsWidget *>();
        add->findChild<QComboBox *>(QStringLiteral("comboBox_Axsi"))->setCurrentText(nameOf(axis));
        add->findChild<QComboBox *>(QStringLiteral("comboBox_models"))->setCurrentText(model);
        click(add, "pushButton_confirm");
    }

    ConnectionWidget *connection() const { return m_window->findChild<ConnectionWidget *>(); }
    MoverControlWidget *panel(int axis) const { return m_window->panelBoard().find(nameOf(axis)); }
    static QString nameOf(int axis) { return QStringLiteral("Axis%1").arg(axis + 1); }

    /** The open message box; null when there is none. */
    static QMessageBox *box() { return qobject_cast<QMessageBox *>(QApplication::activeModalWidget()); }
    /** The button of the open message box that confirms (AcceptRole) or cancels (RejectRole); null without a box. */
    static QAbstractButton *boxButton(QMessageBox::ButtonRole role)
    {
        const QList<QAbstractButton *> buttons = box() ? box()->buttons() : QList<QAbstractButton *>();
        for (QAbstractButton *button : buttons) {
            if (box()->buttonRole(button) == role)
                return button;
        }
        return nullptr;
    }

private:
    MoverWidget *m_window;
    Click m_click;
};

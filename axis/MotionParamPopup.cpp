// SPDX-License-Identifier: MIT
#include "axis/MotionParamPopup.h"

#include "axis/MotionLimits.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/MessageBox.h"

#include <QAbstractSpinBox>
#include <QEvent>
#include <QLabel>
#include <QPointer>

MotionParamPopup::MotionParamPopup(QWidget *parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint)
{
    Dialogs::forgetMouseWhenHidden(this);
}

void MotionParamPopup::setForm(QPushButton *confirm, QLabel *length, QLabel *speed, QLabel *acceleration)
{
    m_lengthUnit = length;
    m_speedUnit = speed;
    m_accelerationUnit = acceleration;
    showUnit();
    new DialogKeys(
        this, [this] { close(); }, confirm);
}

void MotionParamPopup::setAxis(const AxisDescription &axis)
{
    m_axis = axis;
    showUnit();
}

void MotionParamPopup::showUnit()
{
    if (m_lengthUnit)
        m_lengthUnit->setText(m_axis.unit);
    if (m_speedUnit)
        m_speedUnit->setText(m_axis.unit + QStringLiteral("/s"));
    if (m_accelerationUnit)
        m_accelerationUnit->setText(m_axis.unit + QStringLiteral("/s²"));
}

void MotionParamPopup::open()
{
    show();
    load();
    if (auto *first = findChild<QAbstractSpinBox *>()) {
        first->setFocus();
        first->selectAll();
    }
}

bool MotionParamPopup::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::Show:
        activateWindow();
        break;
    case QEvent::WindowDeactivate:
        if (!m_bAsking)
            close();
        break;
    case QEvent::Hide: // however it was closed, its toggle must hear of it
        announceDeactivation();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

void MotionParamPopup::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void MotionParamPopup::paintEvent(QPaintEvent *)
{
    Dialogs::paintBackground(this);
}

void MotionParamPopup::on_pushButton_confirm_clicked()
{
    const QString broken = MotionLimits::message(check(), m_axis);
    if (!broken.isEmpty()) {
        const QPointer<MotionParamPopup> alive(this); // the panel may be closed under the box
        m_bAsking = true;
        MessageBox::inform(this, broken, MessageBox::Kind::MotionPopup);
        if (!alive)
            return;
        m_bAsking = false;
        activateWindow();
        return;
    }
    send();
    close();
}

void MotionParamPopup::on_pushButton_restore_clicked()
{
    load();
}

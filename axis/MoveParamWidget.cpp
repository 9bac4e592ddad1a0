// SPDX-License-Identifier: MIT
#include "axis/MoveParamWidget.h"

#include "device/SerialComDev.h"
#include "widgets/Form.h"

#include "ui_MoveParamWidget.h"

#include <QBitmap>

MoveParamWidget::MoveParamWidget(QWidget *parent)
    : MotionParamPopup(parent)
    , ui(makeForm<Ui::MoveParamWidget>(this))
{
    // This popup is not translucent: its window has the outline of its picture, arrow and all.
    setMask(QPixmap(QStringLiteral(":/image/settings/moveParam.png")).mask());
    setForm(ui->pushButton_confirm, ui->label_posUnit, ui->label_speedUnit, ui->label_accUnit);
}

MoveParamWidget::~MoveParamWidget() = default;

void MoveParamWidget::load()
{
    const auto worker = SerialComDev::instance();
    ui->doubleSpinBox_disp->setValue(worker->getAxisTargetPos(axis().index));
    ui->doubleSpinBox_speed->setValue(worker->getAxisSpeed(axis().index));
    ui->doubleSpinBox_acc->setValue(worker->getAxisAcceleration(axis().index));
}

QVector<MotionRule> MoveParamWidget::check() const
{
    return MotionRules::brokenByMove(
        axis(), ui->doubleSpinBox_disp->value(), ui->doubleSpinBox_speed->value(), ui->doubleSpinBox_acc->value());
}

void MoveParamWidget::send()
{
    const auto worker = SerialComDev::instance();
    emit worker->signal_setAbsoluteDispParams(axis().index, ui->doubleSpinBox_disp->value());
    emit worker->signal_setSpeedParams(axis().index, ui->doubleSpinBox_acc->value(), ui->doubleSpinBox_speed->value());
}

void MoveParamWidget::retranslate()
{
    ui->retranslateUi(this);
}

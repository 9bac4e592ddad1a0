// SPDX-License-Identifier: MIT
#include "axis/DriveParamWidget.h"

#include "device/SerialComDev.h"
#include "widgets/Form.h"

#include "ui_DriveParamWidget.h"

DriveParamWidget::DriveParamWidget(QWidget *parent)
    : MotionParamPopup(parent)
    , ui(makeForm<Ui::DriveParamWidget>(this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    setForm(ui->pushButton_confirm, ui->label_relativeUnit, ui->label_speedUnit, ui->label_accUnit);
}

DriveParamWidget::~DriveParamWidget() = default;

void DriveParamWidget::load()
{
    const auto worker = SerialComDev::instance();
    ui->doubleSpinBox_speed->setValue(worker->getAxisSpeed(axis().index));
    ui->doubleSpinBox_disp->setValue(worker->getAxisRelativeDisp(axis().index));
    ui->doubleSpinBox_acc->setValue(worker->getAxisAcceleration(axis().index));
    ui->checkBox_travelEnable->setChecked(worker->getAxisRelativeDispEnable(axis().index));
}

QVector<MotionRule> DriveParamWidget::check() const
{
    return MotionRules::brokenByDrive(
        axis(), ui->doubleSpinBox_disp->value(), ui->doubleSpinBox_speed->value(), ui->doubleSpinBox_acc->value());
}

void DriveParamWidget::send()
{
    const auto worker = SerialComDev::instance();
    emit worker->signal_setRelativeDispParams(
        axis().index, ui->doubleSpinBox_disp->value(), ui->checkBox_travelEnable->isChecked());
    emit worker->signal_setSpeedParams(axis().index, ui->doubleSpinBox_acc->value(), ui->doubleSpinBox_speed->value());
}

void DriveParamWidget::retranslate()
{
    ui->retranslateUi(this);
}

// SPDX-License-Identifier: MIT
#include "axis/DriveParamWidget.h"

#include "axis/MotionLimits.h"
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
    ui->doubleSpinBox_speed->setValue(worker->getAxisSpeed(axis()));
    ui->doubleSpinBox_disp->setValue(worker->getAxisRelativeDisp(axis()));
    ui->doubleSpinBox_acc->setValue(worker->getAxisAcceleration(axis()));
    ui->checkBox_travelEnable->setChecked(worker->getAxisRelativeDispEnable(axis()));
}

QString DriveParamWidget::check() const
{
    return MotionLimits::checkTravel(ui->doubleSpinBox_disp->value(), maxTravel()) +
           MotionLimits::checkSpeed(ui->doubleSpinBox_speed->value(), maxSpeed()) +
           MotionLimits::checkAcceleration(ui->doubleSpinBox_acc->value(), maxAcceleration());
}

void DriveParamWidget::send()
{
    const auto worker = SerialComDev::instance();
    emit worker->signal_setRelativeDispParams(
        axis(), ui->doubleSpinBox_disp->value(), ui->checkBox_travelEnable->isChecked());
    emit worker->signal_setSpeedParams(axis(), ui->doubleSpinBox_acc->value(), ui->doubleSpinBox_speed->value());
}

void DriveParamWidget::retranslate()
{
    ui->retranslateUi(this);
}

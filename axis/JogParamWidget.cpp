// SPDX-License-Identifier: MIT
#include "axis/JogParamWidget.h"

#include "device/SerialComDev.h"
#include "widgets/Form.h"

#include "ui_JogParamWidget.h"

JogParamWidget::JogParamWidget(QWidget *parent)
    : MotionParamPopup(parent)
    , ui(makeForm<Ui::JogParamWidget>(this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    setForm(ui->pushButton_confirm, ui->label_stepUnit, nullptr, nullptr);
}

JogParamWidget::~JogParamWidget() = default;

void JogParamWidget::load()
{
    const auto worker = SerialComDev::instance();
    ui->doubleSpinBox_step->setValue(worker->getAxisJogStep(axis().index));
    ui->spinBox_count->setValue(worker->getAxisJogCount(axis().index));
    ui->spinBox_delay->setValue(worker->getAxisJogDelay(axis().index));
}

QVector<MotionRule> JogParamWidget::check() const
{
    return MotionRules::brokenByJog(
        axis(), ui->doubleSpinBox_step->value(), ui->spinBox_count->value(), ui->spinBox_delay->value());
}

void JogParamWidget::send()
{
    emit SerialComDev::instance()->signal_setJogParams(
        axis().index, ui->doubleSpinBox_step->value(), ui->spinBox_count->value(), ui->spinBox_delay->value());
}

void JogParamWidget::retranslate()
{
    ui->retranslateUi(this);
}

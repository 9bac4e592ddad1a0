// SPDX-License-Identifier: MIT
#include "models/DeviceParamWidget.h"

#include "device/SerialComDev.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"

#include "ui_DeviceParamWidget.h"

#include <QEvent>
#include <QMouseEvent>

// pushButton_file has no slot, on purpose: the name of the configuration file is typed by hand.
DeviceParamWidget::DeviceParamWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::DeviceParamWidget>(this))
{
    new DialogKeys(this, [this] { hide(); });
    Dialogs::forgetMouseWhenHidden(this);
    setFocusProxy(ui->checkBox_input);
}

DeviceParamWidget::~DeviceParamWidget() = default;

void DeviceParamWidget::setInputEnabled(bool enabled)
{
    ui->checkBox_input->setChecked(enabled);
}

bool DeviceParamWidget::isInputEnabled() const
{
    return ui->checkBox_input->isChecked();
}

void DeviceParamWidget::setOutputEnabled(bool enabled)
{
    ui->checkBox_output->setChecked(enabled);
}

bool DeviceParamWidget::isOutputEnabled() const
{
    return ui->checkBox_output->isChecked();
}

void DeviceParamWidget::on_pushButton_confirm_clicked()
{
    emit SerialComDev::instance()->signal_setTriggerParams(m_iAxis, int(isInputEnabled()), int(isOutputEnabled()));
}

void DeviceParamWidget::on_pushButton_writeConfig_clicked()
{
    emit SerialComDev::instance()->signal_setMotorConfig(
        ui->comboBox_motorID->currentText().toInt(), ui->lineEdit_motorModel->text(), ui->lineEdit_fileName->text());
}

/** Tab does not lead to the panel underneath. */
bool DeviceParamWidget::focusNextPrevChild(bool next)
{
    return Dialogs::focusWithin(this, next);
}

void DeviceParamWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
    QWidget::changeEvent(event);
}

void DeviceParamWidget::mousePressEvent(QMouseEvent *event)
{
    if (!ui->widget_back->geometry().contains(event->localPos().toPoint()))
        hide();
    QWidget::mousePressEvent(event);
}

void DeviceParamWidget::paintEvent(QPaintEvent *)
{
    Dialogs::paintBackground(this);
}

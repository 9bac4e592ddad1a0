// SPDX-License-Identifier: MIT
#include "models/DeviceParamWidget.h"

#include "device/SerialComDev.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"

#include "ui_DeviceParamWidget.h"

#include <QEvent>
#include <QMouseEvent>

// pushButton_file has no slot, on purpose: the name of the configuration file is typed by hand.
DeviceParamWidget::DeviceParamWidget(QWidget *parent)
    : QWidget(parent)
    , m_ui(std::make_unique<Ui::DeviceParamWidget>())
{
    m_ui->setupUi(this);
    new DialogKeys(this, [this] { hide(); });
    Dialogs::forgetMouseWhenHidden(this);
    setFocusProxy(m_ui->checkBox_input);
}

DeviceParamWidget::~DeviceParamWidget() = default;

void DeviceParamWidget::setInputEnabled(bool enabled)
{
    m_ui->checkBox_input->setChecked(enabled);
}

bool DeviceParamWidget::isInputEnabled() const
{
    return m_ui->checkBox_input->isChecked();
}

void DeviceParamWidget::setOutputEnabled(bool enabled)
{
    m_ui->checkBox_output->setChecked(enabled);
}

bool DeviceParamWidget::isOutputEnabled() const
{
    return m_ui->checkBox_output->isChecked();
}

void DeviceParamWidget::on_pushButton_confirm_clicked()
{
    emit SerialComDev::instance()->signal_setTriggerParams(m_iAxis, int(isInputEnabled()), int(isOutputEnabled()));
}

void DeviceParamWidget::on_pushButton_writeConfig_clicked()
{
    emit SerialComDev::instance()->signal_setMotorConfig(
        m_ui->comboBox_motorID->currentText().toInt(), m_ui->lineEdit_motorModel->text(),
        m_ui->lineEdit_fileName->text());
}

/** Tab does not lead to the panel underneath. */
bool DeviceParamWidget::focusNextPrevChild(bool next)
{
    return Dialogs::focusWithin(this, next);
}

void DeviceParamWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        m_ui->retranslateUi(this);
    QWidget::changeEvent(event);
}

void DeviceParamWidget::mousePressEvent(QMouseEvent *event)
{
    if (!m_ui->widget_back->geometry().contains(event->localPos().toPoint()))
        hide();
    QWidget::mousePressEvent(event);
}

void DeviceParamWidget::paintEvent(QPaintEvent *)
{
    Dialogs::paintBackground(this);
}

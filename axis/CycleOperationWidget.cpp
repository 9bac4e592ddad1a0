// SPDX-License-Identifier: MIT
#include "axis/CycleOperationWidget.h"

#include "axis/MotionLimits.h"
#include "device/SerialComDev.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"
#include "widgets/MessageBox.h"

#include "ui_CycleOperationWidget.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QPointer>

CycleOperationWidget::CycleOperationWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::CycleOperationWidget>(this))
{
    new DialogKeys(this, [this] { on_pushButton_close_clicked(); });
    Dialogs::forgetMouseWhenHidden(this);
    setFocusProxy(ui->doubleSpinBox_relativeDisp);
    setAxis(AxisDescription());
}

CycleOperationWidget::~CycleOperationWidget() = default;

void CycleOperationWidget::setAxis(const AxisDescription &axis)
{
    m_axis = axis;
    ui->label_dispUnit->setText(axis.unit);
    ui->label_speedUnit->setText(axis.unit + QStringLiteral("/s"));
    ui->label_accUnit->setText(axis.unit + QStringLiteral("/s²"));
}

void CycleOperationWidget::load(double travel, double speed, double acceleration, int count, int dwellMs)
{
    ui->doubleSpinBox_relativeDisp->setValue(travel);
    ui->doubleSpinBox_speed->setValue(speed);
    ui->doubleSpinBox_acc->setValue(acceleration);
    ui->spinBox_time->setValue(count);
    ui->spinBox_delay->setValue(dwellMs);
}

void CycleOperationWidget::wait(int milliseconds)
{
    QElapsedTimer elapsed;
    elapsed.start();
    while (elapsed.elapsed() < milliseconds)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

/** Tab does not lead to the panel underneath. */
bool CycleOperationWidget::focusNextPrevChild(bool next)
{
    return Dialogs::focusWithin(this, next);
}

void CycleOperationWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
    QWidget::changeEvent(event);
}

void CycleOperationWidget::paintEvent(QPaintEvent *)
{
    Dialogs::paintBackground(this);
}

void CycleOperationWidget::start(int mode)
{
    const int count = ui->spinBox_time->value();
    const double acceleration = ui->doubleSpinBox_acc->value();
    const double speed = ui->doubleSpinBox_speed->value();
    const double travel = ui->doubleSpinBox_relativeDisp->value();
    const int dwellMs = ui->spinBox_delay->value();

    const QString broken =
        MotionLimits::message(MotionRules::brokenByLoopRun(m_axis, travel, speed, acceleration, count), m_axis);
    if (!broken.isEmpty()) {
        MessageBox::inform(this, broken, MessageBox::Kind::LoopRun);
        return;
    }
    const auto worker = SerialComDev::instance();
    emit worker->signal_setSpeedParams(m_axis.index, acceleration, speed);
    emit worker->signal_setCircleParams(m_axis.index, count, travel, dwellMs);
    emit worker->signal_startMotor(m_axis.index, mode);
    emit signal_startDoing();
}

void CycleOperationWidget::stop()
{
    emit SerialComDev::instance()->signal_stopMotor(m_axis.index);
    emit signal_stopDoing();
}

void CycleOperationWidget::on_pushButton_left_clicked()
{
    start(MOVE_CODE_CIRCLE_NEGATIVE);
}

void CycleOperationWidget::on_pushButton_right_clicked()
{
    start(MOVE_CODE_CIRCLE_POSITIVE);
}

void CycleOperationWidget::on_pushButton_stop_clicked()
{
    stop();
}

void CycleOperationWidget::on_pushButton_close_clicked()
{
    if (!m_bIdle) {
        const QPointer<CycleOperationWidget> alive(this); // the panel may be closed under the box
        // This question is shown as it is in every language.
        const bool consent = MessageBox::confirm(
            this, QStringLiteral("运行中关闭该界面将会自动停止，是否关闭？"), MessageBox::Kind::LoopRun);
        if (!alive || !consent)
            return;
    }
    // Also when the axis stands still: closing always leaves it stopped.
    stop();
    hide();
}

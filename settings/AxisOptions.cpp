// SPDX-License-Identifier: MIT
#include "settings/AxisOptions.h"

#include "device/SerialComDev.h"
#include "widgets/BusyCursor.h"
#include "widgets/MessageBox.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QSignalBlocker>

#include <cmath>
#include <optional>

namespace {

QString readModelName(int axis)
{
    const BusyCursor busy;
    return SerialComDev::instance()->getMotorModelName(axis);
}

/** Length of the stage's position range; nothing when it cannot be read. */
std::optional<double> readTravel(int axis)
{
    const BusyCursor busy;
    MotorParams params = {};
    if (SerialComDev::instance()->getMotorParams(axis, params) < 0)
        return std::nullopt;
    return params.maxPos - params.minPos;
}

} // namespace

AxisOptions::AxisOptions(int axis, const Controls &controls)
    : m_iAxis(axis)
    , m_controls(controls)
{
}

void AxisOptions::hide() const
{
    m_controls.trigger->hide();
    m_controls.posConpen->hide();
}

void AxisOptions::load() const
{
    const auto worker = SerialComDev::instance();

    m_controls.trigger->show();
    SerialComDev::TriggerState state;
    if (worker->getTriggerState(m_iAxis, state) == 0) {
        // Neither the value nor a focus that moves on may send the displacement back.
        const QSignalBlocker quiet(m_controls.displacement);
        m_controls.triggerIn->setChecked(state.inEnabled);
        m_controls.triggerOut->setChecked(state.outEnabled);
        m_controls.displacement->setValue(state.step);
        if (state.inEnabled) // only switching the input off enables it again
            m_controls.displacement->setEnabled(false);
    }

    m_controls.posConpen->show();
    // The exclusive pair refuses to uncheck "on", so what has once been shown as on is shown as on until the user
    // switches it off.
    const int enabled = worker->getPosConpenEnable(m_iAxis);
    if (enabled >= 0)
        m_controls.posConpenOn->setChecked(enabled != 0);
}

void AxisOptions::changeTriggerIn() const
{
    const QString model = readModelName(m_iAxis);
    const bool in = m_controls.triggerIn->isChecked();
    const bool out = m_controls.triggerOut->isChecked();
    if (in) {
        const auto travel = model.isEmpty() ? std::nullopt : readTravel(m_iAxis);
        if (!travel) {
            tip(tr("请匹配位移台实际行程进行设置！")); // a reminder: the input is switched on all the same
        } else if (std::abs(m_controls.displacement->value()) > *travel) {
            m_controls.triggerIn->setChecked(false);
            tip(tr("位移量超出范围！[%1,%2]").arg(QString::number(-*travel), QString::number(*travel)));
            return;
        }
    }
    emit SerialComDev::instance()->signal_setTriggerParams(m_iAxis, int(in), int(out));
    m_controls.displacement->setEnabled(!in);
}

void AxisOptions::changeTriggerOut() const
{
    emit SerialComDev::instance()->signal_setTriggerParams(
        m_iAxis, int(m_controls.triggerIn->isChecked()), int(m_controls.triggerOut->isChecked()));
}

void AxisOptions::changeDisplacement() const
{
    emit SerialComDev::instance()->signal_setTriggerInDisp(m_iAxis, m_controls.displacement->value());
}

void AxisOptions::switchPosConpenOn() const
{
    if (m_controls.posConpenOn->isChecked())
        emit SerialComDev::instance()->signal_setPosConpenEnable(m_iAxis, true);
}

void AxisOptions::switchPosConpenOff() const
{
    if (m_controls.posConpenClose->isChecked())
        emit SerialComDev::instance()->signal_setPosConpenEnable(m_iAxis, false);
}

void AxisOptions::tip(const QString &text) const
{
    MessageBox::inform(m_controls.trigger->window(), text);
}

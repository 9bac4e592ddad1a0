// SPDX-License-Identifier: MIT
#include "settings/MotorParamEdits.h"

#include "device/LibraryText.h"

#include "ui_OptionsWidget.h"

#include <cmath>
#include <cstring>

namespace {

/** Which edit stands for which field. */
template <typename Field>
struct Row {
    QLineEdit *Ui_OptionsWidget::*edit;
    Field MotorParams::*field;
};

constexpr Row<double> realRows[] = {
    {&Ui_OptionsWidget::lineEdit_motor_helicalPitch, &MotorParams::dispOneCircle},
    {&Ui_OptionsWidget::lineEdit_motor_restoreSpeed, &MotorParams::restoreSpeed},
};

constexpr Row<uint16_t> integerRows[] = {
    {&Ui_OptionsWidget::lineEdit_motor_Motor_type, &MotorParams::moveType},
    {&Ui_OptionsWidget::lineEdit_motor_PLimitPolarity, &MotorParams::positivePolarity},
    {&Ui_OptionsWidget::lineEdit_motor_NLimitPolarity, &MotorParams::negativePolarity},
    {&Ui_OptionsWidget::lineEdit_motor_zeroPolarity, &MotorParams::originPolarity},
    {&Ui_OptionsWidget::lineEdit_motor_derection, &MotorParams::phaseDirction},
    {&Ui_OptionsWidget::lineEdit_motor_limitDerection, &MotorParams::limitDirection},
    {&Ui_OptionsWidget::lineEdit_motor_unitType, &MotorParams::unitType},
};

/** 0 for what is no number; "inf" and "nan" are none here. */
double toReal(const QString &text)
{
    const double value = text.toDouble();
    return std::isfinite(value) ? value : 0;
}

/** Copies the text over the start of the field, at most to its end. What stood behind it stays. */
void copyOver(char (&field)[MOVER_TEXT_LENGTH], const QString &text)
{
    const QByteArray bytes = text.toLatin1().left(MOVER_TEXT_LENGTH);
    std::memcpy(field, bytes.constData(), size_t(bytes.size()));
}

} // namespace

MotorParamEdits::MotorParamEdits(const Ui::OptionsWidget &form)
    : m_form(form)
{
}

void MotorParamEdits::show(const MotorParams &params) const
{
    m_form.lineEdit_motor_modelName->setText(fromLibraryText(params.modelName));
    m_form.lineEdit_motor_serialNumber->setText(fromLibraryText(params.serialNumber));
    m_form.lineEdit_motor_pulse->setText(QString::number(params.pulseOneCircle));
    for (const auto &row : realRows)
        (m_form.*row.edit)->setText(QString::number(params.*row.field, 'g', 6));
    for (const auto &row : integerRows)
        (m_form.*row.edit)->setText(QString::number(params.*row.field));
}

void MotorParamEdits::applyTo(MotorParams &params) const
{
    // On purpose: a model name keeps the tail of a longer old one, a serial number does not.
    copyOver(params.modelName, m_form.lineEdit_motor_modelName->text());
    std::memset(params.serialNumber, 0, sizeof params.serialNumber);
    copyOver(params.serialNumber, m_form.lineEdit_motor_serialNumber->text());
    // 16 bits go into the 32-bit field: more pulses than 65535 are no valid input.
    params.pulseOneCircle = m_form.lineEdit_motor_pulse->text().toUShort();
    for (const auto &row : realRows)
        params.*row.field = toReal((m_form.*row.edit)->text());
    for (const auto &row : integerRows)
        params.*row.field = (m_form.*row.edit)->text().toUShort();
}

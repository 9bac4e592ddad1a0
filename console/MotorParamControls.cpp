// SPDX-License-Identifier: MIT
#include "console/MotorParamControls.h"

#include "console/NumberInput.h"

#include "ui_DebugWidget.h"

#include <cstring>

namespace {

/** Calls `visit` with every number edit and the field that it stands for. */
template <typename Record, typename Visit>
void forEachNumber(const Ui::DebugWidget &form, Record &params, Visit visit)
{
    visit(form.lineEdit_pulseOneCircle, params.pulseOneCircle);
    visit(form.lineEdit_dispOneCircle, params.dispOneCircle);
    visit(form.lineEdit_restoreSpeed, params.restoreSpeed);
    visit(form.lineEdit_maxSpeed, params.maxSpeed);
    visit(form.lineEdit_maxAcc, params.maxAcc);
    visit(form.lineEdit_minPos, params.minPos);
    visit(form.lineEdit_maxPos, params.maxPos);
    visit(form.lineEdit_zeroOptWidth, params.zeroOptWidth);
    visit(form.lineEdit_optNum, params.optNum);
    visit(form.lineEdit_returnTrip, params.returnTrip);
    visit(form.lineEdit_motorPhase, params.motorPhase);
    visit(form.lineEdit_modifyDate, params.modifyDate);
    visit(form.lineEdit_maxRockerSpeed, params.maxRockerSpeed);
}

/** Calls `visit` with every combo box of an enumeration and the field that it stands for. */
template <typename Record, typename Visit>
void forEachChoice(const Ui::DebugWidget &form, Record &params, Visit visit)
{
    visit(form.comboBox_moveType, params.moveType);
    visit(form.comboBox_positivePolarity, params.positivePolarity);
    visit(form.comboBox_negativePolarity, params.negativePolarity);
    visit(form.comboBox_originPolarity, params.originPolarity);
    visit(form.comboBox_phaseDirction, params.phaseDirction);
    visit(form.comboBox_limitDirection, params.limitDirection);
    visit(form.comboBox_unitType, params.unitType);
}

QString shown(double value)
{
    return QString::number(value, 'g', 6);
}
QString shown(uint32_t value)
{
    return QString::number(value);
}
QString shown(int32_t value)
{
    return QString::number(value);
}

/** A text field of the record: up to the first zero, all of it when there is none. */
template <size_t length>
QString shown(const char (&field)[length])
{
    return QString::fromLatin1(field, int(qstrnlen(field, length)));
}

template <size_t length>
void store(char (&field)[length], const QString &text)
{
    const QByteArray bytes = text.toLatin1().left(int(length));
    std::memcpy(field, bytes.constData(), size_t(bytes.size()));
}

// The item of a value that the form has none for is the only one that carries data.

void removeExtraItem(QComboBox *combo)
{
    const int last = combo->count() - 1;
    if (combo->itemData(last).isValid())
        combo->removeItem(last);
}

void choose(QComboBox *combo, uint16_t value)
{
    removeExtraItem(combo);
    if (value >= combo->count())
        combo->addItem(QString::number(value), value);
    combo->setCurrentIndex(qMin(int(value), combo->count() - 1));
}

uint16_t chosen(const QComboBox *combo)
{
    const QVariant extra = combo->currentData();
    return uint16_t(extra.isValid() ? extra.toUInt() : uint(combo->currentIndex()));
}

void chooseText(QComboBox *combo, const QString &text)
{
    removeExtraItem(combo);
    if (combo->findText(text) < 0)
        combo->addItem(text, text);
    combo->setCurrentIndex(combo->findText(text));
}

} // namespace

MotorParamControls::MotorParamControls(const Ui::DebugWidget &form)
    : m_form(form)
{
    const MotorParams types = {};
    forEachNumber(form, types, [](QLineEdit *edit, auto field) {
        QObject::connect(edit, &QLineEdit::textChanged, edit, [edit](const QString &text) {
            decltype(field) value = 0;
            NumberInput::mark(edit, !NumberInput::read(text, value));
        });
    });
}

void MotorParamControls::show(const MotorParams &params) const
{
    m_form.lineEdit_modelName->setText(shown(params.modelName));
    m_form.lineEdit_serialNumber->setText(shown(params.serialNumber));
    forEachNumber(m_form, params, [](QLineEdit *edit, auto value) { edit->setText(shown(value)); });
    forEachChoice(m_form, params, [](QComboBox *combo, uint16_t value) { choose(combo, value); });
    chooseText(m_form.comboBox_optOrder, shown(params.optOrder));
}

MotorParams MotorParamControls::record() const
{
    MotorParams params = {};
    store(params.modelName, m_form.lineEdit_modelName->text());
    store(params.serialNumber, m_form.lineEdit_serialNumber->text());
    forEachNumber(m_form, params, [](QLineEdit *edit, auto &field) { NumberInput::read(edit->text(), field); });
    forEachChoice(m_form, params, [](QComboBox *combo, uint16_t &field) { field = chosen(combo); });
    store(params.optOrder, m_form.comboBox_optOrder->currentText());
    return params;
}

// SPDX-License-Identifier: MIT
#include "workbench/SequenceStepDialog.h"

#include "widgets/Form.h"
#include "workbench/SequenceTexts.h"

#include "ui_SequenceStepDialog.h"

#include <QEvent>
#include <QListView>
#include <QSignalBlocker>

#include <algorithm>

namespace {

/** The fields that a kind of step has. */
enum Field { Position = 1, Axis = 2, Value = 4, Speed = 8, Delay = 16, Text = 32, Passes = 64 };
constexpr int fields[] = {
    Position | Delay,             // GoTo
    Axis | Value | Speed | Delay, // MoveTo
    Axis | Value | Speed | Delay, // MoveBy
    Axis | Delay,                 // Home
    Value,                        // Wait
    Text,                         // Ask
    Passes,                       // Repeat
    Axis | Value,                 // SetSpeed
};
static_assert(sizeof(fields) / sizeof(*fields) == SequenceStep::KindCount);

} // namespace

SequenceStepDialog::SequenceStepDialog(
    const SequenceStep &step, const Positions &positions, const QVector<AxisDescription> &axes, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
    , ui(makeForm<Ui::SequenceStepDialog>(this))
    , m_axes(axes)
{
    // Plain list views, so that the style sheet reaches the items of the lists.
    for (QComboBox *box : {ui->comboBox_kind, ui->comboBox_position, ui->comboBox_axis})
        box->setView(new QListView(this));
    ui->pushButton_cancel->setAutoDefault(false);
    ui->pushButton_confirm->setDefault(true);
    fillKinds();
    ui->comboBox_kind->setCurrentIndex(step.kind);
    for (const NamedPosition &position : positions)
        ui->comboBox_position->addItem(position.name);
    if (!step.text.isEmpty() && step.kind == SequenceStep::GoTo && ui->comboBox_position->findText(step.text) < 0)
        ui->comboBox_position->addItem(step.text);
    ui->comboBox_position->setCurrentIndex(std::max(0, ui->comboBox_position->findText(step.text)));
    ui->doubleSpinBox_value->setValue(step.value);
    ui->doubleSpinBox_speed->setValue(step.speed);
    ui->doubleSpinBox_wait->setValue(step.wait);
    ui->lineEdit_text->setText(step.kind == SequenceStep::Ask ? step.text : QString());
    ui->spinBox_from->setValue(step.from + 1);
    ui->spinBox_count->setValue(step.count);
    showFields();
    if (const int place = ui->comboBox_axis->findData(step.axis); place >= 0) {
        ui->comboBox_axis->setCurrentIndex(place);
    } else if (step.axis >= 0) {
        ui->comboBox_axis->addItem(AxisDescription::nameOf(step.axis), step.axis);
        ui->comboBox_axis->setCurrentIndex(ui->comboBox_axis->count() - 1);
    }
    showFields();
    connect(
        ui->comboBox_kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &SequenceStepDialog::showFields);
    connect(
        ui->comboBox_axis, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &SequenceStepDialog::showFields);
    connect(ui->pushButton_confirm, &QPushButton::clicked, this, &QDialog::accept);
    connect(ui->pushButton_cancel, &QPushButton::clicked, this, &QDialog::reject);
}

SequenceStepDialog::~SequenceStepDialog() = default;

SequenceStep::Kind SequenceStepDialog::kind() const
{
    return SequenceStep::Kind(std::max(0, ui->comboBox_kind->currentIndex()));
}

void SequenceStepDialog::fillKinds()
{
    const QSignalBlocker quiet(ui->comboBox_kind);
    const int before = ui->comboBox_kind->currentIndex();
    ui->comboBox_kind->clear();
    for (int kind = 0; kind < SequenceStep::KindCount; ++kind)
        ui->comboBox_kind->addItem(
            kind == SequenceStep::GoTo ? tr("移到位置") : SequenceTexts::kind(SequenceStep::Kind(kind)));
    ui->comboBox_kind->setCurrentIndex(before);
}

QString SequenceStepDialog::unit() const
{
    const int axis = ui->comboBox_axis->currentData().toInt();
    const auto *const known = std::find_if(
        m_axes.cbegin(), m_axes.cend(), [axis](const AxisDescription &each) { return each.index == axis; });
    return known == m_axes.cend() ? QString() : QLatin1Char(' ') + known->unit;
}

void SequenceStepDialog::showFields()
{
    const SequenceStep::Kind kind = this->kind();
    {
        const QSignalBlocker quiet(ui->comboBox_axis);
        const QVariant before = ui->comboBox_axis->currentData();
        ui->comboBox_axis->clear();
        if (kind == SequenceStep::Home)
            ui->comboBox_axis->addItem(tr("所有轴"), int(SequenceStep::AllAxes));
        for (const AxisDescription &axis : m_axes)
            ui->comboBox_axis->addItem(axis.name(), axis.index);
        if (before.isValid() && before.toInt() >= 0 && ui->comboBox_axis->findData(before) < 0)
            ui->comboBox_axis->addItem(AxisDescription::nameOf(before.toInt()), before);
        ui->comboBox_axis->setCurrentIndex(std::max(0, ui->comboBox_axis->findData(before)));
    }
    // Laid out again with those that it has: a row that is hidden would leave its gap.
    while (ui->formLayout->rowCount() > 0) {
        const QFormLayout::TakeRowResult row = ui->formLayout->takeRow(0);
        const std::unique_ptr<QLayoutItem> label(row.labelItem);
        const std::unique_ptr<QLayoutItem> field(row.fieldItem);
    }
    const struct {
        int field;
        QLabel *label;
        QWidget *widget;
    } rows[] = {
        {~0, ui->label_kind, ui->comboBox_kind},           {Position, ui->label_position, ui->comboBox_position},
        {Axis, ui->label_axis, ui->comboBox_axis},         {Value, ui->label_value, ui->doubleSpinBox_value},
        {Speed, ui->label_speed, ui->doubleSpinBox_speed}, {Delay, ui->label_wait, ui->doubleSpinBox_wait},
        {Text, ui->label_text, ui->lineEdit_text},         {Passes, ui->label_from, ui->spinBox_from},
        {Passes, ui->label_count, ui->spinBox_count},
    };
    for (const auto &row : rows) {
        const bool isShown = (fields[kind] & row.field) != 0;
        row.label->setVisible(isShown);
        row.widget->setVisible(isShown);
        if (isShown)
            ui->formLayout->addRow(row.label, row.widget);
    }
    ui->label_value->setText(
        kind == SequenceStep::Wait       ? tr("时间")
        : kind == SequenceStep::MoveBy   ? tr("距离")
        : kind == SequenceStep::SetSpeed ? tr("速度")
                                         : tr("目标"));
    const QString unit = this->unit();
    const QString perSecond = unit.isEmpty() ? unit : unit + QStringLiteral("/s");
    ui->doubleSpinBox_value->setSuffix(
        kind == SequenceStep::Wait       ? QStringLiteral(" s")
        : kind == SequenceStep::SetSpeed ? perSecond
                                         : unit);
    ui->doubleSpinBox_speed->setSuffix(perSecond);
    // Nowhere to go without a position.
    ui->pushButton_confirm->setEnabled(kind != SequenceStep::GoTo || ui->comboBox_position->count() > 0);
    if (isVisible())
        adjustSize();
}

SequenceStep SequenceStepDialog::step() const
{
    SequenceStep step;
    step.kind = kind();
    const int has = fields[step.kind];
    if (has & Axis)
        step.axis = ui->comboBox_axis->currentData().toInt();
    if (has & Value)
        step.value = ui->doubleSpinBox_value->value();
    if (has & Speed)
        step.speed = ui->doubleSpinBox_speed->value();
    if (has & Delay)
        step.wait = ui->doubleSpinBox_wait->value();
    if (has & Position)
        step.text = ui->comboBox_position->currentText();
    if (has & Text)
        step.text = ui->lineEdit_text->text();
    if (has & Passes) {
        step.from = ui->spinBox_from->value() - 1;
        step.count = ui->spinBox_count->value();
    }
    return step;
}

void SequenceStepDialog::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        fillKinds();
        showFields();
    }
    QDialog::changeEvent(event);
}

// SPDX-License-Identifier: MIT
#include "workbench/ScanDialog.h"

#include "widgets/Form.h"

#include "ui_ScanDialog.h"

#include <QEvent>
#include <QListView>

#include <algorithm>

ScanDialog::ScanDialog(const QVector<AxisDescription> &axes, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
    , ui(makeForm<Ui::ScanDialog>(this))
    , m_axes(axes)
{
    ui->pushButton_cancel->setAutoDefault(false);
    ui->pushButton_confirm->setDefault(true);
    for (QComboBox *box : {ui->comboBox_axisFast, ui->comboBox_axisSlow}) {
        box->setView(new QListView(this)); // so that the style sheet reaches the items of the list
        for (const AxisDescription &axis : axes)
            box->addItem(axis.name(), axis.index);
        connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &ScanDialog::showCount);
    }
    ui->comboBox_axisSlow->setCurrentIndex(std::min(1, axes.size() - 1));
    ui->checkBox_slow->setEnabled(axes.size() > 1);
    const QList<TDoubleSpinBox *> numbers = findChildren<TDoubleSpinBox *>();
    for (TDoubleSpinBox *number : numbers)
        connect(number, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, &ScanDialog::showCount);
    connect(ui->checkBox_slow, &QCheckBox::toggled, this, &ScanDialog::showCount);
    connect(ui->pushButton_confirm, &QPushButton::clicked, this, &QDialog::accept);
    connect(ui->pushButton_cancel, &QPushButton::clicked, this, &QDialog::reject);
    showCount();
}

ScanDialog::~ScanDialog() = default;

Scan ScanDialog::scan() const
{
    Scan scan;
    scan.fast = {
        ui->comboBox_axisFast->currentData().toInt(), ui->doubleSpinBox_fromFast->value(),
        ui->doubleSpinBox_toFast->value(), ui->doubleSpinBox_stepFast->value()};
    scan.hasSlow = ui->checkBox_slow->isChecked();
    scan.slow = {
        ui->comboBox_axisSlow->currentData().toInt(), ui->doubleSpinBox_fromSlow->value(),
        ui->doubleSpinBox_toSlow->value(), ui->doubleSpinBox_stepSlow->value()};
    scan.meander = scan.hasSlow && ui->checkBox_meander->isChecked();
    scan.wait = ui->doubleSpinBox_wait->value();
    return scan;
}

void ScanDialog::showCount()
{
    const auto setUnit = [this](const QComboBox *box, std::initializer_list<QDoubleSpinBox *> fields) {
        const QString unit = m_axes.at(std::max(0, box->currentIndex())).unit;
        for (QDoubleSpinBox *field : fields)
            field->setSuffix(QLatin1Char(' ') + unit);
    };
    setUnit(ui->comboBox_axisFast, {ui->doubleSpinBox_fromFast, ui->doubleSpinBox_toFast, ui->doubleSpinBox_stepFast});
    setUnit(ui->comboBox_axisSlow, {ui->doubleSpinBox_fromSlow, ui->doubleSpinBox_toSlow, ui->doubleSpinBox_stepSlow});
    const bool hasSlow = ui->checkBox_slow->isChecked();
    QWidget *const slow[] = {ui->label_axisSlow,         ui->comboBox_axisSlow,      ui->label_fromSlow,
                             ui->doubleSpinBox_fromSlow, ui->label_toSlow,           ui->doubleSpinBox_toSlow,
                             ui->label_stepSlow,         ui->doubleSpinBox_stepSlow, ui->checkBox_meander};
    for (QWidget *widget : slow)
        widget->setEnabled(hasSlow);
    const int count = scan().count();
    ui->pushButton_confirm->setEnabled(count > 0);
    ui->label_count->setText(
        count > 0 ? tr("共 %1 步").arg(count)
        : hasSlow && ui->comboBox_axisFast->currentIndex() == ui->comboBox_axisSlow->currentIndex()
            ? tr("两个轴必须不同")
            : tr("步数太多，最多 %1 步").arg(Scan::Most));
}

void ScanDialog::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        showCount();
    }
    QDialog::changeEvent(event);
}

// SPDX-License-Identifier: MIT
#include "models/AddControlsWidget.h"

#include "device/SerialComDev.h"
#include "models/StageParams.h"
#include "widgets/BusyCursor.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"
#include "widgets/MessageBox.h"

#include "ui_AddControlsWidget.h"

#include <QCoreApplication>
#include <QDebug>
#include <QListView>

namespace {

/** Writes to the controller; waits for its answer. */
bool writeStage(int axis, const MoverDevParam &stage)
{
    const BusyCursor busy;
    return SerialComDev::instance()->setMotorParams(axis, toMotorParams(stage)) >= 0;
}

} // namespace

AddControlsWidget::AddControlsWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::AddControlsWidget>(this))
    , m_drag(this, ui->widget_title)
{
    qRegisterMetaType<MoverDevParam>("MoverDevParam");
    Dialogs::makeFrameless(this, ui->widget_back);
    new DialogKeys(
        this, [this] { close(); }, ui->pushButton_confirm);
    // A plain list view, so that the style sheet reaches the items of the list.
    ui->comboBox_models->setView(new QListView(this));
    ui->comboBox_Axsi->setView(new QListView(this));
    ui->buttonGroup_types->setId(ui->pushButton_lineControl, STAGE_LINEAR);
    ui->buttonGroup_types->setId(ui->pushButton_rotationControl, STAGE_ROTATION);
    ui->buttonGroup_types->setId(ui->pushButton_angularControl, STAGE_ANGULAR);
    ui->buttonGroup_types->setId(ui->pushButton_liftingControl, STAGE_LIFTING);
    ui->comboBox_models->setFocus(); // ready for a name to be typed
}

AddControlsWidget::~AddControlsWidget() = default;

void AddControlsWidget::setAxisNames(const QStringList &names)
{
    ui->comboBox_Axsi->clear();
    ui->comboBox_Axsi->addItems(names);
}

void AddControlsWidget::loadModelsData()
{
    if (m_catalogue.loadFile(QCoreApplication::applicationDirPath() + QLatin1String("/deviceModelsParam")))
        showModels();
}

void AddControlsWidget::loadModelsJson(const QJsonDocument &document)
{
    m_catalogue.load(document);
}

int AddControlsWidget::moveType() const
{
    return ui->buttonGroup_types->checkedId();
}

void AddControlsWidget::showModels()
{
    ui->comboBox_models->clear();
    ui->comboBox_models->addItems(m_catalogue.names(moveType()));
    // A combo box with a placeholder does not choose its first item by itself.
    ui->comboBox_models->setCurrentIndex(0);
}

void AddControlsWidget::on_pushButton_close_clicked()
{
    close();
}

void AddControlsWidget::on_pushButton_confirm_clicked()
{
    const QString axisName = ui->comboBox_Axsi->currentText();
    const QString modelName = ui->comboBox_models->currentText();
    qDebug() << "on_pushButton_confirm_clicked" << modelName;
    if (axisName.isEmpty() || modelName.isEmpty())
        return;

    const std::optional<MoverDevParam> stage = m_catalogue.find(modelName, moveType());
    const int axis = QString(axisName).remove(QLatin1String("Axis")).toInt() - 1;
    if (!stage || !writeStage(axis, *stage)) {
        MessageBox::inform(this, tr("参数配置错误!请重试。"));
        return;
    }
    emit signal_addControl(modelName, axis, *stage, false);
    close();
}

void AddControlsWidget::on_pushButton_lineControl_clicked()
{
    showModels();
}

void AddControlsWidget::on_pushButton_rotationControl_clicked()
{
    showModels();
}

void AddControlsWidget::on_pushButton_angularControl_clicked()
{
    showModels();
}

void AddControlsWidget::on_pushButton_liftingControl_clicked()
{
    showModels();
}

void AddControlsWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
    QWidget::changeEvent(event);
}

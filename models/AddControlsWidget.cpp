// SPDX-License-Identifier: MIT
#include "models/AddControlsWidget.h"

#include "device/SerialComDev.h"
#include "models/StageParams.h"
#include "widgets/BusyCursor.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/MessageBox.h"

#include "ui_AddControlsWidget.h"

#include <QCoreApplication>
#include <QDebug>
#include <QListView>

namespace {

std::unique_ptr<Ui::AddControlsWidget> makeForm(AddControlsWidget *dialog)
{
    auto form = std::make_unique<Ui::AddControlsWidget>();
    form->setupUi(dialog);
    return form;
}

/** A plain list view, so that the style sheet reaches the items of the pop-up. */
QListView *popupView(QWidget *parent)
{
    auto *view = new QListView(parent);
    view->setUniformItemSizes(true); // measures one of 20,000 models, not each
    return view;
}

/** Writes to the controller; waits for its answer. */
bool writeStage(int axis, const MoverDevParam &stage)
{
    const BusyCursor busy;
    return SerialComDev::instance()->setMotorParams(axis, toMotorParams(stage)) >= 0;
}

} // namespace

AddControlsWidget::AddControlsWidget(QWidget *parent)
    : QWidget(parent)
    , m_ui(makeForm(this))
    , m_drag(this, m_ui->widget_title)
{
    qRegisterMetaType<MoverDevParam>("MoverDevParam");
    Dialogs::makeFrameless(this, m_ui->widget_back);
    new DialogKeys(
        this, [this] { close(); }, m_ui->pushButton_confirm);
    m_ui->comboBox_models->setModel(&m_offered);
    m_ui->comboBox_models->setView(popupView(this));
    m_ui->comboBox_Axsi->setView(popupView(this));
    m_ui->buttonGroup_types->setId(m_ui->pushButton_lineControl, STAGE_LINEAR);
    m_ui->buttonGroup_types->setId(m_ui->pushButton_rotationControl, STAGE_ROTATION);
    m_ui->buttonGroup_types->setId(m_ui->pushButton_angularControl, STAGE_ANGULAR);
    m_ui->buttonGroup_types->setId(m_ui->pushButton_liftingControl, STAGE_LIFTING);
    m_ui->comboBox_models->setFocus(); // ready for a name to be typed
}

AddControlsWidget::~AddControlsWidget() = default;

void AddControlsWidget::setAxisNames(const QStringList &names)
{
    m_ui->comboBox_Axsi->clear();
    m_ui->comboBox_Axsi->addItems(names);
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
    return m_ui->buttonGroup_types->checkedId();
}

void AddControlsWidget::showModels()
{
    m_offered.setStringList(m_catalogue.names(moveType()));
    // A combo box with a placeholder does not choose its first item by itself.
    m_ui->comboBox_models->setCurrentIndex(0);
}

void AddControlsWidget::on_pushButton_close_clicked()
{
    close();
}

void AddControlsWidget::on_pushButton_confirm_clicked()
{
    const QString axisName = m_ui->comboBox_Axsi->currentText();
    const QString modelName = m_ui->comboBox_models->currentText();
    qDebug() << "on_pushButton_confirm_clicked" << modelName;
    if (axisName.isEmpty() || modelName.isEmpty())
        return;

    const std::optional<MoverDevParam> stage = m_catalogue.find(modelName, moveType());
    const int axis = QString(axisName).remove(QLatin1String("Axis")).toInt() - 1;
    if (!stage || !writeStage(axis, *stage)) {
        MessageBox::exec(this, tr("参数配置错误!请重试。"));
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
        m_ui->retranslateUi(this);
    QWidget::changeEvent(event);
}

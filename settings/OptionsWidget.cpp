// SPDX-License-Identifier: MIT
#include "settings/OptionsWidget.h"

#include "device/SerialComDev.h"
#include "settings/MessageCatalogue.h"
#include "widgets/BusyCursor.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"
#include "session/SmallFile.h"

#include "ui_OptionsWidget.h"

#include <QButtonGroup>
#include <QDebug>
#include <QEvent>
#include <QLibraryInfo>
#include <QMessageBox>
#include <QSignalBlocker>
#include <QStandardPaths>

namespace {

constexpr int Chinese = 0;
constexpr int English = 1;

constexpr qint64 maxCatalogueSize = 16 * 1024 * 1024;
constexpr int messageTimeMs = 10000;

/** What label_msg shows when the record to be changed could not even be read. */
constexpr int writeWithoutRead = 1000;

/**
 * A catalogue of the program's folder. Not by the translator itself: it would map the file, and crash when the file is
 * overwritten or damaged. `bytes` are what it reads from as long as it lives.
 */
bool loadCatalogue(const QString &name, QTranslator *translator, QByteArray *bytes)
{
    *bytes = SmallFile::read(QCoreApplication::applicationDirPath() + QLatin1Char('/') + name, maxCatalogueSize);
    return MessageCatalogue::isWhole(*bytes) &&
           translator->load(reinterpret_cast<const uchar *>(bytes->constData()), bytes->size());
}

} // namespace

OptionsWidget::OptionsWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::OptionsWidget>(this))
    , m_drag(this, ui->widget_title)
    , m_store(
          QCoreApplication::applicationDirPath(), QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation))
    , m_axes{{
          {0,
           {ui->groupBox_trigger_1, ui->checkBox_triggerIn_1, ui->checkBox_triggerOut_1, ui->doubleSpinBox_Axis1,
            ui->groupBox_posConpen_1, ui->checkBox_posConpen_on1, ui->checkBox_posConpen_close1}},
          {1,
           {ui->groupBox_trigger_2, ui->checkBox_triggerIn_2, ui->checkBox_triggerOut_2, ui->doubleSpinBox_Axis2,
            ui->groupBox_posConpen_2, ui->checkBox_posConpen_on2, ui->checkBox_posConpen_close2}},
          {2,
           {ui->groupBox_trigger_3, ui->checkBox_triggerIn_3, ui->checkBox_triggerOut_3, ui->doubleSpinBox_Axis3,
            ui->groupBox_posConpen_3, ui->checkBox_posConpen_on3, ui->checkBox_posConpen_close3}},
      }}
    , m_motorParams(*ui)
    , m_messageTimer(new QTimer(this))
{
    Dialogs::makeFrameless(this, ui->widget_back);
    new DialogKeys(this, [this] { close(); });

    auto *pages = new QButtonGroup(this); // exclusive
    for (QPushButton *page :
         {ui->pushButton_language, ui->pushButton_trigger, ui->pushButton_motorParam, ui->pushButton_posConpen})
        pages->addButton(page);
    ui->stackedWidget->setCurrentWidget(ui->page_language);

    m_messageTimer->setObjectName(QStringLiteral("timer_message"));
    m_messageTimer->setSingleShot(true);
    m_messageTimer->setInterval(messageTimeMs);
    connect(m_messageTimer, &QTimer::timeout, this, [this] { showMessage(nullptr); });

    if (loadCatalogue(QStringLiteral("qtbase_zh_CN.qm"), &m_qtChinese, &m_qtCatalogue) ||
        m_qtChinese.load(QStringLiteral("qtbase_zh_CN"), QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&m_qtChinese);
    loadLanguage();
}

OptionsWidget::~OptionsWidget() = default;

void OptionsWidget::setLanguage(int code)
{
    m_iLanguage = code;
    // Every change of translators makes all windows translate themselves again, so nothing is done twice.
    if (code == Chinese && m_english) {
        QCoreApplication::removeTranslator(m_english.get());
        m_english.reset();
        QCoreApplication::installTranslator(&m_qtChinese);
        retranslate();
    } else if (code == English && !m_english) {
        auto english = std::make_unique<QTranslator>();
        if (!loadCatalogue(QStringLiteral("mover_en_US.qm"), english.get(), &m_catalogue))
            return;
        m_english = std::move(english);
        QCoreApplication::removeTranslator(&m_qtChinese);
        QCoreApplication::installTranslator(m_english.get());
        retranslate();
    }
}

void OptionsWidget::saveLanguage(int code)
{
    m_store.save(code);
}

void OptionsWidget::loadLanguage()
{
    const int code = m_store.load();
    setLanguage(code);
    // Showing the stored choice is no new choice: nothing is to be written.
    const QSignalBlocker quietCn(ui->radioButton_cn);
    const QSignalBlocker quietEn(ui->radioButton_en);
    if (code == Chinese)
        ui->radioButton_cn->setChecked(true);
    else if (code == English)
        ui->radioButton_en->setChecked(true);
}

void OptionsWidget::loadDeviceSettings()
{
    const BusyCursor busy;
    const int axisCount = SerialComDev::instance()->getDevAxisCount(); // below 0 without a controller
    for (int axis = int(m_axes.size()) - 1; axis >= 0; --axis) {
        if (axis < axisCount)
            m_axes[size_t(axis)].load();
        else
            m_axes[size_t(axis)].hide();
    }
}

void OptionsWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void OptionsWidget::retranslate()
{
    ui->retranslateUi(this);
    showMessage(m_message);
}

void OptionsWidget::on_pushButton_close_clicked()
{
    close();
}

void OptionsWidget::on_pushButton_language_clicked()
{
    ui->stackedWidget->setCurrentWidget(ui->page_language);
}

void OptionsWidget::on_pushButton_trigger_clicked()
{
    ui->stackedWidget->setCurrentWidget(ui->page_trigger);
}

void OptionsWidget::on_pushButton_motorParam_clicked()
{
    QMessageBox::warning(nullptr, tr("提示"), tr("修改电机参数可能会导致电机故障，请谨慎修改！"), QMessageBox::Ok);
    ui->stackedWidget->setCurrentWidget(ui->page_motorParam);
}

void OptionsWidget::on_pushButton_posConpen_clicked()
{
    ui->stackedWidget->setCurrentWidget(ui->page_posConpen);
}

// The two radio buttons exclude each other, so one click runs both handlers, in either order; each alone leads to the
// clicked language. Only the English one reads the stored choice back.

void OptionsWidget::on_radioButton_cn_toggled(bool checked)
{
    const int code = checked ? Chinese : English;
    setLanguage(code);
    saveLanguage(code);
}

void OptionsWidget::on_radioButton_en_toggled(bool checked)
{
    const int code = checked ? English : Chinese;
    setLanguage(code);
    saveLanguage(code);
    loadLanguage();
}

void OptionsWidget::on_doubleSpinBox_Axis3_editingFinished()
{
    qDebug() << "on_doubleSpinBox_Axis3_editingFinished" << ui->doubleSpinBox_Axis3->value();
    m_axes[2].changeDisplacement();
}

void OptionsWidget::on_pushButton_ReadParam_clicked()
{
    const BusyCursor busy;
    MotorParams params = {};
    const int result = SerialComDev::instance()->getMotorParams(ui->comboBox_motorAxis->currentIndex(), params);
    if (result < 0) {
        showMessage(
            [result] { return tr("读取电机参数失败：error（%1）").arg(SerialComDev::instance()->statusText(result)); });
        m_messageTimer->start();
        return;
    }
    m_motorParams.show(params);
}

void OptionsWidget::on_pushButton_WriteParam_clicked()
{
    if (QMessageBox::question(nullptr, tr("提示"), tr("是否确认修改电机参数？"), QMessageBox::Yes | QMessageBox::No) !=
        QMessageBox::Yes)
        return;

    const BusyCursor busy;
    const auto failed = [](int error) {
        return tr("写入电机参数失败：error（%1）").arg(SerialComDev::instance()->statusText(error));
    };
    const auto worker = SerialComDev::instance();
    const int axis = ui->comboBox_motorAxis->currentIndex();
    MotorParams params = {};
    if (worker->getMotorParams(axis, params) < 0) {
        showMessage([failed] { return failed(writeWithoutRead); }); // stays: the timer is not started
        return;
    }
    m_motorParams.applyTo(params);
    const int result = worker->setMotorParams(axis, params);
    showMessage([failed, result] { return result < 0 ? failed(result) : tr("写入电机参数成功"); });
    m_messageTimer->start();
}

/** Shows a text on the motor-parameter page, in whatever language is chosen; none empties the line. */
void OptionsWidget::showMessage(const std::function<QString()> &text)
{
    m_message = text;
    ui->label_msg->setText(text ? text() : QString());
}

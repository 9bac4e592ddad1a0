// SPDX-License-Identifier: MIT
#include "shell/ConnectionWidget.h"

#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "shell/ControllerSetupWidget.h"
#include "widgets/BusyCursor.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"

#include "ui_ConnectionWidget.h"

#include <QDebug>
#include <QListView>

namespace {

constexpr int hideMsgMs = 5000;

} // namespace

ConnectionWidget::ConnectionWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::ConnectionWidget>(this))
    , m_drag(this, ui->widget_title)
    , m_session(ControlSession::instance())
    , m_hideTimer(this)
{
    Dialogs::makeFrameless(this, ui->widget_back);
    new DialogKeys(
        this, [this] { hide(); }, ui->pushButton_connectSerial);
    ui->comboBox_comList->setView(new QListView(ui->comboBox_comList));
    QSizePolicy keepsItsPlace = ui->label_msg->sizePolicy();
    keepsItsPlace.setRetainSizeWhenHidden(true);
    ui->label_msg->setSizePolicy(keepsItsPlace);
    ui->label_msg->hide();
    m_hideTimer.setSingleShot(true);
    m_hideTimer.setInterval(hideMsgMs);
    connect(&m_hideTimer, &QTimer::timeout, this, &ConnectionWidget::slot_hideMsg);
    connect(ui->label_setUp, &QLabel::linkActivated, this, &ConnectionWidget::openSetUp);
    showLink();
}

ConnectionWidget::~ConnectionWidget() = default;

void ConnectionWidget::showLink()
{
    ui->label_setUp->setText(
        QStringLiteral("<a style='color: #7DB8FF; font-size: 14px; text-decoration: none' href='setUp'>%1</a>")
            .arg(tr("控制器设置")));
}

void ConnectionWidget::openSetUp()
{
    if (!m_setUp) {
        m_setUp = new ControllerSetupWidget(this);
        connect(m_setUp, &ControllerSetupWidget::signal_restart, this, &ConnectionWidget::signal_restart);
    }
    Dialogs::centreOn(m_setUp, this);
    Dialogs::keepOnScreen(m_setUp);
    m_setUp->show();
}

void ConnectionWidget::refreshDevices()
{
    const BusyCursor busy;
    const auto found = m_session->findControllers();
    if (!found) // the library hangs: the list stays as it was, so that the user can disconnect
        return;
    ui->comboBox_comList->clear();
    for (const ControlSession::Controller &controller : *found)
        ui->comboBox_comList->addItem(QIcon(), controller.serialNumber, controller.id);
    ui->comboBox_comList->setCurrentText(m_session->serialNumber());
    sayWhy(m_session->probeFailure());
}

/** Shows why a controller cannot be opened, where the library is ours and has a reason that helps. */
void ConnectionWidget::sayWhy(int status)
{
    const auto words = [status] { return SerialComDev::instance()->statusText(status); };
    if (words() == QString::number(status))
        return;
    setMessage(words);
    ui->label_msg->show();
}

void ConnectionWidget::slot_hideMsg()
{
    ui->label_msg->hide();
}

void ConnectionWidget::setConnected(bool connected)
{
    ui->pushButton_connectSerial->setEnabled(!connected);
    ui->pushButton_disConnect->setEnabled(connected);
    setMessage([connected] { return connected ? tr("设备已连接") : tr("设备已断开"); });
    ui->label_msg->show();
}

/** Sets the text, without showing it, and arms the timer that hides it. */
void ConnectionWidget::setMessage(const std::function<QString()> &text)
{
    m_message = text;
    ui->label_msg->setText(text());
    m_hideTimer.start();
}

void ConnectionWidget::on_pushButton_connectSerial_clicked()
{
    const int id = ui->comboBox_comList->currentData().toInt();
    qDebug() << "devPort: " << id;
    int result = 0;
    {
        const BusyCursor busy;
        result = m_session->connectTo({id, ui->comboBox_comList->currentText()});
    }
    if (result < 0) {
        // The text is set but not shown: it is seen only while the label still shows an earlier message.
        setMessage([result] { return tr("打开设备失败(err:%1)").arg(result); });
        sayWhy(result);
        return;
    }
    setConnected(true);
    close();
    emit signal_devConnected();
}

void ConnectionWidget::on_pushButton_disConnect_clicked()
{
    bool closed = false;
    {
        const BusyCursor busy;
        closed = m_session->disconnectController();
    }
    if (!closed) // the library hangs: the controller is as connected as before, and the user can still leave
        return;
    setConnected(false);
    emit signal_devDisConnected();
}

void ConnectionWidget::on_pushButton_close_clicked()
{
    hide();
}

void ConnectionWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        showLink();
        if (m_message)
            ui->label_msg->setText(m_message());
    }
    QWidget::changeEvent(event);
}

// SPDX-License-Identifier: MIT
#include "shell/ConnectionWidget.h"

#include "device/LibraryLock.h"
#include "device/LibraryText.h"
#include "device/SerialComDev.h"
#include "widgets/BusyCursor.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"

#include "ui_ConnectionWidget.h"

#include "device/moverLibrary.h"

#include <QDebug>
#include <QListView>

#include <algorithm>

namespace {

constexpr int hideMsgMs = 5000;
constexpr int maxDevices = 10;
constexpr int closeLimitMs = 30000; // longer than the calls that wait on any link that works
constexpr int probeLimitMs = 5000;  // longer than any one of them

struct DeviceList {
    int ids[maxDevices] = {};
    int count = 0; // or the library's negative status

    /** The caller holds the library mutex. */
    void read() { count = listTSMotorControlerDevices(ids, maxDevices); }
    const int *begin() const { return ids; }
    const int *end() const { return ids + std::clamp(count, 0, maxDevices); }
};

/** Each call takes the mutex for itself, so that the worker is kept waiting for one call at most. */
template <typename Function>
auto locked(Function call)
{
    const LibraryLock library;
    return call();
}

/** Serial number of a controller that is not open; null when it does not answer. Leaves nothing added. */
QString probe(int id)
{
    LibraryText serialNo;
    locked([&] { return addDev(id); });
    const bool answers = locked([&] { return openTSDevice(id); }) >= 0 &&
                         locked([&] { return getDevSerialNumber(id, serialNo.data(), serialNo.length()); }) >= 0;
    locked([&] { return removeDev(id); });
    return answers ? serialNo.toString() : QString();
}

} // namespace

ConnectionWidget::ConnectionWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::ConnectionWidget>(this))
    , m_drag(this, ui->widget_title)
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
}

ConnectionWidget::~ConnectionWidget() = default;

void ConnectionWidget::refreshDevices()
{
    const BusyCursor busy;
    DeviceList devices;
    {
        const LibraryLock library(probeLimitMs);
        if (!library.isLocked()) // the library hangs: the list stays as it was, so that the user can disconnect
            return;
        devices.read();
    }
    ui->comboBox_comList->clear();
    for (const int id : devices) {
        const QString text = id == m_iConnectedId ? m_sConnectedText : probe(id);
        if (!text.isNull())
            ui->comboBox_comList->addItem(QIcon(), text, id);
    }
    ui->comboBox_comList->setCurrentText(m_sConnectedText);
}

std::optional<bool> ConnectionWidget::isPortLost() const
{
    if (m_iConnectedId == 0)
        return false;
    const LibraryLock library(0);
    if (!library.isLocked())
        return std::nullopt;
    const BusyCursor busy;
    DeviceList devices;
    devices.read();
    // An empty list is on purpose not taken for a loss.
    if (devices.count == 0)
        return false;
    return std::find(devices.begin(), devices.end(), m_iConnectedId) == devices.end();
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
    SerialComDev::instance()->setOpened(connected);
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
        result = SerialComDev::instance()->open(id);
    }
    if (result < 0) {
        // The text is set but not shown: it is seen only while the label still shows an earlier message.
        setMessage([result] { return tr("打开设备失败(err:%1)").arg(result); });
        return;
    }
    m_iConnectedId = id;
    m_sConnectedText = ui->comboBox_comList->currentText();
    setConnected(true);
    close();
    emit signal_devConnected();
}

void ConnectionWidget::on_pushButton_disConnect_clicked()
{
    bool closed = false;
    {
        const BusyCursor busy;
        closed = SerialComDev::instance()->closeWithin(closeLimitMs);
    }
    if (!closed) // the library hangs: the controller is as connected as before, and the user can still leave
        return;
    m_iConnectedId = 0;
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
        if (m_message)
            ui->label_msg->setText(m_message());
    }
    QWidget::changeEvent(event);
}

// SPDX-License-Identifier: MIT
#include "shell/ControllerSetupWidget.h"

#include "device/MotionLibrary.h"
#include "device/SerialPorts.h"
#include "device/StatusWords.h"
#include "device/moverStatus.h"
#include "session/ControlSession.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"
#include "widgets/MessageBox.h"

#include "ui_ControllerSetupWidget.h"

#include <QDir>
#include <QFileInfo>
#include <QListView>
#include <QShowEvent>

namespace {

using Kind = MotionLibrary::Kind;

/** Why a port could not be opened, or the board at it is of no use, and what to do. */
struct Reason {
    int failure;
    const char *text;
};
// clang-format off
constexpr Reason reasons[] = {
    {moverSetUp::NotThere, QT_TRANSLATE_NOOP("ControllerSetupWidget", "没有这个串口，或者它不是串口。请检查 USB 线，然后按“刷新”。")},
    {moverSetUp::InUse, QT_TRANSLATE_NOOP("ControllerSetupWidget", "串口被另一个程序占用。请关闭那个程序，然后再询问。")},
    {moverSetUp::NoPermission, QT_TRANSLATE_NOOP("ControllerSetupWidget", "没有打开串口的权限。请将用户加入 dialout 组（sudo usermod -aG dialout 用户名），然后重新登录。")},
    {moverSetUp::Connected, QT_TRANSLATE_NOOP("ControllerSetupWidget", "这块控制板已经连接。请先在“连接设备”中断开。")},
    {moverSetUp::NoAnswer, QT_TRANSLATE_NOOP("ControllerSetupWidget", "没有应答。请检查控制板的电源，以及选择的串口是否正确。")},
    {moverSetUp::OtherSpeed, QT_TRANSLATE_NOOP("ControllerSetupWidget", "应答无法读懂：控制板的波特率不是 115200。请在控制板的固件中改为 115200。")},
    {moverSetUp::OtherDevice, QT_TRANSLATE_NOOP("ControllerSetupWidget", "有设备应答，但它不是 Grbl 控制板。请选择另一个串口。")},
    {moverSetUp::Unplugged, QT_TRANSLATE_NOOP("ControllerSetupWidget", "控制板已拔出。请重新插上，返回后再询问。")},
};
// clang-format on

} // namespace

ControllerSetupWidget::ControllerSetupWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::ControllerSetupWidget>(this))
    , m_drag(this, ui->widget_title)
    , m_session(ControlSession::instance())
{
    Dialogs::makeFrameless(this, ui->widget_back);
    new DialogKeys(this, [this] { hide(); });
    ui->comboBox_port->setView(new QListView(ui->comboBox_port));
    connect(&m_link, &BoardLink::changed, this, &ControllerSetupWidget::showBoard);
    connect(&m_link, &BoardLink::said, this, [this](const QString &words) { tell([words] { return words; }); });
    connect(m_session.data(), &ControlSession::stopAllRequested, &m_link, &BoardLink::stop);
    connect(ui->widget_axes, &BoardAxesWidget::signal_proposeSettings, this, &ControllerSetupWidget::propose);
    connect(ui->widget_firstMove, &FirstMoveWidget::signal_proposeSettings, this, &ControllerSetupWidget::propose);
    connect(ui->widget_firstMove, &FirstMoveWidget::signal_refused, this, &ControllerSetupWidget::refuse);
    connect(ui->widget_settings, &BoardSettingsWidget::signal_refused, this, &ControllerSetupWidget::refuse);
    connect(ui->widget_settings, &BoardSettingsWidget::signal_tell, this, &ControllerSetupWidget::tell);
}

ControllerSetupWidget::~ControllerSetupWidget()
{
    hide(); // as long as its pages have their board
}

// ---- Coming and going

void ControllerSetupWidget::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (event->spontaneous()) // was minimised
        return;
    const QString path = ControllersFile::path();
    QDir().mkpath(QFileInfo(path).path());
    m_lock = std::make_unique<QLockFile>(path + QStringLiteral(".lock"));
    m_lock->setStaleLockTime(0); // it ends with its process, not with its age
    m_bReadOnly = !m_lock->tryLock(0) && m_lock->error() == QLockFile::LockFailedError;
    m_message = nullptr;
    ui->label_msg->clear();
    reload();
    if (m_bReadOnly)
        tell([] { return tr("另一个正在运行的程序打开了控制器设置：这里只能查看。"); });
    showPage(ui->page_overview);
}

void ControllerSetupWidget::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (event->spontaneous())
        return;
    m_link.close();
    m_lock.reset();
}

void ControllerSetupWidget::reload()
{
    const QString path = ControllersFile::path();
    m_file = ControllersFile(path);
    if (m_file.fault().isEmpty() || m_bReadOnly)
        return;
    const QString fault = m_file.fault();
    const QString aside = ControllersFile::setAside(path);
    tell([fault, aside] {
        return tr("无法读取控制器文件（%1），它已保留为 %2").arg(fault, QFileInfo(aside).fileName());
    });
    m_file = ControllersFile(path);
}

bool ControllerSetupWidget::store()
{
    const bool stored = m_file.save();
    if (!stored) {
        reload();
        tell([] { return tr("无法写入 %1").arg(QDir::toNativeSeparators(ControllersFile::path())); });
    }
    showOverview();
    return stored;
}

void ControllerSetupWidget::on_pushButton_close_clicked()
{
    hide();
}

void ControllerSetupWidget::showPage(QWidget *page)
{
    ui->stackedWidget_pages->setCurrentWidget(page);
    if (page == ui->page_overview)
        showOverview();
}

void ControllerSetupWidget::tell(const std::function<QString()> &text)
{
    m_message = text;
    ui->label_msg->setText(text());
}

void ControllerSetupWidget::refuse(int status)
{
    tell([status] {
        if (status == moverStatus::OptoFault)
            return tr("有限位开关闭合：请用手将该轴移离开关，再解锁");
        const QString words = StatusWords::ofOurs(status);
        return words.isEmpty() ? tr("控制板拒绝（%1）").arg(status) : words;
    });
}

// ---- The libraries and the boards

void ControllerSetupWidget::showOverview()
{
    const MotionLibrary &inUse = ControlSession::library();
    const QString chosen = m_file.library();
    const bool isNamed = inUse.origin() == MotionLibrary::Origin::Named && !inUse.file().isEmpty();
    const auto nameOf = [](Kind kind) {
        return kind == Kind::Makers ? tr("厂家的运动库") : kind == Kind::Grbl ? tr("Grbl 控制板") : tr("模拟控制器");
    };

    ui->label_inUse->setText(
        isNamed ? tr("正在使用启动时指定的库：%1").arg(QDir::toNativeSeparators(inUse.file()))
                : tr("下次启动时使用："));
    struct Choice {
        QRadioButton *button;
        Kind kind;
    };
    const Choice choices[] = {
        {ui->radioButton_makers, Kind::Makers},
        {ui->radioButton_grbl, Kind::Grbl},
        {ui->radioButton_simulated, Kind::Simulated}};
    for (const Choice &choice : choices) {
        const QString file = MotionLibrary::fileOf(choice.kind);
        const bool isInUse = QFileInfo(inUse.file()) == QFileInfo(file) ||
                             (!inUse.mark().isEmpty() && inUse.mark() == MotionLibrary::word(choice.kind));
        QString text = nameOf(choice.kind);
        if (isInUse)
            text = tr("%1（正在使用）").arg(text);
        else if (!QFileInfo::exists(file))
            text = tr("%1（未找到）").arg(text);
        choice.button->setText(text);
        choice.button->setToolTip(QDir::toNativeSeparators(file));
        choice.button->setChecked(chosen == MotionLibrary::word(choice.kind));
        // One that was chosen and is gone stays to be seen.
        choice.button->setEnabled(!m_bReadOnly && (isInUse || QFileInfo::exists(file) || choice.button->isChecked()));
    }
    const Kind automatic = MotionLibrary::automatic();
    ui->radioButton_automatic->setText(tr("自动：%1").arg(nameOf(automatic)));
    ui->radioButton_automatic->setChecked(chosen.isEmpty());
    ui->radioButton_automatic->setEnabled(!m_bReadOnly);

    const QString next = chosen.isEmpty() ? MotionLibrary::word(automatic) : chosen;
    const QString now =
        inUse.mark().isEmpty() ? MotionLibrary::word(Kind::Makers) : inUse.mark(); // of what is not ours
    const bool restarts = !isNamed && (next != now || (m_bBoardsChanged && now == MotionLibrary::word(Kind::Grbl)));
    ui->label_restart->setText(
        restarts  ? tr("重新启动程序后生效。")
        : isNamed ? tr("启动时的 --library 或 MOVER_LIBRARY 优先于这里的选择。")
                  : QString());
    ui->pushButton_restart->setVisible(restarts);

    const int row = ui->listWidget_boards->currentRow();
    ui->listWidget_boards->clear();
    const QVector<ControllersFile::Board> boards = m_file.boards();
    for (const ControllersFile::Board &board : boards) {
        QStringList axes;
        for (const ControllersFile::Axis &axis : board.axes)
            axes.append(
                QStringLiteral("%1 %2").arg(axis.letter, axis.stage.value(QStringLiteral("modelName")).toString("–")));
        const QString name = board.name.isEmpty() ? QString::number(board.id) : board.name;
        ui->listWidget_boards->addItem(
            QStringLiteral("%1    %2    %3").arg(name, board.port, axes.join(QStringLiteral(", "))));
    }
    ui->listWidget_boards->setCurrentRow(row < 0 ? 0 : std::min(row, boards.size() - 1));
    on_listWidget_boards_currentRowChanged(ui->listWidget_boards->currentRow());
    ui->pushButton_add->setEnabled(!m_bReadOnly);
}

void ControllerSetupWidget::choose(const QString &library)
{
    m_file.setLibrary(library);
    store();
}

void ControllerSetupWidget::on_radioButton_makers_clicked()
{
    choose(MotionLibrary::word(Kind::Makers));
}

void ControllerSetupWidget::on_radioButton_grbl_clicked()
{
    choose(MotionLibrary::word(Kind::Grbl));
}

void ControllerSetupWidget::on_radioButton_simulated_clicked()
{
    choose(MotionLibrary::word(Kind::Simulated));
}

void ControllerSetupWidget::on_pushButton_restart_clicked()
{
    if (!m_session->isConnected() || MessageBox::confirm(this, tr("重新启动将停止各轴并断开控制器，\n是否继续？")))
        emit signal_restart();
}

void ControllerSetupWidget::on_listWidget_boards_currentRowChanged(int row)
{
    ui->pushButton_open->setEnabled(row >= 0 && !m_bReadOnly);
    ui->pushButton_removeBoard->setEnabled(row >= 0 && !m_bReadOnly);
}

void ControllerSetupWidget::on_pushButton_removeBoard_clicked()
{
    const ControllersFile::Board board = m_file.boards().value(ui->listWidget_boards->currentRow());
    if (board.id == 0 ||
        !MessageBox::confirm(
            this, tr("移除 %1 ？\n控制板自身的参数保持不变。").arg(board.name.isEmpty() ? board.port : board.name)))
        return;
    m_file.remove(board.id);
    m_bBoardsChanged = true;
    if (store())
        m_file.forgetKept(board.id);
}

// ---- The port

void ControllerSetupWidget::on_pushButton_add_clicked()
{
    m_board = {};
    showPorts();
}

void ControllerSetupWidget::on_pushButton_open_clicked()
{
    if (!ui->pushButton_open->isEnabled())
        return;
    m_board = m_file.boards().value(ui->listWidget_boards->currentRow());
    showPorts();
}

void ControllerSetupWidget::showPorts()
{
    m_link.close();
    m_bAsked = false;
    const QString before = m_board.port;
    ui->comboBox_port->clear();
    const QVector<SerialPorts::Port> ports = SerialPorts::list();
    for (const SerialPorts::Port &port : ports) {
        const QString title =
            port.product.isEmpty() ? port.device : QStringLiteral("%1    %2").arg(port.device, port.product);
        QString info = port.serialNumber.isEmpty() ? tr("没有序列号") : tr("序列号 %1").arg(port.serialNumber);
        if (!port.socket.isEmpty())
            info += tr("，USB 插座 %1").arg(port.socket);
        if (port.isBySocket)
            info += tr("\n序列号不能区分它：控制板须一直插在这个插座上。");
        ui->comboBox_port->addItem(title, port.lasting);
        ui->comboBox_port->setItemData(ui->comboBox_port->count() - 1, info, Qt::ToolTipRole);
    }
    const int place = ui->comboBox_port->findData(before);
    if (place >= 0)
        ui->comboBox_port->setCurrentIndex(place);
    else if (!before.isEmpty() || ports.isEmpty())
        ui->comboBox_port->setEditText(before);
    on_comboBox_port_currentTextChanged(ui->comboBox_port->currentText());
    showPage(ui->page_port);
    showBoard();
    ui->comboBox_port->setFocus();
}

/** The port that a line of the list, or what was typed, means. */
QString ControllerSetupWidget::portOf(const QString &text) const
{
    const int place = ui->comboBox_port->findText(text);
    return place < 0 ? text.trimmed() : ui->comboBox_port->itemData(place).toString();
}

void ControllerSetupWidget::on_comboBox_port_currentTextChanged(const QString &text)
{
    const int place = ui->comboBox_port->findText(text);
    ui->label_portInfo->setText(
        place >= 0 ? ui->comboBox_port->itemData(place, Qt::ToolTipRole).toString()
                   : tr("从列表中选择，或输入串口的名称，例如 /dev/ttyUSB0 或 COM3。"));
    ui->pushButton_ask->setEnabled(!portOf(text).isEmpty());
}

void ControllerSetupWidget::on_pushButton_rescan_clicked()
{
    showPorts();
}

void ControllerSetupWidget::on_pushButton_back_clicked()
{
    m_link.close();
    showPage(ui->page_overview);
}

QString ControllerSetupWidget::whyNot() const
{
    for (const Reason &reason : reasons) {
        if (reason.failure == m_link.board().failure)
            return tr(reason.text);
    }
    return QString();
}

void ControllerSetupWidget::on_pushButton_ask_clicked()
{
    QString reason;
    const QString port = portOf(ui->comboBox_port->currentText());
    const QVector<ControllersFile::Board> boards = m_file.boards();
    for (const ControllersFile::Board &other : boards) {
        if (other.id != m_board.id && other.port == port) {
            ui->label_reason->setText(
                tr("这个串口上已经设置了 %1。").arg(other.name.isEmpty() ? QString::number(other.id) : other.name));
            return;
        }
    }
    if (!BoardLink::functions(&reason)) {
        ui->label_reason->setText(tr("没有 Grbl 运动库：%1").arg(reason));
        return;
    }
    m_message = nullptr;
    ui->label_msg->clear();
    m_bAsked = true;
    m_link.open(port);
    showBoard();
}

// ---- The board

/** Shows what the board at the port says, on whichever page that is. */
void ControllerSetupWidget::showBoard()
{
    const MoverBoard &board = m_link.board();
    if (ui->stackedWidget_pages->currentWidget() == ui->page_port) {
        const bool opens = m_bAsked && board.phase == moverSetUp::Opening;
        ui->comboBox_port->setEnabled(!opens);
        ui->pushButton_rescan->setEnabled(!opens);
        ui->pushButton_ask->setEnabled(!opens && !portOf(ui->comboBox_port->currentText()).isEmpty());
        ui->label_reason->setText(opens ? tr("正在询问，最多需要 10 秒…") : m_bAsked ? whyNot() : QString());
        if (!m_link.isOpen())
            return;
        m_board.port = m_link.port();
        ui->widget_axes->begin(&m_link, m_board);
        ui->widget_firstMove->begin(&m_link);
        ui->widget_settings->begin(&m_link);
        ui->tabWidget_board->setCurrentIndex(0);
        showPage(ui->page_board);
    }
    if (ui->stackedWidget_pages->currentWidget() != ui->page_board)
        return;
    ui->label_board->setText(
        m_link.isOpen() ? tr("%1，%2 个轴，%3 个参数")
                              .arg(QString::fromUtf8(board.firmware))
                              .arg(board.axes)
                              .arg(m_link.settings().size())
                        : whyNot());
    ui->pushButton_stop->setEnabled(m_link.isOpen());
    ui->widget_axes->showBoard();
    ui->widget_firstMove->showBoard();
    ui->widget_settings->showBoard();
}

void ControllerSetupWidget::propose(const BoardLink::Settings &settings)
{
    ui->widget_settings->propose(settings);
    ui->tabWidget_board->setCurrentWidget(ui->widget_settings);
}

void ControllerSetupWidget::on_pushButton_leave_clicked()
{
    m_link.close();
    showPage(ui->page_overview);
}

void ControllerSetupWidget::on_pushButton_stop_clicked()
{
    m_link.stop();
}

void ControllerSetupWidget::on_pushButton_save_clicked()
{
    const auto board = ui->widget_axes->board();
    if (!board) {
        tell([] { return tr("两个轴有相同的字母"); });
        return;
    }
    m_board.id = m_file.put(*board);
    if (!store())
        return;
    m_bBoardsChanged = true;
    m_link.close();
    showPage(ui->page_overview);
    tell([] { return tr("已保存"); });
}

void ControllerSetupWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        showOverview();
        on_comboBox_port_currentTextChanged(ui->comboBox_port->currentText());
        showBoard();
        if (m_message)
            ui->label_msg->setText(m_message());
    }
    QWidget::changeEvent(event);
}

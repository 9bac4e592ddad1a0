// SPDX-License-Identifier: MIT
#include "shell/MoverWidget.h"

#include "axis/MoverControlWidget.h"
#include "console/DebugWidget.h"
#include "device/LibraryLock.h"
#include "device/MotionLibrary.h"
#include "device/SerialComDev.h"
#include "models/AddControlsWidget.h"
#include "models/StageParams.h"
#include "session/ControlSession.h"
#include "session/IncidentFiles.h"
#include "session/MoveWatchdog.h"
#include "session/Recorder.h"
#include "session/SequenceRunner.h"
#include "settings/OptionsWidget.h"
#include "shell/ConnectionWidget.h"
#include "shell/HelpWidget.h"
#include "shell/MyBorderContainer.h"
#include "shell/PlaceholderWidget.h"
#include "shell/SerialPortChangeFilter.h"
#include "shell/StopKeys.h"
#include "widgets/BusyCursor.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"
#include "widgets/MessageBox.h"
#include "workbench/HistoryWidget.h"
#include "workbench/RecorderView.h"
#include "workbench/SequenceTexts.h"
#include "workbench/SequenceWidget.h"
#include "workbench/WorkbenchWidget.h"

#include "ui_MoverWidget.h"

#include <QApplication>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QLayout>
#include <QPointer>
#include <QShortcut>
#include <QStyle>
#include <QSystemTrayIcon>

#include <algorithm>

namespace {

constexpr int closeLimitMs = 1500;    // how long quitting waits for a library call in flight
constexpr int stopAllPatienceMs = 20; // a stop that takes longer is said to be under way
constexpr int noticeMargins = 26;     // pixels
constexpr int portCheckRetryMs = 100; // when the library was busy

QString showMaxSheet(const char *image)
{
    return QStringLiteral(
               ".QPushButton#pushButton_showMax{background-color: rgb(50, 50, 50);background-image: url(:/image/%1);"
               "background-origin: content;background-position: center;background-repeat: no-repeat;}"
               ".QPushButton#pushButton_showMax:hover{background-color: rgb(140, 140, 140);}"
               ".QPushButton#pushButton_showMax:pressed{background-color: rgb(22,110,215);}")
        .arg(QLatin1String(image));
}

/** The connect button's picture carries text: `suffix` chooses the language. */
QString connectSheet(const char *suffix)
{
    return QStringLiteral(
               "MoverWidget .QPushButton#pushButton_connect{border-image: url(:/image/connect_normal%1.png);}"
               "MoverWidget .QPushButton#pushButton_connect:hover{border-image: url(:/image/connect_hover%1.png);}"
               "MoverWidget .QPushButton#pushButton_connect:pressed{border-image: url(:/image/connect_checked%1.png);}")
        .arg(QLatin1String(suffix));
}

} // namespace

MoverWidget::MoverWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::MoverWidget>(this))
    , m_session(ControlSession::instance())
    , m_drag(this, ui->widget_titleBar)
{
    m_board = std::make_unique<PanelBoard>(ui->widget_controls);
    m_tabs = std::make_unique<AxisTabs>(ui->widget_menuBar);

    setWindowFlag(Qt::FramelessWindowHint);
    setMouseTracking(true);
    new DialogKeys(this);
    m_border = new MyBorderContainer(this, 50, 50, 5);
    ensurePolished(); // before the dialogs are its children, which Qt would polish with it

    m_portWatcher = std::make_unique<SerialPortChangeFilter>(this);
    QCoreApplication::instance()->installNativeEventFilter(m_portWatcher.get());

    m_heart = QSharedPointer<Heart>(new Heart);

    auto *const incidents = new IncidentFiles(m_session->recorder(), IncidentFiles::usualFolder(), this);
    connect(incidents, &IncidentFiles::signal_written, this, [this](int axis, const QString &path) {
        logIncident(axis, OPERATION_TYPE_GENERAL, tr("此前 60 秒的记录已存入 %1").arg(QDir::toNativeSeparators(path)));
    });
    connect(incidents, &IncidentFiles::signal_failed, this, [this](int axis, const QString &error) {
        logIncident(axis, OPERATION_TYPE_WARNING, tr("此前 60 秒的记录无法保存：%1").arg(error));
    });

    // Later, and one check for many notices: Windows sends them in bursts and waits for the answer to each, which a
    // message box would hold up.
    m_portCheck.setSingleShot(true);
    connect(&m_portCheck, &QTimer::timeout, this, &MoverWidget::slot_usbDevPortChanged);
    connect(m_portWatcher.get(), &SerialPortChangeFilter::signal_usbDevPortChanged, this, [this] {
        if (!m_portCheck.isActive() && !m_bPortLostShown)
            m_portCheck.start(0);
    });

    m_addControls = new AddControlsWidget(this);
    connect(
        m_addControls, &AddControlsWidget::signal_addControl, this,
        QOverload<QString, int, MoverDevParam, bool>::of(&MoverWidget::slot_addControl));

    m_help = new HelpWidget(this);
    m_options = new OptionsWidget(this);
    m_connection = new ConnectionWidget(this);
    connect(m_connection, &ConnectionWidget::signal_devConnected, this, &MoverWidget::slot_devConnected);
    connect(m_connection, &ConnectionWidget::signal_devDisConnected, this, &MoverWidget::slot_devDisConnected);
    connect(m_connection, &ConnectionWidget::signal_restart, this, [this] {
        m_bStartsAgain = true;
        close();
    });

    const auto worker = SerialComDev::instance();
    connect(worker.data(), &SerialComDev::signal_stopAllDone, this, &MoverWidget::stopAllDone);
    m_stopAllPatience.setSingleShot(true);
    m_stopAllPatience.setInterval(stopAllPatienceMs);
    connect(&m_stopAllPatience, &QTimer::timeout, this, &MoverWidget::showStopAll);
    connect(ui->pushButton_stopAll, &QPushButton::clicked, this, &MoverWidget::stopAll);
    connect(&m_session->watchdog(), &MoveWatchdog::signal_moveOverdue, this, &MoverWidget::showOverdue);
    connect(&m_session->sequences(), &SequenceRunner::signal_ended, this, &MoverWidget::sequenceEnded);
    connect(&m_session->sequences(), &SequenceRunner::signal_stateChanged, this, [this] {
        const SequenceRunner &sequences = m_session->sequences();
        if (sequences.state() == SequenceRunner::State::Asking)
            showNotice(
                tr("序列“%1”等待操作者：%2")
                    .arg(sequences.sequence().name, sequences.sequence().steps.at(sequences.line()).text),
                false);
        else if (sequences.isActive())
            clearNotice();
    });
    connect(ui->pushButton_notice, &QPushButton::clicked, this, [this] {
        if (m_session->sequences().state() == SequenceRunner::State::Asking)
            openWorkbench(); // where the answer is given
        clearNotice();
    });
    connect(ui->pushButton_workbench, &QPushButton::clicked, this, &MoverWidget::openWorkbench);
    auto *const workbenchKey = new QShortcut(QKeySequence(Qt::CTRL + Qt::Key_B), this);
    workbenchKey->setContext(Qt::ApplicationShortcut);
    connect(workbenchKey, &QShortcut::activated, this, &MoverWidget::openWorkbench);
    new StopKeys([this] { stopAll(); }, this);
    connect(
        m_heart.data(), &Heart::controlerStateChanged, this, &MoverWidget::slot_updateControlerState,
        Qt::QueuedConnection);
    connect(
        m_heart.data(), &Heart::sendHeart, worker.data(), &SerialComDev::signal_requestHeartBeat, Qt::DirectConnection);
    m_heart->listenTo(worker.data(), SIGNAL(signal_heartBeatInfo(CONTROLER_STATE, int)));

    m_console = std::make_unique<DebugWidget>();
    m_placeholder = new PlaceholderWidget(this);
    m_placeholder->hide();

    ui->label_simulated->setVisible(ControlSession::library().isSimulated());
    ui->radioButton_Rocker->setEnabled(false);
    ui->radioButton_Rocker->hide();
    showHint();
    ui->pushButton_connect->setFocus(); // the first thing to do
    Dialogs::polishWhenShown();
}

MoverWidget::~MoverWidget() = default;

int MoverWidget::axisCount() const
{
    return m_session->axisCount();
}

void MoverWidget::showCentred(QWidget *popup)
{
    Dialogs::centreOn(popup, this);
    popup->show();
}

/** What to do next, where the panels will be. */
void MoverWidget::showHint()
{
    ui->widget_controls->setHint(m_session->axisCount() == 0 ? tr("请先连接设备") : tr("请点击“+”添加运动轴控制窗口"));
}

// ---- Controller ----------------------------------------------------------------------------------------------------

void MoverWidget::slot_devConnected()
{
    const QPointer<MoverWidget> alive(this); // message boxes run the event loop
    {
        const BusyCursor busy;
        m_session->beginSetUp();
    }
    showHint();
    ui->radioButton_Rocker->setChecked(false); // what the last controller left behind
    for (int axis = 0; axis < m_session->axisCount(); ++axis) {
        const bool wasLast = initialiseAxis(axis);
        if (!alive || m_bClosing) // on the way out the library may hang: it is not called again
            return;
        if (wasLast)
            break;
    }

    const BusyCursor busy;
    m_session->readFirmwareVersion();
    m_help->setFirmwareVersion(m_session->firmwareVersion());
    m_heart->startHeart();
    if (m_session->readJoystick()) {
        ui->radioButton_Rocker->setChecked(true);
        on_radioButton_Rocker_clicked();
    }
}

/** Opens the panel of an axis whose stage identifies itself, or tells the failure. Whether no further axis is set up.
 */
bool MoverWidget::initialiseAxis(int axis)
{
    ControlSession::AxisSetUp setUp;
    {
        const BusyCursor busy;
        setUp = m_session->setUpAxis(axis);
    }
    switch (setUp.outcome) {
    case ControlSession::AxisSetUp::NoStage:
        break;
    case ControlSession::AxisSetUp::ChipNotRead:
        slot_showTipMessage(tr("初始化轴，识别芯片错误(%1)！").arg(0)); // always 0: the code is not put in
        break;
    case ControlSession::AxisSetUp::ParamsNotRead:
        slot_showTipMessage(tr("初始化轴，读取参数错误(%1)！").arg(setUp.step));
        break;
    case ControlSession::AxisSetUp::Ready:
        slot_addControl(setUp.modelName, axis, toDevParam(setUp.stage), true);
        break;
    }
    return setUp.isLast;
}

void MoverWidget::slot_devDisConnected()
{
    m_tabs->clear();
    m_board->clear();
    m_session->clearAxes();
    showStopAll();
    showHint();
    m_heart->stopHeart();
}

void MoverWidget::slot_usbDevPortChanged()
{
    std::optional<bool> lost;
    {
        const BusyCursor busy;
        lost = m_session->isPortLost();
    }
    if (!lost) {
        m_portCheck.start(portCheckRetryMs);
        return;
    }
    if (!*lost || m_bPortLostShown)
        return;
    const QPointer<MoverWidget> alive(this);
    m_bPortLostShown = true;
    slot_showTipMessage(QStringLiteral("设备断开连接")); // shown as it is in every language
    if (alive)
        m_bPortLostShown = false;
}

// ---- Axis panels ---------------------------------------------------------------------------------------------------

void MoverWidget::slot_addControl(QString model, int Asix, MoverDevParam param)
{
    slot_addControl(model, Asix, param, false);
}

void MoverWidget::slot_addControl(QString model, int Asix, MoverDevParam param, bool autoDetect)
{
    if (m_board->count() >= m_session->axisCount()) {
        slot_showTipMessage(tr("轴数量超出上限,请检查操作窗口后继续操作！"));
        return;
    }
    if (!autoDetect) {
        // A second click that was made while the first one waited for the controller reaches the closed dialog.
        if (m_board->find(AxisDescription::nameOf(Asix)))
            return;
        int result = 0;
        {
            const BusyCursor busy;
            result = m_session->readAxis(Asix);
        }
        if (result < 0) {
            slot_showTipMessage(tr("初始化轴，读取参数错误(%1)！").arg(result));
            return;
        }
    }
    const QString name = AxisDescription::nameOf(Asix);
    QPushButton *tab = m_tabs->add(name, autoDetect);
    connect(tab, &QPushButton::clicked, this, &MoverWidget::slot_AsixButtonClicked);

    auto *panel = new MoverControlWidget(ui->widget_controls);
    panel->setAxis(m_session->addAxis(describe(Asix, model, param)));
    wire(panel);
    m_board->add(panel);
    qDebug() << "addControlWidget:" << name;
    panel->writeFirstLogLines(tr("初始化运动轴参数成功"));
    if (ui->radioButton_Rocker->isChecked()) {
        panel->setRockerSpeed(int(m_dRockerSpeed));
        panel->setMoveBtnEnabled(false);
    }
}

/** Into the log of a panel, or of all of them. */
void MoverWidget::logIncident(int axis, int type, const QString &text)
{
    for (int each = 0; each < m_session->axisCount(); ++each) {
        if (axis == RecorderEvent::AllAxes || axis == each)
            emit SerialComDev::instance()->signal_showOperationMsg(each, OPERATION_STATE_NONE, type, text);
    }
}

void MoverWidget::wire(MoverControlWidget *panel)
{
    connect(panel, &MoverControlWidget::signal_closed, this, &MoverWidget::slot_controlWidgetClosed);
    connect(panel, &MoverControlWidget::signal_showTipMsg, this, &MoverWidget::slot_showTipMessage);
    connect(panel, &MoverControlWidget::signal_expandControl, this, &MoverWidget::slot_expandContorl);
    connect(panel, &MoverControlWidget::signal_movingChanged, this, &MoverWidget::showStopAll);
    panel->listenToWorker();
}

void MoverWidget::slot_AsixButtonClicked(bool)
{
    auto *tab = qobject_cast<QPushButton *>(sender());
    if (!tab)
        return;
    qDebug() << "slot_AsixButtonClicked : " << tab->objectName();
    MoverControlWidget *panel = m_board->find(tab->objectName());
    if (!panel)
        return;
    if (m_tabs->isShown(tab)) {
        qDebug() << "slot_AsixButtonClicked return";
        return;
    }
    panel->show();
    m_tabs->setShown(tab);
    m_board->relay();
}

void MoverWidget::slot_expandContorl(bool expand)
{
    auto *panel = qobject_cast<MoverControlWidget *>(sender());
    if (!panel)
        return;
    if (expand)
        m_board->expand(panel);
    else
        m_board->collapse(panel);
}

void MoverWidget::slot_controlWidgetClosed(QString name)
{
    const QPointer<MoverWidget> alive(this);
    const bool consent = MessageBox::confirm(this, tr("您确定要关闭控制轴窗口吗?"));
    if (!alive || !consent)
        return;
    // Looked up after the question: the panel may be gone by then.
    if (MoverControlWidget *panel = m_board->find(name)) {
        m_session->sequences().abort(SequenceEnd::PanelClosed, panel->axis().description().index);
        m_tabs->remove(name);
        m_board->remove(panel);
        showStopAll();
    }
}

void MoverWidget::slot_showTipMessage(QString msg)
{
    MessageBox::inform(this, msg);
}

// ---- Joystick ------------------------------------------------------------------------------------------------------

void MoverWidget::on_radioButton_Rocker_clicked()
{
    const bool on = ui->radioButton_Rocker->isChecked();
    qDebug() << "on_radioButton_Rocker_clicked" << on;
    emit SerialComDev::instance()->signal_setRockerEnabled(on);
    m_bStopTakesRocker = false; // a stop that is not through yet was asked for before this
    refreshRockerSpeed();
    for (MoverControlWidget *panel : m_board->panels())
        panel->setMoveBtnEnabled(!on);
}

void MoverWidget::refreshRockerSpeed()
{
    if (!ui->radioButton_Rocker->isChecked())
        return;
    m_dRockerSpeed = m_heart->controlerState().rockerValue;
    for (MoverControlWidget *panel : m_board->panels())
        panel->setRockerSpeed(int(m_dRockerSpeed));
}

void MoverWidget::slot_updateControlerState()
{
    if (m_heart->controlerState().rockerState != 0) {
        refreshRockerSpeed();
        ui->radioButton_Rocker->setEnabled(true);
        ui->radioButton_Rocker->show();
        return;
    }
    if (!ui->radioButton_Rocker->isEnabled())
        return;
    ui->radioButton_Rocker->setChecked(false);
    on_radioButton_Rocker_clicked();
    ui->radioButton_Rocker->setEnabled(false);
    ui->radioButton_Rocker->hide();
}

// ---- Stop all ------------------------------------------------------------------------------------------------------

void MoverWidget::stopAll()
{
    m_bStopTakesRocker = ui->radioButton_Rocker->isChecked();
    m_session->stopAll();
    m_console->acknowledgeWriting(); // its box may hold the library: the key counts as the answer to it
    if (LibraryLock::heldFor() > std::chrono::milliseconds(stopAllPatienceMs))
        showStopAll(); // somebody is in a long call: the button says so at once
    else
        m_stopAllPatience.start();
}

/** The button is bright while an axis with a panel moves. While a stop is under way it says so. */
void MoverWidget::showStopAll()
{
    const bool pending = SerialComDev::instance()->isStoppingAll();
    ui->pushButton_stopAll->setText(pending ? tr("正在停止…") : tr("全部停止"));
    const QList<MoverControlWidget *> &panels = m_board->panels();
    const bool moving = pending || std::any_of(panels.begin(), panels.end(), [](const MoverControlWidget *panel) {
                            return panel->isMoving();
                        });
    if (ui->pushButton_stopAll->property("moving").toBool() == moving)
        return;
    ui->pushButton_stopAll->setProperty("moving", moving);
    ui->pushButton_stopAll->style()->unpolish(ui->pushButton_stopAll);
    ui->pushButton_stopAll->style()->polish(ui->pushButton_stopAll);
}

void MoverWidget::stopAllDone()
{
    m_stopAllPatience.stop();
    showStopAll();
    if (!m_bStopTakesRocker || SerialComDev::instance()->isRockerOn())
        return;
    // The stop has taken the axes back from the joystick.
    m_bStopTakesRocker = false;
    ui->radioButton_Rocker->setChecked(false);
    for (MoverControlWidget *panel : m_board->panels())
        panel->setMoveBtnEnabled(true);
}

// ---- Title bar and menu bar ----------------------------------------------------------------------------------------

void MoverWidget::on_pushButton_connect_clicked()
{
    m_connection->refreshDevices();
    showCentred(m_connection);
}

void MoverWidget::on_pushButton_addAsix_clicked()
{
    if (!m_session->isConnected()) {
        slot_showTipMessage(tr("设备未连接，请连接设备后继续操作!"));
        return;
    }
    if (m_session->axisCount() < 0) {
        slot_showTipMessage(tr("获取设备参数失败，请检查\n设备是否正确连接!"));
        return;
    }
    QStringList freeAxes;
    for (int axis = 0; axis < m_session->axisCount(); ++axis) {
        if (!m_board->find(AxisDescription::nameOf(axis)))
            freeAxes.append(AxisDescription::nameOf(axis));
    }
    if (freeAxes.isEmpty()) {
        slot_showTipMessage(tr("轴数量已达上限!"));
        return;
    }
    m_addControls->setAxisNames(freeAxes);
    m_addControls->loadModelsData();
    showCentred(m_addControls);
}

void MoverWidget::on_pushButton_help_clicked()
{
    showCentred(m_help);
}

void MoverWidget::on_pushButton_settings_clicked()
{
    m_options->loadDeviceSettings();
    showCentred(m_options);
}

void MoverWidget::on_pushButton_debug_clicked()
{
    m_console->setWindowState(m_console->windowState() & ~Qt::WindowMinimized);
    m_console->show();
    m_console->raise();
    m_console->activateWindow();
}

void MoverWidget::showOverdue(int axis, int finding, double expectedSeconds)
{
    MoverControlWidget *panel = m_board->find(AxisDescription::nameOf(axis));
    if (!panel)
        return;
    panel->warn(
        finding == MoveWatchdog::DoesNotMove
            ? tr("运动命令已被接受，但轴没有动")
            : tr("运动预计 %1 s 完成，至今仍未结束").arg(QString::number(expectedSeconds, 'f', 1)));
}

/** For whoever helps. */
QVector<Diagnostics::File> MoverWidget::logs() const
{
    QVector<Diagnostics::File> files;
    for (const MoverControlWidget *panel : m_board->panels())
        files.append({QStringLiteral("log/%1.txt").arg(panel->axisName()), panel->logText().toUtf8()});
    return files;
}

void MoverWidget::openWorkbench()
{
    if (!m_workbench) {
        m_workbench = std::make_unique<WorkbenchWidget>();
        m_workbench->addPage(new RecorderView);
        m_workbench->addPage(new SequenceWidget);
        m_workbench->addPage(new HistoryWidget);
        m_workbench->setLogs([this] { return logs(); });
        Dialogs::centreOn(m_workbench.get(), this);
    }
    m_workbench->open();
}

/** Tells of it whoever is not looking. A run without a name is the workbench's own affair. */
void MoverWidget::sequenceEnded(const SequenceEnd &end)
{
    const QString name = m_session->sequences().sequence().name;
    if (m_bClosing || name.isEmpty() || end.reason == SequenceEnd::Stopped)
        return;
    showNotice(SequenceTexts::ended(name, end), end.isFailure());
}

void MoverWidget::showNotice(const QString &text, bool isFailure)
{
    ui->pushButton_notice->setProperty("failed", isFailure);
    ui->pushButton_notice->style()->unpolish(ui->pushButton_notice);
    ui->pushButton_notice->style()->polish(ui->pushButton_notice);
    ui->pushButton_notice->show();
    ui->widget_titleBar->layout()->activate(); // gives it its width
    ui->pushButton_notice->setText(ui->pushButton_notice->fontMetrics().elidedText(
        text, Qt::ElideRight, ui->pushButton_notice->width() - noticeMargins));
    ui->pushButton_notice->setToolTip(text);
    ui->pushButton_notice->setAccessibleDescription(text);
    QApplication::alert(this);
    if (!QSystemTrayIcon::isSystemTrayAvailable())
        return;
    m_tray = std::make_unique<QSystemTrayIcon>(windowIcon());
    m_tray->show();
    m_tray->showMessage(tr("工作台"), text, isFailure ? QSystemTrayIcon::Warning : QSystemTrayIcon::Information);
}

void MoverWidget::clearNotice()
{
    ui->pushButton_notice->hide();
    m_tray.reset();
}

void MoverWidget::on_pushButton_showMin_clicked()
{
    showMinimized();
}

void MoverWidget::on_pushButton_showMax_clicked()
{
    const bool wasFullScreen = isFullScreen();
    if (wasFullScreen)
        showNormal();
    else
        showFullScreen();
    ui->pushButton_showMax->setStyleSheet(showMaxSheet(wasFullScreen ? "showMax.png" : "showNormal.png"));
}

void MoverWidget::on_pushButton_close_clicked()
{
    if (m_bClosing)
        return;
    m_bClosing = true;
    m_console->close(); // before the device: it may hold the library
    if (m_workbench)
        m_workbench->hide(); // without a question: whatever runs ends
    qDebug() << "on_pushButton_close_clicked: close the device";
    {
        const BusyCursor busy;
        m_session->leave(closeLimitMs);
    }
    qDebug() << "on_pushButton_close_clicked: quit";
    QCoreApplication::quit();
}

// ---- Window --------------------------------------------------------------------------------------------------------

void MoverWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        showHint();
        showStopAll();
        const bool chinese = m_options && m_options->language() == 0;
        ui->pushButton_connect->setStyleSheet(connectSheet(chinese ? "" : "_english"));
    }
    QWidget::changeEvent(event);
}

/** Alt+F4, the end of the session and a signal do what the close button does. */
void MoverWidget::closeEvent(QCloseEvent *event)
{
    on_pushButton_close_clicked();
    event->accept();
}

void MoverWidget::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (ui->widget_titleBar->geometry().contains(event->pos()))
        on_pushButton_showMax_clicked();
    else
        QWidget::mouseDoubleClickEvent(event);
}

void MoverWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_border->layoutBorders();
}

void MoverWidget::paintEvent(QPaintEvent *)
{
    Dialogs::paintBackground(this);
}

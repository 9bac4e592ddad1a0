// SPDX-License-Identifier: MIT
#include "axis/MoverControlWidget.h"

#include "axis/CycleOperationWidget.h"
#include "axis/DriveParamWidget.h"
#include "axis/JogParamWidget.h"
#include "axis/MoveParamWidget.h"
#include "axis/PopupToggle.h"
#include "device/SerialComDev.h"
#include "models/DeviceParamWidget.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"

#include "ui_MoverControlWidget.h"

#include <QApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>

namespace {

constexpr char doingLightGray[] = ".QLabel#label_doingLight{border-image: url(:/image/grayPot.png);}";
constexpr char doingLightGreen[] = ".QLabel#label_doingLight{border-image: url(:/image/greenPot.png);}";
constexpr char doingLightRed[] = ".QLabel#label_doingLight{border-image: url(:/image/redPot.png);}";
constexpr char originLightGreen[] = ".QLabel#label_originLight{border-image: url(:/image/greenPot.png);}";
constexpr char originLightGray[] = ".QLabel#label_originLight{border-image: url(:/image/grayPot.png);}";

// Where a popup stands to its toggle button: its middle lies below the button's, or its top a fixed way above it.
constexpr int popupHalfWidth = 230;
constexpr int popupAbove = -120;

/** The drive popup's sheet; its background points at the button from below or from above. */
QString drivePopupSheet(const char *background)
{
    return QStringLiteral(".DriveParamWidget{border-image: url(:/image/settings/%1);background-color: rgb(22, 23, 26);}"
                          ".QPushButton{background-color: rgb(56, 59, 64);border-radius:3px;color: rgb(255, 255, 255);"
                          "font-size: 16px;}"
                          ".QPushButton:hover{background-color: rgb(115, 119, 128);}"
                          ".QPushButton:pressed{background-color: rgb(217, 59, 56);}"
                          ".QLabel{color: #FFFFFF;font-size: 16px;}.QCheckBox{color: #FFFFFF;font-size: 16px;}")
        .arg(QLatin1String(background));
}

struct Warning {
    qint16 MotorStageState::*flag;
    const char *text;
};

// The trailing blank of the failure texts belongs to them.
constexpr Warning warnings[] = {
    {&MotorStageState::isLeftLimit, QT_TRANSLATE_NOOP("MoverControlWidget", "已到达负限位！")},
    {&MotorStageState::isRightLimit, QT_TRANSLATE_NOOP("MoverControlWidget", "已到达正限位！")},
    {&MotorStageState::isLeftOptoFault, QT_TRANSLATE_NOOP("MoverControlWidget", "负限位光耦失效 ")},
    {&MotorStageState::isRightOptoFault, QT_TRANSLATE_NOOP("MoverControlWidget", "正限位光耦失效 ")},
    {&MotorStageState::isHomeOptoFault, QT_TRANSLATE_NOOP("MoverControlWidget", "原点限位光耦失效 ")},
};

} // namespace

MoverControlWidget::MoverControlWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::MoverControlWidget>(this))
    , m_axis(QSharedPointer<ControlAxis>::create(AxisDescription()))
    , m_log(ui->textBrowser_operatioInfo)
{
    setDoingLight(doingLightGray, false);
    setOriginLight(false);
    ensurePolished(); // before the popups are its children, which Qt would polish with it
    createPopups();
    Dialogs::polishWhenShown();

    m_updateTimer.setInterval(PollIntervalMs);
    connect(&m_updateTimer, &QTimer::timeout, this, &MoverControlWidget::slot_updateState);
    connect(this, &MoverControlWidget::signal_broadcastRunningState, m_loopRun, &CycleOperationWidget::setRunningState);

    ui->pushButton_expand->hide();
    ui->pushButton_setting->hide();
    ui->label_speed->hide();
    ui->label_rockerSpeed->hide();
    m_updateTimer.start();
}

MoverControlWidget::~MoverControlWidget()
{
    disconnect(qApp, nullptr, this, nullptr); // the focus moves on while the children are destroyed
}

void MoverControlWidget::createPopups()
{
    m_settings = new DeviceParamWidget(this);
    m_settings->move(0, 0);
    m_settings->hide();

    m_movePopup = new MoveParamWidget(this);
    m_jogPopup = new JogParamWidget(this);
    m_drivePopup = new DriveParamWidget(this);
    connect(
        m_movePopup, &MoveParamWidget::signal_moveParamWindowDeactivated, this,
        &MoverControlWidget::slot_moveParamWindowDeactivated);
    connect(
        m_jogPopup, &JogParamWidget::signal_jogParamWindowDeactivated, this,
        &MoverControlWidget::slot_jogParamWindowDeactivated);
    connect(
        m_drivePopup, &DriveParamWidget::signal_driveParamWindowDeactivated, this,
        &MoverControlWidget::slot_driveParamWindowDeactivated);
    m_moveToggle = new PopupToggle(ui->pushButton_moveParam, m_movePopup);
    m_jogToggle = new PopupToggle(ui->pushButton_jogParam, m_jogPopup);
    m_driveToggle = new PopupToggle(ui->pushButton_driveParam, m_drivePopup);

    m_loopRun = new CycleOperationWidget(this);
    m_loopRun->move(0, 0);
    m_loopRun->hide();
    connect(m_loopRun, &CycleOperationWidget::signal_startDoing, this, &MoverControlWidget::slot_startUpdateState);
    connect(qApp, &QApplication::focusChanged, this, &MoverControlWidget::keepFocusOnTop);
}

/** What the loop run covers cannot be seen, so the focus does not stay there: Tab may come from beside the panel. */
void MoverControlWidget::keepFocusOnTop(QWidget *, QWidget *now)
{
    if (now && m_loopRun->isVisible() && isAncestorOf(now) && now != m_loopRun && !m_loopRun->isAncestorOf(now))
        Dialogs::focusWithin(m_loopRun, true);
}

void MoverControlWidget::setAxis(const QSharedPointer<const ControlAxis> &axis)
{
    const AxisDescription &description = axis->description();
    m_axis = axis;
    m_iIndex = description.index;
    ui->label_axisName->setText(description.name());
    ui->label_modelName->setText(description.modelName);
    m_settings->setAxis(m_iIndex);
    m_movePopup->setAxis(description);
    m_jogPopup->setAxis(description);
    m_drivePopup->setAxis(description);
    m_loopRun->setAxis(description);
}

void MoverControlWidget::listenToWorker()
{
    SerialComDev *worker = SerialComDev::instance().data();
    connect(worker, SIGNAL(signal_positionChanged(int, double)), this, SLOT(slot_updateCurrentPos(int, double)));
    connect(
        worker, SIGNAL(signal_devStateChanged(int, MotorStageState)), this,
        SLOT(slot_updateDevState(int, MotorStageState)));
    connect(
        worker, SIGNAL(signal_showOperationMsg(int, int, int, QString)), this,
        SLOT(slot_showOperationMsg(int, int, int, QString)));
    worker->announceAnew(m_iIndex);
}

void MoverControlWidget::writeFirstLogLines(const QString &text)
{
    log(OPERATION_TYPE_GENERAL, text, OPERATION_STATE_NONE);
    const QString serialNo = SerialComDev::instance()->getAxisSerialNo(m_iIndex);
    if (!serialNo.isEmpty())
        log(OPERATION_TYPE_GENERAL, tr("位移台序列号：") + serialNo, OPERATION_STATE_NONE);
}

void MoverControlWidget::warn(const QString &text)
{
    log(OPERATION_TYPE_WARNING, text, OPERATION_STATE_NONE);
}

void MoverControlWidget::setMoveBtnEnabled(bool b)
{
    m_bRockerMode = !b;
    // With an axis that cannot run, leaving joystick mode changes nothing else: the panel keeps the joystick's look.
    if (b && m_sState.isCanRun == 0)
        return;

    ui->pushButton_enable->setEnabled(b);
    ui->pushButton_circle->setEnabled(b);
    QWidget *const motion[] = {
        ui->pushButton_move,
        ui->pushButton_moveParam,
        ui->pushButton_jogLeft,
        ui->pushButton_jogRight,
        ui->pushButton_jogParam,
        ui->pushButton_driveLeft,
        ui->pushButton_driveRight,
        ui->pushButton_driveParam,
        ui->label_6,
        ui->label_7,
        ui->label_8,
    };
    for (QWidget *widget : motion)
        widget->setVisible(b);
    ui->label_speed->setVisible(!b);
    ui->label_rockerSpeed->setVisible(!b);
}

void MoverControlWidget::setRockerSpeed(int level)
{
    const AxisDescription &axis = m_axis->description();
    const double speed = level * axis.maxRockerSpeed / 10;
    ui->label_rockerSpeed->setText(
        QStringLiteral("%1 %2").arg(QString::number(speed, 'g', 6), axis.unit + QStringLiteral("/s")));
}

void MoverControlWidget::setDoingLightRed()
{
    setDoingLight(doingLightRed, true);
}

void MoverControlWidget::setDoingLight(const char *sheet, bool lit)
{
    ui->label_doingLight->setStyleSheet(QLatin1String(sheet));
    m_bDoingLit = lit;
    nameLights();
}

void MoverControlWidget::setOriginLight(bool lit)
{
    ui->label_originLight->setStyleSheet(QLatin1String(lit ? originLightGreen : originLightGray));
    m_bOriginLit = lit;
    nameLights();
}

/** Says for assistive tools what the lights' pictures say. */
void MoverControlWidget::nameLights()
{
    const auto name = [](const QLabel *caption, bool lit) {
        return (lit ? tr("%1：亮") : tr("%1：灭")).arg(caption->text());
    };
    ui->label_doingLight->setAccessibleName(name(ui->label_doing, m_bDoingLit));
    ui->label_originLight->setAccessibleName(name(ui->label_origin, m_bOriginLit));
}

void MoverControlWidget::slot_updateState()
{
    const auto worker = SerialComDev::instance();
    emit worker->signal_getCurrentPos(m_iIndex);
    emit worker->signal_getDevState(m_iIndex);
    showTrust();
}

/** Ten times a second: silence is no event. */
void MoverControlWidget::showTrust()
{
    const AxisTrust trust = m_axis->trust();
    ui->label_trust->setTrust(trust);
    ui->label_currentPos->setDimmed(trust.isStale());
}

void MoverControlWidget::slot_updateCurrentPos(int ID, double pos)
{
    if (ID != m_iIndex)
        return;
    ui->label_currentPos->setText(
        QStringLiteral("%1 %2").arg(QString::number(pos, 'f', 3), m_axis->description().unit));
}

void MoverControlWidget::slot_updateDevState(int ID, MotorStageState state)
{
    if (ID != m_iIndex)
        return;

    if (state.isStop != m_sState.isStop) {
        emit signal_broadcastRunningState(state.isStop != 0);
        const bool lit = state.isStop != 1;
        setDoingLight(lit ? doingLightGreen : doingLightGray, lit);
    }
    if (state.isHome != m_sState.isHome)
        setOriginLight(state.isHome != 0);
    if (state.isCanRun != m_sState.isCanRun) {
        const bool canRun = state.isCanRun != 0;
        if (!m_bRockerMode) {
            QWidget *const motion[] = {
                ui->pushButton_circle,     ui->pushButton_driveLeft, ui->pushButton_driveParam,
                ui->pushButton_driveRight, ui->pushButton_jogLeft,   ui->pushButton_jogParam,
                ui->pushButton_jogRight,   ui->pushButton_move,      ui->pushButton_moveParam,
            };
            for (QWidget *button : motion)
                button->setEnabled(canRun);
        }
        ui->pushButton_home->setEnabled(canRun);
    }
    if (state.isEnable != m_sState.isEnable)
        ui->pushButton_enable->setChecked(state.isEnable != 0);
    showRunCount(state.runCount);
    warnOfLimits(state);

    m_sState = state;
    const bool moving = state.isStop == 0;
    if (moving != m_bMoving) {
        m_bMoving = moving;
        emit signal_movingChanged(moving);
    }
}

void MoverControlWidget::showRunCount(quint32 count)
{
    if (count != 0)
        log(OPERATION_TYPE_RUN_COUNT, QString::number(count), OPERATION_STATE_RUNNING);
    else if (m_uRunCount != 0)
        log(OPERATION_TYPE_RUN_COUNT, QString::number(m_uRunCount), OPERATION_STATE_COMPLETED);
    m_uRunCount = count;
}

void MoverControlWidget::warnOfLimits(const MotorStageState &state)
{
    for (const Warning &warning : warnings) {
        const qint16 flag = state.*warning.flag;
        if (flag == 1 && flag != m_sState.*warning.flag)
            log(OPERATION_TYPE_WARNING, tr(warning.text), OPERATION_STATE_NONE);
    }
}

void MoverControlWidget::slot_showOperationMsg(int Axis, int state, int type, QString msg)
{
    if (Axis == m_iIndex)
        log(type, msg, state);
}

void MoverControlWidget::log(int type, const QString &text, int state)
{
    m_log.append(type, text, state);
}

void MoverControlWidget::slot_startUpdateState()
{
    m_updateTimer.start();
}

void MoverControlWidget::slot_stopUpdateState()
{
    // The polling is never paused from here.
}

void MoverControlWidget::slot_moveParamWindowDeactivated()
{
    m_moveToggle->popupClosed();
}

void MoverControlWidget::slot_jogParamWindowDeactivated()
{
    m_jogToggle->popupClosed();
}

void MoverControlWidget::slot_driveParamWindowDeactivated()
{
    m_driveToggle->popupClosed();
}

void MoverControlWidget::startMotor(int mode)
{
    emit SerialComDev::instance()->signal_startMotor(m_iIndex, mode);
    m_updateTimer.start();
}

void MoverControlWidget::on_pushButton_move_clicked()
{
    startMotor(MOVE_CODE_MOVE);
}

void MoverControlWidget::on_pushButton_driveRight_clicked()
{
    startMotor(MOVE_CODE_DRIVE_POSITIVE);
}

void MoverControlWidget::on_pushButton_driveLeft_clicked()
{
    startMotor(MOVE_CODE_DRIVE_NEGATIVE);
}

void MoverControlWidget::on_pushButton_jogRight_clicked()
{
    startMotor(MOVE_CODE_JOG_POSITIVE);
}

void MoverControlWidget::on_pushButton_jogLeft_clicked()
{
    startMotor(MOVE_CODE_JOG_NEGATIVE);
}

void MoverControlWidget::on_pushButton_home_clicked()
{
    emit SerialComDev::instance()->signal_home(m_iIndex);
    m_updateTimer.start();
}

void MoverControlWidget::on_pushButton_stop_clicked()
{
    emit SerialComDev::instance()->signal_stopMotor(m_iIndex);
}

void MoverControlWidget::on_pushButton_enable_clicked(bool checked)
{
    emit SerialComDev::instance()->signal_enableMotor(m_iIndex, checked);
}

void MoverControlWidget::on_pushButton_circle_clicked()
{
    const auto worker = SerialComDev::instance();
    m_loopRun->load(
        worker->getAxisCircleDisp(m_iIndex), worker->getAxisSpeed(m_iIndex), worker->getAxisAcceleration(m_iIndex),
        worker->getAxisCircleCount(m_iIndex), worker->getAxisCircleDelay(m_iIndex));
    m_loopRun->show();
    m_loopRun->setFocus();
}

void MoverControlWidget::on_pushButton_setting_clicked()
{
    m_settings->show();
    m_settings->setFocus();
}

void MoverControlWidget::on_pushButton_moveParam_clicked(bool checked)
{
    togglePopup(checked, m_moveToggle, m_movePopup, ui->pushButton_moveParam);
}

void MoverControlWidget::on_pushButton_jogParam_clicked(bool checked)
{
    togglePopup(checked, m_jogToggle, m_jogPopup, ui->pushButton_jogParam);
}

void MoverControlWidget::on_pushButton_driveParam_clicked(bool checked)
{
    togglePopup(checked, m_driveToggle, m_drivePopup, ui->pushButton_driveParam);
}

void MoverControlWidget::togglePopup(
    bool checked, PopupToggle *toggle, MotionParamPopup *popup, const QPushButton *button)
{
    if (!checked) {
        popup->hide();
    } else if (toggle->opensPopup()) {
        if (popup == m_drivePopup)
            placeDrivePopup();
        else
            popup->move(button->mapToGlobal(QPoint(button->width() / 2 - popupHalfWidth, button->height())));
        popup->open();
    }
}

/** Below its button, or above it when it would leave the screen at the bottom. */
void MoverControlWidget::placeDrivePopup()
{
    const QPushButton *button = ui->pushButton_driveParam;
    const int left = button->width() / 2 - popupHalfWidth;
    const QPoint below = button->mapToGlobal(QPoint(left, button->height()));
    const int screenHeight = QGuiApplication::primaryScreen()->size().height();
    const bool above = below.y() + m_drivePopup->height() > screenHeight;
    m_drivePopup->move(above ? button->mapToGlobal(QPoint(left, popupAbove)) : below);
    m_drivePopup->setStyleSheet(drivePopupSheet(above ? "driveParam.png" : "driveParamUp.png"));
}

void MoverControlWidget::on_pushButton_expand_clicked(bool checked)
{
    ui->pushButton_expand->setText(checked ? tr("缩小") : tr("放大"));
    emit signal_expandControl(checked);
}

void MoverControlWidget::on_pushButton_remove_clicked()
{
    emit signal_closed(ui->label_axisName->text());
}

void MoverControlWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        nameLights();
        ui->pushButton_expand->setText(ui->pushButton_expand->isChecked() ? tr("缩小") : tr("放大"));
    }
    QWidget::changeEvent(event);
}

void MoverControlWidget::paintEvent(QPaintEvent *)
{
    Dialogs::paintBackground(this);
}

void MoverControlWidget::resizeEvent(QResizeEvent *event)
{
    // Both overlays cover the panel exactly.
    m_settings->setFixedSize(size());
    m_loopRun->setFixedSize(size());
    QWidget::resizeEvent(event);
}

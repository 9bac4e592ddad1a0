// SPDX-License-Identifier: MIT
#pragma once

#include "axis/OperationLog.h"
#include "device/DeviceRecords.h"
#include "session/ControlAxis.h"

#include <QSharedPointer>
#include <QTimer>
#include <QWidget>

#include <memory>

class CycleOperationWidget;
class DeviceParamWidget;
class DriveParamWidget;
class JogParamWidget;
class MotionParamPopup;
class MoveParamWidget;
class PopupToggle;
class QPushButton;

namespace Ui {
class MoverControlWidget;
}

/**
 * The control panel of one axis: shows position, state and log, and asks the worker for motion. It polls its axis ten
 * times a second for as long as it lives. Every request is a queued signal, so that a click never waits for the
 * device; answers for other axes are ignored. GUI thread.
 */
class MoverControlWidget final : public QWidget
{
    Q_OBJECT

public:
    static constexpr int PollIntervalMs = 100;

    explicit MoverControlWidget(QWidget *parent = nullptr);
    ~MoverControlWidget() override;

    /** The axis that the panel is for; its popups and its loop run take unit and limits from it. Once, before use. */
    void setAxis(const QSharedPointer<const ControlAxis> &axis);
    /** From now on the worker's answers reach the panel, the next ones of its axis as news. */
    void listenToWorker();
    /** Logs `text` and the stage's serial number. */
    void writeFirstLogLines(const QString &text);
    QString logText() const { return m_log.text(); }
    /** A red line in the log. */
    void warn(const QString &text);
    /** Asks for position and state no more. */
    void stopPolling() { m_updateTimer.stop(); }

    int index() const { return m_iIndex; }
    const ControlAxis &axis() const { return *m_axis; }
    /** Whether the last state says that the axis moves; not before the first. */
    bool isMoving() const { return m_bMoving; }
    QString axisName() const { return m_axis->description().name(); }

    /** b false: joystick mode goes on, the motion buttons give way to the joystick's speed; true: it goes off. */
    void setMoveBtnEnabled(bool b);
    /** Shows the speed that the joystick's level (tenths of the stage's maxRockerSpeed) stands for. */
    void setRockerSpeed(int level);
    /** Switches the running light to red. */
    void setDoingLightRed();

signals:
    void signal_closed(QString name);
    void signal_expandControl(bool expand);
    /** b: the axis now stands still. */
    void signal_broadcastRunningState(bool b);
    /** As isMoving(), which has changed. */
    void signal_movingChanged(bool moving);
    // Declared for the main window's wiring; the panel emits neither.
    void signal_showTipMsg(QString msg);
    void signal_getSettingParams();

public slots:
    /** Asks for position and state. */
    void slot_updateState();
    void slot_updateCurrentPos(int ID, double pos);
    void slot_updateDevState(int ID, MotorStageState state);
    void slot_showOperationMsg(int Axis, int state, int type, QString msg);
    void slot_startUpdateState();
    void slot_stopUpdateState();
    void slot_moveParamWindowDeactivated();
    void slot_jogParamWindowDeactivated();
    void slot_driveParamWindowDeactivated();

protected:
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void on_pushButton_move_clicked();
    void on_pushButton_driveRight_clicked();
    void on_pushButton_driveLeft_clicked();
    void on_pushButton_jogRight_clicked();
    void on_pushButton_jogLeft_clicked();
    void on_pushButton_home_clicked();
    void on_pushButton_stop_clicked();
    void on_pushButton_enable_clicked(bool checked);
    void on_pushButton_circle_clicked();
    void on_pushButton_setting_clicked();
    void on_pushButton_moveParam_clicked(bool checked);
    void on_pushButton_jogParam_clicked(bool checked);
    void on_pushButton_driveParam_clicked(bool checked);
    void on_pushButton_expand_clicked(bool checked);
    void on_pushButton_remove_clicked();

private:
    void createPopups();
    void keepFocusOnTop(QWidget *before, QWidget *now);
    void startMotor(int mode);
    void togglePopup(bool checked, PopupToggle *toggle, MotionParamPopup *popup, const QPushButton *button);
    void placeDrivePopup();
    void setDoingLight(const char *sheet, bool lit);
    void setOriginLight(bool lit);
    void nameLights();
    void showRunCount(quint32 count);
    void warnOfLimits(const MotorStageState &state);
    void showTrust();
    void log(int type, const QString &text, int state);

    std::unique_ptr<Ui::MoverControlWidget> ui;
    int m_iIndex = 0;
    QSharedPointer<const ControlAxis> m_axis;
    MotorStageState m_sState = {};
    bool m_bMoving = false;
    bool m_bDoingLit = false; // as the lights look
    bool m_bOriginLit = false;
    QTimer m_updateTimer{this};
    bool m_bRockerMode = false;
    quint32 m_uRunCount = 0; // last one seen of the loop run that is counting
    OperationLog m_log;
    DeviceParamWidget *m_settings = nullptr;
    MoveParamWidget *m_movePopup = nullptr;
    JogParamWidget *m_jogPopup = nullptr;
    DriveParamWidget *m_drivePopup = nullptr;
    CycleOperationWidget *m_loopRun = nullptr;
    PopupToggle *m_moveToggle = nullptr;
    PopupToggle *m_jogToggle = nullptr;
    PopupToggle *m_driveToggle = nullptr;
};

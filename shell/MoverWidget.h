// SPDX-License-Identifier: MIT
#pragma once

#include "device/Heart.h"
#include "models/MoverDevParam.h"
#include "shell/AxisTabs.h"
#include "shell/PanelBoard.h"
#include "widgets/TitleBarDrag.h"
#include "workbench/Diagnostics.h"

#include <QSharedPointer>
#include <QTimer>
#include <QWidget>

#include <memory>

class AddControlsWidget;
class ConnectionWidget;
class ControlSession;
class DebugWidget;
class HelpWidget;
class MoverControlWidget;
class MyBorderContainer;
class OptionsWidget;
class PlaceholderWidget;
class QSystemTrayIcon;
class SerialPortChangeFilter;
class WorkbenchWidget;
struct SequenceEnd;

namespace Ui {
class MoverWidget;
}

/**
 * The main window: frameless, with a title bar and a menu bar of its own, and the axis panels below them. Owns every
 * dialog, the heartbeat, the port watcher and the resize border. GUI thread.
 */
class MoverWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit MoverWidget(QWidget *parent = nullptr);
    ~MoverWidget() override;

    /** Number of axes that the connected controller reports; 0 without one. */
    int axisCount() const;
    const PanelBoard &panelBoard() const { return *m_board; }
    const AxisTabs &axisTabs() const { return *m_tabs; }
    /** The window was closed so that the program starts again. */
    bool startsAgain() const { return m_bStartsAgain; }

public slots:
    void slot_AsixButtonClicked(bool checked);
    /** Opens the panel of axis `Asix` (from 0). autoDetect: the axis was read already. */
    void slot_addControl(QString model, int Asix, MoverDevParam param, bool autoDetect);
    void slot_addControl(QString model, int Asix, MoverDevParam param);
    void slot_devConnected();
    void slot_devDisConnected();
    void slot_usbDevPortChanged();
    void slot_controlWidgetClosed(QString name);
    void slot_expandContorl(bool expand);
    void slot_showTipMessage(QString msg);
    void slot_updateControlerState();

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private slots:
    void on_pushButton_showMin_clicked();
    void on_pushButton_close_clicked();
    void on_pushButton_help_clicked();
    void on_pushButton_connect_clicked();
    void on_pushButton_addAsix_clicked();
    void on_pushButton_debug_clicked();
    void on_pushButton_settings_clicked();
    void on_pushButton_showMax_clicked();
    void on_radioButton_Rocker_clicked();

private:
    bool initialiseAxis(int axis);
    void wire(MoverControlWidget *panel);
    void logIncident(int axis, int type, const QString &text);
    void refreshRockerSpeed();
    void stopAll();
    void showStopAll();
    void stopAllDone();
    void showCentred(QWidget *popup);
    void openWorkbench();
    void showOverdue(int axis, int finding, double expectedSeconds);
    QVector<Diagnostics::File> logs() const;
    void showHint();
    void sequenceEnded(const SequenceEnd &end);
    void showNotice(const QString &text, bool isFailure);
    void clearNotice();

    std::unique_ptr<Ui::MoverWidget> ui;
    const QSharedPointer<ControlSession> m_session;
    AddControlsWidget *m_addControls = nullptr;
    HelpWidget *m_help = nullptr;
    ConnectionWidget *m_connection = nullptr;
    std::unique_ptr<DebugWidget> m_console;       // a window of its own, without a parent
    std::unique_ptr<WorkbenchWidget> m_workbench; // the same, and only once it has been opened
    std::unique_ptr<QSystemTrayIcon> m_tray;      // for a notice, where the desktop has a place for it
    std::unique_ptr<SerialPortChangeFilter> m_portWatcher;
    QTimer m_portCheck; // runs while a look for the port is pending
    OptionsWidget *m_options = nullptr;
    MyBorderContainer *m_border = nullptr;
    PlaceholderWidget *m_placeholder = nullptr;
    std::unique_ptr<PanelBoard> m_board;
    std::unique_ptr<AxisTabs> m_tabs;
    QSharedPointer<Heart> m_heart;
    double m_dRockerSpeed = 0;
    TitleBarDrag m_drag;
    bool m_bPortLostShown = false; // its message box is open
    QTimer m_stopAllPatience;      // how long a stop may take before the button says so
    bool m_bClosing = false;
    bool m_bStartsAgain = false;
    bool m_bStopTakesRocker = false; // a stop of all is under way that ends joystick mode
};

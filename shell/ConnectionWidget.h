// SPDX-License-Identifier: MIT
#pragma once

#include "widgets/TitleBarDrag.h"

#include <QSharedPointer>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>

class ControllerSetupWidget;
class ControlSession;

namespace Ui {
class ConnectionWidget;
}

/**
 * Connection dialog: lists the controllers that answer, opens and closes the chosen one. GUI thread; probing and
 * opening wait for the controllers, with a busy cursor.
 */
class ConnectionWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit ConnectionWidget(QWidget *parent = nullptr);
    ~ConnectionWidget() override;

    /**
     * Lists the controllers again. Each one but the connected is opened for a moment to read its serial number. The
     * list stays as it was when another thread is in a library call and does not come back from it within 5 s.
     */
    void refreshDevices();

signals:
    void signal_devConnected();
    void signal_devDisConnected();
    /** The user wants the program to end and to start again. */
    void signal_restart();

public slots:
    void slot_hideMsg();

protected:
    void changeEvent(QEvent *event) override;

private slots:
    void on_pushButton_close_clicked();
    void on_pushButton_connectSerial_clicked();
    void on_pushButton_disConnect_clicked();

private:
    void openSetUp();
    void showLink();
    void setConnected(bool connected);
    void sayWhy(int status);
    void setMessage(const std::function<QString()> &text);

    std::unique_ptr<Ui::ConnectionWidget> ui;
    TitleBarDrag m_drag;
    const QSharedPointer<ControlSession> m_session;
    QTimer m_hideTimer;
    ControllerSetupWidget *m_setUp = nullptr; // made when it is opened first
    std::function<QString()> m_message;       // what label_msg says, in the current language
};

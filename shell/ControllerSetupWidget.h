// SPDX-License-Identifier: MIT
#pragma once

#include "device/BoardLink.h"
#include "device/ControllersFile.h"
#include "widgets/TitleBarDrag.h"

#include <QLockFile>
#include <QSharedPointer>
#include <QWidget>

#include <functional>
#include <memory>

class ControlSession;

namespace Ui {
class ControllerSetupWidget;
}

/**
 * The controller set-up: which motion library the program uses from its next start on, and the boards of the Grbl
 * family that are set up. A port is opened only when the user asks the board at it, and closed when its page is left.
 * While one program has the dialog open, those of others only show. GUI thread; nothing here waits for a board.
 */
class ControllerSetupWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit ControllerSetupWidget(QWidget *parent = nullptr);
    ~ControllerSetupWidget() override;

signals:
    /** The user wants the program to end and to start again. */
    void signal_restart();

protected:
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private slots:
    void on_pushButton_close_clicked();
    void on_radioButton_automatic_clicked() { choose(QString()); }
    void on_radioButton_makers_clicked();
    void on_radioButton_grbl_clicked();
    void on_radioButton_simulated_clicked();
    void on_pushButton_restart_clicked();
    void on_pushButton_add_clicked();
    void on_pushButton_open_clicked();
    void on_pushButton_removeBoard_clicked();
    void on_listWidget_boards_currentRowChanged(int row);
    void on_listWidget_boards_itemActivated() { on_pushButton_open_clicked(); }
    void on_comboBox_port_currentTextChanged(const QString &text);
    void on_pushButton_rescan_clicked();
    void on_pushButton_ask_clicked();
    void on_pushButton_back_clicked();
    void on_pushButton_leave_clicked();
    void on_pushButton_stop_clicked();
    void on_pushButton_save_clicked();

private:
    void reload();
    void choose(const QString &library);
    bool store();
    void showOverview();
    void showPorts();
    void showBoard();
    void showPage(QWidget *page);
    void propose(const BoardLink::Settings &settings);
    void refuse(int status);
    void tell(const std::function<QString()> &text);
    QString portOf(const QString &text) const;
    QString whyNot() const;

    std::unique_ptr<Ui::ControllerSetupWidget> ui;
    TitleBarDrag m_drag;
    const QSharedPointer<ControlSession> m_session;
    BoardLink m_link;
    std::unique_ptr<QLockFile> m_lock;
    ControllersFile m_file;
    ControllersFile::Board m_board; // the one that is being set up
    bool m_bReadOnly = false;
    bool m_bBoardsChanged = false; // since the program has started
    bool m_bAsked = false;         // the port is open, or was tried
    std::function<QString()> m_message;
};

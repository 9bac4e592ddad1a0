// SPDX-License-Identifier: MIT
#pragma once

#include "device/BoardLink.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace Ui {
class BoardSettingsWidget;
}

/**
 * A page of the controller set-up: the board's settings as they are, or the differences to a back-up or to what another
 * page proposes, which are written when the user says so. GUI thread.
 */
class BoardSettingsWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit BoardSettingsWidget(QWidget *parent = nullptr);
    ~BoardSettingsWidget() override;

    /** `link` has to answer by now. */
    void begin(BoardLink *link);
    /** Shows what the board says now. */
    void showBoard();
    /** Shows in what `settings` differ from the board's. Settings that it does not have are left out. */
    void propose(const BoardLink::Settings &settings);

    /** Writes the settings to a file. False when that fails: a file of that name is then as it was. */
    bool backUpTo(const QString &path) const;
    /** Proposes the settings of such a file. False, with nothing changed, when it is none. */
    bool restoreFrom(const QString &path);

signals:
    void signal_refused(int status);
    /** Something to say to the user. */
    void signal_tell(const std::function<QString()> &text);

protected:
    void changeEvent(QEvent *event) override;

private slots:
    void on_pushButton_backUp_clicked();
    void on_pushButton_restore_clicked();
    void on_pushButton_discard_clicked();
    void on_pushButton_write_clicked();

private:
    std::unique_ptr<Ui::BoardSettingsWidget> ui;
    BoardLink *m_link = nullptr;
    BoardLink::Settings m_proposed;
    bool m_bProposes = false;
    bool m_bWrites = false;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "widgets/TitleBarDrag.h"
#include "workbench/Diagnostics.h"

#include <QWidget>

#include <functional>
#include <memory>

class QThread;

namespace Ui {
class WorkbenchWidget;
}

/**
 * The workbench: a frameless, modeless window of its own beside the main window, with a tab for each page. It is made
 * when it is first opened, and closing only hides it. GUI thread.
 */
class WorkbenchWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit WorkbenchWidget(QWidget *parent = nullptr);
    ~WorkbenchWidget() override;

    /** Adds a page as the last tab and owns it. Its window title is the tab's text, also when it changes. */
    void addPage(QWidget *page);
    /** What the diagnostics take along beside what they find themselves. */
    void setLogs(std::function<QVector<Diagnostics::File>()> logs) { m_logs = std::move(logs); }
    /** Shows the window, or brings it to the front. */
    void open();

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private slots:
    void on_pushButton_diagnostics_clicked();
    void on_pushButton_showMax_clicked();
    void on_pushButton_close_clicked();

private:
    std::unique_ptr<Ui::WorkbenchWidget> ui;
    TitleBarDrag m_drag;
    std::function<QVector<Diagnostics::File>()> m_logs;
    std::unique_ptr<QThread> m_saving; // the diagnostics
};

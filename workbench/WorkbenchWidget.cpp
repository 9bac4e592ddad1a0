// SPDX-License-Identifier: MIT
#include "workbench/WorkbenchWidget.h"

#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"

#include "ui_WorkbenchWidget.h"

#include <QMouseEvent>
#include <QSizeGrip>

WorkbenchWidget::WorkbenchWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::WorkbenchWidget>(this))
    , m_drag(this, ui->widget_workbenchTitle)
{
    setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
    setAttribute(Qt::WA_TranslucentBackground); // behind the round corners
    setAttribute(Qt::WA_QuitOnClose, false);
    Dialogs::forgetMouseWhenHidden(this);
    new DialogKeys(this, [this] { close(); });
    ui->tabBar->setDrawBase(false);
    ui->tabBar->setExpanding(false);
    connect(ui->tabBar, &QTabBar::currentChanged, ui->stackedWidget_pages, &QStackedWidget::setCurrentIndex);
}

WorkbenchWidget::~WorkbenchWidget() = default;

void WorkbenchWidget::addPage(QWidget *page)
{
    ui->stackedWidget_pages->addWidget(page);
    ui->tabBar->addTab(page->windowTitle());
    connect(page, &QWidget::windowTitleChanged, this, [this, page](const QString &title) {
        ui->tabBar->setTabText(ui->stackedWidget_pages->indexOf(page), title);
    });
}

void WorkbenchWidget::open()
{
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}

void WorkbenchWidget::on_pushButton_showMax_clicked()
{
    if (isMaximized())
        showNormal();
    else
        showMaximized();
}

void WorkbenchWidget::on_pushButton_close_clicked()
{
    close();
}

void WorkbenchWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
    QWidget::changeEvent(event);
}

void WorkbenchWidget::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (ui->widget_workbenchTitle->geometry().contains(event->pos()))
        on_pushButton_showMax_clicked();
    else
        QWidget::mouseDoubleClickEvent(event);
}

void WorkbenchWidget::paintEvent(QPaintEvent *)
{
    Dialogs::paintBackground(this);
}

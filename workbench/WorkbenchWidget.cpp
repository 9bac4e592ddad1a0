// SPDX-License-Identifier: MIT
#include "workbench/WorkbenchWidget.h"

#include "session/ControlSession.h"
#include "session/SequenceRunner.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"
#include "widgets/MessageBox.h"

#include "ui_WorkbenchWidget.h"

#include <QCloseEvent>
#include <QDateTime>
#include <QFileDialog>
#include <QMouseEvent>
#include <QPointer>
#include <QSizeGrip>
#include <QThread>

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

WorkbenchWidget::~WorkbenchWidget()
{
    if (m_saving)
        m_saving->wait();
}

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
    if (!focusWidget())
        ui->tabBar->setFocus(); // not on a button that nobody means
    raise();
    activateWindow();
}

void WorkbenchWidget::on_pushButton_diagnostics_clicked()
{
    const QString name =
        QStringLiteral("mover-%1.zip").arg(QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss")));
    const QPointer<WorkbenchWidget> alive(this);
    const QString path = QFileDialog::getSaveFileName(this, tr("保存诊断信息"), name, QStringLiteral("ZIP (*.zip)"));
    if (!alive || path.isEmpty())
        return;
    const auto isSaved = std::make_shared<bool>(false);
    const auto source = Diagnostics::look(m_logs ? m_logs() : QVector<Diagnostics::File>());
    m_saving.reset(
        QThread::create([isSaved, path, source] { *isSaved = Diagnostics::save(path, Diagnostics::collect(source)); }));
    connect(m_saving.get(), &QThread::finished, this, [this, isSaved, path] {
        m_saving->wait();
        m_saving.reset();
        ui->pushButton_diagnostics->setEnabled(true);
        MessageBox::inform(
            this, *isSaved ? tr("诊断信息已保存到\n%1").arg(path) : tr("诊断信息未能保存到\n%1").arg(path));
    });
    ui->pushButton_diagnostics->setEnabled(false);
    m_saving->start(QThread::LowPriority);
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

/** A sequence goes on without its window only if somebody wants that. */
void WorkbenchWidget::closeEvent(QCloseEvent *event)
{
    SequenceRunner &sequences = ControlSession::instance()->sequences();
    if (sequences.isActive()) {
        const QPointer<WorkbenchWidget> alive(this);
        const bool goesOn =
            MessageBox::confirm(this, tr("序列正在运行。关闭窗口后让它继续运行吗？\n选择“取消”将停止序列。"));
        if (!alive)
            return;
        if (!goesOn)
            sequences.stop();
    }
    QWidget::closeEvent(event);
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

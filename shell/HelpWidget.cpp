// SPDX-License-Identifier: MIT
#include "shell/HelpWidget.h"

#include "device/MotionLibrary.h"
#include "widgets/DialogKeys.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"

#include "ui_HelpWidget.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QUrl>

namespace {

struct Link {
    LinkLabel *Ui::HelpWidget::*label;
    const char *target;
    const char *text;
};

// clang-format off
constexpr Link links[] = {
    {&Ui::HelpWidget::label_manual, "/help/台式步进电机驱动控制器用户手册.pdf", QT_TRANSLATE_NOOP("HelpWidget", "查看")},
    {&Ui::HelpWidget::label_cplusSdk, "/help/Tarsel_mover_C++SDK", QT_TRANSLATE_NOOP("HelpWidget", "查看 C++ SDK")},
    {&Ui::HelpWidget::label_labviewSdk, "/help/Tarsel_mover_LabViewSDK", QT_TRANSLATE_NOOP("HelpWidget", "查看 LabVIew SDK")},
    {&Ui::HelpWidget::label_CSharpSdk, "/help/Tarsel_mover_C#SDK", QT_TRANSLATE_NOOP("HelpWidget", "查看C# SDK")},
    {&Ui::HelpWidget::label_PythonSdk, "/help/Tarsel_mover_PythonSDK", QT_TRANSLATE_NOOP("HelpWidget", "查看Python SDK")},
    {&Ui::HelpWidget::label_learnMore, MOVER_WEB_ADDRESS, QT_TRANSLATE_NOOP("HelpWidget", "了解更多详细信息")},
};
// clang-format on

} // namespace

HelpWidget::HelpWidget(QWidget *parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint)
    , ui(makeForm<Ui::HelpWidget>(this))
    , m_drag(this, ui->widget_title, Qt::LeftButton)
{
    setAttribute(Qt::WA_TranslucentBackground);
    Dialogs::forgetMouseWhenHidden(this);
    new DialogKeys(this, [this] { hide(); });
    ui->label_softwareVersion->setText(QStringLiteral("V" MOVER_VERSION));
    ui->label_copyright->setText(QString::fromUtf8(MOVER_COPYRIGHT));
    ui->label_learnMore->setOpenExternalLinks(true);
    for (const Link &link : links) {
        (ui.get()->*link.label)->setTarget(QString::fromUtf8(link.target));
        if (link.label != &Ui::HelpWidget::label_learnMore)
            connect(ui.get()->*link.label, &QLabel::linkActivated, this, &HelpWidget::slot_linkActivated);
    }
    showTexts();
    ui->label_manual->setFocus();
}

HelpWidget::~HelpWidget() = default;

void HelpWidget::setFirmwareVersion(const QString &version)
{
    m_sFirmwareVersion = version;
    ui->label_firmwareVersion->setText(version);
}

void HelpWidget::showTexts()
{
    // The target is not quoted: the blank ends it, so a label reports the target alone.
    const QString form = QStringLiteral("<a style='color: orange; text-decoration: none' href = %1 ?type=lately>%2");
    for (const Link &link : links)
        (ui.get()->*link.label)->setText(form.arg(QString::fromUtf8(link.target), tr(link.text)));
    ui->label_firmwareVersion->setText(m_sFirmwareVersion);
    if (const MotionLibrary *library = MotionLibrary::loaded()) {
        ui->label_library->setText(library->isSimulated() ? tr("模拟控制器") : QFileInfo(library->file()).fileName());
        ui->label_library->setToolTip(QDir::toNativeSeparators(library->file()));
    }
}

void HelpWidget::slot_linkActivated(QString url)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(QCoreApplication::applicationDirPath() + url));
}

void HelpWidget::on_pushButton_close_clicked()
{
    hide();
}

void HelpWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        showTexts();
    }
    QWidget::changeEvent(event);
}

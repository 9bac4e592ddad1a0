// SPDX-License-Identifier: MIT
#pragma once

#include "widgets/TitleBarDrag.h"

#include <QString>
#include <QWidget>

#include <memory>

namespace Ui {
class HelpWidget;
}

/**
 * The help popup: the program's and the controller's version, and links to the manual and the programming kits in the
 * folder "help" beside the program. Created once; its owner centres and shows it. GUI thread.
 */
class HelpWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit HelpWidget(QWidget *parent = nullptr);
    ~HelpWidget() override;

    /** The firmware version of the connected controller, shown as it is. */
    void setFirmwareVersion(const QString &version);

public slots:
    /** Opens a file or folder of the program's folder on the desktop; url is its path there, beginning with "/". */
    void slot_linkActivated(QString url);

protected:
    void changeEvent(QEvent *event) override;

private slots:
    void on_pushButton_close_clicked();

private:
    void showTexts();

    std::unique_ptr<Ui::HelpWidget> ui;
    TitleBarDrag m_drag;
    QString m_sFirmwareVersion;
};

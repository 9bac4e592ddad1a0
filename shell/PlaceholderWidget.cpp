// SPDX-License-Identifier: MIT
#include "shell/PlaceholderWidget.h"

#include "widgets/Form.h"

#include "ui_PlaceholderWidget.h"

PlaceholderWidget::PlaceholderWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::PlaceholderWidget>(this))
{
    ui->label_link->setText(QString::fromUtf8(MOVER_WEB_ADDRESS));
    hide(); // a child that was never hidden would appear with its parent
}

PlaceholderWidget::~PlaceholderWidget() = default;

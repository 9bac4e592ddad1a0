// SPDX-License-Identifier: MIT
#include "shell/PlaceholderWidget.h"

#include "ui_PlaceholderWidget.h"

PlaceholderWidget::PlaceholderWidget(QWidget *parent)
    : QWidget(parent)
    , m_ui(std::make_unique<Ui::PlaceholderWidget>())
{
    m_ui->setupUi(this);
    m_ui->label_link->setText(QString::fromUtf8(MOVER_WEB_ADDRESS));
    hide(); // a child that was never hidden would appear with its parent
}

PlaceholderWidget::~PlaceholderWidget() = default;

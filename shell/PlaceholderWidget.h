// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PlaceholderWidget;
}

/** A picture and the maker's web address. Created hidden. */
class PlaceholderWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit PlaceholderWidget(QWidget *parent = nullptr);
    ~PlaceholderWidget() override;

private:
    std::unique_ptr<Ui::PlaceholderWidget> ui;
};

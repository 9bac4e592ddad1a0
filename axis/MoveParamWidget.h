// SPDX-License-Identifier: MIT
#pragma once

#include "axis/MotionParamPopup.h"

#include <memory>

namespace Ui {
class MoveParamWidget;
}

/** Parameters of an absolute move: target position, speed, acceleration. */
class MoveParamWidget final : public MotionParamPopup
{
    Q_OBJECT

public:
    explicit MoveParamWidget(QWidget *parent = nullptr);
    ~MoveParamWidget() override;

    void load() override;

signals:
    void signal_moveParamWindowDeactivated();

private:
    QVector<MotionRule> check() const override;
    void send() override;
    void announceDeactivation() override { emit signal_moveParamWindowDeactivated(); }
    void retranslate() override;

    std::unique_ptr<Ui::MoveParamWidget> ui;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "axis/MotionParamPopup.h"

#include <memory>

namespace Ui {
class DriveParamWidget;
}

/** Parameters of a relative move: travel, speed, acceleration, and whether the travel limits it. */
class DriveParamWidget final : public MotionParamPopup
{
    Q_OBJECT

public:
    explicit DriveParamWidget(QWidget *parent = nullptr);
    ~DriveParamWidget() override;

    void load() override;

signals:
    void signal_driveParamWindowDeactivated();
    // Declared for whoever wants to watch the popup; it talks to the worker directly and emits none of them.
    void signal_driveParamChanged(float trivel, float vel, float acc, int travelEnable);
    void signal_loadDriveParam();

private:
    QVector<MotionRule> check() const override;
    void send() override;
    void announceDeactivation() override { emit signal_driveParamWindowDeactivated(); }
    void retranslate() override;

    std::unique_ptr<Ui::DriveParamWidget> ui;
};

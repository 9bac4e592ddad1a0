// SPDX-License-Identifier: MIT
#pragma once

#include "axis/MotionParamPopup.h"

#include <memory>

namespace Ui {
class JogParamWidget;
}

/** Parameters of a jog: step, number of steps, delay between them (ms). */
class JogParamWidget final : public MotionParamPopup
{
    Q_OBJECT

public:
    explicit JogParamWidget(QWidget *parent = nullptr);
    ~JogParamWidget() override;

    void load() override;

signals:
    void signal_jogParamWindowDeactivated();
    // Declared for whoever wants to watch the popup; it talks to the worker directly and emits none of them.
    void signal_jogParamChanged(float step, int time, int delay);
    void signal_loadJogParam();

private:
    QVector<MotionRule> check() const override;
    void send() override;
    void announceDeactivation() override { emit signal_jogParamWindowDeactivated(); }
    void retranslate() override;

    std::unique_ptr<Ui::JogParamWidget> ui;
};

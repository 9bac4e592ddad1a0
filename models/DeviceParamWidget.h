// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class DeviceParamWidget;
}

/**
 * An overlay of an axis panel: the external input and output enables of its axis, and the stage model configuration of
 * a motor. Both are sent to the worker; nothing comes back here. A press outside its body hides it.
 */
class DeviceParamWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit DeviceParamWidget(QWidget *parent = nullptr);
    ~DeviceParamWidget() override;

    /** The axis of the panel, from 0. */
    void setAxis(int axis) { m_iAxis = axis; }
    int axis() const { return m_iAxis; }

    void setInputEnabled(bool enabled);
    bool isInputEnabled() const;
    void setOutputEnabled(bool enabled);
    bool isOutputEnabled() const;

protected:
    bool focusNextPrevChild(bool next) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private slots:
    void on_pushButton_confirm_clicked();
    void on_pushButton_writeConfig_clicked();

private:
    std::unique_ptr<Ui::DeviceParamWidget> ui;
    int m_iAxis = 0;
};

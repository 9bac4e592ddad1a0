// SPDX-License-Identifier: MIT
#pragma once

#include "models/StageModelCatalogue.h"
#include "widgets/TitleBarDrag.h"

#include <QWidget>

#include <memory>

class QJsonDocument;

namespace Ui {
class AddControlsWidget;
}

/**
 * The dialog in which the user says which stage model sits on a free axis. Confirming writes the model's parameters to
 * the axis. Created once; before each showing the owner calls setAxisNames() and loadModelsData().
 */
class AddControlsWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit AddControlsWidget(QWidget *parent = nullptr);
    ~AddControlsWidget() override;

    /** The free axes, "Axis1", "Axis2", …, in the order in which they are offered. */
    void setAxisNames(const QStringList &names);

    /** Reads the model file beside the program again and offers its models. A bad file changes nothing. */
    void loadModelsData();

    /** Takes the models from a parsed model file; they are offered from the next choice of a stage type on. */
    void loadModelsJson(const QJsonDocument &document);

signals:
    /** The axis `asix` (from 0) has accepted the parameters of the model `name`. autoDetect is always false. */
    void signal_addControl(QString name, int asix, MoverDevParam param, bool autoDetect);

protected:
    void changeEvent(QEvent *event) override;

private slots:
    void on_pushButton_close_clicked();
    void on_pushButton_confirm_clicked();
    void on_pushButton_lineControl_clicked();
    void on_pushButton_rotationControl_clicked();
    void on_pushButton_angularControl_clicked();
    void on_pushButton_liftingControl_clicked();

private:
    int moveType() const;
    void showModels();

    std::unique_ptr<Ui::AddControlsWidget> ui;
    TitleBarDrag m_drag;
    StageModelCatalogue m_catalogue;
};

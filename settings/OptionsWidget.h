// SPDX-License-Identifier: MIT
#pragma once

#include "settings/AxisOptions.h"
#include "settings/LanguageStore.h"
#include "settings/MotorParamEdits.h"
#include "widgets/TitleBarDrag.h"

#include <QTimer>
#include <QTranslator>
#include <QWidget>

#include <array>
#include <functional>
#include <memory>

namespace Ui {
class OptionsWidget;
}

/**
 * The settings dialog: language, trigger, motor parameters and position compensation. Created once, by the main window;
 * its construction applies the stored language to the whole program. GUI thread; what it reads from the controller it
 * waits for.
 */
class OptionsWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit OptionsWidget(QWidget *parent = nullptr);
    ~OptionsWidget() override;

    /** The chosen language: 0 Chinese, 1 English; any other code that was stored, as it was stored. */
    int language() const { return m_iLanguage; }
    /**
     * Makes the program speak Chinese (0) or English (1). Without "mover_en_US.qm" in the program's folder, and for any
     * other code, the texts stay as they are.
     */
    void setLanguage(int code);
    void saveLanguage(int code);
    /** Applies the stored language and shows it in the radio buttons. */
    void loadLanguage();

    /** Fills the trigger and the compensation page from the controller; axes that it does not have are hidden. */
    void loadDeviceSettings();

protected:
    void changeEvent(QEvent *event) override;

private slots:
    void on_pushButton_close_clicked();
    void on_pushButton_language_clicked();
    void on_pushButton_trigger_clicked();
    void on_pushButton_motorParam_clicked();
    void on_pushButton_posConpen_clicked();

    void on_radioButton_cn_toggled(bool checked);
    void on_radioButton_en_toggled(bool checked);

    void on_checkBox_triggerIn_1_clicked() { m_axes[0].changeTriggerIn(); }
    void on_checkBox_triggerIn_2_clicked() { m_axes[1].changeTriggerIn(); }
    void on_checkBox_triggerIn_3_clicked() { m_axes[2].changeTriggerIn(); }
    void on_checkBox_triggerOut_1_clicked() { m_axes[0].changeTriggerOut(); }
    void on_checkBox_triggerOut_2_clicked() { m_axes[1].changeTriggerOut(); }
    void on_checkBox_triggerOut_3_clicked() { m_axes[2].changeTriggerOut(); }
    void on_doubleSpinBox_Axis1_editingFinished() { m_axes[0].changeDisplacement(); }
    void on_doubleSpinBox_Axis2_editingFinished() { m_axes[1].changeDisplacement(); }
    void on_doubleSpinBox_Axis3_editingFinished();

    void on_checkBox_posConpen_on1_clicked() { m_axes[0].switchPosConpenOn(); }
    void on_checkBox_posConpen_on2_clicked() { m_axes[1].switchPosConpenOn(); }
    void on_checkBox_posConpen_on3_clicked() { m_axes[2].switchPosConpenOn(); }
    void on_checkBox_posConpen_close1_clicked() { m_axes[0].switchPosConpenOff(); }
    void on_checkBox_posConpen_close2_clicked() { m_axes[1].switchPosConpenOff(); }
    void on_checkBox_posConpen_close3_clicked() { m_axes[2].switchPosConpenOff(); }

    void on_pushButton_ReadParam_clicked();
    void on_pushButton_WriteParam_clicked();

private:
    void retranslate();
    void showMessage(const std::function<QString()> &text);

    std::unique_ptr<Ui::OptionsWidget> ui;
    TitleBarDrag m_drag;
    LanguageStore m_store;
    // Each catalogue outlives the translator that reads from it.
    QByteArray m_catalogue;
    std::unique_ptr<QTranslator> m_english; // this program's texts; null while they are in Chinese
    QByteArray m_qtCatalogue;
    QTranslator m_qtChinese; // Qt's own texts, which are in English without it
    int m_iLanguage = 0;
    std::array<AxisOptions, 3> m_axes;
    MotorParamEdits m_motorParams;
    std::function<QString()> m_message; // what label_msg shows, in the current language
    QTimer *m_messageTimer;
};

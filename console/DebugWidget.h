// SPDX-License-Identifier: MIT
#pragma once

#include "console/MotorParamControls.h"
#include "device/Heart.h"

#include <QPointer>
#include <QSharedPointer>
#include <QWidget>

#include <functional>
#include <memory>

class CompensationModel;
class QMessageBox;

namespace Ui {
class DebugWidget;
}

/**
 * The engineering console, a top-level window of its own: every operation of the controller on a button, called as it
 * is and its result shown as it comes; the whole motor-parameter record, the compensation table, the erasing of the
 * identification chip and a heartbeat. GUI thread; every library call blocks it while the call lasts.
 */
class DebugWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit DebugWidget(QWidget *parent = nullptr);
    ~DebugWidget() override;

    /** Closes the box that says that the controller is still writing, if it is open; the library is then free. */
    void acknowledgeWriting();

public slots:
    /** Shows the number of missed beats. */
    void hertBreak(int n);

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private slots:
    // One command each, see ConsoleCommands.h.
    void on_pushButton_1_clicked() { run(1); }
    void on_pushButton_2_clicked() { run(2); }
    void on_pushButton_3_clicked() { run(3); }
    void on_pushButton_4_clicked() { run(4); }
    void on_pushButton_5_clicked() { run(5); }
    void on_pushButton_6_clicked() { run(6); }
    void on_pushButton_7_clicked() { run(7); }
    void on_pushButton_8_clicked() { run(8); }
    void on_pushButton_9_clicked() { run(9); }
    void on_pushButton_10_clicked() { run(10); }
    void on_pushButton_11_clicked() { run(11); }
    void on_pushButton_12_clicked() { run(12); }
    void on_pushButton_13_clicked() { run(13); }
    void on_pushButton_14_clicked() { run(14); }
    void on_pushButton_15_clicked() { run(15); }
    void on_pushButton_16_clicked() { run(16); }
    void on_pushButton_17_clicked() { run(17); }
    void on_pushButton_18_clicked() { run(18); }
    void on_pushButton_19_clicked() { run(19); }
    void on_pushButton_20_clicked() { run(20); }
    void on_pushButton_22_clicked() { run(22); }
    void on_pushButton_24_clicked() { run(24); }
    void on_pushButton_25_clicked() { run(25); }
    void on_pushButton_26_clicked() { run(26); }
    void on_pushButton_27_clicked() { run(27); }
    void on_pushButton_28_clicked() { run(28); }
    void on_pushButton_29_clicked() { run(29); }
    void on_pushButton_30_clicked() { run(30); }
    void on_pushButton_31_clicked() { run(31); }
    void on_pushButton_32_clicked() { run(32); }
    void on_pushButton_33_clicked() { run(33); }
    void on_pushButton_34_clicked() { run(34); }
    void on_pushButton_35_clicked() { run(35); }
    void on_pushButton_36_clicked() { run(36); }
    void on_pushButton_37_clicked() { run(37); }
    void on_pushButton_38_clicked() { run(38); }
    void on_pushButton_39_clicked() { run(39); }
    void on_pushButton_40_clicked() { run(40); }
    void on_pushButton_41_clicked() { run(41); }
    void on_pushButton_42_clicked() { run(42); }
    void on_pushButton_43_clicked() { run(43); }
    void on_pushButton_45_clicked() { run(45); }
    void on_pushButton_46_clicked() { run(46); }
    void on_pushButton_47_clicked() { run(47); }
    void on_pushButton_48_clicked() { run(48); }
    void on_pushButton_49_clicked() { run(49); }
    void on_pushButton_51_clicked() { run(51); }
    void on_pushButton_52_clicked() { run(52); }
    void on_pushButton_53_clicked() { run(53); }
    void on_pushButton_55_clicked() { run(55); }
    void on_pushButton_56_clicked() { run(56); }
    void on_pushButton_58_clicked() { run(58); }
    void on_pushButton_59_clicked() { run(59); }
    void on_pushButton_60_clicked() { run(60); }
    void on_pushButton_61_clicked() { run(61); }
    void on_pushButton_44_clicked();
    void on_pushButton_54_clicked();

    void on_pushButton_writeMotorParams_clicked();
    void on_pushButton_readMorotParams_clicked();
    void on_pushButton_clear_clicked();
    void on_pushButton_pos_conpen_enable_clicked();
    void on_pushButton_pos_conpen_disable_clicked();
    void on_pushButton_pos_conpen_write_clicked();
    void on_pushButton_clicked(); // reads the compensation tables
    void on_pushButton_pasteTable_clicked();
    void on_pushButton_clearTable_clicked();
    void on_lineEdit_input_textEdited();

private:
    void run(int button);
    int axis() const;
    void setPosConpen(int enable);
    void showResult(const char *function, const std::function<QString()> &text);
    void showInputWrong(bool wrong);
    void savePlace() const;
    void retranslate();

    std::unique_ptr<Ui::DebugWidget> ui;
    MotorParamControls m_motorParams;
    CompensationModel *m_compensation;
    QSharedPointer<Heart> m_heart;
    QPointer<QMessageBox> m_writingBox; // the library is held while it is open
    std::function<QString()> m_result;  // asked again when the language changes
    bool m_bShownBefore = false;
};

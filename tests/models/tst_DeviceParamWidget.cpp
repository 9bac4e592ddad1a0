// SPDX-License-Identifier: MIT
#include "models/DeviceParamWidget.h"

#include "device/SerialComDev.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/Catalogue.h"
#include "support/FailOnDeadSlot.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

#include <memory>

class tst_DeviceParamWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void showsItsTexts();
    void offersMotorIds();
    void setsAndGetsTheEnables();
    void sendsTheEnablesOfItsAxis_data();
    void sendsTheEnablesOfItsAxis();
    void sendsTheMotorConfiguration();
    void sendsAnEmptyMotorConfiguration();
    void fileButtonDoesNothing();
    void hidesWhenPressedBesideItsBody();
    void staysWhenPressedInsideItsBody();
    void leavesThePressToItsPanel();
    void paintsItsStyleSheetBackground();
    void fitsIntoASmallPanel();
    void changesLanguageAndKeepsItsContents();

private:
    template <typename Widget>
    Widget *find(const char *name) const
    {
        auto *widget = m_overlay->findChild<Widget *>(name);
        if (!widget)
            qFatal("no %s", name);
        return widget;
    }
    void click(const char *button) const { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }

    FailOnDeadSlot m_deadSlots;
    std::unique_ptr<QWidget> m_panel;
    DeviceParamWidget *m_overlay = nullptr;
};

void tst_DeviceParamWidget::init()
{
    simulator::reset();
    QCOMPARE(SerialComDev::instance()->open(1001), 1001);
    simulator::clearJournal();
    m_panel = std::make_unique<QWidget>();
    m_panel->resize(530, 280);
    m_overlay = new DeviceParamWidget(m_panel.get());
    m_overlay->setGeometry(m_panel->rect());
    m_panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_panel.get()));
}

void tst_DeviceParamWidget::cleanup()
{
    m_panel.reset();
    QVERIFY(SerialComDev::endThread(5000));
}

void tst_DeviceParamWidget::showsItsTexts()
{
    QCOMPARE(find<QGroupBox>("groupBox")->title(), QString("外部输入输出"));
    QCOMPARE(find<QCheckBox>("checkBox_input")->text(), QString("输入有效"));
    QCOMPARE(find<QCheckBox>("checkBox_output")->text(), QString("输出有效"));
    QCOMPARE(find<QPushButton>("pushButton_confirm")->text(), QString("确认"));
    QCOMPARE(find<QGroupBox>("groupBox_2")->title(), QString("位移台型号配置"));
    QCOMPARE(find<QLabel>("label")->text(), QString("ID:"));
    QCOMPARE(find<QLabel>("label_2")->text(), QString("型号："));
    QCOMPARE(find<QLabel>("label_3")->text(), QString("配置文件："));
    QCOMPARE(find<QPushButton>("pushButton_writeConfig")->text(), QString("写入"));
}

void tst_DeviceParamWidget::offersMotorIds()
{
    auto *ids = find<QComboBox>("comboBox_motorID");
    QCOMPARE(ids->count(), 8);
    for (int i = 0; i < 8; ++i)
        QCOMPARE(ids->itemText(i), QString::number(i + 1));
}

void tst_DeviceParamWidget::setsAndGetsTheEnables()
{
    QVERIFY(!m_overlay->isInputEnabled());
    QVERIFY(!m_overlay->isOutputEnabled());
    m_overlay->setInputEnabled(true);
    QVERIFY(find<QCheckBox>("checkBox_input")->isChecked());
    QVERIFY(!find<QCheckBox>("checkBox_output")->isChecked());
    m_overlay->setOutputEnabled(true);
    QVERIFY(find<QCheckBox>("checkBox_output")->isChecked());
    QVERIFY(simulator::journal().empty()); // setting sends nothing

    find<QCheckBox>("checkBox_input")->setChecked(false);
    QVERIFY(!m_overlay->isInputEnabled());
    QVERIFY(m_overlay->isOutputEnabled());
}

void tst_DeviceParamWidget::sendsTheEnablesOfItsAxis_data()
{
    QTest::addColumn<int>("axis");
    QTest::addColumn<bool>("input");
    QTest::addColumn<bool>("output");
    QTest::newRow("none") << 0 << false << false;
    QTest::newRow("input") << 1 << true << false;
    QTest::newRow("output") << 2 << false << true;
    QTest::newRow("both") << 0 << true << true;
}

void tst_DeviceParamWidget::sendsTheEnablesOfItsAxis()
{
    QFETCH(int, axis);
    QFETCH(bool, input);
    QFETCH(bool, output);
    m_overlay->setAxis(axis);
    QCOMPARE(m_overlay->axis(), axis);
    m_overlay->setInputEnabled(input);
    m_overlay->setOutputEnabled(output);
    QSignalSpy sent(SerialComDev::instance().data(), &SerialComDev::signal_setTriggerParams);
    click("pushButton_confirm");
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.first(), (QVariantList{axis, int(input), int(output)}));
    QVERIFY(m_overlay->isVisible());

    const auto call = [axis](const char *function, bool enable) {
        return function + ("(1001, " + std::to_string(axis)) + ", " + (enable ? "1" : "0") + ") = 0";
    };
    QTRY_COMPARE(
        simulator::journalText(),
        (std::vector<std::string>{call("setTriggerInEnable", input), call("setTriggerOutEnable", output)}));
}

void tst_DeviceParamWidget::sendsTheMotorConfiguration()
{
    QSignalSpy sent(SerialComDev::instance().data(), &SerialComDev::signal_setMotorConfig);
    m_overlay->setAxis(1); // has no say
    find<QComboBox>("comboBox_motorID")->setCurrentText("3");
    QTest::keyClicks(find<QLineEdit>("lineEdit_motorModel"), "LIN-100");
    QTest::keyClicks(find<QLineEdit>("lineEdit_fileName"), "stage 1.cfg");
    click("pushButton_writeConfig");
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.first(), (QVariantList{3, "LIN-100", "stage 1.cfg"}));
    QVERIFY(m_overlay->isVisible());
}

void tst_DeviceParamWidget::sendsAnEmptyMotorConfiguration()
{
    QSignalSpy sent(SerialComDev::instance().data(), &SerialComDev::signal_setMotorConfig);
    click("pushButton_writeConfig");
    QCOMPARE(sent.size(), 1);
    QCOMPARE(sent.first(), (QVariantList{1, "", ""}));
}

void tst_DeviceParamWidget::fileButtonDoesNothing()
{
    QSignalSpy trigger(SerialComDev::instance().data(), &SerialComDev::signal_setTriggerParams);
    QSignalSpy config(SerialComDev::instance().data(), &SerialComDev::signal_setMotorConfig);
    find<QLineEdit>("lineEdit_fileName")->setText("typed");
    click("pushButton_file");
    QCoreApplication::processEvents();
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(!QApplication::activePopupWidget());
    QCOMPARE(find<QLineEdit>("lineEdit_fileName")->text(), QString("typed"));
    QVERIFY(m_overlay->isVisible());
    QVERIFY(trigger.isEmpty());
    QVERIFY(config.isEmpty());
}

void tst_DeviceParamWidget::hidesWhenPressedBesideItsBody()
{
    const QRect body = find<QWidget>("widget_back")->geometry();
    const QPoint beside[] = {
        {body.left() - 1, body.center().y()},
        {body.right() + 1, body.center().y()},
        {body.center().x(), body.top() - 1},
        {body.center().x(), body.bottom() + 1}};
    for (const QPoint &pos : beside) {
        QVERIFY(m_overlay->rect().contains(pos));
        m_overlay->show();
        QTest::mousePress(m_overlay, Qt::LeftButton, {}, pos);
        QVERIFY(!m_overlay->isVisible());
    }
}

void tst_DeviceParamWidget::staysWhenPressedInsideItsBody()
{
    const QRect body = find<QWidget>("widget_back")->geometry();
    for (const QPoint &pos : {body.topLeft(), body.bottomRight(), body.center()}) {
        QTest::mousePress(m_overlay, Qt::LeftButton, {}, pos);
        QVERIFY(m_overlay->isVisible());
    }
    // Through the body's own widgets too.
    for (const char *name : {"widget_back", "groupBox", "label_3"}) {
        QTest::mousePress(find<QWidget>(name), Qt::LeftButton, {}, QPoint(1, 1));
        QVERIFY(m_overlay->isVisible());
    }
}

void tst_DeviceParamWidget::leavesThePressToItsPanel()
{
    class PressCounter : public QObject
    {
    public:
        int presses = 0;
        bool eventFilter(QObject *, QEvent *event) override
        {
            presses += event->type() == QEvent::MouseButtonPress;
            return false;
        }
    } counter;
    m_panel->installEventFilter(&counter);
    QTest::mousePress(m_overlay, Qt::LeftButton, {}, QPoint(1, 1));
    QCOMPARE(counter.presses, 1);
}

void tst_DeviceParamWidget::paintsItsStyleSheetBackground()
{
    m_panel->setStyleSheet("DeviceParamWidget { background-color: #123456; }");
    QCOMPARE(m_panel->grab().toImage().pixelColor(1, 1), QColor("#123456"));
}

void tst_DeviceParamWidget::fitsIntoASmallPanel()
{
    const QSize needed = m_overlay->minimumSizeHint();
    QCOMPARE(needed.boundedTo(QSize(530, 280)), needed);
}

void tst_DeviceParamWidget::changesLanguageAndKeepsItsContents()
{
    m_overlay->setInputEnabled(true);
    find<QComboBox>("comboBox_motorID")->setCurrentIndex(4);
    find<QLineEdit>("lineEdit_motorModel")->setText("ROT-60");
    {
        const Catalogue english;
        QCOMPARE(find<QGroupBox>("groupBox")->title(), QString("External I/O"));
        QCOMPARE(find<QCheckBox>("checkBox_input")->text(), QString("Enable input"));
        QCOMPARE(find<QCheckBox>("checkBox_output")->text(), QString("Enable output"));
        QCOMPARE(find<QPushButton>("pushButton_confirm")->text(), QString("confirm"));
        QCOMPARE(find<QGroupBox>("groupBox_2")->title(), QString("Motor Stage Model Config"));
        QCOMPARE(find<QLabel>("label_2")->text(), QString("Model"));
        QCOMPARE(find<QLabel>("label_3")->text(), QString("Config file"));
        QCOMPARE(find<QPushButton>("pushButton_writeConfig")->text(), QString("write"));
        QVERIFY(m_overlay->isInputEnabled());
        QCOMPARE(find<QComboBox>("comboBox_motorID")->currentText(), QString("5"));
        QCOMPARE(find<QLineEdit>("lineEdit_motorModel")->text(), QString("ROT-60"));
    }
    QCOMPARE(find<QPushButton>("pushButton_writeConfig")->text(), QString("写入"));
}

QTEST_MAIN(tst_DeviceParamWidget)
#include "tst_DeviceParamWidget.moc"

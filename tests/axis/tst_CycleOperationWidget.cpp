// SPDX-License-Identifier: MIT
#include "axis/CycleOperationWidget.h"

#include "support/Catalogue.h"
#include "support/OnMessageBox.h"
#include "support/Prefixed.h"
#include "support/WorkerFixture.h"
#include "widgets/TDoubleSpinBox.h"

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

#include <memory>

namespace {

const QString travelMessage = "相对位移超出范围！(0，100]\n";
const QString speedMessage = "速度超出范围！(0，20]\n";
const QString accelerationMessage = "加速度超出范围！(0，80]\n";
const QString countMessage = "循环次数不能为0！\n";
const QString closeQuestion = "运行中关闭该界面将会自动停止，是否关闭？";

/** What is loaded into the dialog. */
struct Values {
    double travel = 30;
    double speed = 7;
    double acceleration = 60;
    int count = 4;
    int dwell = 250;
};

void answer(QMessageBox &box, const QString &label)
{
    for (QAbstractButton *button : box.buttons()) {
        if (button->text() == label)
            QTest::mouseClick(button, Qt::LeftButton);
    }
}

} // namespace
Q_DECLARE_METATYPE(Values)

class tst_CycleOperationWidget : public WorkerFixture
{
    Q_OBJECT

private slots:
    void init()
    {
        begin();
        m_dialog = std::make_unique<CycleOperationWidget>();
        m_dialog->setAxis({1, "", "mm", -40, 60, 20, 80});
        load({});
        connect(m_dialog.get(), &CycleOperationWidget::signal_startDoing, this, [this] { note("startDoing"); });
        connect(m_dialog.get(), &CycleOperationWidget::signal_stopDoing, this, [this] { note("stopDoing"); });
        m_dialog->show();
    }
    void cleanup()
    {
        m_dialog.reset();
        end();
    }

    // ---- Form

    void showsItsTexts_data()
    {
        QTest::addColumn<QString>("object");
        QTest::addColumn<QString>("chinese");
        QTest::addColumn<QString>("english");
        QTest::newRow("title") << "label_title"
                               << "  循环模式"
                               << "Loop running mode";
        QTest::newRow("travel") << "label_disp"
                                << "相对位移："
                                << "Travel";
        QTest::newRow("speed") << "label_speed"
                               << "速度："
                               << "Speed";
        QTest::newRow("acceleration") << "label_acc"
                                      << "加速度："
                                      << "Acc";
        QTest::newRow("count") << "label_time"
                               << "循环次数："
                               << "Loop count";
        QTest::newRow("dwell") << "label_delay"
                               << "停留时间："
                               << "Res time";
        QTest::newRow("left") << "pushButton_left"
                              << "负方向开始循环运行"
                              << "The loop starts in the negative direction";
        QTest::newRow("right") << "pushButton_right"
                               << "正方向开始循环运行"
                               << "The loop starts in the positive direction";
        QTest::newRow("stop") << "pushButton_stop"
                              << "停止运行"
                              << "Stop runing";
    }
    void showsItsTexts()
    {
        QFETCH(QString, object);
        QFETCH(QString, chinese);
        QFETCH(QString, english);
        const auto *widget = find<QWidget>(object.toLatin1());
        QCOMPARE(widget->property("text").toString(), chinese);
        const Catalogue catalogue;
        QCOMPARE(widget->property("text").toString(), english);
    }
    void hasFieldsThatAdmitEveryStage()
    {
        for (const char *name : {"doubleSpinBox_relativeDisp", "doubleSpinBox_speed", "doubleSpinBox_acc"}) {
            QCOMPARE(find<TDoubleSpinBox>(name)->decimals(), 3);
            QCOMPARE(find<TDoubleSpinBox>(name)->minimum(), 0.);
            QCOMPARE(find<TDoubleSpinBox>(name)->maximum(), 1e7);
        }
        for (const char *name : {"spinBox_time", "spinBox_delay"}) {
            QCOMPARE(find<QSpinBox>(name)->minimum(), 0);
            QCOMPARE(find<QSpinBox>(name)->maximum(), 100000);
        }
    }
    void showsTheUnitInItsLabels_data()
    {
        QTest::addColumn<QString>("unit"); // empty: none was set
        QTest::newRow("at first") << "";
        QTest::newRow("degrees") << "°";
    }
    void showsTheUnitInItsLabels()
    {
        QFETCH(QString, unit);
        if (unit.isEmpty())
            unit = "mm";
        else
            m_dialog->setAxis({1, "", unit});
        QCOMPARE(find<QLabel>("label_dispUnit")->text(), unit);
        QCOMPARE(find<QLabel>("label_speedUnit")->text(), unit + "/s");
        QCOMPARE(find<QLabel>("label_accUnit")->text(), unit + "/s²");
    }
    void loadsItsFields()
    {
        load({12.5, 3.25, 44, 9, 1500});
        QCOMPARE(find<QDoubleSpinBox>("doubleSpinBox_relativeDisp")->value(), 12.5);
        QCOMPARE(find<QDoubleSpinBox>("doubleSpinBox_speed")->value(), 3.25);
        QCOMPARE(find<QDoubleSpinBox>("doubleSpinBox_acc")->value(), 44.);
        QCOMPARE(find<QSpinBox>("spinBox_time")->value(), 9);
        QCOMPARE(find<QSpinBox>("spinBox_delay")->value(), 1500);
    }
    void changesLanguageAndKeepsUnitAndValues()
    {
        m_dialog->setAxis({1, "", "°"});
        const Prefixed prefixed;
        QCOMPARE(find<QPushButton>("pushButton_stop")->text(), QString("T:停止运行"));
        QCOMPARE(find<QLabel>("label_dispUnit")->text(), QString("°"));
        QCOMPARE(find<QLabel>("label_speedUnit")->text(), QString("°/s"));
        QCOMPARE(find<QDoubleSpinBox>("doubleSpinBox_relativeDisp")->value(), 30.);
    }
    void paintsItsStyleSheetBackground()
    {
        m_dialog->setStyleSheet("CycleOperationWidget { background-color: #123456; }");
        const QRect rect = m_dialog->rect();
        QCOMPARE(m_dialog->grab().toImage().pixelColor(1, rect.bottom() - 1), QColor("#123456"));
    }

    // ---- Start

    void startsInTheDirectionOfItsButton_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("direction");
        QTest::newRow("negative first") << "pushButton_left" << 9 << 2;
        QTest::newRow("positive first") << "pushButton_right" << 8 << 1;
    }
    void startsInTheDirectionOfItsButton()
    {
        QFETCH(QString, button);
        QFETCH(int, mode);
        QFETCH(int, direction);
        click(button.toLatin1());
        QCOMPARE(
            takeRequests(), (QStringList{
                                "setSpeedParams(1, 60, 7)", "setCircleParams(1, 4, 30, 250)",
                                QString("startMotor(1, %1)").arg(mode), "startDoing"}));
        QVERIFY(m_dialog->isVisible());
        QTRY_COMPARE(
            calls(), (QStringList{
                         "setSpeed(1001, 1, 7)", "setAcceleration(1001, 1, 60)", "setCircleCount(1001, 1, 4)",
                         "setCircleDisp(1001, 1, 30)", "setCircleDelay(1001, 1, 250)",
                         QString("startCircle(1001, 1, %1)").arg(direction)}));
    }

    void acceptsTheEdgesOfItsRules_data()
    {
        QTest::addColumn<Values>("values");
        QTest::newRow("largest travel") << Values{100};
        QTest::newRow("smallest travel") << Values{0.001};
        QTest::newRow("highest speed") << Values{30, 20};
        QTest::newRow("lowest speed") << Values{30, 0.001};
        QTest::newRow("highest acceleration") << Values{30, 7, 80};
        QTest::newRow("lowest acceleration") << Values{30, 7, 0.001};
        QTest::newRow("once") << Values{30, 7, 60, 1};
        QTest::newRow("very often") << Values{30, 7, 60, 100000};
        QTest::newRow("no dwell") << Values{30, 7, 60, 4, 0};
        QTest::newRow("long dwell") << Values{30, 7, 60, 4, 100000};
    }
    void acceptsTheEdgesOfItsRules()
    {
        QFETCH(Values, values);
        load(values);
        const OnMessageBox box;
        click("pushButton_right");
        QCOMPARE(box.shown(), 0);
        const QStringList requests = takeRequests();
        QCOMPARE(requests.size(), 4);
        QCOMPARE(requests[0], QString("setSpeedParams(1, %1, %2)").arg(values.acceleration).arg(values.speed));
        QCOMPARE(
            requests[1],
            QString("setCircleParams(1, %1, %2, %3)").arg(values.count).arg(values.travel).arg(values.dwell));
    }

    void refusesWhatBreaksARule_data()
    {
        QTest::addColumn<Values>("values");
        QTest::addColumn<QString>("message");
        QTest::newRow("no travel") << Values{0} << travelMessage;
        QTest::newRow("travel too large") << Values{100.001} << travelMessage;
        QTest::newRow("no speed") << Values{30, 0} << speedMessage;
        QTest::newRow("speed too high") << Values{30, 20.001} << speedMessage;
        QTest::newRow("no acceleration") << Values{30, 7, 0} << accelerationMessage;
        QTest::newRow("acceleration too high") << Values{30, 7, 80.001} << accelerationMessage;
        QTest::newRow("no count") << Values{30, 7, 60, 0} << countMessage;
        QTest::newRow("everything") << Values{101, 0, 81, 0, 0}
                                    << travelMessage + speedMessage + accelerationMessage + countMessage;
    }
    void refusesWhatBreaksARule()
    {
        QFETCH(Values, values);
        QFETCH(QString, message);
        load(values);
        for (const char *button : {"pushButton_left", "pushButton_right"}) {
            const OnMessageBox next([this](QMessageBox &box) {
                QCOMPARE(box.parentWidget(), m_dialog.get());
                QVERIFY(box.styleSheet().contains("min-width: 600px;min-height: 500px;"));
            });
            click(button);
            QCOMPARE(next.shown(), 1);
            QCOMPARE(next.text(), message);
            QCOMPARE(takeRequests(), QStringList());
            QVERIFY(m_dialog->isVisible());
        }
    }
    void showsLimitsWithSixDigits()
    {
        m_dialog->setAxis({1, "", "mm", 0, 1234567.8, 20, 80});
        load({2e6});
        const OnMessageBox box;
        click("pushButton_left");
        QCOMPARE(box.text(), QString("相对位移超出范围！(0，1.23457e+06]\n"));
    }
    void speaksEnglish()
    {
        const Catalogue catalogue;
        load({0, 0, 0, 0, 0});
        const OnMessageBox next;
        click("pushButton_left");
        QCOMPARE(
            next.text(), QString("relative displacement out of range! (0, 100]\nSpeed out of range! (0, 20]\n"
                                 "Acceleration out of range! (0, 80]\nThe number of cycles cannot be 0!\n"));
    }

    // ---- Stop and close

    void stopStopsAndStaysOpen_data() { runningStates(); }
    void stopStopsAndStaysOpen()
    {
        QFETCH(bool, idle);
        m_dialog->setRunningState(idle);
        click("pushButton_stop");
        QCOMPARE(takeRequests(), (QStringList{"stopMotor(1)", "stopDoing"}));
        QVERIFY(m_dialog->isVisible());
        QTRY_COMPARE(calls(), QStringList{"stopRuning(1001, 1)"});
    }
    void closingWhileIdleStopsWithoutAsking()
    {
        m_dialog->setRunningState(true);
        const OnMessageBox box;
        click("pushButton_close");
        QCOMPARE(box.shown(), 0);
        QCOMPARE(takeRequests(), (QStringList{"stopMotor(1)", "stopDoing"}));
        QVERIFY(!m_dialog->isVisible());
    }
    void closingWhileMovingAsksFirst_data()
    {
        QTest::addColumn<bool>("english");
        QTest::newRow("Chinese") << false;
        QTest::newRow("English") << true;
    }
    void closingWhileMovingAsksFirst()
    {
        QFETCH(bool, english);
        std::optional<Catalogue> catalogue;
        if (english)
            catalogue.emplace();
        m_dialog->setRunningState(false);
        const OnMessageBox next([&](QMessageBox &box) {
            QCOMPARE(takeRequests(), QStringList());
            QVERIFY(m_dialog->isVisible());
            answer(box, english ? "OK" : "确认");
        });
        click("pushButton_close");
        QCOMPARE(next.shown(), 1);
        QCOMPARE(next.text(), closeQuestion);
        QCOMPARE(takeRequests(), (QStringList{"stopMotor(1)", "stopDoing"}));
        QVERIFY(!m_dialog->isVisible());
    }
    void followsTheLastRunningState()
    {
        m_dialog->hide();
        m_dialog->setRunningState(true);
        m_dialog->setRunningState(false);
        m_dialog->show();
        const OnMessageBox box;
        click("pushButton_close");
        QCOMPARE(box.shown(), 1);
    }
    void refusingToCloseLeavesTheLoopRunning_data()
    {
        QTest::addColumn<bool>("escape");
        QTest::newRow("cancel") << false;
        QTest::newRow("escape") << true;
    }
    void refusingToCloseLeavesTheLoopRunning()
    {
        QFETCH(bool, escape);
        const OnMessageBox next([escape](QMessageBox &box) {
            if (escape)
                QTest::keyClick(&box, Qt::Key_Escape);
            else
                answer(box, "取消");
            QVERIFY(!box.isVisible());
        });
        click("pushButton_close");
        QCOMPARE(next.shown(), 1);
        QCOMPARE(takeRequests(), QStringList());
        QVERIFY(m_dialog->isVisible());
    }
    void survivesItsEndUnderTheQuestion()
    {
        const OnMessageBox box([this](QMessageBox &) { m_dialog.reset(); });
        QTimer::singleShot(
            0, m_dialog.get(), [this] { QMetaObject::invokeMethod(m_dialog.get(), "on_pushButton_close_clicked"); });
        QTRY_COMPARE(box.shown(), 1);
        QVERIFY(!m_dialog);
        QCOMPARE(takeRequests(), QStringList());
    }

    // ---- Waiting

    void waitProcessesEventsUntilTheTimeIsOver()
    {
        QElapsedTimer elapsed;
        bool processed = false;
        QTimer::singleShot(0, this, [&processed] { processed = true; });
        elapsed.start();
        CycleOperationWidget::wait(50);
        QVERIFY(elapsed.elapsed() >= 50);
        QVERIFY(processed);
    }
    void waitEndsThoughEventsKeepComing()
    {
        constexpr int waitMs = 50;
        QTimer busy; // always due, and keeps busy for the whole wait
        int ticks = 0;
        busy.callOnTimeout([&ticks] {
            ++ticks;
            const QDeadlineTimer over(waitMs);
            while (!over.hasExpired()) {
            }
        });
        busy.start(0);
        CycleOperationWidget::wait(waitMs);
        QCOMPARE(ticks, 1);
    }
    void waitForNoTimeReturnsAtOnce()
    {
        bool processed = false;
        QTimer::singleShot(0, this, [&processed] { processed = true; });
        CycleOperationWidget::wait(0);
        QVERIFY(!processed);
        QTRY_VERIFY(processed);
    }

private:
    static void runningStates()
    {
        QTest::addColumn<bool>("idle");
        QTest::newRow("moving") << false;
        QTest::newRow("idle") << true;
    }
    void load(const Values &values)
    {
        m_dialog->load(values.travel, values.speed, values.acceleration, values.count, values.dwell);
    }
    void click(const char *button) { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }
    template <typename Widget>
    Widget *find(const char *name) const
    {
        auto *widget = m_dialog->findChild<Widget *>(name);
        if (!widget)
            qFatal("no %s", name);
        return widget;
    }

    std::unique_ptr<CycleOperationWidget> m_dialog;
};

QTEST_MAIN(tst_CycleOperationWidget)
#include "tst_CycleOperationWidget.moc"

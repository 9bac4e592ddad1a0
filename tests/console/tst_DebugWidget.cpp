// SPDX-License-Identifier: MIT
#include "console/DebugWidget.h"

#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "device/moverLibrary.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/DebugLog.h"
#include "support/OnMessageBox.h"
#include "support/English.h"
#include "support/FailOnDeadSlot.h"
#include "support/LiveObjects.h"
#include "support/SignalCounter.h"

#include <QAbstractItemModel>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRandomGenerator>
#include <QScreen>
#include <QStandardPaths>
#include <QTableView>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <functional>
#include <memory>

namespace {

constexpr int device = 1001;
constexpr int axis = 1; // a rotation stage: -170° to 170°, 30°/s, 120°/s²

/** What a button of the command panel does when all is well, on axis 1 of device 1001. */
struct Operation {
    const char *button;
    const char *label;
    const char *input;
    std::function<void()> prepare;
    const char *call; // as the journal shows it
    const char *shown;
};

const auto nothing = [] {};

void loopOnce()
{
    setCircleDisp(device, axis, 10);
    setCircleCount(device, axis, 3);
    startCircle(device, axis, 1);
    simulator::advance(0.1);
}

void jogOnce()
{
    setJogStep(device, axis, 10);
    setJogCount(device, axis, 3);
    startJog(device, axis, 1);
    simulator::advance(0.1);
}

const Operation operations[] = {
    {"1", "当前位置", "", [] { simulator::setPosition(device, axis, 12.3456789012); },
     "getCurrentPos(1001, 1) = 12.3456789012", "12.345679"},
    {"2", "Move", "", nothing, "startMove(1001, 1) = 0", "0"},
    {"22", "home", "", nothing, "home(1001, 1) = 0", "0"},
    {"3", "Stop", "", nothing, "stopRuning(1001, 1) = 0", "0"},
    {"4", "JogLeft", "", nothing, "startJog(1001, 1, 2) = 0", "0"},
    {"24", "JogRight", "", nothing, "startJog(1001, 1, 1) = 0", "0"},
    {"5", "DriveLeft", "", nothing, "startDrive(1001, 1, 2) = 0", "0"},
    {"25", "DriveRight", "", nothing, "startDrive(1001, 1, 1) = 0", "0"},
    {"6", "CircleLeft", "", nothing, "startCircle(1001, 1, 2) = 0", "0"},
    {"26", "CircleRight", "", nothing, "startCircle(1001, 1, 1) = 0", "0"},
    {"7", "设置位置", "-45.5", nothing, "setTargetPos(1001, 1, -45.5) = 0", "0"},
    {"27", "读取位置", "", [] { setTargetPos(device, axis, -45.5); }, "getTargetPos(1001, 1) = -45.5", "-45.5"},
    {"8", "设置速度", "2.25", nothing, "setSpeed(1001, 1, 2.25) = 0", "0"},
    {"28", "读取速度", "", [] { setSpeed(device, axis, 1.0 / 3); }, "getSpeed(1001, 1) = 0.3333333333333333",
     "0.33333333"},
    {"9", "设置加速度", "60", nothing, "setAcceleration(1001, 1, 60) = 0", "0"},
    {"29", "读取加速度", "", [] { setAcceleration(device, axis, 61.5); }, "getAcceleration(1001, 1) = 61.5", "61.5"},
    {"10", "设置使能", "1", nothing, "setMotorEnable(1001, 1, 1) = 0", "0"},
    {"30", "运行状态", "",
     [] {
         simulator::setState(device, axis, MotorStageState{1, 0, 1, 0, 1, 0, 0, 0, 0, 0, 7});
     },
     "getRuningState(1001, 1) = 0", "可以运行：1, 停止：0, 使能：1, 归零：0, 左限位：1, 右限位：0"},
    {"11", "写相对位移", "0.125", nothing, "setRelativeDisp(1001, 1, 0.125) = 0", "0"},
    {"31", "读相对位移", "", [] { setRelativeDisp(device, axis, 100000000); }, "getRelativeDisp(1001, 1) = 1e+08",
     "1e+08"},
    {"12", "写相对位移使能", "1", nothing, "setRelativeDispEnable(1001, 1, 1) = 0", "0"},
    {"32", "读相对位移使能", "", [] { setRelativeDispEnable(device, axis, 1); }, "getRelativeDispEnable(1001, 1) = 1",
     "1"},
    {"13", "写JOG步长", "1.5", nothing, "setJogStep(1001, 1, 1.5) = 0", "0"},
    {"33", "读JOG步长", "", [] { setJogStep(device, axis, 1.5); }, "getJogStep(1001, 1) = 1.5", "1.5"},
    {"14", "写JOG延时", "250", nothing, "setJogDelay(1001, 1, 250) = 0", "0"},
    {"34", "读JOG延时", "", [] { setJogDelay(device, axis, 250); }, "getJogDelay(1001, 1) = 250", "250"},
    {"15", "写JOG次数", "4", nothing, "setJogCount(1001, 1, 4) = 0", "0"},
    {"35", "读JOG次数", "", [] { setJogCount(device, axis, 4); }, "getJogCount(1001, 1) = 4", "4"},
    {"16", "写循环位移", "33.5", nothing, "setCircleDisp(1001, 1, 33.5) = 0", "0"},
    {"36", "读循环位移", "", [] { setCircleDisp(device, axis, 33.5); }, "getCircleDisp(1001, 1) = 33.5", "33.5"},
    {"17", "写循环次数", "1000000", nothing, "setCircleCount(1001, 1, 1000000) = 0", "0"},
    {"37", "读循环次数", "", [] { setCircleCount(device, axis, 1000000); }, "getCircleCount(1001, 1) = 1000000",
     "1000000"},
    {"18", "写循环延时", "99", nothing, "setCircleDelay(1001, 1, 99) = 0", "0"},
    {"38", "读循环延时", "", [] { setCircleDelay(device, axis, 99); }, "getCircleDelay(1001, 1) = 99", "99"},
    {"19", "读JOG当前次数", "", jogOnce, "getJogIndex(1001, 1) = 1", "1"},
    {"39", "读循环当前次数", "", loopOnce, "getCircleIndex(1001, 1) = 1", "1"},
    {"20", "写触发输入使能", "1", nothing, "setTriggerInEnable(1001, 1, 1) = 0", "0"},
    {"40", "读触发输入使能", "", [] { setTriggerInEnable(device, axis, 1); }, "getTriggerInEnable(1001, 1) = 1", "1"},
    {"60", "写触发输出使能", "1", nothing, "setTriggerOutEnable(1001, 1, 1) = 0", "0"},
    {"61", "读触发输出使能", "", [] { setTriggerOutEnable(device, axis, 1); }, "getTriggerOutEnable(1001, 1) = 1", "1"},
    {"41", "写设备名称", "MC-4 b", nothing, "setDevModelName(1001, \"MC-4 b\", 6) = 0", "0"},
    {"51", "读设备名称", "", nothing, "getDevModelName(1001) = \"MC-3\"", "MC-3"},
    {"42", "写设备序列号", "MC3-7", nothing, "setDevSerialNumber(1001, \"MC3-7\", 5) = 0", "0"},
    {"52", "读设备序列号", "", nothing, "getDevSerialNumber(1001) = \"SIM-MC3-000117\"", "SIM-MC3-000117"},
    {"43", "写设备轴数", "2", nothing, "setDevAxisCount(1001, 2) = 0", "0"},
    {"53", "读设备轴数", "", nothing, "getDevAxisCount(1001) = 3", "3"},
    {"45", "写位移台序列号", "SN-1", nothing, "setMotorSerialNumber(1001, 1, \"SN-1\", 4) = 0", "0"},
    {"55", "读位移台序列号", "", nothing, "getMotorSerialNumber(1001, 1) = \"SIM-SN-310082\"", "SIM-SN-310082"},
    {"46", "写位移台名称", "ROT-61", nothing, "setMotorModelName(1001, 1, \"ROT-61\", 6) = 0", "0"},
    {"56", "读位移台名称", "", nothing, "getMotorModelName(1001, 1) = \"ROT-60\"", "ROT-60"},
    {"47", "读嵌入式版本", "", nothing, "getDevSoftVersion(1001) = \"2.4.1 simulated\"", "2.4.1 simulated"},
    {"48", "写位移台单位", "0", nothing, "setMotorUnitType(1001, 1, 0) = 0", "0"},
    {"58", "读位移台单位", "", nothing, "getMotorUnitType(1001, 1) = 1", "1"},
    {"49", "设置摇杆使能", "1", [] { simulator::setJoystick(device, true, 0); }, "setRockerEnable(1001, 1) = 0", "0"},
    {"59", "读取摇杆使能", "",
     [] {
         simulator::setJoystick(device, true, 0);
         setRockerEnable(device, 1);
     },
     "getRockerEnable(1001) = 1", "1"},
};

void addOperations()
{
    QTest::addColumn<const Operation *>("operation");
    for (const Operation &operation : operations)
        QTest::addRow("%s %s", operation.button, operation.call) << &operation;
}

std::string functionOf(const Operation &operation)
{
    return std::string(operation.call, std::strcspn(operation.call, "("));
}

/** What the result field shows when the library answers with `status` below 0. */
QString shownFailure(const Operation &operation, int status)
{
    const std::string function = functionOf(operation);
    if (function == "getCurrentPos" || function == "getTargetPos") // give no status back
        return QStringLiteral("0");
    if (function == "getRuningState")
        return QStringLiteral("可以运行：0, 停止：0, 使能：0, 归零：0, 左限位：0, 右限位：0");
    return QString::number(status);
}

QStringList journal()
{
    QStringList calls;
    for (const std::string &call : simulator::journalText())
        calls.append(QString::fromStdString(call));
    return calls;
}

/** A number that its six significant digits give exactly. */
double randomReal(QRandomGenerator &random, bool positive)
{
    const QString digits =
        QString::number(random.bounded(100000, 1000000)) + QStringLiteral("e") + QString::number(random.bounded(-9, 4));
    return (positive || random.bounded(2) ? 1 : -1) * digits.toDouble();
}

template <size_t length>
void randomText(QRandomGenerator &random, char (&field)[length])
{
    const int size = random.bounded(int(length) + 1); // sometimes without a terminating zero
    for (int k = 0; k < size; ++k)
        field[k] = char(random.bounded(0x21, 0x7F));
}

/** A record that the controller accepts; enumerations with values of their items, and now and then with others. */
MotorParams randomParams(quint32 seed)
{
    QRandomGenerator random(seed);
    const auto choice = [&random](int items) { return uint16_t(random.bounded(10) ? random.bounded(items) : 65535); };
    constexpr const char *orders[] = {"NZP", "PZN", "ZNP", "PNZ", "ZPN", "NPZ", "NNN", "PPP", "ZZZ"};
    MotorParams params = {};
    randomText(random, params.modelName);
    randomText(random, params.serialNumber);
    params.pulseOneCircle = random.generate();
    params.dispOneCircle = randomReal(random, false);
    params.restoreSpeed = randomReal(random, true);
    params.moveType = choice(4);
    params.positivePolarity = choice(2);
    params.negativePolarity = choice(2);
    params.originPolarity = choice(2);
    params.phaseDirction = choice(2);
    params.limitDirection = choice(2);
    params.unitType = choice(2);
    if (random.bounded(10))
        std::strcpy(params.optOrder, orders[random.bounded(9)]);
    else
        randomText(random, params.optOrder);
    params.maxSpeed = randomReal(random, true);
    params.maxAcc = randomReal(random, true);
    params.minPos = -randomReal(random, true);
    params.maxPos = randomReal(random, true);
    params.zeroOptWidth = uint16_t(random.generate());
    params.optNum = uint16_t(random.generate());
    params.returnTrip = int16_t(random.generate());
    params.motorPhase = uint16_t(random.generate());
    params.modifyDate = int32_t(random.generate());
    params.maxRockerSpeed = randomReal(random, true);
    return params;
}

} // namespace
Q_DECLARE_METATYPE(const Operation *)

class tst_DebugWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        LiveObjects::install();
        QStandardPaths::setTestModeEnabled(true);
        registerDeviceRecords();
    }
    void init()
    {
        simulator::reset();
        QFile::remove(placeFile());
        QCOMPARE(SerialComDev::instance()->open(device), device);
        m_console = std::make_unique<DebugWidget>();
        m_console->show();
        find<QComboBox>("comboBox_axis")->setCurrentIndex(axis);
        simulator::clearJournal();
    }
    void cleanup()
    {
        simulator::releaseHung();
        m_console.reset();
        QVERIFY(SerialComDev::endThread(5000));
    }

    // ---- Commands

    void theHeartbeatButtonsHaveTheirLabels()
    {
        QCOMPARE(find<QPushButton>("pushButton_44")->text(), QString("开始心跳"));
        QCOMPARE(find<QPushButton>("pushButton_54")->text(), QString("结束心跳"));
    }
    void makesOneCallAndShowsItsResult_data() { addOperations(); }
    void makesOneCallAndShowsItsResult()
    {
        QFETCH(const Operation *, operation);
        QCOMPARE(buttonOf(*operation)->text(), QString::fromUtf8(operation->label));
        QCOMPARE(buttonOf(*operation)->toolTip().toStdString(), functionOf(*operation));
        operation->prepare();
        simulator::clearJournal();
        press(*operation);
        QCOMPARE(journal(), QStringList(operation->call));
        QCOMPARE(simulator::journal().front().thread, std::this_thread::get_id());
        QCOMPARE(shown(), QString::fromUtf8(operation->shown));
        QCOMPARE(find<QLabel>("label_function")->text().toStdString(), functionOf(*operation));
        QVERIFY(!inputIsMarked());
    }
    void theRunningStateShowsItsStatusBesideIt()
    {
        click("pushButton_30");
        QCOMPARE(find<QLineEdit>("lineEdit_state")->text(), QString("0"));
        simulator::failCall("getRuningState", -9);
        click("pushButton_30");
        QCOMPARE(find<QLineEdit>("lineEdit_state")->text(), QString("-9"));
    }
    void everyFlagOfTheRunningStateIsInItsPlace()
    {
        MotorStageState state = {};
        int16_t *flags[] = {&state.isCanRun, &state.isStop,      &state.isEnable,
                            &state.isHome,   &state.isLeftLimit, &state.isRightLimit};
        for (int k = 0; k < 6; ++k)
            *flags[k] = int16_t(k + 2);
        simulator::setState(device, axis, state);
        click("pushButton_30");
        QCOMPARE(shown(), QString("可以运行：2, 停止：3, 使能：4, 归零：5, 左限位：6, 右限位：7"));
    }
    void callsTheAxisThatIsChosen()
    {
        for (int chosen = 0; chosen < 3; ++chosen) {
            simulator::clearJournal();
            find<QComboBox>("comboBox_axis")->setCurrentIndex(chosen);
            click("pushButton_3");
            QCOMPARE(journal(), QStringList(QString("stopRuning(1001, %1) = 0").arg(chosen)));
        }
        QCOMPARE(find<QComboBox>("comboBox_axis")->count(), 3);
    }
    void holdsTheLibraryDuringItsCall_data() { addOperations(); }
    void holdsTheLibraryDuringItsCall()
    {
        QFETCH(const Operation *, operation);
        QCOMPARE(isLibraryHeldDuring(functionOf(*operation), buttonOf(*operation)), functionOf(*operation) != "home");
    }
    void homeDoesNotWaitForACallInFlight()
    {
        simulator::hangCall("getCurrentPos");
        emit SerialComDev::instance()->signal_getCurrentPos(0);
        QVERIFY(simulator::waitUntilHanging(5000));
        click("pushButton_22");
        QCOMPARE(journal(), QStringList("home(1001, 1) = 0"));
        QCOMPARE(shown(), QString("0"));
    }
    void whatItDoesIsKnownToTheStopOfAll()
    {
        const auto worker = SerialComDev::instance();
        QCOMPARE(worker->getRockerEnable(), 0);
        simulator::setJoystick(device, true, 0);
        setInput("1");
        click("pushButton_49");
        QVERIFY(worker->isRockerOn());
        setInput("0");
        click("pushButton_49");
        QVERIFY(!worker->isRockerOn());
        setRockerEnable(device, 1); // by another program
        click("pushButton_59");
        QVERIFY(worker->isRockerOn());
    }
    void anAcceptedMotionIsHeard()
    {
        class Ear final : public AnswerListener
        {
        public:
            void positionAnswered(int, double, Time) override {}
            void stateAnswered(int, const MotorStageState &, Time) override {}
            void pollFailed(int, Time) override {}
            void commandAnswered(const MotionCommand &command, Time) override
            {
                if (command.isAccepted() && command.source == MotionCommand::Console)
                    heard.append({command.axis, command.type});
            }
            QVector<QPair<int, int>> heard;
        } ear;
        SerialComDev::instance()->answers().add(&ear);
        simulator::failCall("home", -9);
        click("pushButton_22");
        click("pushButton_22");
        click("pushButton_3");
        SerialComDev::instance()->answers().remove(&ear);
        const QVector<QPair<int, int>> wanted{{axis, OPERATION_TYPE_HOME}, {axis, OPERATION_TYPE_STOP}};
        QCOMPARE(ear.heard, wanted);
    }
    void neverOverlapsTheWorker()
    {
        simulator::delayCall("getRuningState", 1, 200);
        for (const Operation &operation : operations) {
            emit SerialComDev::instance()->signal_getDevState(0);
            if (functionOf(operation) != "home")
                press(operation);
        }
        emit SerialComDev::instance()->signal_stopMotor(0); // the last of the worker's calls
        QTRY_COMPARE(simulator::callCount("stopRuning"), 2);
        QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
    }

    void withoutADeviceItStillCallsAndShowsTheFailure_data() { addOperations(); }
    void withoutADeviceItStillCallsAndShowsTheFailure()
    {
        QFETCH(const Operation *, operation);
        SerialComDev::instance()->close();
        simulator::clearJournal();
        press(*operation);
        QString call = QString::fromUtf8(operation->call);
        call.replace(QStringLiteral("(1001"), QStringLiteral("(0"));
        call = call.left(call.lastIndexOf(QStringLiteral(" = "))) + QStringLiteral(" = -1");
        QCOMPARE(journal(), QStringList(call));
        QCOMPARE(shown(), shownFailure(*operation, -1));
    }
    void showsEveryFailureAndGoesOn_data() { addOperations(); }
    void showsEveryFailureAndGoesOn()
    {
        QFETCH(const Operation *, operation);
        operation->prepare();
        simulator::failCall(functionOf(*operation), -9);
        press(*operation);
        QCOMPARE(shown(), shownFailure(*operation, -9));
        press(*operation);
        QCOMPARE(shown(), QString::fromUtf8(operation->shown));
    }

    void readsTextsUpToTheFirstZero_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QString>("shownText");
        QTest::newRow("all of the buffer") << QByteArray(32, 'x') << QString(32, 'x');
        QTest::newRow("garbage behind a zero") << QByteArray("ab\0\xff\x7fq", 6) << "ab";
        QTest::newRow("nothing") << QByteArray() << "";
        QTest::newRow("no ASCII") << QByteArray("\xb5m") << "µm";
        QTest::newRow("mark-up") << QByteArray("<b>1</b>&amp;") << "<b>1</b>&amp;";
    }
    void readsTextsUpToTheFirstZero()
    {
        QFETCH(QByteArray, answer);
        for (const char *function :
             {"getDevModelName", "getDevSerialNumber", "getMotorSerialNumber", "getMotorModelName",
              "getDevSoftVersion"})
            simulator::answerText(function, answer.toStdString());
        for (const char *button :
             {"pushButton_51", "pushButton_52", "pushButton_55", "pushButton_56", "pushButton_47"}) {
            find<QLineEdit>("lineEdit_result")->clear();
            click(button);
            QTEST(shown(), "shownText");
        }
    }
    void takesNoMoreThanATextOfTheControllerHolds()
    {
        setInput(QString(40, 'n'));
        click("pushButton_41");
        QCOMPARE(journal(), QStringList("setDevModelName(1001, \"" + QString(32, 'n') + "\", 32) = 0"));
    }

    void whatIsNoNumberIsSentAsZeroAndShown_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("call");
        QTest::newRow("word for a real") << "7"
                                         << "far"
                                         << "setTargetPos(1001, 1, 0) = 0";
        QTest::newRow("fraction for an integer") << "15"
                                                 << "1.5"
                                                 << "setJogCount(1001, 1, 0) = 0";
    }
    void whatIsNoNumberIsSentAsZeroAndShown()
    {
        QFETCH(QString, button);
        QFETCH(QString, input);
        QFETCH(QString, call);
        setInput(input);
        QVERIFY(!inputIsMarked());
        click(qPrintable("pushButton_" + button));
        QCOMPARE(journal(), QStringList(call));
        QVERIFY(inputIsMarked());
        QCOMPARE(find<QLabel>("label_inputWrong")->text(), QString("不是数字，已按 0 发送"));

        QTest::keyClick(find<QLineEdit>("lineEdit_input"), Qt::Key_1);
        QVERIFY(!inputIsMarked());
    }
    void theMarkGoesWithTheNextCommandThatDoesNotMind()
    {
        setInput("far");
        click("pushButton_7");
        QVERIFY(inputIsMarked());
        click("pushButton_27");
        QVERIFY(!inputIsMarked());
        click("pushButton_7");
        click("pushButton_46"); // a text
        QVERIFY(!inputIsMarked());
        QCOMPARE(journal().last(), QString("setMotorModelName(1001, 1, \"far\", 3) = 0"));
        click("pushButton_7");
        click("pushButton_readMorotParams"); // of another page
        QVERIFY(!inputIsMarked());
    }

    // ---- Motor parameters

    void writesBackWhatItRead_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 200; ++seed)
            QTest::addRow("record %u", seed) << seed;
    }
    void writesBackWhatItRead()
    {
        QFETCH(quint32, seed);
        const MotorParams before = randomParams(seed);
        QCOMPARE(setMotorParams(device, axis, before), 0);
        click("pushButton_readMorotParams");
        QCOMPARE(setMotorParams(device, axis, randomParams(seed + 1000)), 0);
        const OnMessageBox box;
        click("pushButton_writeMotorParams");
        MotorParams after = {};
        QCOMPARE(getMotorParams(device, axis, &after), 0);
        QVERIFY(!std::memcmp(&before, &after, sizeof before));
    }
    void everyControlStandsForItsField()
    {
        MotorParams params = {};
        std::strcpy(params.modelName, "model");
        std::strcpy(params.serialNumber, "serial");
        params.pulseOneCircle = 1;
        params.dispOneCircle = 2.1234567; // six digits are shown
        params.restoreSpeed = 3;
        params.moveType = 2;
        params.positivePolarity = 1;
        params.phaseDirction = 1;
        params.unitType = 1;
        std::strcpy(params.optOrder, "ZPN");
        params.maxSpeed = 4;
        params.maxAcc = 5;
        params.minPos = 6;
        params.maxPos = 7;
        params.zeroOptWidth = 8;
        params.optNum = 9;
        params.returnTrip = -10;
        params.motorPhase = 11;
        params.modifyDate = 20240315;
        params.maxRockerSpeed = 12;
        QCOMPARE(setMotorParams(device, axis, params), 0);
        simulator::clearJournal();
        click("pushButton_readMorotParams");
        QCOMPARE(journal(), QStringList("getMotorParams(1001, 1) = \"model\""));
        QCOMPARE(edit("modelName")->text(), QString("model"));
        QCOMPARE(edit("serialNumber")->text(), QString("serial"));
        QCOMPARE(edit("pulseOneCircle")->text(), QString("1"));
        QCOMPARE(edit("dispOneCircle")->text(), QString("2.12346"));
        QCOMPARE(edit("restoreSpeed")->text(), QString("3"));
        QCOMPARE(combo("moveType")->currentText(), QString("角度"));
        QCOMPARE(combo("positivePolarity")->currentText(), QString("高电平"));
        QCOMPARE(combo("negativePolarity")->currentText(), QString("低电平"));
        QCOMPARE(combo("originPolarity")->currentText(), QString("低电平"));
        QCOMPARE(combo("phaseDirction")->currentText(), QString("负向"));
        QCOMPARE(combo("limitDirection")->currentIndex(), 0);
        QCOMPARE(combo("unitType")->currentText(), QString("°"));
        QCOMPARE(combo("optOrder")->currentText(), QString("ZPN"));
        QCOMPARE(edit("maxSpeed")->text(), QString("4"));
        QCOMPARE(edit("maxAcc")->text(), QString("5"));
        QCOMPARE(edit("minPos")->text(), QString("6"));
        QCOMPARE(edit("maxPos")->text(), QString("7"));
        QCOMPARE(edit("zeroOptWidth")->text(), QString("8"));
        QCOMPARE(edit("optNum")->text(), QString("9"));
        QCOMPARE(edit("returnTrip")->text(), QString("-10"));
        QCOMPARE(edit("motorPhase")->text(), QString("11"));
        QCOMPARE(edit("modifyDate")->text(), QString("20240315"));
        QCOMPARE(edit("maxRockerSpeed")->text(), QString("12"));
    }
    void offersTheValuesOfEveryEnumeration()
    {
        const QStringList levels{"低电平", "高电平"};
        const QStringList directions{"正向", "负向"};
        QCOMPARE(items("moveType"), (QStringList{"直线", "旋转", "角度", "垂直"}));
        QCOMPARE(items("positivePolarity"), levels);
        QCOMPARE(items("negativePolarity"), levels);
        QCOMPARE(items("originPolarity"), levels);
        QCOMPARE(items("phaseDirction"), directions);
        QCOMPARE(items("limitDirection"), directions);
        QCOMPARE(items("unitType"), (QStringList{"mm", "°"}));
        QCOMPARE(items("optOrder"), (QStringList{"NZP", "PZN", "ZNP", "PNZ", "ZPN", "NPZ", "NNN", "PPP", "ZZZ"}));
    }
    void anUnknownEnumerationValueIsShownOnlyWhileItIsThere()
    {
        MotorParams params = randomParams(1);
        params.limitDirection = 7;
        QCOMPARE(setMotorParams(device, axis, params), 0);
        click("pushButton_readMorotParams");
        click("pushButton_readMorotParams");
        QCOMPARE(items("limitDirection"), (QStringList{"正向", "负向", "7"}));
        QCOMPARE(combo("limitDirection")->currentIndex(), 2);
        params.limitDirection = 1;
        QCOMPARE(setMotorParams(device, axis, params), 0);
        click("pushButton_readMorotParams");
        QCOMPARE(items("limitDirection"), (QStringList{"正向", "负向"}));
        QCOMPARE(combo("limitDirection")->currentIndex(), 1);
    }
    void aParameterThatIsNoNumberIsMarkedAndWrittenAsZero_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("text");
        QTest::newRow("negative for an unsigned field") << "zeroOptWidth"
                                                        << "-1";
        QTest::newRow("too wide for 16 bits") << "optNum"
                                              << "65536";
        QTest::newRow("too wide for 16 bits with a sign") << "returnTrip"
                                                          << "32768";
        QTest::newRow("too wide for 32 bits") << "pulseOneCircle"
                                              << "4294967296";
        QTest::newRow("comma") << "dispOneCircle"
                               << "1,5";
    }
    void aParameterThatIsNoNumberIsMarkedAndWrittenAsZero()
    {
        QFETCH(QString, field);
        QFETCH(QString, text);
        click("pushButton_readMorotParams");
        QVERIFY(!edit(field)->property("wrong").toBool());
        edit(field)->setText(text);
        QVERIFY(edit(field)->property("wrong").toBool());
        const OnMessageBox box;
        click("pushButton_writeMotorParams");
        QCOMPARE(box.shown(), 1);
        click("pushButton_readMorotParams");
        QCOMPARE(edit(field)->text(), QString("0"));
        QVERIFY(!edit(field)->property("wrong").toBool());
    }
    void aFailedWriteShowsTheErrorAndNoBox()
    {
        click("pushButton_readMorotParams");
        simulator::failCall("setMotorParams", -7);
        const OnMessageBox box;
        click("pushButton_writeMotorParams");
        QCOMPARE(shown(), QString("写入电机参数失败：error（-7）"));
        QCOMPARE(box.shown(), 0);
        QVERIFY(LibraryLock(0).isLocked());
    }
    void aFailedReadShowsTheErrorAndKeepsThePage()
    {
        edit("modelName")->setText("mine");
        simulator::failCall("getMotorParams", -9);
        click("pushButton_readMorotParams");
        QCOMPARE(shown(), QString("读取电机参数失败：error（-9）"));
        QCOMPARE(edit("modelName")->text(), QString("mine"));
    }
    void saysTheLowerEndOfTravelInTheLog()
    {
        DebugLog log;
        click("pushButton_readMorotParams");
        const OnMessageBox box;
        click("pushButton_writeMotorParams");
        QVERIFY(log.contains(QStringLiteral("motorParams.minPos: -170")));
    }
    void theWritingBoxTellsToWait()
    {
        click("pushButton_readMorotParams");
        QString resultInTheMeantime;
        const OnMessageBox watch([&](QMessageBox &box) {
            resultInTheMeantime = shown();
            QCOMPARE(box.windowTitle(), QString("提示"));
            QCOMPARE(box.text(), QString("写入中，请等待控制器状态指示灯变绿后再进行其他操作！"));
            QCOMPARE(box.icon(), QMessageBox::Information);
            QCOMPARE(box.standardButtons(), QMessageBox::StandardButtons(QMessageBox::Ok));
        });
        click("pushButton_writeMotorParams");
        QCOMPARE(watch.shown(), 1);
        QCOMPARE(resultInTheMeantime, QString("写入电机参数成功"));
    }
    void nobodyReachesTheLibraryWhileTheWritingBoxIsOpen()
    {
        click("pushButton_readMorotParams");
        const auto worker = SerialComDev::instance();
        QStringList atOpening;
        QStringList atClosing;
        const OnMessageBox watch([&](QMessageBox &) {
            atOpening = journal();
            emit worker->signal_stopMotor(axis);
            emit worker->signal_getCurrentPos(0); // one that waited longer than the stop might be dropped
            Heart heart;                          // asks for a second and more
            connect(&heart, &Heart::sendHeart, worker.data(), &SerialComDev::slot_heartBeat);
            const SignalCounter beats(&heart, &Heart::sendHeart);
            heart.startHeart();
            QTRY_VERIFY(beats.count() >= 2);
            atClosing = journal();
        });
        click("pushButton_writeMotorParams");
        QCOMPARE(watch.shown(), 1);
        QCOMPARE(atOpening.size(), 2); // read and write
        QCOMPARE(atClosing, atOpening);
        // What waited comes through.
        QTRY_VERIFY(simulator::callCount("getRockerInfo") >= 2);
        QCOMPARE(simulator::callCount("getCurrentPos"), 1);
        QCOMPARE(simulator::callCount("stopRuning"), 1);
        QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
    }
    void closingTheConsoleClosesTheWritingBoxAndFreesTheLibrary()
    {
        click("pushButton_readMorotParams");
        bool heldBefore = false;
        bool freeAfter = false;
        bool boxGone = false;
        const OnMessageBox watch([&](QMessageBox &box) {
            heldBefore = !LibraryLock(0).isLocked();
            m_console->close();
            freeAfter = LibraryLock(0).isLocked();
            boxGone = !box.isVisible();
        });
        click("pushButton_writeMotorParams");
        QVERIFY(heldBefore);
        QVERIFY(freeAfter);
        QVERIFY(boxGone);
        QVERIFY(!m_console->isVisible());
    }

    // ---- Identification chip

    void erasesTheChipOfItsOwnAxisAndShowsNothing()
    {
        click("pushButton_3");
        simulator::clearJournal();
        find<QComboBox>("comboBox_chipAxis")->setCurrentIndex(0);
        click("pushButton_clear");
        QCOMPARE(journal(), QStringList("setClearIDChip(1001, 0) = 0"));
        find<QComboBox>("comboBox_chipAxis")->setCurrentIndex(2);
        click("pushButton_clear"); // fails: there is no chip
        QCOMPARE(journal().last(), QString("setClearIDChip(1001, 2) = -11"));
        QCOMPARE(shown(), QString("0"));
    }
    void erasesTheChipWithoutTheLibraryMutex()
    {
        QVERIFY(!isLibraryHeldDuring("setClearIDChip", find<QPushButton>("pushButton_clear")));
    }

    // ---- Position compensation

    void switchesTheCompensation()
    {
        click("pushButton_pos_conpen_enable");
        QCOMPARE(shown(), QString("0"));
        simulator::failCall("setPosConpenEnable", -9);
        click("pushButton_pos_conpen_disable");
        QCOMPARE(shown(), QString("-9"));
        QCOMPARE(journal(), (QStringList{"setPosConpenEnable(1001, 1, 1) = 0", "setPosConpenEnable(1001, 1, 0) = -9"}));
    }
    void writesBothTablesInTheOrderOfTheExpectedPositions()
    {
        setRow(0, {"10", "10.2", "", ""});
        setRow(1, {"-10", "-9.9", "5", "oops"});
        setRow(9, {"", "", "-5", "-5.5"});
        click("pushButton_pos_conpen_write");
        QCOMPARE(
            journal(), (QStringList{
                           "setPositivePosConpen(1001, 1, [-10, -9.9, 10, 10.2], 2) = 0",
                           "setNegativePosConpen(1001, 1, [-5, -5.5, 5, 0], 2) = 0"}));
        QCOMPARE(shown(), QString("0 0"));
    }
    void anEmptyTableEmptiesTheController()
    {
        click("pushButton_pos_conpen_write");
        QCOMPARE(
            journal(),
            (QStringList{"setPositivePosConpen(1001, 1, [], 0) = 0", "setNegativePosConpen(1001, 1, [], 0) = 0"}));
    }
    void readsBackTheTablesThatItWrote()
    {
        for (int row = 0; row < 10; ++row)
            setRow(row, {QString::number(row), QString::number(row + 0.25), QString::number(-row), "0.5"});
        const QStringList positive = column(0) + column(1);
        click("pushButton_pos_conpen_write");
        click("pushButton_clearTable");
        QCOMPARE(column(0), emptyColumn());
        simulator::clearJournal();
        DebugLog log;
        click("pushButton");
        QCOMPARE(journal(), (QStringList{"getPositivePosConpen(1001, 1) = 0", "getNegativePosConpen(1001, 1) = 0"}));
        QCOMPARE(column(0) + column(1), positive);
        QCOMPARE(column(2), (QStringList{"-9", "-8", "-7", "-6", "-5", "-4", "-3", "-2", "-1", "0"}));
        QCOMPARE(shown(), QString("0 0"));
        QVERIFY(log.contains(QStringLiteral("on_pushButton_clicked")));
    }
    void readingClearsAllRowsButTheFirst()
    {
        for (const bool fails : {false, true}) {
            for (int row = 0; row < 10; ++row)
                setRow(row, {"1", "2", "3", "4"});
            if (fails) {
                simulator::failCall("getPositivePosConpen", -9);
                simulator::failCall("getNegativePosConpen", -9);
            }
            click("pushButton"); // the controller has no pairs
            QCOMPARE(shown(), QString(fails ? "-9 -9" : "0 0"));
            for (int k = 0; k < 4; ++k)
                QCOMPARE(column(k), QStringList(QString::number(k + 1)) + emptyColumn().mid(1));
        }
    }
    void aTableThatCannotBeReadLeavesTheOtherOne()
    {
        const double pair[] = {1, 1.5};
        setPositivePosConpen(device, axis, pair, 1);
        setNegativePosConpen(device, axis, pair, 1);
        simulator::failCall("getPositivePosConpen", -9);
        click("pushButton");
        QCOMPARE(shown(), QString("-9 0"));
        QCOMPARE(column(0), emptyColumn());
        QCOMPARE(column(3).first(), QString("1.5"));
    }
    void showsTheStatusesOfAFailedWrite()
    {
        setRow(0, {"1", "2", "3", "4"});
        simulator::failCall("setNegativePosConpen", -6);
        click("pushButton_pos_conpen_write");
        QCOMPARE(shown(), QString("0 -6"));
    }
    void holdsTheLibraryDuringTheCallsOfItsOtherPages_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("function");
        QTest::newRow("read first table") << "pushButton"
                                          << "getPositivePosConpen";
        QTest::newRow("read second table") << "pushButton"
                                           << "getNegativePosConpen";
        QTest::newRow("write first table") << "pushButton_pos_conpen_write"
                                           << "setPositivePosConpen";
        QTest::newRow("write second table") << "pushButton_pos_conpen_write"
                                            << "setNegativePosConpen";
        QTest::newRow("compensation on") << "pushButton_pos_conpen_enable"
                                         << "setPosConpenEnable";
        QTest::newRow("read parameters") << "pushButton_readMorotParams"
                                         << "getMotorParams";
        QTest::newRow("write parameters") << "pushButton_writeMotorParams"
                                          << "setMotorParams";
    }
    void holdsTheLibraryDuringTheCallsOfItsOtherPages()
    {
        QFETCH(QString, button);
        QFETCH(QString, function);
        const OnMessageBox box; // after writing the parameters
        QVERIFY(isLibraryHeldDuring(function.toStdString(), find<QPushButton>(qPrintable(button))));
    }
    void pastesFromTheClipboard()
    {
        QGuiApplication::clipboard()->setText(QStringLiteral("1\t1.5\n2\t2.5\n"));
        click("pushButton_pasteTable");
        QCOMPARE(column(0).mid(0, 3), (QStringList{"1", "2", ""}));
        QCOMPARE(column(1).mid(0, 3), (QStringList{"1.5", "2.5", ""}));
    }

    // ---- Heartbeat

    void countsItsOwnMissedBeatsOnly()
    {
        const auto worker = SerialComDev::instance();
        std::atomic<int> mainMissed{0};
        Heart ofTheMainWindow;
        connect(&ofTheMainWindow, &Heart::sendHeart, worker.data(), &SerialComDev::slot_heartBeat);
        ofTheMainWindow.listenTo(worker.data(), SIGNAL(signal_heartBeatInfo(CONTROLER_STATE, int)));
        connect(
            &ofTheMainWindow, &Heart::heartBreak, &ofTheMainWindow, [&](int missed) { mainMissed = missed; },
            Qt::DirectConnection);

        simulator::failCall("getRockerInfo", -9, 1, 2);
        click("pushButton_44");
        QCOMPARE(missedBeats(), QString("0"));
        QTRY_COMPARE(missedBeats(), QString("2"));
        QCOMPARE(mainMissed.load(), 0);
        click("pushButton_54");

        simulator::failCall("getRockerInfo", -9);
        ofTheMainWindow.singleHeart();
        QTRY_COMPARE(mainMissed.load(), 1);
        QCOMPARE(missedBeats(), QString("2"));
    }
    void aGoodBeatIsNotCounted()
    {
        const SignalCounter answers(SerialComDev::instance().data(), &SerialComDev::signal_consoleHeartBeatInfo);
        click("pushButton_44");
        QTRY_VERIFY(answers.count() >= 2);
        QCOMPARE(missedBeats(), QString("0"));
    }
    void startsAtZeroAgainAndGoesOnCounting()
    {
        simulator::failAlways("getRockerInfo", -9);
        click("pushButton_44");
        QTRY_VERIFY(missedBeats() != QString("0"));
        click("pushButton_54");
        click("pushButton_44");
        QCOMPARE(missedBeats(), QString("0"));
        QTRY_VERIFY(missedBeats().toInt() >= 2); // all since the first start
    }
    void stopsBeating()
    {
        const SignalCounter answers(SerialComDev::instance().data(), &SerialComDev::signal_consoleHeartBeatInfo);
        click("pushButton_54"); // nothing to stop yet
        click("pushButton_44");
        QTRY_VERIFY(answers.count() >= 1);
        click("pushButton_54");
        Heart clock;
        const SignalCounter beats(&clock, &Heart::sendHeart);
        clock.startHeart();
        QTRY_VERIFY(beats.count() >= 1); // a beat that was on its way has been answered
        const int stopped = answers.count();
        QTRY_VERIFY(beats.count() >= 4);
        QCOMPARE(answers.count(), stopped);
    }
    void itsHeartEndsWithTheConsole()
    {
        click("pushButton_44");
        QTRY_COMPARE(heartThreads(), 1);
        click("pushButton_44");
        QCOMPARE(heartThreads(), 1);
        m_console.reset();
        QTRY_COMPARE(heartThreads(), 0);
    }

    // ---- Window

    void isAWindowOfItsOwnWithATitleAndAnIcon()
    {
        QVERIFY(m_console->isWindow());
        QVERIFY(!m_console->parentWidget());
        QCOMPARE(m_console->windowTitle(), QString("工程控制台"));
        QVERIFY(!m_console->windowIcon().pixmap(32).isNull());
    }
    void fitsIntoASmallScreen()
    {
        wearTheStyleSheet();
        const QSize needed = m_console->minimumSizeHint();
        // 1280 × 720 without a window manager's title bar
        QVERIFY(needed.width() <= 1280);
        QVERIFY(needed.height() <= 680);
    }
    void showsTheWholeRunningState()
    {
        wearTheStyleSheet();
        click("pushButton_30");
        const auto *result = find<QLineEdit>("lineEdit_result");
        const int frame = 2 * 12;
        QVERIFY(result->fontMetrics().horizontalAdvance(result->text()) + frame <= result->width());
    }
    void closingItDestroysNothing()
    {
        m_console->close();
        QVERIFY(!m_console->isVisible());
        m_console->show();
        click("pushButton_3");
        QCOMPARE(shown(), QString("0"));
    }
    void opensWhereItWasClosed()
    {
        const QRect place(33, 44, 1205, 665);
        m_console->setGeometry(place);
        m_console->close();
        m_console = std::make_unique<DebugWidget>();
        m_console->show();
        QCOMPARE(m_console->geometry(), place);
    }
    void aConsoleThatWasNeverOpenLeavesThePlaceAlone()
    {
        DebugWidget hidden;
        hidden.setGeometry(1, 2, 1300, 700);
        hidden.close();
        QVERIFY(!QFile::exists(placeFile()));
    }
    void opensOnTheScreenWhateverTheFileSays_data()
    {
        QTest::addColumn<QByteArray>("text");
        QWidget far;
        far.setGeometry(9000, -7000, 1205, 665);
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("garbage") << QByteArray("somewhere");
        QTest::newRow("a screen that is gone") << far.saveGeometry();
        QTest::newRow("cut off") << far.saveGeometry().left(20);
    }
    void opensOnTheScreenWhateverTheFileSays()
    {
        QFETCH(QByteArray, text);
        QVERIFY(QDir().mkpath(QFileInfo(placeFile()).path()));
        QFile file(placeFile());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.close();
        DebugWidget console;
        console.show();
        QVERIFY(console.screen()->availableGeometry().intersects(console.geometry()));
        QVERIFY(console.width() >= console.minimumSizeHint().width());
    }
    void changesLanguageAndKeepsItsContents()
    {
        setInput("far");
        click("pushButton_7");
        find<QComboBox>("comboBox_axis")->setCurrentIndex(2);
        MotorParams params = randomParams(1);
        params.limitDirection = 7;
        QCOMPARE(setMotorParams(device, 2, params), 0);
        click("pushButton_readMorotParams");
        simulator::failCall("getMotorParams", -9);
        click("pushButton_readMorotParams");
        {
            const English english(
                {{"工程控制台", "Engineering console"},
                 {"型号名称：", "Model name"},
                 {"+期望位置", "+Expected"},
                 {"负向", "Negative"},
                 {"读取电机参数失败：error（%1）", "Failed to read motor parameters: error (%1)"}});
            QCOMPARE(m_console->windowTitle(), QString("Engineering console"));
            QVERIFY(!labels().contains("型号名称：") && labels().contains("Model name"));
            QCOMPARE(model()->headerData(0, Qt::Horizontal).toString(), QString("+Expected"));
            QCOMPARE(shown(), QString("Failed to read motor parameters: error (-9)"));
            QCOMPARE(find<QLineEdit>("lineEdit_input")->text(), QString("far"));
            QCOMPARE(find<QComboBox>("comboBox_axis")->currentIndex(), 2);
            QCOMPARE(combo("limitDirection")->itemText(1), QString("Negative"));
            QCOMPARE(combo("limitDirection")->currentText(), QString("7"));
            for (const Operation &operation : operations)
                QCOMPARE(buttonOf(operation)->text(), QString::fromUtf8(operation.label));
        }
        QCOMPARE(shown(), QString("读取电机参数失败：error（-9）"));
    }
    void hasTheCaptionsOfTheParameters()
    {
        const QStringList captions = labels();
        for (const char *caption :
             {"型号名称：", "序列号：", "一圈的脉冲数：", "导程：", "回原点的速度：", "零点位极性：", "位移台类型：",
              "运动方向：", "单位类型：", "正限位极性：", "负限位极性：", "限位方向："})
            QVERIFY2(captions.contains(QString::fromUtf8(caption)), caption);
    }

private:
    static QString placeFile()
    {
        return QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + QStringLiteral("/consolePlace");
    }
    template <typename Widget>
    Widget *find(const char *name) const
    {
        auto *widget = m_console->findChild<Widget *>(QString::fromUtf8(name));
        if (!widget)
            qFatal("no %s", name);
        return widget;
    }
    void wearTheStyleSheet() const
    {
        QFile sheet(QStringLiteral(":/style.qss"));
        QVERIFY(sheet.open(QIODevice::ReadOnly));
        m_console->setStyleSheet(QString::fromUtf8(sheet.readAll()));
    }
    QLineEdit *edit(const QString &field) const { return find<QLineEdit>(qPrintable("lineEdit_" + field)); }
    QComboBox *combo(const QString &field) const { return find<QComboBox>(qPrintable("comboBox_" + field)); }
    QPushButton *buttonOf(const Operation &operation) const
    {
        return find<QPushButton>(("pushButton_" + std::string(operation.button)).c_str());
    }
    void click(const char *button) const { find<QPushButton>(button)->click(); }
    void press(const Operation &operation) const
    {
        setInput(QString::fromUtf8(operation.input));
        buttonOf(operation)->click();
    }
    void setInput(const QString &text) const
    {
        auto *input = find<QLineEdit>("lineEdit_input");
        input->clear();
        QTest::keyClicks(input, text);
    }
    QString shown() const { return find<QLineEdit>("lineEdit_result")->text(); }
    QString missedBeats() const { return find<QLineEdit>("lineEdit_heart")->text(); }
    bool inputIsMarked() const
    {
        const bool marked = find<QLineEdit>("lineEdit_input")->property("wrong").toBool();
        return marked && find<QLabel>("label_inputWrong")->isVisible();
    }
    QStringList labels() const
    {
        QStringList texts;
        for (const QLabel *label : m_console->findChildren<QLabel *>())
            texts.append(label->text());
        return texts;
    }
    QStringList items(const QString &field) const
    {
        QStringList texts;
        for (int k = 0; k < combo(field)->count(); ++k)
            texts.append(combo(field)->itemText(k));
        return texts;
    }
    QAbstractItemModel *model() const { return find<QTableView>("tableView_conpen")->model(); }
    void setRow(int row, const QStringList &cells) const
    {
        for (int k = 0; k < cells.size(); ++k)
            model()->setData(model()->index(row, k), cells[k]);
    }
    QStringList column(int column) const
    {
        QStringList cells;
        for (int row = 0; row < model()->rowCount(); ++row)
            cells.append(model()->index(row, column).data().toString());
        return cells;
    }
    static QStringList emptyColumn() { return QVector<QString>(10, QString("")).toList(); }

    /** Clicks the button, lets its library call hang for as long as it takes to try the library mutex. */
    static bool isLibraryHeldDuring(const std::string &function, QPushButton *button)
    {
        simulator::hangCall(function);
        bool hung = false;
        bool held = false;
        std::thread other([&] {
            hung = simulator::waitUntilHanging(5000);
            held = !LibraryLock(0).isLocked();
            simulator::releaseHung();
        });
        button->click();
        other.join();
        if (!hung)
            QTest::qFail("the button does not make that call", __FILE__, __LINE__);
        return held;
    }
    static int heartThreads()
    {
        const auto threads = LiveObjects::all<QThread>();
        return int(std::count_if(threads.begin(), threads.end(), [](const QThread *thread) {
            return thread->isRunning() && thread->objectName() == QLatin1String("Heart");
        }));
    }

    FailOnDeadSlot m_deadSlots;
    std::unique_ptr<DebugWidget> m_console;
};

QTEST_MAIN(tst_DebugWidget)
#include "tst_DebugWidget.moc"

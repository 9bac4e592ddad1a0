// SPDX-License-Identifier: MIT
#include "OpenDevice.h"

#include <QtTest>

#include <cstring>

using namespace simulator;

class tst_SimulatorScenario : public QObject
{
    Q_OBJECT

private slots:
    void loadsShippedScenarios_data();
    void loadsShippedScenarios();
    void embedsTheDefaultScenario();
    void readsEveryKey();
    void appliesDefaults();
    void namesTheLineOfTheMistake_data();
    void namesTheLineOfTheMistake();
    void namesTheFileOfTheMistake();
    void keepsTheOldScenarioOnAMistake();
    void carriesOutEventsAtTheirTimes();
    void repeatsEvents();
    void pulsesAndDeflectsByEvents();
    void failsCallsByFaults();
    void plugsTheThirdController();
    void takesTimeOnASlowLink();
};

namespace {

const std::string scenarioDir = SCENARIO_DIR;

void openFile(const std::string &name)
{
    std::string error;
    QVERIFY2(loadScenarioFile(scenarioDir + "/" + name, &error), error.c_str());
    QCOMPARE(addDev(device), 0);
    QCOMPARE(openTSDevice(device), 0);
}

} // namespace

void tst_SimulatorScenario::loadsShippedScenarios_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("controllers");
    QTest::addColumn<bool>("joystick");
    QTest::newRow("default") << "default.json" << 1 << false;
    QTest::newRow("joystick") << "joystick.json" << 1 << true;
    QTest::newRow("two controllers") << "two-controllers.json" << 2 << false;
    QTest::newRow("faulty opto") << "faulty-opto.json" << 1 << false;
    QTest::newRow("slow link") << "slow-link.json" << 1 << false;
    QTest::newRow("lossy link") << "lossy-link.json" << 1 << false;
}

void tst_SimulatorScenario::loadsShippedScenarios()
{
    QFETCH(QString, file);
    QFETCH(int, controllers);
    QFETCH(bool, joystick);
    openFile(file.toStdString());
    int ids[10] = {};
    QCOMPARE(listTSMotorControlerDevices(ids, 10), controllers);
    QCOMPARE(ids[0], device);
    CONTROLER_STATE info{};
    QCOMPARE(getRockerInfo(device, &info), 0);
    QCOMPARE(info.rockerState != 0, joystick);
    QCOMPARE(getDevAxisCount(device), 3);
}

void tst_SimulatorScenario::embedsTheDefaultScenario()
{
    const auto describe = [] {
        QByteArray text;
        for (int axis = 0; axis < 3; ++axis) {
            MotorParams params{};
            int code = -1;
            getMotorParams(device, axis, &params);
            getMotorAutoDetect(device, axis, &code);
            text += QByteArray(reinterpret_cast<const char *>(&params), sizeof params) + QByteArray::number(code);
        }
        return text;
    };
    openFile("default.json");
    const QByteArray ofFile = describe();
    openDevice();
    QCOMPARE(describe(), ofFile);

    char buffer[32] = {};
    QCOMPARE(getMotorModelName(device, 0, buffer, 32), 0);
    QCOMPARE(buffer, "LIN-100");
    QCOMPARE(getMotorModelName(device, 1, buffer, 32), 0);
    QCOMPARE(buffer, "ROT-60");
    QCOMPARE(getMotorModelName(device, 2, buffer, 32), 0);
    QCOMPARE(buffer, "");
}

void tst_SimulatorScenario::readsEveryKey()
{
    openScenario(R"({
        "description": "every key", "timeScale": 2, "latencyMs": 0,
        "controllers": [{
            "id": 1001, "serialNumber": "S", "modelName": "M", "softVersion": "V", "plugged": true,
            "joystick": { "deflection": -3 },
            "axes": [{
                "chip": "blank", "position": 3.5,
                "stage": {
                    "modelName": "STAGE", "serialNumber": "SN", "pulseOneCircle": 400, "dispOneCircle": 0.5,
                    "restoreSpeed": 1.5, "moveType": 3, "positivePolarity": 1, "negativePolarity": 1,
                    "originPolarity": 1, "phaseDirction": 1, "limitDirection": 1, "unitType": 1, "optOrder": "ZPN",
                    "maxSpeed": 4, "maxAcc": 6, "minPos": -1, "maxPos": 9, "zeroOptWidth": 20, "optNum": 2,
                    "returnTrip": -5, "motorPhase": 5, "modifyDate": 20250101, "maxRockerSpeed": 0.25
                }
            }]
        }],
        "faults": [], "events": []
    })");
    char buffer[32] = {};
    getDevSerialNumber(device, buffer, 32);
    QCOMPARE(buffer, "SIM-S"); // nothing simulated passes for the real thing
    getDevModelName(device, buffer, 32);
    QCOMPARE(buffer, "M");
    getDevSoftVersion(device, buffer, 32);
    QCOMPARE(buffer, "V simulated");
    CONTROLER_STATE info{};
    QCOMPARE(getRockerInfo(device, &info), 0);
    QCOMPARE(info.rockerValue, quint16(3));
    QCOMPARE(getDevAxisCount(device), 1);
    QCOMPARE(positionOf(0), 3.5);
    int code = 0;
    QCOMPARE(getMotorAutoDetect(device, 0, &code), 0);
    QCOMPARE(code, 1);

    MotorParams params{};
    QCOMPARE(getMotorParams(device, 0, &params), 0);
    const MotorParams expected{"STAGE", "SIM-SN", 400, 0,  0.5, 1.5, 3, 1,  1, 1,        1, 1,   1,
                               "ZPN",   4,        6,   -1, 9,   20,  2, -5, 5, 20250101, 0, 0.25};
    QCOMPARE(std::memcmp(&params, &expected, sizeof params), 0);
}

void tst_SimulatorScenario::appliesDefaults()
{
    openScenario(R"({"controllers": [{"id": 1001, "axes": [{}, {"stage": {"minPos": 5, "maxPos": 25}}]}]})");
    int code = -1;
    QCOMPARE(getMotorAutoDetect(device, 0, &code), 0);
    QCOMPARE(code, 0);
    QCOMPARE(positionOf(0), 0.0);
    QCOMPARE(positionOf(1), 5.0);
    QCOMPARE(getSpeed(device, 1), 5.0);
    QCOMPARE(getAcceleration(device, 1), 25.0);
    QCOMPARE(getRelativeDisp(device, 1), 1.0);
    QCOMPARE(getJogStep(device, 1), 0.2);
    QCOMPARE(getCircleDisp(device, 1), 2.0);
}

void tst_SimulatorScenario::namesTheLineOfTheMistake_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("error");
    // Each row is a scenario of which one line is wrong.
    const auto row = [](const char *name, const QByteArray &json, const char *error) {
        QTest::newRow(name) << json << QByteArray(error);
    };
    const QByteArray head = "{\n\"controllers\": [{\"id\": 7, \"axes\": [{}]}],\n";
    row("empty text", "",
        "scenario:1: syntax error while parsing value - unexpected end of input; "
        "expected '[', '{', or a literal");
    row("no object", "[]", "scenario:1: the scenario has to be an object {…}");
    row("no controllers", "\n{}", "scenario:2: the scenario lacks \"controllers\"");
    row("unknown key", head + "\"timescale\": 2\n}", "scenario:3: the scenario has no \"timescale\"");
    row("key twice", head + "\"latencyMs\": 2,\n\"latencyMs\": 2\n}", "scenario:4: \"latencyMs\" stands here twice");
    row("number as text", head + "\"timeScale\": \"2\"\n}", "scenario:3: \"timeScale\" has to be a number");
    row("fraction", head + "\"latencyMs\":\n2.5\n}", "scenario:4: \"latencyMs\" has to be a whole number");
    row("beyond the range", head + "\"latencyMs\": -1\n}", "scenario:3: \"latencyMs\" has to be 0 to 60000, not -1");
    row("text as number", "{\"controllers\": [\n{\"id\": 7,\n\"modelName\": 3,\n\"axes\": [{}]}]}",
        "scenario:3: \"modelName\" has to be a text");
    row("long text",
        "{\"controllers\": [\n{\"id\": 7,\n\"modelName\": \"0123456789abcdef0123456789abcdef!\",\n\"axes\": [{}]}]}",
        "scenario:3: \"modelName\" has more than 32 bytes");
    row("no list", "{\"controllers\":\n{}}", "scenario:2: \"controllers\" has to be a list […]");
    row("flag as number", "{\"controllers\": [{\"id\": 7,\n\"plugged\": 1, \"axes\": [{}]}]}",
        "scenario:2: \"plugged\" has to be true or false");
    row("no id", "{\"controllers\": [\n{\"axes\": [{}]}]}", "scenario:2: the controller lacks \"id\"");
    row("id 0", "{\"controllers\": [\n{\"id\": 0, \"axes\": [{}]}]}",
        "scenario:2: \"id\" has to be 1 to 2.14748e+09, not 0");
    row("id twice", "{\"controllers\": [{\"id\": 7, \"axes\": [{}]},\n{\"id\": 7, \"axes\": [{}]}]}",
        "scenario:2: there are two controllers 7");
    row("no axes", "{\"controllers\": [{\"id\": 7,\n\"axes\": []}]}", "scenario:2: a controller has 1 to 3 axes");
    row("four axes", "{\"controllers\": [{\"id\": 7,\n\"axes\": [{}, {}, {}, {}]}]}",
        "scenario:2: a controller has 1 to 3 axes");
    row("unknown chip", "{\"controllers\": [{\"id\": 7, \"axes\": [{\n\"chip\": \"new\"}]}]}",
        "scenario:2: \"chip\" has to be one of \"absent\", \"blank\", \"written\"");
    row("position beyond the travel", "{\"controllers\": [{\"id\": 7, \"axes\": [{\n\"position\": 51}]}]}",
        "scenario:2: \"position\" has to be -50 to 50, not 51");
    row("empty travel", "{\"controllers\": [{\"id\": 7, \"axes\": [{\"stage\":\n{\"minPos\": 50}}]}]}",
        "scenario:2: \"minPos\" has to be below \"maxPos\"");
    row("speed 0", "{\"controllers\": [{\"id\": 7, \"axes\": [{\"stage\":\n{\"maxSpeed\": 0}}]}]}",
        "scenario:2: \"maxSpeed\" has to be above 0, not 0");
    row("unknown function", head + "\"faults\": [{\"function\": \"go\", \"status\": -1}]}",
        "scenario:3: the library has no function \"go\"");
    row("fault without effect", head + "\"faults\": [{\"function\": \"home\"}]}",
        "scenario:3: the fault lacks \"status\" or \"delayMs\"");
    row("status that is none", head + "\"faults\": [{\"function\": \"home\", \"status\": 0}]}",
        "scenario:3: \"status\" has to be -2.14748e+09 to -1, not 0");
    row("unknown event", head + "\"events\": [{\"at\": 1, \"controller\": 7,\n\"event\": \"plug in\"}]}",
        "scenario:4: \"event\" has to be one of \"loseLink\", \"restoreLink\", \"plug\", \"unplug\", \"joystick\", "
        "\"optoFails\", \"optoRecovers\", \"triggerPulse\"");
    row("event of nobody", head + "\"events\": [{\"at\": 1, \"event\": \"plug\",\n\"controller\": 8}]}",
        "scenario:4: there is no controller 8");
    row("event of an axis that is not there",
        head + "\"events\": [{\"at\": 1, \"event\": \"triggerPulse\", \"controller\": 7,\n\"axis\": 1}]}",
        "scenario:4: \"axis\" has to be 0 to 0, not 1");
    row("key of another event",
        head + "\"events\": [{\"at\": 1, \"event\": \"plug\", \"controller\": 7,\n\"axis\": 0}]}",
        "scenario:4: the event has no \"axis\"");
    row("very deep", "{\"controllers\":\n" + QByteArray(300000, '['),
        "scenario:2: more than 100 objects and lists within each other");
    row("text that ends early", head + "\"events\": [\n",
        "scenario:3: syntax error while parsing value - unexpected "
        "end of input; expected '[', '{', or a literal");
}

void tst_SimulatorScenario::namesTheLineOfTheMistake()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, error);
    std::string said;
    QVERIFY(!loadScenarioText(json.toStdString(), &said));
    QCOMPARE(QString::fromStdString(said), QString::fromUtf8(error));
}

void tst_SimulatorScenario::namesTheFileOfTheMistake()
{
    QTemporaryDir dir;
    const QString path = dir.filePath("wrong.json");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{\n\n\"controllers\": 7}");
    file.close();
    std::string error;
    QVERIFY(!loadScenarioFile(path.toStdString(), &error));
    QCOMPARE(QString::fromStdString(error), path + ":3: \"controllers\" has to be a list […]");

    const QString missing = dir.filePath("missing.json");
    for (const QString &unreadable : {missing, dir.path()}) {
        QVERIFY(!loadScenarioFile(unreadable.toStdString(), &error));
        QCOMPARE(QString::fromStdString(error), unreadable + ":1: the scenario file cannot be read or is empty");
    }
}

void tst_SimulatorScenario::keepsTheOldScenarioOnAMistake()
{
    openScenario(R"({"controllers": [{"id": 1001, "axes": [{}, {}]}]})");
    std::string error;
    QVERIFY(!loadScenarioText("{}", &error));
    QCOMPARE(getDevAxisCount(device), 2);
}

void tst_SimulatorScenario::carriesOutEventsAtTheirTimes()
{
    openScenario(R"({
        "controllers": [{"id": 1001, "axes": [{}]}],
        "events": [
            {"at": 4, "event": "restoreLink", "controller": 1001},
            {"at": 2, "event": "loseLink", "controller": 1001},
            {"at": 6, "event": "optoFails", "controller": 1001, "axis": 0, "opto": "positive"},
            {"at": 7, "event": "optoRecovers", "controller": 1001, "axis": 0, "opto": "positive"},
            {"at": 8, "event": "unplug", "controller": 1001},
            {"at": 9, "event": "plug", "controller": 1001}
        ]
    })");
    // From -50 at 10 mm/s and 10 mm/s²: braked by the opto-coupler, which fails at 6 s, however late anybody looks.
    setPosition(device, 0, -50);
    QCOMPARE(setSpeed(device, 0, 10), 0);
    QCOMPARE(setAcceleration(device, 0, 10), 0);
    QCOMPARE(setTargetPos(device, 0, 50), 0);
    QCOMPARE(startMove(device, 0), 0);
    advance(1.99);
    QCOMPARE(getDevAxisCount(device), 1);
    advance(0.01);
    QCOMPARE(getDevAxisCount(device), int(LinkLost));
    advance(2);
    QCOMPARE(getDevAxisCount(device), 1);
    advance(3.5);
    QVERIFY(near(positionOf(0), -50 + 5 + 50 + 5));
    QCOMPARE(stateOf(0).isRightOptoFault, qint16(0));
    advance(0.5);
    QCOMPARE(getDevAxisCount(device), int(LinkLost));
    int ids[10] = {};
    QCOMPARE(listTSMotorControlerDevices(ids, 10), 0);
    advance(1);
    QCOMPARE(listTSMotorControlerDevices(ids, 10), 1);
    QCOMPARE(getDevAxisCount(device), int(NotOpen));
}

void tst_SimulatorScenario::repeatsEvents()
{
    openFile("lossy-link.json");
    for (int i = 0; i < 3; ++i) {
        advance(i == 0 ? 19 : 26);
        QCOMPARE(getDevAxisCount(device), 3);
        advance(2);
        QCOMPARE(getDevAxisCount(device), int(LinkLost));
        advance(2);
        QCOMPARE(getDevAxisCount(device), 3);
    }
}

void tst_SimulatorScenario::pulsesAndDeflectsByEvents()
{
    openScenario(R"({
        "controllers": [{"id": 1001, "joystick": {}, "axes": [{}]}],
        "events": [
            {"at": 2, "every": 10, "event": "triggerPulse", "controller": 1001, "axis": 0},
            {"at": 30, "event": "joystick", "controller": 1001, "deflection": 5},
            {"at": 40, "event": "joystick", "controller": 1001, "present": false}
        ]
    })");
    QCOMPARE(setTriggerInEnable(device, 0, 1), 0);
    QCOMPARE(setTriggerStep(device, 0, 2), 0);
    advance(15);
    QVERIFY(near(positionOf(0), 4));
    QCOMPARE(setTriggerInEnable(device, 0, 0), 0);
    QCOMPARE(setRockerEnable(device, 1), 0);
    advance(17);
    QVERIFY(positionOf(0) > 5);
    advance(10);
    QCOMPARE(getRockerEnable(device), 0);
    QVERIFY(positionOf(0) < 50);
    QCOMPARE(stateOf(0).isStop, qint16(1));
}

void tst_SimulatorScenario::failsCallsByFaults()
{
    openScenario(R"({
        "controllers": [{"id": 1001, "axes": [{}]}],
        "faults": [
            {"function": "getDevAxisCount", "status": -42, "call": 2},
            {"function": "getRockerEnable", "status": -43, "count": -1},
            {"function": "getJogCount", "delayMs": 50, "call": 2}
        ]
    })");
    QCOMPARE(getDevAxisCount(device), 1);
    QCOMPARE(getDevAxisCount(device), -42);
    QCOMPARE(getDevAxisCount(device), 1);
    QCOMPARE(getRockerEnable(device), -43);
    QCOMPARE(getRockerEnable(device), -43);
    QCOMPARE(getJogCount(device, 0), 5);
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(getJogCount(device, 0), 5);
    QVERIFY(timer.elapsed() >= 50);
}

void tst_SimulatorScenario::plugsTheThirdController()
{
    openFile("two-controllers.json");
    int ids[10] = {};
    advance(19);
    QCOMPARE(listTSMotorControlerDevices(ids, 10), 2);
    advance(2);
    QCOMPARE(listTSMotorControlerDevices(ids, 10), 3);
    QCOMPARE(ids[2], 1003);
}

void tst_SimulatorScenario::takesTimeOnASlowLink()
{
    openFile("slow-link.json");
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(getDevAxisCount(device), 3);
    QVERIFY(timer.elapsed() >= 50);
}

QTEST_GUILESS_MAIN(tst_SimulatorScenario)
#include "tst_SimulatorScenario.moc"

// SPDX-License-Identifier: MIT
#include "controllers/emulator/SerialPort.h"
#include "controllers/grbl/Bench.h"
#include "controllers/grbl/Controller.h"
#include "controllers/grbl/SerialPort.h"

#include "device/moverLibrary.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace moverStatus;

/** The 71 functions on an emulated board behind a port of this computer, on the computer's clock. */
class tst_GrblLibrary : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void listsTheBoardsThatAreSetUp();
    void refusesAPortThatIsInUse();
    void opensAndMoves();
    void keepsThePortOpen();
    void stopsWithOneCancel();
    void readsJoystickTriggerAndChipAsAbsent();
    void writesOnlyWhatDiffers();
    void aStageThatIsSetUpLaterCounts();
    void homesAtTheSecondPress();
    void noCallWaitsForTheWire();
    void silenceIsALostLinkForWhateverIsAsked();
    void losesAndFindsThePort();
    void openingFreesASilentBoard();
    void closingEndsAHoming();
    void cleanupTestCase()
    {
        for (const emulator::Violation &one : m_port->use([](const emulator::Board &it) { return it.violations(); })) {
            QVERIFY2(one.kind != emulator::Violation::Kind::NoAxisWord, one.line.c_str());
            QVERIFY2(one.kind != emulator::Violation::Kind::Relative, one.line.c_str());
        }
    }

private:
    int position(int axis) { return static_cast<int>(std::lround(getCurrentPos(s_id, axis, nullptr) * 1000)); }
    bool stands(int axis)
    {
        MotorStageState state{};
        return getRuningState(s_id, axis, &state) >= 0 && state.isStop == 1;
    }
    long long steps(int axis)
    {
        return m_port->use([axis](const emulator::Board &board) { return board.steps(axis); });
    }

    static constexpr int s_id = 2001;
    QTemporaryDir m_folder;
    std::unique_ptr<emulator::SerialPort> m_port;
};

void tst_GrblLibrary::initTestCase()
{
    emulator::Options options = Bench::options();
    options.settings[22] = 0;
    for (int i = 0; i < 3; ++i) {
        options.settings[130 + i] = 40;
        options.stages.push_back({-40, 0, -20});
    }
    options.settings[24] = 300;
    options.settings[25] = 1800;
    options.settings[26] = 25;
    m_port = std::make_unique<emulator::SerialPort>(options, 1, m_folder.filePath("board").toStdString());
    QFile file(m_folder.filePath("controllers.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QByteArray axes;
    for (const char *const letter : {"X", "Y", "Z"}) {
        axes += axes.isEmpty() ? "" : ", ";
        axes += QByteArray(R"({"letter": ")") + letter +
                R"(", "stage": {"modelName": "ML-40", "pulseOneCircle": 250, "dispOneCircle": 1, "restoreSpeed": 5,
            "maxSpeed": 25, "maxAcc": 100, "minPos": -20, "maxPos": 20}})";
    }
    file.write(
        R"({"controllers": [{"id": 2001, "kind": "grbl", "port": ")" + m_folder.filePath("board").toUtf8() +
        R"(", "axes": [)" + axes + "]}]}");
    file.close();
    qputenv("MOVER_CONTROLLERS", file.fileName().toUtf8());
}

void tst_GrblLibrary::listsTheBoardsThatAreSetUp()
{
    int ids[10] = {};
    QCOMPARE(listTSMotorControlerDevices(ids, 10), 1);
    QCOMPARE(ids[0], s_id);
    QVERIFY(!m_port->isOpen());
}

void tst_GrblLibrary::refusesAPortThatIsInUse()
{
    grbl::SerialPort other;
    QCOMPARE(other.open(m_port->path()), int(Ok));
    QCOMPARE(addDev(s_id), int(Ok));
    QCOMPARE(openTSDevice(s_id), int(PortInUse));
    other.close();
}

void tst_GrblLibrary::opensAndMoves()
{
    QCOMPARE(openTSDevice(s_id), int(Ok));
    QCOMPARE(getDevAxisCount(s_id), 3);
    char version[MOVER_TEXT_LENGTH] = {};
    QCOMPARE(getDevSoftVersion(s_id, version, sizeof version), int(Ok));
    QVERIFY(QByteArray(version).startsWith("1.1h"));
    QCOMPARE(setSpeed(s_id, 0, 10), int(Ok));
    QCOMPARE(setAcceleration(s_id, 0, 50), int(Ok));
    QCOMPARE(setTargetPos(s_id, 0, 3.12), int(Ok));
    QCOMPARE(startMove(s_id, 0), int(Ok));
    QCOMPARE(startMove(s_id, 0), int(AxisRunning));
    QTRY_VERIFY(stands(0));
    QCOMPARE(steps(0), 780LL);
    QCOMPARE(position(0), 3120);
}

void tst_GrblLibrary::keepsThePortOpen()
{
    QCOMPARE(closeTSDevice(s_id), int(Ok));
    QCOMPARE(removeDev(s_id), int(Ok));
    const double before = m_port->use([](const emulator::Board &board) { return board.now(); });
    QCOMPARE(addDev(s_id), int(Ok));
    QCOMPARE(openTSDevice(s_id), int(Ok));
    QCOMPARE(position(0), 3120); // no reset between, and no wait for one
    QVERIFY(m_port->use([](const emulator::Board &board) { return board.now(); }) - before < 1);
}

void tst_GrblLibrary::stopsWithOneCancel()
{
    QCOMPARE(setRelativeDispEnable(s_id, 0, 0), int(Ok));
    QCOMPARE(startDrive(s_id, 0, 2), int(Ok));
    QTRY_VERIFY(position(0) < 1000);
    const std::size_t before = m_port->use([](const emulator::Board &board) { return board.sentLines().size(); });
    QCOMPARE(stopRuning(s_id, 0), int(Ok));
    QTRY_VERIFY(stands(0));
    const std::vector<std::string> lines = m_port->use([](const emulator::Board &board) { return board.sentLines(); });
    QCOMPARE(std::count(lines.begin() + before, lines.end(), std::string(1, '\x85')), 1);
    QCOMPARE(position(0), static_cast<int>(steps(0) * 4));
    QCOMPARE(setRelativeDispEnable(s_id, 0, 1), int(Ok));
}

void tst_GrblLibrary::readsJoystickTriggerAndChipAsAbsent()
{
    CONTROLER_STATE info{};
    QCOMPARE(getRockerInfo(s_id, &info), int(Ok));
    QCOMPARE(int(info.rockerState), 0);
    QCOMPARE(getRockerEnable(s_id), 0);
    QCOMPARE(setRockerEnable(s_id, 0), int(Ok));
    QCOMPARE(setRockerEnable(s_id, 1), int(NotAvailable));
    QCOMPARE(setTriggerInEnable(s_id, 0, 0), int(Ok));
    QCOMPARE(setTriggerInEnable(s_id, 0, 1), int(NotAvailable));
    QCOMPARE(setTriggerOutEnable(s_id, 0, 1), int(NotAvailable));
    QCOMPARE(setClearIDChip(s_id, 0), int(NotAvailable));
    int code = -1;
    QCOMPARE(getMotorAutoDetect(s_id, 0, &code), int(Ok));
    QCOMPARE(code, 2);
}

void tst_GrblLibrary::writesOnlyWhatDiffers()
{
    MotorParams params{};
    QCOMPARE(getMotorParams(s_id, 1, &params), int(Ok));
    params.maxSpeed = 20;
    QCOMPARE(setMotorParams(s_id, 1, params), int(Ok));
    const std::vector<std::string> lines = m_port->use([](const emulator::Board &board) { return board.sentLines(); });
    QCOMPARE(std::count(lines.begin(), lines.end(), std::string("$111=1200.000")), 1);
    QCOMPARE(std::count(lines.begin(), lines.end(), std::string("$101=250.000")), 0);
    QCOMPARE(m_port->use([](const emulator::Board &board) { return board.settings()[111]; }), 1200.0);
    MotorParams read{};
    QCOMPARE(getMotorParams(s_id, 1, &read), int(Ok));
    QCOMPARE(read.maxSpeed, 20.0);
    QTRY_VERIFY(QFile::exists(m_folder.filePath("board-2001.json")));
    QVERIFY(stands(1));
}

/** Also over what a library that was still in use has kept since. */
void tst_GrblLibrary::aStageThatIsSetUpLaterCounts()
{
    grbl::BoardSetup setUp{7, "none", {{}}};
    setUp.axes[0].stage.pulseOneCircle = 250;
    setUp.axes[0].stage.dispOneCircle = 0.1;
    setUp.axes[0].stage.restoreSpeed = 5;
    setUp.axes[0].stage.maxSpeed = 10;
    setUp.axes[0].stage.maxAcc = 50;
    setUp.axes[0].stage.maxPos = 100;
    std::mutex mutex;
    const std::string file = m_folder.filePath("controllers.json").toStdString();
    grbl::Controller before(setUp, mutex, file);
    MotorParams written = setUp.axes[0].stage;
    written.maxSpeed = 8;
    before.board().axes()[0]->restore(written);
    before.axis(0).settings.jogCount = 9;
    QVERIFY(grbl::Configuration::write(
        grbl::Configuration::keptFile(file, 7), grbl::Configuration::kept(before, before.board())));

    grbl::Controller same(setUp, mutex, file);
    QCOMPARE(same.axis(0).stage().maxSpeed, 8.0);
    setUp.axes[0].stage.maxPos = 25;
    grbl::Controller later(setUp, mutex, file);
    QCOMPARE(later.axis(0).stage().maxSpeed, 10.0);
    QCOMPARE(later.axis(0).stage().maxPos, 25.0);
    QCOMPARE(later.axis(0).settings.jogCount, 9);
}

void tst_GrblLibrary::homesAtTheSecondPress()
{
    QCOMPARE(home(s_id, 0), int(NotAvailable)); // $22=0
}

void tst_GrblLibrary::noCallWaitsForTheWire()
{
    QCOMPARE(setRelativeDispEnable(s_id, 0, 0), int(Ok));
    QCOMPARE(setSpeed(s_id, 0, 2), int(Ok));
    MotorStageState state{};
    CONTROLER_STATE info{};
    const std::pair<const char *, std::function<void()>> calls[] = {
        {"startDrive", [] { startDrive(s_id, 0, 1); }},
        {"getCurrentPos", [] { getCurrentPos(s_id, 0, nullptr); }},
        {"getRuningState", [&state] { getRuningState(s_id, 0, &state); }},
        {"getRockerInfo", [&info] { getRockerInfo(s_id, &info); }},
        {"setTargetPos", [] { setTargetPos(s_id, 0, 1); }},
        {"setMotorEnable", [] { setMotorEnable(s_id, 1, 1); }},
        {"home", [] { home(s_id, 2); }},
        {"stopRuning", [] { stopRuning(s_id, 0); }},
        {"closeTSDevice", [] { closeTSDevice(s_id); }},
        {"openTSDevice", [] { openTSDevice(s_id); }}, // of a port that is open
    };
    constexpr int rounds = 5;
    // The board neither reads nor says anything for as long as this holds it.
    std::map<QByteArray, double> shortest;
    m_port->use([&](const emulator::Board &) {
        QElapsedTimer timer;
        for (int round = 0; round < rounds; ++round) {
            for (const auto &[name, call] : calls) {
                timer.start();
                call();
                const double ms = double(timer.nsecsElapsed()) / 1e6;
                // A busy computer may take a call's time away once, and the wire would every time.
                shortest[name] = round == 0 ? ms : std::min(shortest[name], ms);
            }
        }
        return 0;
    });
    for (const auto &[name, ms] : shortest)
        QVERIFY2(ms <= 20, name + QByteArray(": ") + QByteArray::number(ms));
    QTRY_VERIFY(getRuningState(s_id, 0, &state) >= 0 && state.isStop == 1);
    QTRY_COMPARE(position(0), static_cast<int>(steps(0) * 4));
}

void tst_GrblLibrary::silenceIsALostLinkForWhateverIsAsked()
{
    const auto cut = [this](bool isCut) {
        m_port->use([isCut](emulator::Board &board) { return board.toHost().cut(isCut), 0; });
    };
    MotorStageState state{};
    CONTROLER_STATE info{};
    int status = 0;
    QCOMPARE(getRockerInfo(s_id, &info), int(Ok));
    cut(true);
    QTRY_COMPARE(getRuningState(s_id, 0, &state), int(LinkLost));
    getCurrentPos(s_id, 0, &status);
    QCOMPARE(status, int(LinkLost));
    QCOMPARE(getRockerInfo(s_id, &info), int(LinkLost)); // the sign of life
    cut(false);
    QTRY_VERIFY(stands(0));
    QCOMPARE(getRockerInfo(s_id, &info), int(Ok));
}

void tst_GrblLibrary::losesAndFindsThePort()
{
    QCOMPARE(startDrive(s_id, 0, 1), int(Ok));
    m_port->unplug();
    QTRY_COMPARE(getRuningState(s_id, 0, nullptr), int(LinkLost));
    int ids[10] = {};
    QTRY_COMPARE(listTSMotorControlerDevices(ids, 10), 0);
    m_port->plug();
    QTRY_COMPARE(listTSMotorControlerDevices(ids, 10), 1);
    MotorStageState state{};
    QTRY_COMPARE(getRuningState(s_id, 0, &state), int(NotOpen));
    QCOMPARE(openTSDevice(s_id), int(Ok));
    QCOMPARE(position(0), 0);
    QCOMPARE(getRuningState(s_id, 0, &state), int(Ok));
    QCOMPARE(int(state.isHome), 0);
    QCOMPARE(int(state.isStop), 1);
}

void tst_GrblLibrary::openingFreesASilentBoard()
{
    m_port->use([](emulator::Board &board) { return board.send("$21=1\n"), 0; });
    QTRY_VERIFY(m_port->use([](const emulator::Board &board) { return board.settings()[21] == 1; }));
    // Its alarm does not come over, and behind it the board hears nothing but a reset.
    m_port->use([](emulator::Board &board) { return board.toHost().cut(true), board.forceSwitch(0, 1), 0; });
    MotorStageState state{};
    QTRY_COMPARE(getRuningState(s_id, 0, &state), int(LinkLost));
    m_port->use([](emulator::Board &board) { return board.toHost().cut(false), 0; });
    QCOMPARE(closeTSDevice(s_id), int(Ok));
    QCOMPARE(openTSDevice(s_id), int(Ok));
    QCOMPARE(getRuningState(s_id, 0, &state), int(Ok));
    QCOMPARE(startDrive(s_id, 0, 1), int(Locked));
}

/** Which only a reset does, and nobody could send that afterwards. */
void tst_GrblLibrary::closingEndsAHoming()
{
    const auto state = [this] { return m_port->use([](const emulator::Board &board) { return board.state(); }); };
    m_port->use([](emulator::Board &board) {
        board.forceSwitch(0, 0);
        board.send("$22=1\n");
        return 0;
    });
    QTRY_VERIFY(m_port->use([](const emulator::Board &board) { return board.settings()[22] == 1; }));
    m_port->unplug(); // and the library reads the settings again
    QTRY_COMPARE(getRuningState(s_id, 0, nullptr), int(LinkLost));
    m_port->plug();
    QTRY_COMPARE(getRuningState(s_id, 0, nullptr), int(NotOpen));
    QCOMPARE(openTSDevice(s_id), int(Ok));
    QTRY_VERIFY(home(s_id, 0) != NotAvailable && state() == emulator::State::Home);
    QCOMPARE(closeTSDevice(s_id), int(Ok));
    QTRY_VERIFY(state() == emulator::State::Alarm);
}

QTEST_GUILESS_MAIN(tst_GrblLibrary)
#include "tst_GrblLibrary.moc"

// SPDX-License-Identifier: MIT
#include "controllers/emulator/SerialPort.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

/** The emulated board behind a serial port of this computer. */
class tst_SerialPort : public QObject
{
    Q_OBJECT

private slots:
    void answersOnAPort();
    void runsFasterThanTheComputer();
    void resetsWhenThePortIsOpened();
    void goesAndComesBack();
    void runsAsAProgram();
    void refusesWrongOptions_data();
    void refusesWrongOptions();
};

namespace {

const QByteArray banner = "Grbl 1.1h ['$' for help]\r\n";

/** The other end of the port: a host's. */
class Line
{
public:
    explicit Line(const std::string &path)
        : m_fd(open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
    }
    ~Line() { close(m_fd); }

    bool isOpen() const { return m_fd >= 0; }
    bool say(const QByteArray &bytes) const
    {
        return write(m_fd, bytes.data(), static_cast<size_t>(bytes.size())) == bytes.size();
    }

    /** What comes until `end` is in it, or for five seconds; null when the port is gone. */
    QByteArray hear(const QByteArray &end) const
    {
        QByteArray heard("");
        QElapsedTimer timer;
        timer.start();
        while (!heard.contains(end) && timer.elapsed() < 5000) {
            pollfd port{m_fd, POLLIN, 0};
            poll(&port, 1, 10);
            char bytes[256];
            const ssize_t count = (port.revents & POLLIN) != 0 ? read(m_fd, bytes, sizeof bytes) : 0;
            if (count > 0) {
                heard.append(bytes, static_cast<int>(count));
            } else if ((port.revents & POLLHUP) != 0) {
                return {};
            }
        }
        return heard;
    }

    /** As a driver begins: a reset, and its banner. */
    bool begin() const { return say("\x18") && hear(banner).contains(banner); }

private:
    int m_fd;
};

} // namespace

void tst_SerialPort::answersOnAPort()
{
    emulator::SerialPort port(emulator::Options{});
    const Line line(port.path());
    QVERIFY(line.begin());
    QVERIFY(line.say("$I\n"));
    QVERIFY(line.hear("ok\r\n").contains("[VER:1.1h"));
    QVERIFY(line.say("?"));
    QVERIFY(line.hear(">\r\n").contains("<Idle|"));
    QCOMPARE(port.use([](emulator::Board &board) { return board.sentLines().size(); }), std::size_t(3));
}

void tst_SerialPort::runsFasterThanTheComputer()
{
    emulator::Options options;
    options.settings = {{110, 600}, {120, 50}};
    emulator::SerialPort port(options, 100);
    QElapsedTimer timer;
    timer.start();
    const Line line(port.path());
    QVERIFY(line.begin());
    QVERIFY(line.say("$J=G53X100Y0Z0F600\n"));
    QTRY_COMPARE(port.use([](emulator::Board &board) { return board.steps(0); }), 25000LL);
    QVERIFY(timer.elapsed() < 9000); // 10.2 s of the board's clock
}

void tst_SerialPort::resetsWhenThePortIsOpened()
{
    emulator::Options options;
    options.bootTime = 1;
    emulator::SerialPort port(options, 20);
    for (int i = 0; i < 2; ++i) {
        {
            const Line line(port.path());
            QVERIFY(line.hear(banner).contains(banner));
        }
        QTRY_VERIFY(!port.isOpen());
    }
}

void tst_SerialPort::goesAndComesBack()
{
    const QTemporaryDir folder;
    const QByteArray link = QFile::encodeName(folder.filePath("board"));
    emulator::SerialPort port(emulator::Options{}, 1, link.toStdString());
    QCOMPARE(port.path(), link.toStdString());
    {
        const Line line(port.path());
        QVERIFY(line.begin());
        QVERIFY(line.say("$X\n"));
        QVERIFY(line.hear("ok\r\n").contains("ok"));
        port.unplug();
        QVERIFY(line.hear("nothing more").isNull());
        QVERIFY(!QFile::exists(link));
    }
    const auto now = [&] { return port.use([](emulator::Board &board) { return board.now(); }); };
    const double pluggedAt = now();
    port.plug();
    QTRY_VERIFY(now() > pluggedAt + 0.1); // or the banner of the start is taken for that of the reset
    const Line line(port.path());
    QVERIFY(line.begin());
    QVERIFY(line.say("$X\n"));
    QVERIFY(line.hear("ok\r\n").contains("ok"));
}

void tst_SerialPort::runsAsAProgram()
{
    QProcess program;
    program.start(GRBL_EMULATOR, {"--axes", "4", "--speed", "10", "--set", "100=400"});
    QVERIFY(program.waitForReadyRead());
    const QByteArray path = program.readLine().trimmed();
    const Line line(path.toStdString());
    QVERIFY2(line.isOpen(), path);
    QVERIFY(line.begin());
    QVERIFY(line.say("$$\n"));
    const QByteArray settings = line.hear("ok\r\n");
    QVERIFY(settings.contains("$100=400.000\r\n"));
    QVERIFY(settings.contains("$133=200.000\r\n"));
    program.closeWriteChannel();
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitCode(), 0);
}

void tst_SerialPort::refusesWrongOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("unknown") << QStringList{"--what", "1"};
    QTest::newRow("no value") << QStringList{"--axes"};
    QTest::newRow("no number") << QStringList{"--axes", "many"};
    QTest::newRow("too many axes") << QStringList{"--axes", "7"};
    QTest::newRow("no speed") << QStringList{"--speed", "0"};
    QTest::newRow("no setting") << QStringList{"--set", "x"};
}

void tst_SerialPort::refusesWrongOptions()
{
    QFETCH(QStringList, arguments);
    QProcess program;
    program.start(GRBL_EMULATOR, arguments);
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitCode(), 2);
    QVERIFY(program.readAllStandardError().contains("usage:"));
}

QTEST_GUILESS_MAIN(tst_SerialPort)
#include "tst_SerialPort.moc"

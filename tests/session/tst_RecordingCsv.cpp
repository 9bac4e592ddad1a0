// SPDX-License-Identifier: MIT
#include "session/RecordingCsv.h"

#include "device/SerialComDev.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QtTest>

#ifdef Q_OS_LINUX
#include <sys/resource.h>

#include <csignal>
#endif

Q_DECLARE_METATYPE(RecordingCsv::Format)
Q_DECLARE_METATYPE(SequenceStep)

class tst_RecordingCsv : public QObject
{
    Q_OBJECT

    /** Two axes, 250 ms, one event; midnight of 1 January 2026 UTC at its beginning. */
    static Recording small()
    {
        SampleTrack first;
        first.append(5000000, -1.25, false);
        first.append(5250000, 0.5, false);
        SampleTrack second;
        second.append(5000100, 90, false);
        Recording recording;
        AxisDescription turntable;
        turntable.index = 1;
        turntable.unit = QStringLiteral("°");
        recording.axes = {{AxisDescription(), first.view()}, {turntable, second.view()}};
        recording.clock = {{5000000, 1767225600000}};
        RecorderEvent event;
        event.us = 5001000;
        event.axis = 1;
        event.type = OPERATION_TYPE_DRIVE;
        event.direction = -1;
        recording.events = {event};
        return recording;
    }
    static Recording large()
    {
        SampleTrack track;
        for (int k = 0; k < 200000; ++k)
            track.append(k * qint64(100000), k * 0.001, false);
        Recording recording;
        recording.axes = {{AxisDescription(), track.view()}};
        return recording;
    }
    static QString written(RecordingCsv::Format format)
    {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        const Recording recording = small();
        RecordingCsv::write(recording, 0, recording.endUs(), format, &buffer);
        return QString::fromUtf8(buffer.data());
    }

private slots:
    void initTestCase() { qputenv("TZ", "CST-8"); } // Windows knows no names of places

    void rowsAreInOrderAndHaveAllColumns_data()
    {
        QTest::addColumn<RecordingCsv::Format>("format");
        QTest::addColumn<QString>("text");
        QTest::newRow("comma and point")
            << RecordingCsv::Point
            << "\uFEFFtime,seconds,Axis1 position (mm),Axis2 position (°),Axis1 velocity (mm/s),Axis2 velocity (°/s),"
               "event\r\n"
               "2026-01-01T08:00:00.000+08:00,0.000000,-1.25,,,,\r\n"
               "2026-01-01T08:00:00.000+08:00,0.000100,,90,,,\r\n"
               "2026-01-01T08:00:00.001+08:00,0.001000,,,,,Axis2: drive - (panel)\r\n"
               "2026-01-01T08:00:00.250+08:00,0.250000,0.5,,7.000000,,\r\n";
        QTest::newRow("semicolon and decimal comma")
            << RecordingCsv::Comma
            << "\uFEFFtime;seconds;Axis1 position (mm);Axis2 position (°);Axis1 velocity (mm/s);Axis2 velocity (°/s);"
               "event\r\n"
               "2026-01-01T08:00:00.000+08:00;0,000000;-1,25;;;;\r\n"
               "2026-01-01T08:00:00.000+08:00;0,000100;;90;;;\r\n"
               "2026-01-01T08:00:00.001+08:00;0,001000;;;;;Axis2: drive - (panel)\r\n"
               "2026-01-01T08:00:00.250+08:00;0,250000;0,5;;7,000000;;\r\n";
    }
    void rowsAreInOrderAndHaveAllColumns()
    {
        QFETCH(RecordingCsv::Format, format);
        QTEST(written(format), "text");
    }

    void cellsAreQuotedAndNeverAFormula_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("cell");
        QTest::newRow("plain") << "LIN-100" << QByteArray("LIN-100");
        QTest::newRow("separator") << "a,b" << QByteArray("\"a,b\"");
        QTest::newRow("quotes") << "a\"b" << QByteArray("\"a\"\"b\"");
        QTest::newRow("lines") << "a\r\nb" << QByteArray("\"a\r\nb\"");
        QTest::newRow("equals") << "=1+1" << QByteArray("'=1+1");
        QTest::newRow("command") << "=HYPERLINK(\"x\",1)" << QByteArray("\"'=HYPERLINK(\"\"x\"\",1)\"");
        QTest::newRow("plus") << "+1" << QByteArray("'+1");
        QTest::newRow("minus") << "-1" << QByteArray("'-1");
        QTest::newRow("at") << "@SUM(1)" << QByteArray("'@SUM(1)");
        QTest::newRow("tab") << "\t=1" << QByteArray("'\t=1");
        QTest::newRow("empty") << "" << QByteArray();
    }
    void cellsAreQuotedAndNeverAFormula()
    {
        QFETCH(QString, text);
        QTEST(RecordingCsv::cell(text, ','), "cell");
    }

    void eventsHaveWords_data()
    {
        using Event = RecorderEvent;
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("direction");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("words");
        const auto row = [](int kind, int type, int direction, int status, const char *words) {
            QTest::newRow(words) << kind << type << direction << status << words;
        };
        row(Event::Command, OPERATION_TYPE_HOME, 0, 0, "Axis2: home (panel)");
        row(Event::Arrived, 0, 0, 0, "Axis2: arrived");
        row(Event::Stopped, 0, 0, 0, "Axis2: stopped");
        row(Event::Homed, 0, 0, 0, "Axis2: homed");
        row(Event::Limit, 0, 1, 0, "Axis2: positive limit");
        row(Event::Limit, 0, -1, 0, "Axis2: negative limit");
        row(Event::Failure, OPERATION_TYPE_JOG, -1, -3, "Axis2: refused -3: jog - (panel)");
        row(Event::Failure, Event::OptoFault, 1, 0, "Axis2: positive opto-coupler failed");
        row(Event::Failure, Event::OptoFault, -1, 0, "Axis2: negative opto-coupler failed");
        row(Event::Failure, Event::OptoFault, 0, 0, "Axis2: origin opto-coupler failed");
        const auto board = [&](moverMessages::Code code, const char *words) {
            row(Event::Failure, Event::BoardMessage, 0, code, words);
        };
        board(moverMessages::LimitHit, "Axis2: limit switch hit, position lost");
        board(moverMessages::HomingFailed, "Axis2: homing failed, position lost");
        board(moverMessages::BoardAlarm, "Axis2: board alarm 1.5");
        board(moverMessages::PositionLost, "Axis2: board started again, position lost");
        board(moverMessages::BoardLocked, "Axis2: board locked");
        board(moverMessages::OnHold, "Axis2: board on hold");
        board(moverMessages::Astray, "Axis2: axis astray");
        board(moverMessages::OutsideTravel, "Axis2: target outside the travel");
        board(moverMessages::WireStop, "Axis2: too much wire trouble");
        row(Event::LinkLost, 0, 0, 0, "Axis2: link lost");
        row(Event::LinkBack, 0, 0, 0, "Axis2: link back after 2.5 s");
    }
    void eventsHaveWords()
    {
        QFETCH(int, kind);
        QFETCH(int, type);
        QFETCH(int, direction);
        QFETCH(int, status);
        RecorderEvent event;
        event.kind = RecorderEvent::Kind(kind);
        event.axis = 1;
        event.type = qint8(type);
        event.direction = qint8(direction);
        event.status = status;
        event.lastedUs = 2500000;
        event.value = 1.5;
        QTEST(RecordingCsv::words(event), "words");
    }

    void stepsHaveWords_data()
    {
        QTest::addColumn<SequenceStep>("step");
        QTest::addColumn<QString>("words");
        const auto row = [](const SequenceStep &step, const char *words) { QTest::newRow(words) << step << words; };
        row({SequenceStep::GoTo, 0, 0, 0, 0, QStringLiteral("Load")}, "sequence, step 3: go to Load");
        row({SequenceStep::MoveTo, 1, 60.5, 2, 1}, "sequence, step 3: move to Axis2 60.5");
        row({SequenceStep::Home, SequenceStep::AllAxes}, "sequence, step 3: home all");
        row({SequenceStep::Wait, 0, 1.5}, "sequence, step 3: wait 1.5");
        row({SequenceStep::Ask, 0, 0, 0, 0, QStringLiteral("=1")}, "sequence, step 3: ask =1");
        row({SequenceStep::SetSpeed, 0, 4}, "sequence, step 3: set speed Axis1 4");
    }
    void stepsHaveWords()
    {
        QFETCH(SequenceStep, step);
        RecorderEvent event;
        event.kind = RecorderEvent::StepBegun;
        event.sequence = std::make_shared<SequenceNote>(SequenceNote{QStringLiteral("Scan"), 2, step});
        QTEST(RecordingCsv::words(event), "words");
    }

    void endsHaveWords_data()
    {
        using End = SequenceEnd;
        QTest::addColumn<int>("reason");
        QTest::addColumn<int>("axis");
        QTest::addColumn<QString>("words");
        QTest::newRow("finished") << int(End::Finished) << -1 << "sequence, at step 3: finished";
        QTest::newRow("limit") << int(End::PositiveLimit) << 1 << "sequence, at step 3: Axis2: positive limit";
        QTest::newRow("quit") << int(End::Quit) << -1 << "sequence, at step 3: program closed";
    }
    void endsHaveWords()
    {
        QFETCH(int, reason);
        QFETCH(int, axis);
        SequenceEnd end;
        end.reason = SequenceEnd::Reason(reason);
        end.axis = axis;
        RecorderEvent event;
        event.kind = RecorderEvent::SequenceEnded;
        event.sequence = std::make_shared<SequenceNote>(SequenceNote{QStringLiteral("Scan"), 2, {}, end});
        QTEST(RecordingCsv::words(event), "words");
    }

    void aSpanIsWrittenAlone()
    {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        QCOMPARE(
            RecordingCsv::write(large(), 10000000, 20000000, RecordingCsv::Point, &buffer),
            RecordingCsv::Outcome::Written);
        QCOMPARE(buffer.data().count("\r\n"), 102);
    }

    void aCancelledFileIsNotThere()
    {
        QTemporaryDir folder;
        QString error;
        const QString path = folder.filePath(QStringLiteral("a.csv"));
        const Recording recording = large();
        double reached = 0;
        QCOMPARE(
            RecordingCsv::save(
                recording, 0, recording.endUs(), RecordingCsv::Point, path, &error,
                [&reached](double part) { return (reached = part) < 0.5; }),
            RecordingCsv::Outcome::Cancelled);
        QVERIFY(reached >= 0.5 && reached < 0.6);
        QVERIFY(QDir(folder.path()).isEmpty(QDir::Files | QDir::Hidden));
    }

#ifdef Q_OS_LINUX
    void aFullDiskLeavesTheOldFile()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("a.csv"));
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
        old.close();
        const Recording recording = large();
        QString error;
        // No file of this process may grow beyond it: the same as a full disk.
        std::signal(SIGXFSZ, SIG_IGN);
        rlimit unlimited = {};
        getrlimit(RLIMIT_FSIZE, &unlimited);
        const rlimit limit = {100000, unlimited.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
        const auto outcome = RecordingCsv::save(recording, 0, recording.endUs(), RecordingCsv::Point, path, &error);
        setrlimit(RLIMIT_FSIZE, &unlimited);
        QCOMPARE(outcome, RecordingCsv::Outcome::Failed);
        QVERIFY(!error.isEmpty());
        QVERIFY(old.open(QIODevice::ReadOnly));
        QCOMPARE(old.readAll(), QByteArray("old"));
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }
#endif
};

QTEST_GUILESS_MAIN(tst_RecordingCsv)
#include "tst_RecordingCsv.moc"

// SPDX-License-Identifier: MIT
#include "session/IncidentFiles.h"

#include "device/SerialComDev.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using namespace std::chrono_literals;

class tst_IncidentFiles : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<Recorder> m_recorder;
    std::unique_ptr<IncidentFiles> m_files;

    QDir folder() const { return QDir(m_home->filePath(QStringLiteral("incidents"))); }
    QStringList names() const { return folder().entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    void refuse(int axis = 0)
    {
        m_recorder->commandAnswered(
            {axis, OPERATION_TYPE_MOVE, 0, MotionCommand::Request, -7}, AnswerListener::Time::clock::now());
    }

private slots:
    void init()
    {
        m_home = std::make_unique<QTemporaryDir>();
        m_recorder = std::make_unique<Recorder>();
        m_recorder->begin(QStringLiteral("A"));
        const auto now = AnswerListener::Time::clock::now();
        for (int k = 0; k <= 1000; ++k)
            m_recorder->positionAnswered(0, k, now - 100s + k * 100ms);
        m_files = std::make_unique<IncidentFiles>(*m_recorder, folder().path());
        m_files->setDelays(10, 30);
    }
    void cleanup() { m_files.reset(); }

    void keepsTheMinuteBefore()
    {
        QSignalSpy written(m_files.get(), &IncidentFiles::signal_written);
        refuse();
        QVERIFY(written.wait());
        QCOMPARE(written.first().at(0).toInt(), 0);
        QFile file(written.first().at(1).toString());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray table = file.readAll();
        const int rows = table.count("\r\n") - 1;
        QVERIFY(rows >= 600 && rows <= 602);
        QCOMPARE(table.count("refused -7: move (panel)"), 1);
    }

    void thoseThatFollowSoonShareAFile()
    {
        QSignalSpy written(m_files.get(), &IncidentFiles::signal_written);
        refuse(0);
        refuse(1);
        QTRY_COMPARE(written.size(), 2); // one line for each axis
        QCOMPARE(written.at(0).at(1), written.at(1).at(1));
        QCOMPARE(names().size(), 1);
        refuse(0);
        QTRY_COMPARE(written.size(), 3);
        QCOMPARE(names().size(), 2);
    }

    void keepsTheNewestAndNothingUnfinished()
    {
        QVERIFY(folder().mkpath(QStringLiteral(".")));
        for (int k = 10; k < 40; ++k) {
            QFile old(folder().filePath(QStringLiteral("incident-2001-01-01-0000%1-000.csv").arg(k)));
            QVERIFY(old.open(QIODevice::WriteOnly));
        }
        QFile stray(folder().filePath(QStringLiteral("incident-2001-01-01-000000-000.csv.Xy12Ab")));
        QVERIFY(stray.open(QIODevice::WriteOnly));
        stray.close(); // Windows removes no file that is open
        QSignalSpy written(m_files.get(), &IncidentFiles::signal_written);
        refuse();
        QVERIFY(written.wait());
        QCOMPARE(names().size(), int(IncidentFiles::Most));
        QCOMPARE(names().first(), QStringLiteral("incident-2001-01-01-000021-000.csv"));
        QCOMPARE(folder().filePath(names().last()), written.first().at(1).toString());
    }

    void saysWhyNothingCouldBeWritten()
    {
        QFile inTheWay(folder().path());
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        QSignalSpy failed(m_files.get(), &IncidentFiles::signal_failed);
        refuse();
        QVERIFY(failed.wait());
        QVERIFY(!failed.first().at(1).toString().isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_IncidentFiles)
#include "tst_IncidentFiles.moc"

// SPDX-License-Identifier: MIT
#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "session/ParameterHistory.h"
#include "session/SequenceRunner.h"
#include "shell/Scenario.h"

#include <QTemporaryDir>

namespace {

constexpr int device = 1001;

using Why = ParameterSnapshot::Why;

} // namespace

class tst_ParameterHistory : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        play({{device, "A", {{'w', "LIN-100"}, {'b'}, {'w', "ROT-60", 1}}}});
        m_folder = std::make_unique<QTemporaryDir>();
        m_session = ControlSession::instance();
        begin();
        QCOMPARE(m_session->connectTo({device, "SIM-A"}), device);
        m_session->beginSetUp();
    }
    void cleanup()
    {
        simulator::clearFaults();
        simulator::releaseHung();
        m_history.reset();
        m_session.reset();
        QVERIFY(SerialComDev::endThread(5000));
        QCOMPARE(QString::fromStdString(simulator::overlap()), QString());
    }

    void keepsASnapshotOfEachAxisThatBecomesKnown()
    {
        m_session->setUpAxis(0);
        m_session->setUpAxis(1); // nothing that identifies itself
        m_session->setUpAxis(2);
        QTRY_COMPARE(m_kept.size(), 2);
        QCOMPARE(m_kept.at(1).axis, 2);
        QCOMPARE(m_kept.at(1).why, ParameterSnapshot::Connected);
        QCOMPARE(m_kept.at(1).controller, QStringLiteral("SIM-A"));
        QCOMPARE(QByteArray(m_kept.at(1).params->modelName), QByteArray("ROT-60"));
        QCOMPARE(m_kept.at(1).compensation, std::optional<bool>(false));
        QVERIFY(m_kept.at(1).positive && m_kept.at(1).negative);
        QVERIFY(qAbs(m_kept.at(1).time.secsTo(QDateTime::currentDateTimeUtc())) < 60);
        m_session->addAxis(m_session->axis(0)->description()); // known already
        for (const simulator::Call &call : simulator::journal()) {
            if (call.function == "getPositivePosConpen")
                QVERIFY(call.thread != std::this_thread::get_id());
        }
        // It is there for the next run of the program.
        begin();
        m_history->load();
        QTRY_COMPARE(m_loaded.size(), 2);
        QCOMPARE(m_kept.size(), 0);
    }

    void keepsASnapshotAfterEachWrite_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("kept");
        QTest::newRow("parameters") << 0 << 1;
        QTest::newRow("model name") << 1 << 1;
        QTest::newRow("compensation, from the settings") << 2 << 1;
        QTest::newRow("a library call of the console's") << 3 << 1;
        QTest::newRow("a write that is refused") << 4 << 0;
    }

    void keepsASnapshotAfterEachWrite()
    {
        QFETCH(int, kind);
        QFETCH(int, kept);
        const auto worker = SerialComDev::instance();
        MotorParams params = {};
        QCOMPARE(worker->getMotorParams(0, params), 0);
        if (kind == 4)
            simulator::failCall("setMotorParams", -7);
        params.pulseOneCircle = 1234;
        if (kind == 0 || kind == 4)
            worker->setMotorParams(0, params);
        else if (kind == 1)
            worker->setMotorModelName(0, QStringLiteral("OTHER"));
        else if (kind == 2)
            emit worker->signal_setPosConpenEnable(0, true);
        else
            worker->noteParametersWritten(0);
        QTRY_COMPARE(m_kept.size(), kept);
        QCoreApplication::sendPostedEvents(m_history.get());
        m_history->keep(2, ParameterSnapshot::ByHand); // answered behind what else there may be
        QTRY_COMPARE(m_kept.size(), kept + 1);
        QCOMPARE(m_kept.constLast().axis, 2);
        if (kept == 0)
            return;
        QCOMPARE(m_kept.constFirst().why, ParameterSnapshot::Written);
        if (kind == 0)
            QCOMPARE(m_kept.constFirst().params->pulseOneCircle, 1234U);
        if (kind == 2)
            QCOMPARE(m_kept.constFirst().compensation, std::optional<bool>(true));
    }

    void aWriteDescribesTheAxisAgain()
    {
        MotorParams params = {};
        QCOMPARE(SerialComDev::instance()->getMotorParams(0, params), 0);
        const auto axis = ControlSession::instance()->addAxis(describe(0, QStringLiteral("LIN-100"), params));
        QTRY_COMPARE(m_kept.size(), 1);
        params.maxPos -= 1;
        SerialComDev::instance()->setMotorParams(0, params);
        QTRY_COMPARE(m_kept.size(), 2);
        QCOMPARE(axis->currentDescription().maxPos, params.maxPos);
        QCOMPARE(axis->description().maxPos, params.maxPos + 1); // by which a panel works
    }

    void namesADamagedFileThatAWriteHasFound()
    {
        QVERIFY(QDir().mkpath(path()));
        QFile file(path() + QStringLiteral("/SIM-A-Axis1.json"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("{\"format\":") > 0);
        file.close();
        m_session->setUpAxis(0);
        QTRY_COMPARE(m_kept.size(), 1);
        const QSignalSpy loaded(m_history.get(), &ParameterHistory::signal_loaded);
        m_history->load();
        QTRY_COMPARE(loaded.size(), 1);
        const QStringList damaged = loaded.first().at(1).toStringList();
        QCOMPARE(damaged.size(), 1);
        QVERIFY2(QFile::exists(damaged.first()), qPrintable(damaged.first()));
        // From then on at once.
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.close();
        m_history->keep(0, ParameterSnapshot::ByHand);
        QTRY_COMPARE(loaded.size(), 2);
        QCOMPARE(loaded.at(1).at(1).toStringList().size(), 1);
    }

    void saysWhenItIsAskedThatSomethingIsNotSaved()
    {
        QFile inTheWay(path());
        QVERIFY(inTheWay.open(QIODevice::WriteOnly));
        m_session->setUpAxis(0);
        QTRY_COMPARE(m_kept.size(), 1);
        const QSignalSpy failed(m_history.get(), &ParameterHistory::signal_saveFailed);
        m_history->load();
        QTRY_COMPARE(m_loaded.size(), 1);
        QCOMPARE(failed.size(), 1);
    }

    void marksWhatCannotBeReadAsUnknown()
    {
        simulator::failAlways("getMotorParams", -9);
        simulator::failAlways("getNegativePosConpen", -9);
        m_history->keep(0, ParameterSnapshot::ByHand);
        QTRY_COMPARE(m_kept.size(), 1);
        QVERIFY(!m_kept.first().params && !m_kept.first().negative);
        QVERIFY(m_kept.first().compensation && m_kept.first().positive);
    }

    /** While the worker is held up, commands are asked for behind the reading: it lets all of them go first. */
    void readsBehindCommands()
    {
        simulator::hangCall("getCurrentPos");
        emit SerialComDev::instance()->signal_getCurrentPos(0);
        QVERIFY(simulator::waitUntilHanging(5000));
        simulator::clearJournal();
        m_history->readNow(0);
        const auto worker = SerialComDev::instance();
        emit worker->signal_setSpeedParams(0, 10, 5);
        emit worker->signal_startMotor(0, MOVE_CODE_DRIVE_POSITIVE);
        emit worker->signal_stopMotor(0);
        simulator::releaseHung();
        QTRY_COMPARE(m_now.size(), 1);
        std::string order;
        for (const simulator::Call &call : simulator::journal())
            order += call.function + ' ';
        QCOMPARE(
            QString::fromStdString(order),
            QStringLiteral("getCurrentPos setSpeed setAcceleration startDrive stopRuning getMotorParams "
                           "getPosConpenEnable getPositivePosConpen getNegativePosConpen "));
        QCOMPARE(m_kept.size(), 0);
    }

    void restoresASnapshotAndReadsItBack()
    {
        const auto worker = SerialComDev::instance();
        m_history->keep(0, ParameterSnapshot::ByHand);
        QTRY_COMPARE(m_kept.size(), 1);
        const ParameterSnapshot wanted = m_kept.first();
        MotorParams params = *wanted.params;
        params.pulseOneCircle += 200;
        QCOMPARE(worker->setMotorParams(0, params), 0);
        const double pairs[] = {0, 0.5};
        QCOMPARE((*LibraryLock()).setNegativePosConpen(device, 0, pairs, 1), 0);
        emit worker->signal_setPosConpenEnable(0, !*wanted.compensation);
        QTRY_VERIFY(m_kept.size() >= 2 && m_kept.constLast().compensation != wanted.compensation);
        m_kept.clear();

        m_history->restore(wanted);
        QVERIFY(m_history->isRestoring());
        QTRY_COMPARE(m_restored.size(), 1);
        QCOMPARE(m_restored.first().outcome, ParameterRestore::Done);
        QCOMPARE(m_restored.first().missing, QVector<int>());
        QVERIFY(m_restored.first().after.hasSameValues(wanted));
        QTRY_COMPARE(m_kept.size(), 2);
        QCOMPARE(m_kept.at(0).why, ParameterSnapshot::BeforeRestore);
        QCOMPARE(m_kept.at(0).params->pulseOneCircle, params.pulseOneCircle);
        QCOMPARE(m_kept.at(1).why, ParameterSnapshot::Written);
        QVERIFY(m_kept.at(1).hasSameValues(wanted));
        QVERIFY(!m_history->isRestoring());
    }

    void tellsWhatARestoreCouldNotChange()
    {
        m_history->keep(0, ParameterSnapshot::ByHand);
        QTRY_COMPARE(m_kept.size(), 1);
        ParameterSnapshot wanted = m_kept.first();
        wanted.params->dispOneCircle += 1;
        wanted.compensation = !*wanted.compensation;
        simulator::failCall("setMotorParams", -7);
        m_history->restore(wanted);
        QTRY_COMPARE(m_restored.size(), 1);
        QCOMPARE(m_restored.first().status, -7);
        QCOMPARE(m_restored.first().missing.size(), 1);
        QCOMPARE(parameterFields()[m_restored.first().missing.first()].key, "lead");
    }

    void writesNothingUnlessTheSnapshotBeforeIsKept()
    {
        m_history->keep(0, ParameterSnapshot::ByHand);
        QTRY_COMPARE(m_kept.size(), 1);
        ParameterSnapshot wanted = m_kept.first();
        wanted.params->dispOneCircle += 1;
        QVERIFY(QDir(path()).removeRecursively());
        QFile inItsPlace(path());
        QVERIFY(inItsPlace.open(QIODevice::WriteOnly));
        m_history->restore(wanted);
        QTRY_COMPARE(m_restored.size(), 1);
        QCOMPARE(m_restored.first().outcome, ParameterRestore::NotKept);
        simulator::failAlways("getMotorParams", -9);
        m_history->restore(wanted);
        QTRY_COMPARE(m_restored.size(), 2);
        QCOMPARE(m_restored.last().outcome, ParameterRestore::NotRead);
        QCOMPARE(simulator::callCount("setMotorParams"), 0);
        // What could not be saved is saved once it can be.
        simulator::clearFaults();
        QVERIFY(inItsPlace.remove());
        m_history->keep(0, ParameterSnapshot::ByHand);
        m_history->load();
        QTRY_COMPARE(m_kept.size(), 3);
        m_history->load();
        QTRY_COMPARE(m_loaded.size(), 2);
    }

    void restoresNothingToAnotherController()
    {
        m_history->keep(0, ParameterSnapshot::ByHand);
        QTRY_COMPARE(m_kept.size(), 1);
        ParameterSnapshot wanted = m_kept.first();
        wanted.controller = QStringLiteral("SIM-B");
        QVERIFY(!m_history->isConnected(wanted));
        m_history->restore(wanted);
        QVERIFY(!m_history->isRestoring());
    }

    void restoresNothingToAnAxisOfASequence()
    {
        m_session->setUpAxis(0); // of which a snapshot is kept
        QTRY_COMPARE(m_kept.size(), 1);
        ParameterSnapshot wanted = m_kept.first();
        wanted.params->dispOneCircle += 1;
        SequenceStep step;
        step.kind = SequenceStep::MoveTo;
        step.value = 50;
        SequenceRunner &sequences = m_session->sequences();
        emit SerialComDev::instance()->signal_getCurrentPos(0);
        emit SerialComDev::instance()->signal_getDevState(0);
        QVERIFY(!m_session->readJoystick());
        QTRY_VERIFY(sequences.setting().axes.contains(0));
        QVERIFY(sequences.run({QStringLiteral("Far"), {step}}, {}));
        m_history->restore(wanted);
        QTRY_COMPARE(m_restored.size(), 1);
        QCOMPARE(m_restored.first().outcome, ParameterRestore::InUse);
        QCOMPARE(simulator::callCount("setMotorParams"), 0);
        QVERIFY(sequences.isActive());
        sequences.stop();
    }

    void givesUpWhenTheControllerIsClosed()
    {
        m_history->keep(0, ParameterSnapshot::ByHand);
        QTRY_COMPARE(m_kept.size(), 1);
        m_history->restore(m_kept.first());
        QVERIFY(m_session->disconnectController());
        QTRY_COMPARE(m_restored.size(), 1);
        QCOMPARE(m_restored.first().outcome, ParameterRestore::Vanished);
    }

    void exportsAndImports()
    {
        m_history->keep(0, ParameterSnapshot::ByHand);
        QTRY_COMPARE(m_kept.size(), 1);
        const QString file = m_folder->filePath(QStringLiteral("exported.json"));
        QSignalSpy exported(m_history.get(), &ParameterHistory::signal_exported);
        m_history->exportTo(file, m_kept);
        QTRY_COMPARE(exported.size(), 1);
        QVERIFY(exported.first().at(1).toBool());
        m_history.reset();
        QVERIFY(QDir(path()).removeRecursively());
        begin();
        QSignalSpy imported(m_history.get(), &ParameterHistory::signal_imported);
        m_history->importFrom(file);
        QTRY_COMPARE(m_loaded.size(), 1);
        QCOMPARE(imported.first().at(0).toInt(), 1);
        QVERIFY(imported.first().at(1).toBool());
        m_history->importFrom(path() + QStringLiteral("/lock"));
        QTRY_COMPARE(imported.size(), 2);
        QCOMPARE(imported.last().at(0).toInt(), -1);
        // Of a file that was cut off, what is whole.
        QVector<ParameterSnapshot> two{m_loaded.first(), m_loaded.first()};
        two[0].axis = 1;
        const QByteArray text = ParameterStore::toText(two);
        QFile damaged(m_folder->filePath(QStringLiteral("damaged.json")));
        QVERIFY(damaged.open(QIODevice::WriteOnly));
        damaged.write(text.left(text.size() - 40));
        damaged.close();
        m_history->importFrom(damaged.fileName());
        QTRY_COMPARE(imported.size(), 3);
        QCOMPARE(imported.last(), (QVariantList{1, false, true}));
        QTRY_COMPARE(m_loaded.size(), 2);
        m_history->exportTo(QStringLiteral("/nowhere/at/all"), m_loaded);
        QSignalSpy failed(m_history.get(), &ParameterHistory::signal_exported);
        QTRY_COMPARE(failed.size(), 1);
        QVERIFY(!failed.first().at(1).toBool());
    }

private:
    QString path() const { return m_folder->filePath(QStringLiteral("history")); }
    void begin()
    {
        m_kept.clear();
        m_loaded.clear();
        m_now.clear();
        m_restored.clear();
        m_history.reset();
        m_history = std::make_unique<ParameterHistory>(path());
        connect(
            m_history.get(), &ParameterHistory::signal_kept, this, [this](const auto &each) { m_kept.append(each); });
        connect(
            m_history.get(), &ParameterHistory::signal_readNow, this, [this](const auto &each) { m_now.append(each); });
        connect(m_history.get(), &ParameterHistory::signal_restored, this, [this](const auto &each) {
            m_restored.append(each);
        });
        connect(m_history.get(), &ParameterHistory::signal_loaded, this, [this](const auto &each) { m_loaded = each; });
    }

    QSharedPointer<ControlSession> m_session;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ParameterHistory> m_history;
    QVector<ParameterSnapshot> m_kept;
    QVector<ParameterSnapshot> m_loaded;
    QVector<ParameterSnapshot> m_now;
    QVector<ParameterRestore> m_restored;
};

QTEST_GUILESS_MAIN(tst_ParameterHistory)
#include "tst_ParameterHistory.moc"

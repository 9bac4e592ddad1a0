// SPDX-License-Identifier: MIT
#include "session/ParameterStore.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <cstring>

namespace {

ParameterSnapshot snapshotAt(int minute, const QString &controller = QStringLiteral("SIM/A"), int axis = 0)
{
    ParameterSnapshot snapshot;
    snapshot.time = QDateTime(QDate(2026, 3, 1), QTime(0, 0), Qt::UTC).addSecs(60 * minute);
    snapshot.controller = controller;
    snapshot.axis = axis;
    snapshot.why = ParameterSnapshot::Written;
    MotorParams params = {};
    std::strcpy(params.modelName, "LIN-100");
    std::strcpy(params.optOrder, "NZP");
    params.pulseOneCircle = 4000000000U;
    params.dispOneCircle = 0.1;
    params.restoreSpeed = 5;
    params.returnTrip = -7;
    params.maxPos = minute; // each one differs from the one before it
    snapshot.params = params;
    snapshot.compensation = true;
    snapshot.positive = ParameterSnapshot::Pairs{0, 0.1, 10, 10.2};
    snapshot.negative = ParameterSnapshot::Pairs();
    return snapshot;
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

} // namespace

class tst_ParameterStore : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_store = std::make_unique<ParameterStore>(m_folder->filePath(QStringLiteral("history")));
    }

    void givesBackWhatItWasGiven()
    {
        ParameterSnapshot unknown = snapshotAt(2);
        unknown.params.reset();
        unknown.compensation.reset();
        unknown.positive.reset();
        ParameterSnapshot noNumber = snapshotAt(3);
        noNumber.params->maxSpeed = std::nan("");
        const QVector<ParameterSnapshot> given{snapshotAt(1), unknown, noNumber, snapshotAt(4, QString(), 2)};
        QVERIFY(m_store->add(given));
        const ParameterStore::Contents found = m_store->load();
        QCOMPARE(found.damaged, QStringList());
        QCOMPARE(found.snapshots.size(), given.size());
        for (const ParameterSnapshot &snapshot : given) {
            const auto same = std::find_if(found.snapshots.begin(), found.snapshots.end(), [&](const auto &each) {
                return each.isSame(snapshot);
            });
            QVERIFY(same != found.snapshots.end());
            QCOMPARE(same->toJson(), snapshot.toJson());
            QVERIFY(same->hasSameValues(snapshot));
            QCOMPARE(same->params.has_value(), snapshot.params.has_value());
        }
        const auto &record = *found.snapshots.constLast().params;
        QCOMPARE(record.pulseOneCircle, 4000000000U);
        QCOMPARE(record.returnTrip, int16_t(-7));
        QVERIFY(m_store->add(given)); // once more
        QCOMPARE(m_store->load().snapshots.size(), given.size());
    }

    void tellsWhichFieldsDiffer()
    {
        ParameterSnapshot one = snapshotAt(1);
        ParameterSnapshot other = one;
        QCOMPARE(differences(one, other), QVector<int>());
        other.params->dispOneCircle = 0.2;
        other.compensation.reset();
        (*other.positive)[3] = 10.3;
        QStringList keys;
        const QVector<int> different = differences(one, other);
        for (const int field : different)
            keys.append(QLatin1String(parameterFields()[field].key));
        QCOMPARE(
            keys,
            (QStringList{QStringLiteral("lead"), QStringLiteral("compensation"), QStringLiteral("positiveTable")}));
        QCOMPARE(lengthUnitOf(one), QStringLiteral("mm"));
        one.params->moveType = 1;
        QCOMPARE(lengthUnitOf(one), QStringLiteral("°"));
    }

    void thinsTheOldest()
    {
        QVector<ParameterSnapshot> many;
        for (int k = 0; k < ParameterStore::MostOfAnAxis; ++k)
            many.append(snapshotAt(k));
        many.append(snapshotAt(1, QStringLiteral("SIM/A"), 1)); // another axis does not count
        QVERIFY(m_store->add(many));
        QCOMPARE(m_store->load().snapshots.size(), many.size());
        QVERIFY(m_store->add({snapshotAt(ParameterStore::MostOfAnAxis)}));
        const QVector<ParameterSnapshot> kept = m_store->load().snapshots;
        QCOMPARE(kept.size(), 751 + 1); // 250 of the older 500
        QCOMPARE(kept.constFirst().time, many.constFirst().time);
        QVERIFY(std::any_of(kept.begin(), kept.end(), [](const auto &each) {
            return each.isSame(snapshotAt(ParameterStore::MostOfAnAxis));
        }));
    }

    void repetitionsGoFirst()
    {
        QVector<ParameterSnapshot> many;
        for (int k = 0; k <= ParameterStore::MostOfAnAxis; ++k) {
            many.append(snapshotAt(k));
            if (k % 100 == 1)
                many.last().params = many.at(k - 1).params;
        }
        QVERIFY(m_store->add(many));
        const QVector<ParameterSnapshot> kept = m_store->load().snapshots;
        QCOMPARE(kept.size(), ParameterStore::MostOfAnAxis + 1 - 5); // the five among the older half
        for (int k = 1; k < 490; ++k)
            QVERIFY(!kept.at(k).hasSameValues(kept.at(k - 1)));
    }

    void keepsADamagedFileAsideAndReadsTheRest_data()
    {
        QTest::addColumn<QString>("damage");
        QTest::addColumn<int>("left"); // of three
        for (const char *state : {"empty", "random bytes", "a folder"})
            QTest::newRow(state) << QString::fromLatin1(state) << 0;
        QTest::newRow("cut") << QStringLiteral("cut") << 2;
        QTest::newRow("a line") << QStringLiteral("a line") << 2;
        QTest::newRow("a value out of range") << QStringLiteral("a value") << 2;
    }

    void keepsADamagedFileAsideAndReadsTheRest()
    {
        QFETCH(QString, damage);
        QFETCH(int, left);
        QVERIFY(m_store->add({snapshotAt(1), snapshotAt(2), snapshotAt(3), snapshotAt(4, QStringLiteral("B"))}));
        const QString path = m_folder->filePath(QStringLiteral("history/SIM%2FA-Axis1.json"));
        QByteArray text = read(path);
        QVERIFY(!text.isEmpty());
        const int second = text.indexOf('\n', text.indexOf('\n') + 1) + 1;
        if (damage == QLatin1String("empty"))
            text.clear();
        else if (damage == QLatin1String("random bytes"))
            text = QByteArray(5000, '\xb7');
        else if (damage == QLatin1String("cut"))
            text.chop(40);
        else if (damage == QLatin1String("a line"))
            text.replace(second, 10, "}}}}}}}}}}");
        else
            text.replace(text.indexOf("\"stageType\":0", second), 13, "\"stageType\":70000");
        QVERIFY(QFile::remove(path));
        if (damage == QLatin1String("a folder"))
            QVERIFY(QDir().mkpath(path + QStringLiteral("/inner")));
        else
            write(path, text);

        const ParameterStore::Contents found = m_store->load();
        QCOMPARE(found.snapshots.size(), left + 1);
        QCOMPARE(found.damaged.size(), 1);
        QVERIFY(found.damaged.first() != path);
        if (damage != QLatin1String("a folder"))
            QCOMPARE(read(found.damaged.first()), text);
        QCOMPARE(m_store->load().damaged, QStringList()); // told once
        QVERIFY(m_store->add({snapshotAt(9)}));
        QCOMPARE(m_store->load().snapshots.size(), left + 2);
    }

    void tellsThatAFolderCannotBeWritten()
    {
        write(m_folder->filePath(QStringLiteral("history")), "in its place");
        QVERIFY(!m_store->add({snapshotAt(1)}));
        QCOMPARE(m_store->load().snapshots.size(), 0);
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ParameterStore> m_store;
};

QTEST_GUILESS_MAIN(tst_ParameterStore)
#include "tst_ParameterStore.moc"

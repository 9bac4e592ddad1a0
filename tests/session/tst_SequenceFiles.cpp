// SPDX-License-Identifier: MIT
#include "session/SequenceFiles.h"
#include "session/SequenceRunner.h"

#include <QTemporaryDir>
#include <QtTest>

#include <random>

namespace {

using Fault = SequenceFileFault;
using Step = SequenceStep;

/** One of each kind, with everything in it that may be. */
SequenceDocument document()
{
    SequenceDocument document;
    document.positions = {
        {QStringLiteral("Load, \"left\""), {{0, 0.125}, {2, -3}}}, {QStringLiteral("样品"), {{1, 90}}}};
    document.sequence.name = QStringLiteral("Turn and measure");
    const auto step = [](Step::Kind kind, int axis, double value, double speed, double wait, const QString &text) {
        Step step;
        step.kind = kind;
        step.axis = axis;
        step.value = value;
        step.speed = speed;
        step.wait = wait;
        step.text = text;
        return step;
    };
    Step repeat;
    repeat.kind = Step::Repeat;
    repeat.from = 1;
    repeat.count = 3;
    document.sequence.steps = {
        step(Step::Home, Step::AllAxes, 0, 0, 0, {}),
        step(Step::GoTo, 0, 0, 0, 2.5, QStringLiteral("样品")),
        step(Step::MoveTo, 1, -12.345678, 20, 0.5, {}),
        step(Step::MoveBy, 2, 3.5, 0, 0, {}),
        step(Step::Wait, 0, 60, 0, 0, {}),
        step(Step::Ask, 0, 0, 0, 0, QStringLiteral("Change the sample,\nthen go on: \"ready\"?")),
        step(Step::SetSpeed, 1, 0.5, 0, 0, {}),
        step(Step::Home, 2, 0, 0, 1, {}),
        repeat};
    return document;
}

} // namespace

class tst_SequenceFiles : public QObject
{
    Q_OBJECT

private slots:
    void givesBackWhatWasWritten()
    {
        const SequenceDocument written = document();
        Fault fault;
        QCOMPARE(*SequenceFiles::fromJson(SequenceFiles::toJson(written), &fault), written);
        QCOMPARE(
            *SequenceFiles::stepsFromCsv(SequenceFiles::stepsToCsv(written.sequence), &fault), written.sequence.steps);
        QCOMPARE(
            *SequenceFiles::positionsFromCsv(SequenceFiles::positionsToCsv(written.positions), &fault),
            written.positions);
        QCOMPARE(int(fault.kind), int(Fault::None));
    }
    void noCellIsAFormula_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("cell");
        for (const char *name : {"=1+1", "+a", "-a", "@SUM(1)", "''", "'=1"})
            QTest::newRow(name) << name << QByteArray("'") + name;
        for (const char *name : {"-3", "'", "'a'", "a=b"})
            QTest::newRow(name) << name << QByteArray(name);
        QTest::newRow("link") << "=HYPERLINK(\"x\",1)" << QByteArray("\"'=HYPERLINK(\"\"x\"\",1)\"");
    }
    void noCellIsAFormula()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, cell);
        const Positions written{{name, {{0, -1.5}}}};
        const QByteArray text = SequenceFiles::positionsToCsv(written);
        QCOMPARE(text, QByteArray("name,Axis1\r\n") + cell + ",-1.5\r\n");
        Fault fault;
        QCOMPARE(*SequenceFiles::positionsFromCsv(text, &fault), written);
    }
    void readsWhatASpreadsheetWrites()
    {
        Fault fault;
        const auto positions =
            SequenceFiles::positionsFromCsv("\xEF\xBB\xBFname,Axis2,Axis1\n\"A\", 1.5 ,\n\n B ,,2\n", &fault);
        QVERIFY(positions);
        QCOMPARE(*positions, (Positions{{QStringLiteral("A"), {{1, 1.5}}}, {QStringLiteral("B"), {{0, 2}}}}));
    }

    void refusesWithLineAndReason_data()
    {
        QTest::addColumn<int>("format"); // 0 JSON, 1 steps, 2 positions
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("line");
        const auto json = [](const char *name, const QByteArray &positions, const QByteArray &steps, Fault::Kind kind,
                             int line) {
            QTest::newRow(name) << 0
                                << QByteArray(
                                       "{\"format\":\"mover sequence\",\"version\":1,\"positions\":[" + positions +
                                       "],\"steps\":[" + steps + "]}")
                                << int(kind) << line;
        };
        const auto csv = [](const char *name, int format, const QByteArray &lines, Fault::Kind kind, int line) {
            const QByteArray head = format == 1 ? "step,axis,value,speed,wait,text,from,count\n" : "name,Axis1,Axis2\n";
            QTest::newRow(name) << format << QByteArray(head + lines) << int(kind) << line;
        };
        QTest::newRow("JSON: nothing") << 0 << QByteArray() << int(Fault::NotSuchFile) << 1;
        QTest::newRow("JSON: cut") << 0 << QByteArray("{\n\"format\":\n") << int(Fault::NotSuchFile) << 3;
        QTest::newRow("JSON: something else")
            << 0 << QByteArray("{\"format\":\"other\"}") << int(Fault::NotSuchFile) << 0;
        QTest::newRow("JSON: newer") << 0 << QByteArray("{\"format\":\"mover sequence\",\"version\":2}")
                                     << int(Fault::Newer) << 0;
        json("JSON: unknown step", "", R"({"step":"wait","value":1},{"step":"dance"})", Fault::Step, 2);
        json("JSON: no number", "", R"({"step":"wait","value":"soon"})", Fault::Number, 1);
        json("JSON: no value", "", R"({"step":"move to","axis":"Axis1"})", Fault::Number, 1);
        json("JSON: no axis", "", R"({"step":"move to","axis":"Axis9","value":1})", Fault::Axis, 1);
        json("JSON: all axes to one place", "", R"({"step":"move to","axis":"all","value":1})", Fault::Axis, 1);
        json("JSON: not an object", "", "7", Fault::Step, 1);
        json("JSON: position without a name", R"({"axes":{"Axis1":1}})", "", Fault::Name, 1);
        json("JSON: position twice", R"({"name":"A"},{"name":"A"})", "", Fault::Name, 2);
        json("JSON: position of no axis", R"({"name":"A","axes":{"X":1}})", "", Fault::Axis, 1);
        json("JSON: position of no number", R"({"name":"A","axes":{"Axis1":"x"}})", "", Fault::Number, 1);
        QTest::newRow("steps: something else") << 1 << QByteArray("time,axis\n") << int(Fault::NotSuchFile) << 0;
        csv("steps: a column too few", 1, "wait,,1,,,,\n", Fault::Column, 2);
        csv("steps: a column too many", 1, "wait,,1,,,,,,\n", Fault::Column, 2);
        csv("steps: behind a text of two lines", 1, "ask,,,,,\"a\nb\",,\nwait,,x,,,,,\n", Fault::Number, 4);
        csv("steps: no value", 1, "move by,Axis1,,,,,,\n", Fault::Number, 2);
        csv("steps: infinite", 1, "wait,,inf,,,,,\n", Fault::Number, 2);
        csv("steps: half a pass", 1, "repeat,,,,,,1,1.5\n", Fault::Number, 2);
        csv("steps: too many", 1, QByteArray("wait,,1,,,,,\n").repeated(SequenceFiles::MostSteps + 1), Fault::TooMany,
            SequenceFiles::MostSteps + 2);
        QTest::newRow("positions: unknown axis") << 2 << QByteArray("name,Axis1,Y\n") << int(Fault::Axis) << 1;
        QTest::newRow("positions: an axis twice") << 2 << QByteArray("name,Axis1,Axis1\n") << int(Fault::Axis) << 1;
        csv("positions: no number", 2, "A,1,2\nB,1,two\n", Fault::Number, 3);
        csv("positions: no name", 2, " ,1,2\n", Fault::Name, 2);
        csv("positions: a name twice", 2, "A,1,2\nA,1,2\n", Fault::Name, 3);
        csv("positions: a column too few", 2, "A,1\n", Fault::Column, 2);
    }
    void refusesWithLineAndReason()
    {
        QFETCH(int, format);
        QFETCH(QByteArray, text);
        Fault fault;
        if (format == 0)
            QVERIFY(!SequenceFiles::fromJson(text, &fault));
        else if (format == 1)
            QVERIFY(!SequenceFiles::stepsFromCsv(text, &fault));
        else
            QVERIFY(!SequenceFiles::positionsFromCsv(text, &fault));
        QTEST(int(fault.kind), "kind");
        QTEST(fault.line, "line");
    }
    /** Whatever stands in a file: it is read or refused. */
    void bearsAnything()
    {
        std::mt19937 random(1);
        const QByteArray texts[] = {
            SequenceFiles::toJson(document()), SequenceFiles::stepsToCsv(document().sequence),
            SequenceFiles::positionsToCsv(document().positions)};
        for (int k = 0; k < 3000; ++k) {
            QByteArray text = texts[k % 3];
            for (unsigned change = 0; change < 1 + random() % 4; ++change)
                text[int(random() % unsigned(text.size()))] = char(random() % 256);
            Fault fault;
            const bool isRead = k % 3 == 0   ? SequenceFiles::fromJson(text, &fault).has_value()
                                : k % 3 == 1 ? SequenceFiles::stepsFromCsv(text, &fault).has_value()
                                             : SequenceFiles::positionsFromCsv(text, &fault).has_value();
            QCOMPARE(fault.kind == Fault::None, isRead);
        }
    }

    void writesTheReportOfARun()
    {
        SequenceRecord done;
        done.line = 2;
        done.pass = 3;
        done.begin = QDateTime(QDate(2026, 11, 23), QTime(12, 0, 0, 250), Qt::UTC);
        done.end = done.begin.addMSecs(1500);
        done.reached = {{1, -12.346}};
        SequenceRecord ended = done;
        ended.line = 0;
        ended.isDone = false;
        ended.reached = {{0, 5}};
        QCOMPARE(
            SequenceFiles::recordsToCsv(document().sequence, {done, ended}),
            QByteArray("line,pass,step,begin,end,done,Axis1,Axis2\r\n"
                       "3,3,move to,2026-11-23T12:00:00.250Z,2026-11-23T12:00:01.750Z,yes,,-12.346\r\n"
                       "1,3,home,2026-11-23T12:00:00.250Z,2026-11-23T12:00:01.750Z,no,5,\r\n"));
    }

    void keepsADocumentForEachController()
    {
        const QTemporaryDir folder;
        const SequenceStore store(folder.filePath(QStringLiteral("sequences")));
        QVERIFY(!store.isReadOnly());
        QVERIFY(store.load(QStringLiteral("A/1")).document == SequenceDocument());
        QVERIFY(store.save(QStringLiteral("A/1"), document()));
        QVERIFY(store.load(QStringLiteral("A/1")).document == document());
        QVERIFY(store.load(QStringLiteral("A/2")).document == SequenceDocument());
        // Another program reads only.
        const SequenceStore second(folder.filePath(QStringLiteral("sequences")));
        QVERIFY(second.isReadOnly());
        QVERIFY(second.load(QStringLiteral("A/1")).document == document());
        QVERIFY(!second.save(QStringLiteral("A/1"), {}));
        QVERIFY(store.load(QStringLiteral("A/1")).document == document());
    }
    void keepsADamagedFileAside()
    {
        const QTemporaryDir folder;
        const SequenceStore store(folder.path());
        QVERIFY(store.save(QStringLiteral("A"), document()));
        QFile file(folder.filePath(QStringLiteral("A.json")));
        QVERIFY(file.resize(100));
        const SequenceStore::Contents contents = store.load(QStringLiteral("A"));
        QVERIFY(contents.document == SequenceDocument());
        QVERIFY(contents.damaged.contains(QStringLiteral("A.json.damaged-")));
        QCOMPARE(QFileInfo(contents.damaged).size(), qint64(100));
        QVERIFY(store.load(QStringLiteral("A")).damaged.isEmpty()); // told once
    }
};

QTEST_APPLESS_MAIN(tst_SequenceFiles)
#include "tst_SequenceFiles.moc"

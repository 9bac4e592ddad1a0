// SPDX-License-Identifier: MIT
#include "console/CompensationModel.h"

#include "support/English.h"

#include <QtTest>

namespace {

void fill(CompensationModel &model, int row, const QStringList &cells)
{
    for (int column = 0; column < cells.size(); ++column)
        model.setData(model.index(row, column), cells[column]);
}

QStringList rowOf(const CompensationModel &model, int row)
{
    QStringList cells;
    for (int column = 0; column < model.columnCount(); ++column)
        cells.append(model.index(row, column).data().toString());
    return cells;
}

QVector<double> valuesOf(const CompensationModel &model, CompensationModel::Direction direction)
{
    const auto pairs = model.pairs(direction);
    return QVector<double>(pairs.values.begin(), pairs.values.begin() + 2 * pairs.count);
}

CompensationModel::Pairs toPairs(std::initializer_list<double> values)
{
    CompensationModel::Pairs pairs;
    std::copy(values.begin(), values.end(), pairs.values.begin());
    pairs.count = int(values.size()) / 2;
    return pairs;
}

bool isMarked(const CompensationModel &model, int row, int column)
{
    return model.index(row, column).data(Qt::BackgroundRole).isValid();
}

} // namespace

class tst_CompensationModel : public QObject
{
    Q_OBJECT

private slots:
    void hasTenEmptyEditableRowsUnderFourHeadings()
    {
        const CompensationModel model;
        QCOMPARE(model.rowCount(), 10);
        QCOMPARE(model.columnCount(), 4);
        const QStringList headings{"+期望位置", "+实际位置", "-期望位置", "-实际位置"};
        for (int column = 0; column < 4; ++column)
            QCOMPARE(model.headerData(column, Qt::Horizontal).toString(), headings[column]);
        for (int row = 0; row < 10; ++row) {
            QCOMPARE(rowOf(model, row), (QStringList{"", "", "", ""}));
            QVERIFY(model.flags(model.index(row, 0)) & Qt::ItemIsEditable);
        }
    }
    void translatesTheHeadings()
    {
        CompensationModel model;
        const English english({{"+期望位置", "+Expected"}, {"-实际位置", "-Actual"}});
        model.retranslate();
        QCOMPARE(model.headerData(0, Qt::Horizontal).toString(), QString("+Expected"));
        QCOMPARE(model.headerData(3, Qt::Horizontal).toString(), QString("-Actual"));
    }
    void givesThePairsInTheOrderOfTheExpectedPositions()
    {
        CompensationModel model;
        fill(model, 0, {"10", "10.2", "-1", "-1.5"});
        fill(model, 1, {"-5", "-5.1"});
        fill(model, 2, {"0", "0.25"});
        QCOMPARE(valuesOf(model, CompensationModel::Positive), (QVector<double>{-5, -5.1, 0, 0.25, 10, 10.2}));
        QCOMPARE(valuesOf(model, CompensationModel::Negative), (QVector<double>{-1, -1.5}));
    }
    void ofTwoEqualExpectedPositionsTheLowerRowCounts()
    {
        CompensationModel model;
        fill(model, 3, {"10", "1"});
        fill(model, 4, {"10", "2"});
        QCOMPARE(valuesOf(model, CompensationModel::Positive), (QVector<double>{10, 2}));
    }
    void takesAllTenRows()
    {
        CompensationModel model;
        QVector<double> expected;
        for (int row = 0; row < 10; ++row) {
            fill(model, row, {QString::number(row), QString::number(row + 0.5)});
            expected << row << row + 0.5;
        }
        QCOMPARE(valuesOf(model, CompensationModel::Positive), expected);
    }
    void whatIsNoNumberIsMarkedAndCountsAsZero()
    {
        CompensationModel model;
        fill(model, 0, {"10", "ten", "x", "-3"});
        fill(model, 1, {"5", "", "nan", "1"});
        QCOMPARE(valuesOf(model, CompensationModel::Positive), (QVector<double>{5, 0, 10, 0}));
        QCOMPARE(valuesOf(model, CompensationModel::Negative), (QVector<double>{0, 1}));
        QVERIFY(!isMarked(model, 0, 0));
        QVERIFY(isMarked(model, 0, 1));
        QVERIFY(isMarked(model, 0, 2));
        QVERIFY(!isMarked(model, 0, 3));
        QVERIFY(isMarked(model, 1, 1)); // half a pair
        QVERIFY(isMarked(model, 1, 2));
        fill(model, 0, {"10", "10.5"});
        QVERIFY(!isMarked(model, 0, 1));
    }
    void anEmptyPairIsNoPairAndNotMarked()
    {
        CompensationModel model;
        fill(model, 2, {" ", "", "7", "8"});
        QCOMPARE(model.pairs(CompensationModel::Positive).count, 0);
        QCOMPARE(model.pairs(CompensationModel::Negative).count, 1);
        QVERIFY(!isMarked(model, 2, 0));
        QVERIFY(!isMarked(model, 2, 1));
    }
    void showsPairsWithSixSignificantDigitsInTheirColumns()
    {
        CompensationModel model;
        model.show(CompensationModel::Positive, toPairs({0.123456789, 1234567}));
        model.show(CompensationModel::Negative, toPairs({-1, -1.5, 0, 0.5}));
        QCOMPARE(rowOf(model, 0), (QStringList{"0.123457", "1.23457e+06", "-1", "-1.5"}));
        QCOMPARE(rowOf(model, 1), (QStringList{"", "", "0", "0.5"}));
    }
    void showsNoMoreThanItHas()
    {
        CompensationModel model;
        CompensationModel::Pairs pairs;
        pairs.count = 1000;
        model.show(CompensationModel::Negative, pairs);
        QCOMPARE(rowOf(model, 9), (QStringList{"", "", "0", "0"}));
        pairs.count = -4;
        model.show(CompensationModel::Positive, pairs);
        QCOMPARE(rowOf(model, 0), (QStringList{"", "", "0", "0"}));
        QCOMPARE(model.rowCount(), 10);
    }
    void clearsFromARowOn()
    {
        CompensationModel model;
        for (int row = 0; row < 10; ++row)
            fill(model, row, {"1", "2", "3", "4"});
        model.clearRows(1);
        QCOMPARE(rowOf(model, 0), (QStringList{"1", "2", "3", "4"}));
        for (int row = 1; row < 10; ++row)
            QCOMPARE(rowOf(model, row), (QStringList{"", "", "", ""}));
        model.clearRows(0);
        QCOMPARE(rowOf(model, 0), (QStringList{"", "", "", ""}));
    }

    void pastesTabSeparatedLines_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("lines") << "1\t2\n3\t4";
        QTest::newRow("last line ended") << "1\t2\n3\t4\n";
        QTest::newRow("Windows") << "1\t2\r\n3\t4\r\n";
        QTest::newRow("blanks around") << " 1\t2 \n3 \t 4\n";
    }
    void pastesTabSeparatedLines()
    {
        QFETCH(QString, text);
        CompensationModel model;
        fill(model, 6, {"a", "b", "c", "d"});
        model.paste(model.index(4, 1), text);
        QCOMPARE(rowOf(model, 3), (QStringList{"", "", "", ""}));
        QCOMPARE(rowOf(model, 4), (QStringList{"", "1", "2", ""}));
        QCOMPARE(rowOf(model, 5), (QStringList{"", "3", "4", ""}));
        QCOMPARE(rowOf(model, 6), (QStringList{"a", "b", "c", "d"}));
    }
    void pasteLeavesOutWhatReachesBeyondTheTable()
    {
        CompensationModel model;
        model.paste(model.index(9, 3), QStringLiteral("1\t2\t3\n4\t5\n"));
        QCOMPARE(rowOf(model, 9), (QStringList{"", "", "", "1"}));
        QCOMPARE(model.rowCount(), 10);
        QCOMPARE(model.columnCount(), 4);
    }
    void pasteKeepsWordsToBeMarked()
    {
        CompensationModel model;
        model.paste(model.index(0, 0), QStringLiteral("1,5\t2"));
        QCOMPARE(rowOf(model, 0), (QStringList{"1,5", "2", "", ""}));
        QVERIFY(isMarked(model, 0, 0));
    }
};

QTEST_MAIN(tst_CompensationModel)
#include "tst_CompensationModel.moc"

// SPDX-License-Identifier: MIT
#include "console/NumberInput.h"

#include <QtTest>

#include <limits>

class tst_NumberInput : public QObject
{
    Q_OBJECT

private slots:
    void readsRealNumbers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isNumber");
        QTest::addColumn<double>("value");
        QTest::newRow("fraction") << "2.5" << true << 2.5;
        QTest::newRow("negative") << "-170" << true << -170.0;
        QTest::newRow("exponent") << "1e-3" << true << 0.001;
        QTest::newRow("blanks around") << " 7 " << true << 7.0;
        QTest::newRow("empty") << "" << false << 0.0;
        QTest::newRow("word") << "fast" << false << 0.0;
        QTest::newRow("unit behind") << "2.5mm" << false << 0.0;
        QTest::newRow("decimal comma") << "2,5" << false << 0.0;
        QTest::newRow("infinite") << "inf" << false << 0.0;
        QTest::newRow("not a number") << "nan" << false << 0.0;
        QTest::newRow("beyond all doubles") << "1e999" << false << 0.0;
    }
    void readsRealNumbers()
    {
        QFETCH(QString, text);
        double value = 99;
        QTEST(NumberInput::read(text, value), "isNumber");
        QTEST(value, "value");
    }

    void readsIntegersInTheRangeOfTheirType()
    {
        range<int32_t>();
        range<uint32_t>();
        range<int16_t>();
        range<uint16_t>();
    }

    void marksAndUnmarksAField()
    {
        QWidget field;
        NumberInput::mark(&field, true);
        QCOMPARE(field.property("wrong").toBool(), true);
        NumberInput::mark(&field, false);
        QCOMPARE(field.property("wrong").toBool(), false);
    }

private:
    template <typename Integer>
    void range()
    {
        using Limits = std::numeric_limits<Integer>;
        const auto check = [](const QString &text, bool isNumber, qint64 expected) {
            Integer value = 99;
            QCOMPARE(NumberInput::read(text, value), isNumber);
            QCOMPARE(qint64(value), expected);
        };
        check(QString::number(Limits::max()), true, Limits::max());
        check(QString::number(Limits::min()), true, Limits::min());
        check(QString::number(qint64(Limits::max()) + 1), false, 0);
        check(QString::number(qint64(Limits::min()) - 1), false, 0);
        check(QStringLiteral("1.5"), false, 0);
        check(QString(), false, 0);
    }
};

QTEST_MAIN(tst_NumberInput)
#include "tst_NumberInput.moc"

// SPDX-License-Identifier: MIT
#include "widgets/TDoubleSpinBox.h"

#include <QLineEdit>
#include <QtTest>

class tst_TDoubleSpinBox : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void showsNoTrailingZeros_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("half") << 1.5 << "1.5";
        QTest::newRow("hundred") << 100.0 << "100";
        QTest::newRow("zero") << 0.0 << "0";
        QTest::newRow("eighth") << 0.125 << "0.125";
        QTest::newRow("negative") << -0.5 << "-0.5";
        QTest::newRow("thousand") << 1000.0 << "1000";
        QTest::newRow("ten million") << 1e7 << "10000000";
        QTest::newRow("thousandth") << 0.001 << "0.001";
        QTest::newRow("zeros inside and behind") << 100.100 << "100.1";
    }
    void showsNoTrailingZeros()
    {
        QFETCH(double, value);
        QFETCH(QString, text);
        TDoubleSpinBox field;
        field.setDecimals(3);
        field.setRange(-1e7, 1e7);
        field.setValue(1); // so that every row is a change
        field.setValue(value);
        QCOMPARE(field.text(), text);
        QCOMPARE(field.value(), value);
    }
    void formatsSixDecimals()
    {
        const TDoubleSpinBox field;
        QCOMPARE(field.textFromValue(0.1234567), QString("0.123457"));
        QCOMPARE(field.textFromValue(0.00000049), QString("0"));
    }
    void roundsToItsDecimals()
    {
        TDoubleSpinBox field;
        field.setDecimals(3);
        field.setValue(1.23456);
        QCOMPARE(field.value(), 1.235);
        QCOMPARE(field.text(), QString("1.235"));
    }
    void refusesATypedDecimalTooMany()
    {
        TDoubleSpinBox field;
        field.setDecimals(3);
        field.selectAll();
        QTest::keyClicks(&field, "1.2345");
        QCOMPARE(field.value(), 1.234);
    }
    void clipsToItsRange()
    {
        TDoubleSpinBox field;
        field.setRange(-2, 2);
        field.setValue(5);
        QCOMPARE(field.text(), QString("2"));
    }

    void readsAPointAndACommaAlike_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<double>("value");
        for (const QLocale &locale : {QLocale::c(), QLocale(QLocale::German), QLocale(QLocale::French)}) {
            const QByteArray name = locale.name().toLatin1();
            QTest::addRow("%s point", name.data()) << locale << "2.25" << 2.25;
            QTest::addRow("%s comma", name.data()) << locale << "2,25" << 2.25;
            QTest::addRow("%s negative comma", name.data()) << locale << "-0,5" << -0.5;
            // No key stroke makes two separators of it.
            QTest::addRow("%s both", name.data()) << locale << "1,2.5" << 1.25;
        }
    }
    void readsAPointAndACommaAlike()
    {
        QFETCH(QLocale, locale);
        QFETCH(QString, typed);
        QFETCH(double, value);
        QLocale::setDefault(locale);
        TDoubleSpinBox field;
        field.setDecimals(3);
        field.setRange(-1e7, 1e7);
        field.selectAll();
        QTest::keyClicks(&field, typed);
        QCOMPARE(field.value(), value);
        QTest::keyClick(&field, Qt::Key_Return);
        QCOMPARE(field.value(), value);
        QCOMPARE(field.text(), QString::number(value));
    }
    void showsAPointInEveryLocale()
    {
        for (const QLocale::Language language : {QLocale::German, QLocale::French}) {
            QLocale::setDefault(language);
            TDoubleSpinBox field;
            field.setDecimals(3);
            field.setRange(0, 1e7);
            field.setValue(12345.5);
            QCOMPARE(field.text(), QString("12345.5"));
        }
    }
};

QTEST_MAIN(tst_TDoubleSpinBox)
#include "tst_TDoubleSpinBox.moc"

// SPDX-License-Identifier: MIT
#include "widgets/TDoubleSpinBox.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QtTest>

#include <functional>
#include <memory>

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
    void refusesPastedTextThatMayMeanThousands_data()
    {
        QTest::addColumn<QString>("pasted");
        QTest::addColumn<QString>("shown"); // what the field then shows
        QTest::newRow("thousand") << "1,000"
                                  << "1000";
        QTest::newRow("negative") << "-2,250"
                                  << "1000";
        QTest::newRow("million") << "1,000,000"
                                 << "1000";
        QTest::newRow("two commas") << "1,5,5"
                                    << "1000";
        QTest::newRow("thousand with decimals") << "1,000.5"
                                                << "1000";
        QTest::newRow("with a blank") << "1,000 "
                                      << "1000";
        QTest::newRow("without the front") << ",000"
                                           << "1000";
        QTest::newRow("one digit") << "2,5"
                                   << "2.5";
        QTest::newRow("two digits") << "2,25"
                                    << "2.25";
        QTest::newRow("four digits") << "1,0005"
                                     << "1.0005";
        QTest::newRow("point and three digits") << "1.125"
                                                << "1.125";
        QTest::newRow("no comma") << "2500"
                                  << "2500";
    }
    void refusesPastedTextThatMayMeanThousands()
    {
        QFETCH(QString, pasted);
        QFETCH(QString, shown);
        struct Field : QObject {
            TDoubleSpinBox box;
            QLineEdit *edit = box.findChild<QLineEdit *>();
        };
        const std::function<void(Field &)> ways[] = {
            [&](Field &field) {
                QGuiApplication::clipboard()->setText(pasted);
                QTest::keySequence(&field.box, QKeySequence::Paste);
            },
            [&](Field &field) {
                QGuiApplication::clipboard()->setText(pasted);
                const std::unique_ptr<QMenu> menu(field.edit->createStandardContextMenu());
                for (QAction *action : menu->actions()) {
                    if (action->text().startsWith("&Paste"))
                        action->trigger();
                }
            },
            [&](Field &field) {
                QMimeData data;
                data.setText(pasted);
                field.edit->clear();
                QDropEvent drop({1, 1}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
                static_cast<QObject *>(field.edit)->event(&drop); // Qt passes on only those of a drag of its own
            },
            [&](Field &field) {
                QInputMethodEvent event;
                event.setCommitString(pasted);
                QCoreApplication::sendEvent(&field.box, &event);
            },
        };
        for (const auto &paste : ways) {
            Field field;
            field.box.setDecimals(4);
            field.box.setRange(-1e7, 1e7);
            field.box.setValue(1000);
            field.box.selectAll();
            paste(field);
            QTest::keyClick(&field.box, Qt::Key_Return);
            QCOMPARE(field.box.text(), shown);
            QCOMPARE(field.box.value(), shown.toDouble());
        }
    }
    void refusesThousandsPastedIntoAnotherText()
    {
        TDoubleSpinBox field;
        field.setDecimals(6);
        field.setRange(-1e7, 1e7);
        field.setValue(5);
        auto *edit = field.findChild<QLineEdit *>();
        edit->setCursorPosition(0);
        edit->insert("1,000"); // 1,0005 as a whole
        QCOMPARE(field.text(), QString("5"));
    }
    void takesACommaTypedInFrontOfThreeDigits()
    {
        TDoubleSpinBox field;
        field.setDecimals(3);
        field.setRange(-1e7, 1e7);
        field.setValue(1250);
        field.findChild<QLineEdit *>()->setCursorPosition(1);
        QTest::keyClick(&field, ',');
        QCOMPARE(field.text(), QString("1.250"));
        QCOMPARE(field.value(), 1.25);
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

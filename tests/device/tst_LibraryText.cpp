// SPDX-License-Identifier: MIT
#include "device/LibraryText.h"

#include <QtTest>

#include <cstring>

class tst_LibraryText : public QObject
{
    Q_OBJECT

private slots:
    void readsUpToTheFirstZero()
    {
        LibraryText text;
        std::memcpy(text.data(), "LIN\0-100", 8);
        QCOMPARE(text.toString(), QStringLiteral("LIN"));
    }
    void neverReadsPast32Bytes()
    {
        struct {
            char field[MOVER_TEXT_LENGTH];
            char behind;
        } record;
        std::memset(&record, 'x', sizeof record);
        QCOMPARE(fromLibraryText(record.field), QString(32, QLatin1Char('x')));
    }
    void takesBytesThatAreNotAscii()
    {
        LibraryText text;
        std::memset(text.data(), '\xe9', MOVER_TEXT_LENGTH);
        QCOMPARE(text.toString(), QString(32, QChar(0xe9)));
    }
    void anEmptyTextIsNotNull()
    {
        LibraryText text;
        QCOMPARE(text.toString(), QString());
        QVERIFY(!text.toString().isNull());
    }
    void isZeroedAndOf32Bytes()
    {
        LibraryText text;
        QCOMPARE(text.length(), 32);
        QCOMPARE(QByteArray(text.data(), 32), QByteArray(32, '\0'));
    }
};

QTEST_GUILESS_MAIN(tst_LibraryText)
#include "tst_LibraryText.moc"

// SPDX-License-Identifier: MIT
#include "settings/MessageCatalogue.h"

#include <QDataStream>
#include <QFile>
#include <QtTest>

namespace {

const QByteArray magic = QByteArray::fromHex("3cb86418caef9c95cd211cbf60a1bddd");

QByteArray number(quint32 value)
{
    QByteArray bytes;
    QDataStream(&bytes, QIODevice::WriteOnly) << value;
    return bytes;
}

QByteArray block(const char *tag, const QByteArray &contents)
{
    return QByteArray::fromHex(tag) + number(quint32(contents.size())) + contents;
}

const QByteArray message = block("03", "\x4e\x2d") + block("06", "text") + block("07", "Dialog") + block("08", "") +
                           QByteArray::fromHex("05") + number(0) + QByteArray::fromHex("01");

QByteArray catalogue(const QByteArray &messages, quint32 offset = 0)
{
    return magic + block("a7", "en_US") + block("42", number(1) + number(offset)) + block("69", messages);
}

} // namespace

class tst_MessageCatalogue : public QObject
{
    Q_OBJECT

private slots:
    void theShippedOneIsWhole()
    {
        QFile file(QStringLiteral(ENGLISH_CATALOGUE));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray qm = file.readAll();
        QVERIFY(MessageCatalogue::isWhole(qm));
        QVERIFY(!MessageCatalogue::isWhole(qm.chopped(1)));
    }
    void looksAtEveryLength_data()
    {
        QTest::addColumn<QByteArray>("qm");
        QTest::addColumn<bool>("isWhole");
        QTest::newRow("whole") << catalogue(message) << true;
        QTest::newRow("without messages") << magic + block("a7", "en_US") << true;
        QTest::newRow("second message") << catalogue(message + message, quint32(message.size())) << true;
        QTest::newRow("offset at the end") << catalogue(message, quint32(message.size())) << false;
        QTest::newRow("offset far beyond") << catalogue(message, 0xfffffff0) << false;
        QTest::newRow("no end") << catalogue(message.chopped(1)) << false;
        QTest::newRow("number cut off") << catalogue(message.left(3)) << false;
        QTest::newRow("obsolete number cut off") << catalogue(message.chopped(3)) << false;
        QTest::newRow("unknown part") << catalogue(block("02", "text") + message) << false;
        for (const char *tag : {"03", "06", "07", "08"})
            QTest::addRow("part %s longer than the file", tag)
                << catalogue(QByteArray::fromHex(tag) + number(100000) + message) << false;
        QTest::newRow("length below 0") << catalogue(QByteArray::fromHex("03") + number(0xffffffff) + message) << false;
        QTest::newRow("half an offset") << magic + block("42", number(1)) + block("69", message) << false;
        QTest::newRow("refers to another one") << catalogue(message) + block("96", "qtbase") << false;
        QTest::newRow("section longer than the file") << magic + QByteArray::fromHex("69") + number(9) << false;
    }
    void looksAtEveryLength()
    {
        QFETCH(QByteArray, qm);
        QFETCH(bool, isWhole);
        QCOMPARE(MessageCatalogue::isWhole(qm), isWhole);
    }
};

QTEST_APPLESS_MAIN(tst_MessageCatalogue)
#include "tst_MessageCatalogue.moc"

// SPDX-License-Identifier: MIT
#include "settings/MessageCatalogue.h"

#include <QDataStream>
#include <QFile>
#include <QRandomGenerator>
#include <QTranslator>
#include <QtTest>

#include <cstring>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#else
#include <sys/mman.h>
#endif

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

/** The table of hashes with the two bytes behind it, and the names to which it leads. */
QByteArray contexts(const char *table, const QByteArray &names)
{
    return block("2f", QByteArray::fromHex(table) + names);
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray compressed()
{
    return readFile(QStringLiteral(COMPRESSED_CATALOGUE));
}

QByteArray qtCatalogue(const char *name)
{
    return readFile(QStringLiteral(QT_CATALOGUES) + QLatin1Char('/') + QLatin1String(name) + QStringLiteral(".qm"));
}

/** Bytes that end where memory ends: whoever reads on crashes. */
class AtTheEdge final
{
public:
    explicit AtTheEdge(const QByteArray &bytes)
        : m_size((std::size_t(bytes.size()) / page + 2) * page)
#ifdef Q_OS_WIN
        , m_memory(static_cast<char *>(VirtualAlloc(nullptr, m_size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)))
        , m_begin(m_memory + m_size - page - bytes.size())
    {
        DWORD before = 0;
        VirtualProtect(m_memory + m_size - page, page, PAGE_NOACCESS, &before);
        std::memcpy(m_begin, bytes.constData(), std::size_t(bytes.size()));
    }
    ~AtTheEdge()
    {
        VirtualFree(m_memory, 0, MEM_RELEASE);
    }
#else
        , m_memory(
              static_cast<char *>(mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
        , m_begin(m_memory + m_size - page - bytes.size())
    {
        mprotect(m_memory + m_size - page, page, PROT_NONE);
        std::memcpy(m_begin, bytes.constData(), std::size_t(bytes.size()));
    }
    ~AtTheEdge()
    {
        munmap(m_memory, m_size);
    }
#endif

    const uchar *data() const
    {
        return reinterpret_cast<const uchar *>(m_begin);
    }

private:
    Q_DISABLE_COPY(AtTheEdge)

    static constexpr std::size_t page = 65536;
    std::size_t m_size;
    char *m_memory;
    char *m_begin;
};

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
    void acceptsWhatQtMakes_data()
    {
        QTest::addColumn<QByteArray>("qm");
        QTest::addColumn<QString>("text");
        QTest::newRow("compressed") << compressed() << QStringLiteral("Message");
        QTest::newRow("Qt's own") << qtCatalogue("qtbase_zh_CN") << QStringLiteral("取消");
    }
    void acceptsWhatQtMakes()
    {
        QFETCH(QByteArray, qm);
        QFETCH(QString, text);
        QVERIFY(MessageCatalogue::isWhole(qm));
        QVERIFY(!MessageCatalogue::isWhole(qm.chopped(1)));
        QTranslator translator;
        QVERIFY(translator.load(reinterpret_cast<const uchar *>(qm.constData()), qm.size()));
        QVERIFY(
            translator.translate("MessageBox", "提示") == text ||
            translator.translate("QPlatformTheme", "Cancel") == text);
    }
    void refusesQtsListOfCatalogues()
    {
        const QByteArray list = qtCatalogue("qt_zh_CN");
        QVERIFY(!list.isEmpty());
        QVERIFY(!MessageCatalogue::isWhole(list));
    }
    void nothingIsReadBesideAnAcceptedOne_data()
    {
        QTest::addColumn<QByteArray>("whole");
        QTest::newRow("shipped") << readFile(QStringLiteral(ENGLISH_CATALOGUE));
        QTest::newRow("compressed") << compressed();
    }
    void nothingIsReadBesideAnAcceptedOne()
    {
        QFETCH(QByteArray, whole);
        QRandomGenerator random(1);
        int accepted = 0;
        for (int round = 0; round < 3000; ++round) {
            QByteArray damaged = whole;
            for (int k = round % 3; k >= 0; --k)
                damaged[random.bounded(16, damaged.size())] = char(random.generate());
            if (!MessageCatalogue::isWhole(damaged))
                continue;
            ++accepted;
            const AtTheEdge edge(damaged);
            QTranslator translator;
            if (!translator.load(edge.data(), damaged.size()))
                continue;
            for (const char *context : {"MessageBox", "OptionsWidget", "MoverWidget", "OperationLog", "SerialComDev"}) {
                for (const char *text : {"提示", "取消", "确认", "设置", "停止", "电机复位", "正方向Jog", "移动", "?"})
                    translator.translate(context, text, nullptr, 1);
            }
        }
        QVERIFY(accepted > 0);
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
        QTest::newRow("unknown part") << catalogue(block("0a", "text") + message) << false;
        QTest::newRow("16-bit source text") << catalogue(block("02", "text")) << true;
        QTest::newRow("16-bit context") << catalogue(block("03", "\x4e\x2d") + block("04", "text")) << true;
        QTest::newRow("hash alone") << catalogue(block("03", "\x4e\x2d") + QByteArray::fromHex("01")) << true;
        QTest::newRow("no text") << catalogue(QByteArray::fromHex("03") + number(0xffffffff) + message) << true;
        // Would be read for ever.
        QTest::newRow("leads back to itself") << catalogue(QByteArray::fromHex("03") + number(0xfffffffb)) << false;
        QTest::newRow("other section") << catalogue(message) + block("55", "text") << true;
        QTest::newRow("behind an empty section")
            << catalogue(message, 1000) + block("55", "") + block("42", number(1) + number(0)) << false;
        for (const char *tag : {"03", "06", "07", "08"})
            QTest::addRow("part %s longer than the file", tag)
                << catalogue(QByteArray::fromHex(tag) + number(100000) + message) << false;
        QTest::newRow("length below 0") << catalogue(QByteArray::fromHex("06") + number(0xffffffff) + message) << false;
        QTest::newRow("half an offset") << magic + block("42", number(1)) + block("69", message) << false;
        QTest::newRow("refers to another one") << catalogue(message) + block("96", "qtbase") << false;
        const QByteArray names = QByteArray::fromHex("06") + "Dialog" + QByteArray::fromHex("00");
        QTest::newRow("contexts") << catalogue(message) + contexts("0001 0001 0000", names) << true;
        QTest::newRow("no contexts") << catalogue(message) + contexts("0000", "") << false; // divides by the number
        QTest::newRow("half a number of contexts") << catalogue(message) + contexts("00", "") << false;
        QTest::newRow("contexts cut off") << catalogue(message) + contexts("0003 0000", "") << false;
        QTest::newRow("names without an end")
            << catalogue(message) + contexts("0001 0001 0000", names.chopped(1)) << false;
        QTest::newRow("name longer than the section")
            << catalogue(message) + contexts("0001 0001 0000", "\x10\x10x") << false;
        QTest::newRow("names beyond the section") << catalogue(message) + contexts("0001 1000", names) << false;
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

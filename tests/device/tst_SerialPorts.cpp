// SPDX-License-Identifier: MIT
#include "device/SerialPorts.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

/** Ports as Linux shows them, in folders of a test's own. */
class tst_SerialPorts : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void tellsTheUsbDeviceAndItsLastingName()
    {
        plug("ttyUSB0", "1-2", "CH340 adapter", "A1");
        link("by-id", "usb-CH340_A1", "ttyUSB0");
        const QVector<SerialPorts::Port> ports = list();
        QCOMPARE(ports.size(), 1);
        QCOMPARE(ports[0].device, dev("ttyUSB0"));
        QCOMPARE(ports[0].product, QStringLiteral("CH340 adapter"));
        QCOMPARE(ports[0].serialNumber, QStringLiteral("A1"));
        QCOMPARE(ports[0].socket, QStringLiteral("1-2"));
        QCOMPARE(ports[0].lasting, dev("serial/by-id/usb-CH340_A1"));
        QVERIFY(!ports[0].isBySocket);
    }
    void tellsTwinsApartByTheirSockets()
    {
        plug("ttyUSB0", "1-2", "adapter", "0001");
        plug("ttyUSB1", "1-3", "adapter", "0001");
        plug("ttyUSB2", "1-4", "adapter", QString());
        for (const char *port : {"0", "1", "2"}) {
            link("by-id", QStringLiteral("usb-adapter-%1").arg(port), QStringLiteral("ttyUSB%1").arg(port));
            link("by-path", QStringLiteral("pci-usb-%1").arg(port), QStringLiteral("ttyUSB%1").arg(port));
        }
        const QVector<SerialPorts::Port> ports = list();
        QCOMPARE(ports.size(), 3);
        for (int k = 0; k < 3; ++k) {
            QVERIFY(ports[k].isBySocket);
            QCOMPARE(ports[k].lasting, dev(QStringLiteral("serial/by-path/pci-usb-%1").arg(k)));
        }
    }
    void leavesOutWhatNothingCanBePluggedInto()
    {
        QVERIFY(QDir().mkpath(m_folder->filePath("sys/console"))); // no device
        plug("ttyS1", "1-5", QString(), QString());
        QFile type(m_folder->filePath("sys/ttyS1/type"));
        QVERIFY(type.open(QIODevice::WriteOnly));
        type.write("0\n");
        type.close();
        QCOMPARE(list().size(), 0);
    }
    void keepsTheDevicesNameWhereThereIsNoLink()
    {
        plug("ttyACM0", "1-2", "board", "B7");
        QCOMPARE(list().value(0).lasting, dev("ttyACM0"));
    }

private:
    QString dev(const QString &name) const { return m_folder->filePath("dev/" + name); }
    QVector<SerialPorts::Port> list() const
    {
        return SerialPorts::list(m_folder->filePath("sys"), m_folder->filePath("dev"));
    }
    static void write(const QString &path, const QString &text)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8() + '\n');
    }
    void plug(const QString &name, const QString &socket, const QString &product, const QString &serial) const
    {
        const QString usb = m_folder->filePath("devices/" + socket);
        const QString port = usb + '/' + socket + ":1.0/" + name;
        QVERIFY(QDir().mkpath(port));
        write(usb + "/idVendor", "1a86");
        write(usb + "/product", product);
        if (!serial.isEmpty())
            write(usb + "/serial", serial);
        QVERIFY(QDir().mkpath(m_folder->filePath("sys/" + name)));
        QVERIFY(QFile::link(port, m_folder->filePath("sys/" + name + "/device")));
        QVERIFY(QDir().mkpath(m_folder->filePath("dev")));
        write(dev(name), QString());
    }
    void link(const QString &folder, const QString &name, const QString &device) const
    {
        QVERIFY(QDir().mkpath(dev("serial/" + folder)));
        QVERIFY(QFile::link(dev(device), dev("serial/" + folder + '/' + name)));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(tst_SerialPorts)
#include "tst_SerialPorts.moc"

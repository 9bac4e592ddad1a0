// SPDX-License-Identifier: MIT
#include "tests/settings/OptionsDialog.h"

#include "support/MessageBoxes.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>

#include <cstddef>
#include <cstring>
#include <thread>

namespace {

/** Fills a field with a text, zeros behind it. */
template <size_t size>
void fill(char (&field)[size], const QByteArray &text)
{
    std::memset(field, 0, size);
    std::memcpy(field, text.constData(), size_t(qMin(text.size(), int(size))));
}

/** A record in which every field has a value of its own and no byte is zero by chance. */
MotorParams someParams()
{
    MotorParams params = {};
    fill(params.modelName, "ABCDEFG");
    fill(params.serialNumber, "SN-0042");
    params.pulseOneCircle = 12800;
    params.alignment1 = 0xA1A2A3A4;
    params.dispOneCircle = 2.5;
    params.restoreSpeed = 7.125;
    params.moveType = 1;
    params.positivePolarity = 2;
    params.negativePolarity = 3;
    params.originPolarity = 4;
    params.phaseDirction = 5;
    params.limitDirection = 6;
    params.unitType = 7;
    fill(params.optOrder, QByteArray("PNZ\0\x11\x22\x33\x44\x55\x66", 10));
    params.maxSpeed = 1.0 / 3;
    params.maxAcc = 123.456789012345678;
    params.minPos = -1e-300;
    params.maxPos = 98765.4321098765;
    params.zeroOptWidth = 65535;
    params.optNum = 3;
    params.returnTrip = -7;
    params.motorPhase = 5;
    params.modifyDate = -20240315;
    params.alignment2 = 0xB1B2B3B4;
    params.maxRockerSpeed = 0.1;
    return params;
}

MotorParams inController(int axis)
{
    MotorParams params = {};
    const LibraryLock library;
    if (getMotorParams(controllerId, axis, &params) < 0)
        qFatal("the parameters cannot be read");
    return params;
}

QByteArray bytes(const void *start, size_t length)
{
    return {static_cast<const char *>(start), int(length)};
}

} // namespace

/** The motor-parameter page. */
class tst_MotorParamEdits : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_dialog.reset(); }

    void offersThreeAxes();
    void readFillsEveryEdit();
    void readsAndWritesTheChosenAxis_data();
    void readsAndWritesTheChosenAxis();
    void readShowsRealNumbersWithSixDigits_data();
    void readShowsRealNumbersWithSixDigits();
    void readShowsThirtyTwoCharacters();
    void readShowsTheWholePulseCount();
    void readSaysNothingOnSuccess();
    void failedReadIsShownAndKeepsTheEdits();
    void writeAsksFirst();
    void noLeavesEverythingAsItIs_data();
    void noLeavesEverythingAsItIs();
    void everyEditIsWrittenToItsField_data();
    void everyEditIsWrittenToItsField();
    void hiddenFieldsAreWrittenBackBitByBit();
    void modelNameKeepsTheTailOfALongerOne();
    void emptyModelNameChangesNothing();
    void serialNumberLeavesNoTail_data();
    void serialNumberLeavesNoTail();
    void namesAreCutAt32Bytes();
    void namesAreLatin1();
    void wholeNumbers_data();
    void wholeNumbers();
    void realNumbers_data();
    void realNumbers();
    void successIsShownForTenSeconds();
    void failedWriteIsShownForTenSeconds();
    void failedReadBeforeWritingIsAlwaysError1000();
    void error1000StaysUntilTheTimerRunsAgain();
    void cursorIsBusyWhileWriting();

private:
    void setInController(int axis, const MotorParams &params);
    QLineEdit *edit(const QString &role) { return m_dialog->find<QLineEdit>("lineEdit_motor_" + role); }
    QString message() { return m_dialog->find<QLabel>("label_msg")->text(); }
    QTimer *messageTimer();
    void read() { m_dialog->click("pushButton_ReadParam"); }
    void write();

    std::unique_ptr<OptionsDialog> m_dialog;
};

void tst_MotorParamEdits::init()
{
    m_dialog = std::make_unique<OptionsDialog>();
    m_dialog->connectController();
    setInController(0, someParams());
    m_dialog->open("motorParam");
    m_dialog->clearCalls();
}

void tst_MotorParamEdits::setInController(int axis, const MotorParams &params)
{
    {
        const LibraryLock library;
        QVERIFY(setMotorParams(controllerId, axis, params) >= 0);
    }
    simulator::clearJournal();
}

QTimer *tst_MotorParamEdits::messageTimer()
{
    return m_dialog->find<QTimer>("timer_message");
}

void tst_MotorParamEdits::write()
{
    const MessageBoxes boxes("是(&Y)");
    m_dialog->click("pushButton_WriteParam");
    QCOMPARE(boxes.texts(), QStringList("是否确认修改电机参数？"));
}

void tst_MotorParamEdits::offersThreeAxes()
{
    const auto *axes = m_dialog->find<QComboBox>("comboBox_motorAxis");
    QCOMPARE(axes->count(), 3);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(axes->itemText(i), QString::number(i + 1));
    QCOMPARE(axes->currentIndex(), 0);
}

void tst_MotorParamEdits::readFillsEveryEdit()
{
    read();
    QCOMPARE(edit("modelName")->text(), QString("ABCDEFG"));
    QCOMPARE(edit("serialNumber")->text(), QString("SN-0042"));
    QCOMPARE(edit("pulse")->text(), QString("12800"));
    QCOMPARE(edit("helicalPitch")->text(), QString("2.5"));
    QCOMPARE(edit("restoreSpeed")->text(), QString("7.125"));
    QCOMPARE(edit("Motor_type")->text(), QString("1"));
    QCOMPARE(edit("PLimitPolarity")->text(), QString("2"));
    QCOMPARE(edit("NLimitPolarity")->text(), QString("3"));
    QCOMPARE(edit("zeroPolarity")->text(), QString("4"));
    QCOMPARE(edit("derection")->text(), QString("5"));
    QCOMPARE(edit("limitDerection")->text(), QString("6"));
    QCOMPARE(edit("unitType")->text(), QString("7"));
    QCOMPARE(m_dialog->calls(), QStringList("getMotorParams(1001, 0)"));
}

void tst_MotorParamEdits::readsAndWritesTheChosenAxis_data()
{
    QTest::addColumn<int>("axis");
    for (int axis = 0; axis < 3; ++axis)
        QTest::addRow("%d", axis) << axis;
}

void tst_MotorParamEdits::readsAndWritesTheChosenAxis()
{
    QFETCH(int, axis);
    MotorParams params = someParams();
    params.pulseOneCircle = uint32_t(400 + axis);
    setInController(axis, params);
    m_dialog->find<QComboBox>("comboBox_motorAxis")->setCurrentIndex(axis);
    read();
    QCOMPARE(edit("pulse")->text(), QString::number(400 + axis));
    edit("pulse")->setText("500");
    m_dialog->clearCalls();
    write();
    QCOMPARE(
        m_dialog->calls(), QStringList(
                               {QString("getMotorParams(1001, %1)").arg(axis),
                                QString("setMotorParams(1001, %1, \"ABCDEFG\")").arg(axis)}));
    QCOMPARE(inController(axis).pulseOneCircle, 500u);
}

void tst_MotorParamEdits::readShowsRealNumbersWithSixDigits_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("short") << 0.5 << "0.5";
    QTest::newRow("cut") << 1.23456789 << "1.23457";
    QTest::newRow("large") << 1234567.0 << "1.23457e+06";
    QTest::newRow("small") << 0.0000125 << "1.25e-05";
    QTest::newRow("six digits") << 100000.0 << "100000";
}

void tst_MotorParamEdits::readShowsRealNumbersWithSixDigits()
{
    QFETCH(double, value);
    QFETCH(QString, text);
    MotorParams params = someParams();
    params.dispOneCircle = value;
    params.restoreSpeed = value;
    setInController(0, params);
    read();
    QCOMPARE(edit("helicalPitch")->text(), text);
    QCOMPARE(edit("restoreSpeed")->text(), text);
}

void tst_MotorParamEdits::readShowsThirtyTwoCharacters()
{
    MotorParams params = someParams();
    const QByteArray name(32, 'm'); // no terminating zero
    const QByteArray serial(32, 's');
    fill(params.modelName, name);
    fill(params.serialNumber, serial);
    setInController(0, params);
    read();
    QCOMPARE(edit("modelName")->text(), QString(name));
    QCOMPARE(edit("serialNumber")->text(), QString(serial));
}

void tst_MotorParamEdits::readShowsTheWholePulseCount()
{
    MotorParams params = someParams();
    params.pulseOneCircle = 4294967295u;
    setInController(0, params);
    read();
    QCOMPARE(edit("pulse")->text(), QString("4294967295"));
}

void tst_MotorParamEdits::readSaysNothingOnSuccess()
{
    read();
    QCOMPARE(message(), QString());
    QVERIFY(!messageTimer()->isActive());
}

void tst_MotorParamEdits::failedReadIsShownAndKeepsTheEdits()
{
    edit("modelName")->setText("typed");
    edit("pulse")->setText("1");
    simulator::failCall("getMotorParams", -9);
    read();
    QCOMPARE(message(), QString("读取电机参数失败：error（-9）"));
    QVERIFY(messageTimer()->isActive());
    QCOMPARE(edit("modelName")->text(), QString("typed"));
    QCOMPARE(edit("pulse")->text(), QString("1"));
}

void tst_MotorParamEdits::writeAsksFirst()
{
    int seen = 0;
    const MessageBoxes boxes([&](QMessageBox *box) {
        const auto answer = qScopeGuard([box] { MessageBoxes::press(box, "否(&N)"); });
        ++seen;
        QCOMPARE(box->windowTitle(), QString("提示"));
        QCOMPARE(box->icon(), QMessageBox::Question);
        QCOMPARE(box->standardButtons(), QMessageBox::Yes | QMessageBox::No);
        QVERIFY(!box->defaultButton());
        QVERIFY(!box->parentWidget());
        QCOMPARE(m_dialog->calls(), QStringList());
    });
    m_dialog->click("pushButton_WriteParam");
    QCOMPARE(seen, 1);
    QCOMPARE(boxes.texts(), QStringList("是否确认修改电机参数？"));
}

void tst_MotorParamEdits::noLeavesEverythingAsItIs_data()
{
    QTest::addColumn<bool>("escape");
    QTest::newRow("No") << false;
    QTest::newRow("Escape") << true;
}

void tst_MotorParamEdits::noLeavesEverythingAsItIs()
{
    QFETCH(bool, escape);
    simulator::failCall("getMotorParams", -9);
    read();
    const QString before = message();
    QVERIFY(!before.isEmpty());
    m_dialog->clearCalls();

    const MessageBoxes boxes([escape](QMessageBox *box) {
        if (escape)
            QTest::keyClick(box, Qt::Key_Escape);
        else
            MessageBoxes::press(box, "否(&N)");
    });
    m_dialog->click("pushButton_WriteParam");
    QCOMPARE(boxes.count(), 1);
    QCOMPARE(message(), before);
    QCOMPARE(m_dialog->calls(), QStringList());
}

void tst_MotorParamEdits::everyEditIsWrittenToItsField_data()
{
    QTest::addColumn<QString>("role");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("expected");
    const auto add = [](const char *role, const char *text, size_t offset, const auto &value) {
        QTest::newRow(role) << role << text << int(offset) << bytes(&value, sizeof value);
    };
    const double lead = 0.125;
    const double speed = 31.5;
    const uint32_t pulses = 65535;
    char serial[32];
    fill(serial, "A1");
    add("modelName", "1234567", offsetof(MotorParams, modelName), "1234567");
    add("serialNumber", "A1", offsetof(MotorParams, serialNumber), serial);
    add("pulse", "65535", offsetof(MotorParams, pulseOneCircle), pulses);
    add("helicalPitch", "0.125", offsetof(MotorParams, dispOneCircle), lead);
    add("restoreSpeed", "31.5", offsetof(MotorParams, restoreSpeed), speed);
    add("Motor_type", "101", offsetof(MotorParams, moveType), uint16_t(101));
    add("PLimitPolarity", "102", offsetof(MotorParams, positivePolarity), uint16_t(102));
    add("NLimitPolarity", "103", offsetof(MotorParams, negativePolarity), uint16_t(103));
    add("zeroPolarity", "104", offsetof(MotorParams, originPolarity), uint16_t(104));
    add("derection", "105", offsetof(MotorParams, phaseDirction), uint16_t(105));
    add("limitDerection", "106", offsetof(MotorParams, limitDirection), uint16_t(106));
    add("unitType", "65535", offsetof(MotorParams, unitType), uint16_t(65535));
}

void tst_MotorParamEdits::everyEditIsWrittenToItsField()
{
    QFETCH(QString, role);
    QFETCH(QString, text);
    QFETCH(int, offset);
    QFETCH(QByteArray, expected);
    const MotorParams before = someParams();
    QByteArray wanted = bytes(&before, sizeof before);
    wanted.replace(offset, expected.size(), expected);

    read();
    edit(role)->setText(text);
    write();
    QCOMPARE(message(), QString("写入电机参数成功"));
    const MotorParams after = inController(0);
    QCOMPARE(bytes(&after, sizeof after).toHex(' '), wanted.toHex(' '));

    edit(role)->clear();
    read();
    QCOMPARE(edit(role)->text(), text);
}

void tst_MotorParamEdits::hiddenFieldsAreWrittenBackBitByBit()
{
    const MotorParams before = inController(0);
    // Nothing was read into the edits: all of them are replaced, and nothing else.
    edit("restoreSpeed")->setText("1");
    write();
    QCOMPARE(message(), QString("写入电机参数成功"));
    const MotorParams after = inController(0);
    QCOMPARE(after.unitType, uint16_t(0));
    constexpr size_t hidden = offsetof(MotorParams, optOrder);
    const auto tail = [](const MotorParams &params) {
        return bytes(reinterpret_cast<const char *>(&params) + hidden, sizeof params - hidden);
    };
    QCOMPARE(tail(after).toHex(' '), tail(before).toHex(' '));
    QCOMPARE(after.alignment1, before.alignment1);
}

void tst_MotorParamEdits::modelNameKeepsTheTailOfALongerOne()
{
    read();
    edit("modelName")->setText("XY");
    write();
    QCOMPARE(QByteArray(inController(0).modelName), QByteArray("XYCDEFG"));
    read();
    QCOMPARE(edit("modelName")->text(), QString("XYCDEFG"));
}

void tst_MotorParamEdits::emptyModelNameChangesNothing()
{
    read();
    edit("modelName")->clear();
    write();
    QCOMPARE(QByteArray(inController(0).modelName), QByteArray("ABCDEFG"));
}

void tst_MotorParamEdits::serialNumberLeavesNoTail_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("shorter") << "S";
    QTest::newRow("empty") << "";
}

void tst_MotorParamEdits::serialNumberLeavesNoTail()
{
    QFETCH(QString, text);
    read();
    edit("serialNumber")->setText(text);
    write();
    char expected[MOVER_TEXT_LENGTH];
    fill(expected, text.toLatin1());
    QCOMPARE(bytes(inController(0).serialNumber, MOVER_TEXT_LENGTH), bytes(expected, MOVER_TEXT_LENGTH));
}

void tst_MotorParamEdits::namesAreCutAt32Bytes()
{
    // Longer than the whole record.
    const QString name = "0123456789abcdefghijklmnopqrstuvWXYZ" + QString(200, 'n');
    const QString serial = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789" + QString(200, 's');
    const MotorParams before = someParams();
    QByteArray wanted = bytes(&before, sizeof before);
    wanted.replace(0, 64, name.left(32).toLatin1() + serial.left(32).toLatin1());

    read();
    edit("modelName")->setText(name);
    edit("serialNumber")->setText(serial);
    write();
    const MotorParams after = inController(0);
    QCOMPARE(bytes(&after, sizeof after).toHex(' '), wanted.toHex(' '));
    QCOMPARE(edit("modelName")->text(), name); // the edit keeps what was typed
}

void tst_MotorParamEdits::namesAreLatin1()
{
    read();
    edit("modelName")->setText(QString::fromUtf8("é台"));
    edit("serialNumber")->setText(QString::fromUtf8("µ台"));
    write();
    QCOMPARE(QByteArray(inController(0).modelName), QByteArray("\xe9?CDEFG"));
    QCOMPARE(QByteArray(inController(0).serialNumber), QByteArray("\xb5?"));
}

void tst_MotorParamEdits::wholeNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("value");
    QTest::newRow("largest") << "65535" << 65535;
    QTest::newRow("one more") << "65536" << 0;
    QTest::newRow("70000") << "70000" << 0;
    QTest::newRow("-1") << "-1" << 0;
    QTest::newRow("blank in front") << " 12" << 12;
    QTest::newRow("blank behind") << "12 " << 12;
    QTest::newRow("blank inside") << "1 2" << 0;
    QTest::newRow("exponent") << "1e3" << 0;
    QTest::newRow("fraction") << "1.5" << 0;
    QTest::newRow("hexadecimal") << "0x10" << 0;
    QTest::newRow("leading zeros") << "0010" << 10;
    QTest::newRow("empty") << "" << 0;
    QTest::newRow("word") << "abc" << 0;
    QTest::newRow("full-width digits") << QString::fromUtf8("１２") << 0;
}

void tst_MotorParamEdits::wholeNumbers()
{
    QFETCH(QString, text);
    QFETCH(int, value);
    const QStringList roles = {"pulse",        "Motor_type", "PLimitPolarity", "NLimitPolarity",
                               "zeroPolarity", "derection",  "limitDerection", "unitType"};
    read();
    for (const QString &role : roles)
        edit(role)->setText(text);
    write();
    const MotorParams after = inController(0);
    QCOMPARE(int(after.pulseOneCircle), value);
    for (const uint16_t field :
         {after.moveType, after.positivePolarity, after.negativePolarity, after.originPolarity, after.phaseDirction,
          after.limitDirection, after.unitType})
        QCOMPARE(int(field), value);
    for (const QString &role : roles)
        QCOMPARE(edit(role)->text(), text); // writing does not correct what was typed
}

void tst_MotorParamEdits::realNumbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    QTest::newRow("fraction") << "0.1" << 0.1;
    QTest::newRow("exponent") << "1e3" << 1000.0;
    QTest::newRow("-1") << "-1" << -1.0;
    QTest::newRow("70000") << "70000" << 70000.0;
    QTest::newRow("blank in front") << " 12" << 12.0;
    QTest::newRow("comma") << "1,5" << 0.0;
    QTest::newRow("empty") << "" << 0.0;
    QTest::newRow("word") << "abc" << 0.0;
    QTest::newRow("nan") << "nan" << 0.0;
    QTest::newRow("inf") << "inf" << 0.0;
    QTest::newRow("too large") << "1e999" << 0.0;
    QTest::newRow("full-width digits") << QString::fromUtf8("１２") << 0.0;
}

void tst_MotorParamEdits::realNumbers()
{
    QFETCH(QString, text);
    QFETCH(double, value);
    read();
    edit("helicalPitch")->setText(text);
    write();
    QCOMPARE(message(), QString("写入电机参数成功"));
    QCOMPARE(inController(0).dispOneCircle, value);

    // The homing speed is read the same way; the controller refuses one that is not above 0.
    edit("restoreSpeed")->setText(text);
    write();
    if (value > 0) {
        QCOMPARE(inController(0).restoreSpeed, value);
    } else {
        QCOMPARE(message(), QString("写入电机参数失败：error（-6）"));
        QCOMPARE(inController(0).restoreSpeed, someParams().restoreSpeed);
    }
}

void tst_MotorParamEdits::successIsShownForTenSeconds()
{
    read();
    write();
    QCOMPARE(message(), QString("写入电机参数成功"));
    QVERIFY(messageTimer()->isActive());
    QVERIFY(messageTimer()->isSingleShot());
    QCOMPARE(messageTimer()->interval(), 10000);
    messageTimer()->setInterval(0); // ten seconds later
    QTRY_COMPARE(message(), QString());
}

void tst_MotorParamEdits::failedWriteIsShownForTenSeconds()
{
    read();
    edit("pulse")->setText("1");
    simulator::failCall("setMotorParams", -7);
    write();
    QCOMPARE(message(), QString("写入电机参数失败：error（-7）"));
    QVERIFY(messageTimer()->isActive());
    QCOMPARE(inController(0).pulseOneCircle, someParams().pulseOneCircle);
    QCOMPARE(edit("pulse")->text(), QString("1"));
}

void tst_MotorParamEdits::failedReadBeforeWritingIsAlwaysError1000()
{
    simulator::failCall("getMotorParams", -9);
    write();
    QCOMPARE(message(), QString("写入电机参数失败：error（1000）"));
    QCOMPARE(m_dialog->calls(), QStringList("getMotorParams(1001, 0)")); // nothing is written
}

void tst_MotorParamEdits::error1000StaysUntilTheTimerRunsAgain()
{
    simulator::failCall("getMotorParams", -9);
    write();
    QVERIFY(!messageTimer()->isActive());
    simulator::failCall("getMotorParams", -9);
    read();
    QVERIFY(messageTimer()->isActive());
    messageTimer()->setInterval(0);
    QTRY_COMPARE(message(), QString());
}

void tst_MotorParamEdits::cursorIsBusyWhileWriting()
{
    read();
    simulator::hangCall("setMotorParams");
    bool hung = false;
    bool busy = false;
    std::thread watcher([&] {
        hung = simulator::waitUntilHanging(10000);
        const QCursor *cursor = QGuiApplication::overrideCursor();
        busy = cursor && cursor->shape() == Qt::WaitCursor;
        simulator::releaseHung();
    });
    write();
    watcher.join();
    QVERIFY(hung);
    QVERIFY(busy);
    QVERIFY(!QGuiApplication::overrideCursor());
}

QTEST_MAIN(tst_MotorParamEdits)
#include "tst_MotorParamEdits.moc"

// SPDX-License-Identifier: MIT
#include "tests/controllers/emulator/Host.h"

#include <QDir>
#include <QRegularExpression>
#include <QTest>

#include <cmath>

/** The emulated board says what a real one said: the files in conversations/ are said to it again, at the same times.
 */
class tst_Conversations : public QObject
{
    Q_OBJECT

private slots:
    void saysWhatARealBoardSaid_data();
    void saysWhatARealBoardSaid();
    void takesALineWithALostByteAsARealBoard_data();
    void takesALineWithALostByteAsARealBoard();
};

namespace {

QStringList linesOf(const QString &name)
{
    QFile file(QStringLiteral(CONVERSATIONS "/") + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts)
                                          : QStringList();
}

/** The bytes of what stands behind ">": \xNN is a byte, and a line end follows where none is written. */
std::string bytesOf(const QString &said)
{
    std::string bytes;
    bool hasEnd = false;
    bool isRealTime = !said.isEmpty();
    for (int i = 0; i < said.size(); ++i) {
        char byte = said[i].toLatin1();
        if (said.mid(i, 2) == QLatin1String("\\x")) {
            byte = static_cast<char>(said.mid(i + 2, 2).toInt(nullptr, 16));
            i += 3;
            hasEnd = hasEnd || byte == '\n' || byte == '\r';
        }
        isRealTime = isRealTime && emulator::isRealTime(byte);
        bytes += byte;
    }
    return hasEnd || isRealTime ? bytes : bytes + '\n';
}

/** The fields of a report by their names; the state is that of "". */
QMap<QString, QString> fieldsOf(const QString &report)
{
    QMap<QString, QString> fields;
    for (const QString &field : report.mid(1, report.size() - 2).split('|')) {
        const bool isState = fields.isEmpty();
        fields[isState ? QString() : field.section(':', 0, 0)] = isState ? field : field.section(':', 1);
    }
    return fields;
}

double distance(const QString &one, const QString &other)
{
    const QStringList left = one.split(',');
    const QStringList right = other.split(',');
    double most = left.size() == right.size() ? 0 : 1e9;
    for (int i = 0; i < std::min(left.size(), right.size()); ++i) {
        most = std::max(most, std::fabs(left[i].toDouble() - right[i].toDouble()));
    }
    return most;
}

/** What is different between two answers; empty when nothing that counts is. */
QString difference(const QString &real, const QString &emulated, double within)
{
    if (!real.startsWith('<') || !emulated.startsWith('<')) {
        const int number = real.startsWith("[PRB:") ? real.indexOf(':') : -1;
        return number < 0 && real != emulated ? QStringLiteral("text") : QString();
    }
    const QMap<QString, QString> a = fieldsOf(real);
    const QMap<QString, QString> b = fieldsOf(emulated);
    if (a[QString()] != b[QString()] || a.contains("MPos") != b.contains("MPos") || a["Pn"] != b["Pn"]) {
        return QStringLiteral("state");
    }
    const QString position = a.contains("MPos") ? "MPos" : "WPos";
    if (distance(a[position], b[position]) > within) {
        return QStringLiteral("position");
    }
    // One piece of motion more or less may be prepared, and one block more or less done.
    if (distance(a["FS"].section(',', 0, 0), b["FS"].section(',', 0, 0)) > 61) {
        return QStringLiteral("speed");
    }
    if (a.contains("Bf") != b.contains("Bf") ||
        (a.contains("Bf") && distance(a["Bf"].section(',', 0, 0), b["Bf"].section(',', 0, 0)) > 1)) {
        return QStringLiteral("blocks");
    }
    return {};
}

} // namespace

void tst_Conversations::saysWhatARealBoardSaid_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : QDir(CONVERSATIONS).entryList({"*.txt"})) {
        if (name != "dropped-byte.txt") {
            QTest::newRow(qPrintable(name)) << name;
        }
    }
}

void tst_Conversations::saysWhatARealBoardSaid()
{
    QFETCH(QString, name);
    const QRegularExpression row("^ *([0-9.]+) ([<>]) ?(.*)$");
    emulator::Options options;
    options.storeTime = 0; // the real board's memory took none, see the README
    options.stages.resize(emulator::maxAxes, {-1000, 1000, 0});
    double within = 0.004; // mm
    std::vector<std::pair<double, std::string>> said;
    std::vector<std::pair<double, QString>> expected;
    for (const QString &line : linesOf(name)) {
        const QStringList words = line.split(' ');
        const QRegularExpressionMatch match = row.match(line);
        if (words[0] == "set") {
            options.settings[words[1].section('=', 0, 0).toInt()] = words[1].section('=', 1).toDouble();
        } else if (words[0] == "stage") {
            options.stages[words[1].toUInt()] = {words[2].toDouble(), words[3].toDouble(), words[4].toDouble()};
        } else if (words[0] == "within") {
            within = words[1].toDouble();
        } else if (match.hasMatch() && match.captured(2) == ">") {
            said.emplace_back(match.captured(1).toDouble(), bytesOf(match.captured(3)));
        } else if (match.hasMatch()) {
            expected.emplace_back(match.captured(1).toDouble(), match.captured(3));
        } else {
            QVERIFY2(line.startsWith('#'), qPrintable(line));
        }
    }
    QVERIFY(said.size() > 10 && expected.size() > 20);
    const auto earlier = [](const auto &one, const auto &other) { return one.first < other.first; };
    std::stable_sort(said.begin(), said.end(), earlier);

    Host host(options);
    host.heard.clear();
    for (const auto &[time, bytes] : said) {
        host.runTo(time);
        if (host.board.now() < said.front().first + 1e-6) {
            host.heard.clear();
        }
        host.board.send(bytes);
    }
    host.run(1);

    double worst = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const auto &[time, text] = expected[i];
        const QString all = QString("%1 %2").arg(time).arg(text);
        QVERIFY2(i < host.heard.size(), qPrintable("not said: " + all));
        const Heard &heard = host.heard[i];
        const QString wrong = difference(text, QString::fromStdString(heard.text), within);
        QVERIFY2(
            wrong.isEmpty(),
            qPrintable(
                QString("%1: %2, but %3 %4").arg(wrong, all).arg(heard.time).arg(QString::fromStdString(heard.text))));
        worst = std::max(worst, std::fabs(heard.time - time));
    }
    QCOMPARE(host.heard.size(), expected.size());
    qInfo("%zu answers, the worst %.1f ms off", expected.size(), worst * 1000);
    QVERIFY2(worst < 0.030, qPrintable(QString::number(worst)));
}

void tst_Conversations::takesALineWithALostByteAsARealBoard_data()
{
    QTest::addColumn<QStringList>("row");
    for (const QString &line : linesOf("dropped-byte.txt")) {
        if (!line.startsWith('#')) {
            QTest::newRow(qPrintable(line.section(' ', 0, 0))) << line.split(' ');
        }
    }
    QVERIFY(linesOf("dropped-byte.txt").size() > 40);
}

void tst_Conversations::takesALineWithALostByteAsARealBoard()
{
    QFETCH(QStringList, row);
    emulator::Options options = Host::fast();
    for (int axis = 0; axis < 3; ++axis) {
        options.settings[110 + axis] = 1500;
        options.settings[120 + axis] = 500;
    }
    Host host(options);
    host.say("$J=G53X12Y-5.5Z0.1F1500\n");
    QVERIFY(host.comesToRest());
    const std::string line = row[0].toStdString() + "\n";
    QCOMPARE(QString::fromStdString(host.ask(line, 1.4)), row[1]);
    QCOMPARE(QString::fromStdString(host.board.stateName()), row[2]);
    for (int axis = 0; axis < 3; ++axis) {
        // Of those that are still on their way the real one was looked at a little earlier or later.
        const double within = row[2] == "Jog" ? 0.3 : 0.0041;
        const double off = std::fabs(host.board.positionMm(axis) - row[3 + axis].toDouble());
        QVERIFY2(off <= within, qPrintable(QString("%1 %2").arg(axis).arg(host.board.positionMm(axis))));
    }
}

QTEST_APPLESS_MAIN(tst_Conversations)
#include "tst_Conversations.moc"

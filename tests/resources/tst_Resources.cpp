// SPDX-License-Identifier: MIT

#include <QApplication>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QRegularExpression>
#include <QSet>
#include <QWidget>
#include <QtTest>

#include <cmath>

namespace {

/// A family of images: base name, states as the file names spell them, and what follows the state.
struct Family {
    const char *base;
    QStringList states;
    const char *suffix = "";
    QSize size = {24, 24};
};

QVector<Family> families()
{
    const QStringList flat{"normal", "hover", "pressed"};
    const QStringList control{"normal", "hover", "pressed", "unabled"};
    const QStringList checkable{"normal", "hover", "pressed", "checked", "unabled"};
    return {
        {"add", control},
        {"circle", {"normal", "hover", "pressed", "chekced", "unabled"}},
        {"close", flat},
        {"connect", {"normal", "hover", "checked"}, "", {122, 40}},
        {"connect", {"normal", "hover", "checked"}, "_english", {122, 40}},
        {"downArrow", checkable},
        {"enabled", checkable},
        {"help", flat},
        {"home", control},
        {"left", control},
        {"min", flat},
        {"move", control},
        {"options", flat},
        {"right", control},
        {"stop", {"normal", "Hover", "pressed", "unabled"}},
        {"window", flat},
        {"settings/add", control, "", {16, 16}},
        {"settings/sub", control, "", {16, 16}},
        {"settings/checkBox", {"normal", "hover", "pressed", "chekced", "unabled", "chekced_unabled"}, "", {20, 20}},
        {"settings/circleLeft", control},
        {"settings/circleRight", control},
        {"settings/circleStop", control},
        {"settings/radio", {"normal", "hover", "pressed", "checked", "unabled", "checked_unabled"}, "", {20, 20}},
        {"settings/selectFile", control},
    };
}

struct Single {
    const char *name;
    QSize size;
};

QVector<Single> singles()
{
    return {
        {"mover", {64, 64}},
        {"company", {70, 20}},
        {"devLogo", {284, 20}},
        {"console", {32, 32}},
        {"warning", {64, 64}},
        {"question", {64, 64}},
        {"information", {64, 64}},
        {"showMax", {24, 24}},
        {"showNormal", {24, 24}},
        {"advertising", {640, 360}},
        {"grayPot", {24, 24}},
        {"greenPot", {24, 24}},
        {"redPot", {24, 24}},
        {"yellowPot", {24, 24}},
        {"settings/JogParam", {460, 120}},
        {"settings/driveParam", {460, 120}},
        {"settings/driveParamUp", {460, 120}},
        {"settings/moveParam", {460, 120}},
        {"settings/arrowDown", {16, 16}},
    };
}

QString familyMember(const Family &family, const QString &state)
{
    return QLatin1String(family.base) + QLatin1Char('_') + state + QLatin1String(family.suffix);
}

QString imagePath(const QString &name, int scale)
{
    return QStringLiteral(":/image/%1%2.png").arg(name, scale == 2 ? QStringLiteral("@2x") : QString());
}

/// The image as stored: QImage would otherwise call an @2x file half as large.
QImage load(const QString &name, int scale)
{
    QImage image(imagePath(name, scale));
    image.setDevicePixelRatio(1);
    return image;
}

QString readText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString sourcePath(const char *path)
{
    return QStringLiteral(MOVER_SOURCE_DIR "/") + QLatin1String(path);
}

/// Every complete resource path in the style sheet, the forms and the sources, with the file that names it.
QHash<QString, QString> resourceReferences()
{
    static const QRegularExpression reference(QStringLiteral(":/[\\w./-]+\\.(?:png|qss|qm)"));
    QStringList files{QStringLiteral(":/style.qss")};
    for (const char *folder :
         {"app", "shell", "axis", "models", "settings", "console", "widgets", "workbench", "device"}) {
        QDirIterator it(sourcePath(folder), {"*.ui", "*.cpp", "*.h"}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            files << it.next();
        }
    }
    QHash<QString, QString> references;
    for (const QString &file : files) {
        for (auto it = reference.globalMatch(readText(file)); it.hasNext();) {
            references.insert(it.next().captured(), file);
        }
    }
    return references;
}

QHash<QString, QColor> tokens()
{
    static const QRegularExpression row(
        QStringLiteral("^(\\w+) +(#[0-9A-Fa-f]+)$"), QRegularExpression::MultilineOption);
    QHash<QString, QColor> tokens;
    for (auto it = row.globalMatch(readText(sourcePath("resources/tokens.txt"))); it.hasNext();) {
        const auto match = it.next();
        tokens.insert(match.captured(1), QColor(match.captured(2)));
    }
    return tokens;
}

double luminance(const QColor &colour)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

/// Contrast ratio of two opaque colours, 1 to 21.
double contrast(const QColor &a, const QColor &b)
{
    const double first = luminance(a) + 0.05;
    const double second = luminance(b) + 0.05;
    return qMax(first, second) / qMin(first, second);
}

QStringList messages;

void collectMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    messages << message;
}

} // namespace

class tst_Resources : public QObject
{
    Q_OBJECT

private slots:
    void findsEveryReferencedResource();
    void hasEveryImage_data();
    void hasEveryImage();
    void drawsEveryStateDifferently_data();
    void drawsEveryStateDifferently();
    void drawsLampsInTheirColours();
    void pointsTheBubblesAtTheirButtons();
    void carriesNothingUnused();
    void namesOnlyColoursInUse();
    void parsesStyleSheet();
    void stylesEveryState_data();
    void stylesEveryState();
    void keepsTextReadable_data();
    void keepsTextReadable();
    void standsInItsColours();
};

void tst_Resources::findsEveryReferencedResource()
{
    const auto references = resourceReferences();
    QVERIFY(references.size() > 60);
    for (auto it = references.begin(); it != references.end(); ++it) {
        QVERIFY2(QFile::exists(it.key()), qPrintable(it.value() + QStringLiteral(" names ") + it.key()));
    }
}

void tst_Resources::hasEveryImage_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    const auto all = families();
    for (const Family &family : all) {
        for (const QString &state : family.states) {
            const QString name = familyMember(family, state);
            QTest::newRow(qPrintable(name)) << name << family.size;
        }
    }
    const auto others = singles();
    for (const Single &single : others) {
        QTest::newRow(single.name) << QString::fromLatin1(single.name) << single.size;
    }
}

void tst_Resources::hasEveryImage()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    QCOMPARE(load(name, 1).size(), size);
    QCOMPARE(load(name, 2).size(), size * 2);
}

void tst_Resources::drawsEveryStateDifferently_data()
{
    QTest::addColumn<QStringList>("names");
    const auto all = families();
    for (const Family &family : all) {
        QStringList names;
        for (const QString &state : family.states) {
            names << familyMember(family, state);
        }
        QTest::addRow("%s%s", family.base, family.suffix) << names;
    }
    QTest::newRow("connect in two languages") << QStringList{"connect_normal", "connect_normal_english"};
    QTest::newRow("full screen") << QStringList{"showMax", "showNormal"};
    QTest::newRow("lamps") << QStringList{"grayPot", "greenPot", "redPot", "yellowPot"};
    QTest::newRow("bubbles") << QStringList{"settings/driveParam", "settings/driveParamUp"};
    QTest::newRow("directions") << QStringList{"left_normal", "right_normal"};
}

void tst_Resources::drawsEveryStateDifferently()
{
    QFETCH(QStringList, names);
    for (int scale = 1; scale <= 2; ++scale) {
        for (int first = 0; first < names.size(); ++first) {
            for (int second = first + 1; second < names.size(); ++second) {
                QVERIFY2(
                    load(names[first], scale) != load(names[second], scale),
                    qPrintable(names[first] + QStringLiteral(" looks like ") + names[second]));
            }
        }
    }
}

void tst_Resources::drawsLampsInTheirColours()
{
    const auto body = [](const char *name) { return load(QLatin1String(name), 2).pixelColor(30, 30); };
    const QColor green = body("greenPot");
    const QColor red = body("redPot");
    const QColor yellow = body("yellowPot");
    QVERIFY(green.green() > green.red() + 80 && green.green() > green.blue() + 40);
    QVERIFY(red.red() > red.green() + 80 && red.red() > red.blue() + 80);
    QVERIFY(yellow.red() > yellow.blue() + 80 && yellow.green() > yellow.blue() + 80);
    QVERIFY(body("grayPot").hsvSaturation() < 40);
}

void tst_Resources::pointsTheBubblesAtTheirButtons()
{
    const auto inked = [](const char *name, int x, int y) {
        return load(QLatin1String(name), 1).pixelColor(x, y).alpha() > 0;
    };
    for (const char *below : {"settings/moveParam", "settings/JogParam", "settings/driveParamUp"}) {
        QVERIFY(inked(below, 230, 3));
        QVERIFY(!inked(below, 100, 3));
        QVERIFY(inked(below, 100, 117));
    }
    QVERIFY(inked("settings/driveParam", 230, 116));
    QVERIFY(!inked("settings/driveParam", 100, 116));
    QVERIFY(inked("settings/driveParam", 100, 3));
}

void tst_Resources::carriesNothingUnused()
{
    QSet<QString> wanted;
    const auto allFamilies = families();
    for (const Family &family : allFamilies) {
        for (const QString &state : family.states) {
            wanted << familyMember(family, state);
        }
    }
    const auto allSingles = singles();
    for (const Single &single : allSingles) {
        wanted << QLatin1String(single.name);
    }
    const auto references = resourceReferences();
    int seen = 0;
    for (QDirIterator it(QStringLiteral(":/image"), QDir::Files, QDirIterator::Subdirectories); it.hasNext(); ++seen) {
        QString path = it.next().remove(QStringLiteral("@2x"));
        const QString name = path.mid(int(qstrlen(":/image/"))).chopped(int(qstrlen(".png")));
        QVERIFY2(wanted.contains(name) || references.contains(path), qPrintable(path));
    }
    QVERIFY(seen > 0);
}

void tst_Resources::namesOnlyColoursInUse()
{
    const QString sheet = readText(sourcePath("resources/style.qss"));
    const QString table = readText(sourcePath("resources/images.json"));
    const auto names = tokens().keys();
    QVERIFY(!names.isEmpty());
    for (const QString &name : names) {
        const bool used = sheet.contains(QLatin1Char('@') + name + QLatin1Char('@')) ||
                          table.contains(QStringLiteral(": \"%1\"").arg(name));
        QVERIFY2(used, qPrintable(name));
    }
}

void tst_Resources::parsesStyleSheet()
{
    const QString sheet = readText(QStringLiteral(":/style.qss"));
    QVERIFY(!sheet.isEmpty());
    QVERIFY(!sheet.contains(QLatin1Char('@')));
    messages.clear();
    const auto previous = qInstallMessageHandler(collectMessage);
    qApp->setStyleSheet(sheet);
    {
        QWidget widget;
        widget.ensurePolished();
    }
    qApp->setStyleSheet(QString());
    qInstallMessageHandler(previous);
    QCOMPARE(messages, QStringList());
}

void tst_Resources::stylesEveryState_data()
{
    QTest::addColumn<QString>("control");
    QTest::addColumn<QStringList>("states");
    const QStringList indicator{"hover", "pressed", "checked", "disabled", "checked:disabled"};
    QTest::newRow("buttons") << "QPushButton" << QStringList{"hover", "focus", "pressed", "checked", "disabled"};
    QTest::newRow("check boxes") << "QCheckBox::indicator" << indicator;
    QTest::newRow("radio buttons") << "QRadioButton::indicator" << indicator;
    QTest::newRow("check box texts") << "QCheckBox" << QStringList{"focus", "disabled"};
    QTest::newRow("radio button texts") << "QRadioButton" << QStringList{"focus", "disabled"};
    QTest::newRow("line edits") << "QLineEdit" << QStringList{"hover", "focus", "disabled"};
    QTest::newRow("combo boxes") << "QComboBox" << QStringList{"hover", "focus", "on", "disabled"};
    QTest::newRow("spin boxes") << "QAbstractSpinBox" << QStringList{"hover", "focus", "disabled"};
    QTest::newRow("step up") << "QAbstractSpinBox::up-arrow" << QStringList{"hover", "pressed", "disabled", "off"};
    QTest::newRow("step down") << "QAbstractSpinBox::down-arrow" << QStringList{"hover", "pressed", "disabled", "off"};
    QTest::newRow("scroll bars") << "QScrollBar::handle" << QStringList{"hover", "pressed", "disabled"};
    for (const char *name :
         {"move", "jogLeft", "jogRight", "driveLeft", "driveRight", "home", "stop", "enable", "circle"}) {
        QTest::newRow(name) << QStringLiteral("MoverControlWidget QPushButton#pushButton_%1").arg(QLatin1String(name))
                            << QStringList{"hover", "pressed", "disabled"};
    }
}

void tst_Resources::stylesEveryState()
{
    QFETCH(QString, control);
    QFETCH(QStringList, states);
    const QString sheet = readText(QStringLiteral(":/style.qss"));
    for (const QString &state : states) {
        const QRegularExpression rule(
            QStringLiteral("(^|, ?)%1:%2\\s*[,{]").arg(QRegularExpression::escape(control), state),
            QRegularExpression::MultilineOption);
        QVERIFY2(rule.match(sheet).hasMatch(), qPrintable(state));
    }
}

void tst_Resources::keepsTextReadable_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("ground");
    const auto add = [](const char *text, std::initializer_list<const char *> grounds) {
        for (const char *ground : grounds) {
            QTest::addRow("%s on %s", text, ground) << QString::fromLatin1(text) << QString::fromLatin1(ground);
        }
    };
    add("text", {"window", "well", "panel", "titleBar", "line", "lineStrong", "control", "controlHover",
                 "controlPressed", "action", "actionHover", "actionPressed", "stop", "stopHover", "stopPressed"});
    add("textSecondary", {"window", "well", "panel", "titleBar"});
    add("focusText", {"window", "well", "panel", "titleBar"});
    // The log writes its warnings in plain red.
    add("#FF0000", {"well"});
}

void tst_Resources::keepsTextReadable()
{
    QFETCH(QString, text);
    QFETCH(QString, ground);
    const auto colours = tokens();
    const QColor textColour = colours.value(text, QColor(text));
    QVERIFY(textColour.isValid());
    QVERIFY(colours.value(ground).isValid());
    const double ratio = contrast(textColour, colours.value(ground));
    QVERIFY2(ratio >= 4.5, qPrintable(QString::number(ratio)));
}

void tst_Resources::standsInItsColours()
{
    const QString sheet = readText(QStringLiteral(":/style.qss"));
    const auto valueOf = [&sheet](const char *control, const char *property) {
        const QRegularExpression rule(
            QStringLiteral("^%1 \\{[^}]*\\b%2: ([^;]+);")
                .arg(QRegularExpression::escape(QLatin1String(control)), QLatin1String(property)),
            QRegularExpression::MultilineOption);
        return rule.match(sheet).captured(1);
    };
    QCOMPARE(QColor(valueOf("QWidget#widget_titleBar", "background-color")), QColor(43, 44, 48));
    QCOMPARE(QColor(valueOf("QWidget#widget_menuBar", "background-color")), QColor(22, 23, 26));
    QCOMPARE(valueOf("QRadioButton#radioButton_Rocker:disabled", "color"), QStringLiteral("#808080"));
    QCOMPARE(valueOf("QLabel#label_logo", "border-image"), QStringLiteral("url(:/image/company.png)"));
}

int main(int argc, char *argv[])
{
    // Sizes are compared in the pixels of the files.
    qunsetenv("QT_SCALE_FACTOR");
    QApplication app(argc, argv);
    tst_Resources test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Resources.moc"

// SPDX-License-Identifier: MIT
#include "app/StartUp.h"
#include "axis/PositionLabel.h"
#include "axis/CycleOperationWidget.h"
#include "axis/DriveParamWidget.h"
#include "axis/JogParamWidget.h"
#include "axis/MoveParamWidget.h"
#include "console/ConsoleCommands.h"
#include "console/DebugWidget.h"
#include "models/DeviceParamWidget.h"
#include "shell/OpenWindow.h"
#include "support/Chinese.h"
#include "support/TopLevel.h"

#include <QAction>
#include <QAccessible>
#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QGroupBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMetaProperty>
#include <QSpinBox>
#include <QStackedWidget>
#include <QStandardPaths>
#include <QStyleOptionButton>
#include <QStyleOptionComboBox>
#include <QStyleOptionGroupBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTableView>
#include <QTextDocumentFragment>

namespace {

using Texts = QMap<QString, QString>; // what, by where

/** Where a widget stands: its windows, containers and name, with its number among siblings of the same name. */
QString placeOf(const QWidget *widget)
{
    const QString name =
        widget->objectName().isEmpty() ? QLatin1String(widget->metaObject()->className()) : widget->objectName();
    if (!widget->parentWidget())
        return name;
    int number = 0;
    for (const QObject *sibling : widget->parentWidget()->children()) {
        if (sibling == widget)
            break;
        number += sibling->objectName() == widget->objectName() && sibling->metaObject() == widget->metaObject();
    }
    return placeOf(widget->parentWidget()) + '/' + name + (number ? QStringLiteral("#%1").arg(number) : QString());
}

bool isPartOf(const QWidget *widget, const char *className)
{
    for (const QWidget *part = widget; part; part = part->parentWidget()) {
        if (part->inherits(className))
            return true;
    }
    return false;
}

/** The windows of the program and all that is in them; not what Qt itself keeps around. */
QWidgetList programWidgets()
{
    QWidgetList widgets;
    for (QWidget *widget : QApplication::allWidgets()) {
        const bool ofTheProgram = isPartOf(widget, "MoverWidget") || isPartOf(widget, "DebugWidget");
        if (ofTheProgram)
            widgets.append(widget);
    }
    return widgets;
}

void addHeader(Texts &texts, const QString &place, const QHeaderView *header)
{
    for (int section = 0; section < header->count(); ++section)
        texts.insert(
            QStringLiteral("%1[%2]").arg(place).arg(section),
            header->model()->headerData(section, header->orientation()).toString());
}

/** Every text that the program shows on its own account: what the user types and what a log has kept is none. */
Texts shownTexts()
{
    static const QStringList ownProperties = {QStringLiteral("objectName"),     QStringLiteral("styleSheet"),
                                              QStringLiteral("inputMask"),      QStringLiteral("selectedText"),
                                              QStringLiteral("windowFilePath"), QStringLiteral("windowIconText"),
                                              QStringLiteral("currentText")};
    static const QStringList typedProperties = {QStringLiteral("text"),      QStringLiteral("displayText"),
                                                QStringLiteral("cleanText"), QStringLiteral("html"),
                                                QStringLiteral("plainText"), QStringLiteral("markdown")};
    Texts texts;
    for (const QWidget *widget : programWidgets()) {
        const QString place = placeOf(widget);
        const bool typed = (qobject_cast<const QLineEdit *>(widget)) || qobject_cast<const QTextEdit *>(widget) ||
                           qobject_cast<const QAbstractSpinBox *>(widget);
        for (int k = 0; k < widget->metaObject()->propertyCount(); ++k) {
            const QMetaProperty property = widget->metaObject()->property(k);
            const QString name = QLatin1String(property.name());
            if (property.userType() != QMetaType::QString || ownProperties.contains(name))
                continue;
            if (typed && typedProperties.contains(name))
                continue;
            QString text = property.read(widget).toString();
            if (text.contains(QLatin1String("<a "))) // a link shows its text, not its target
                text = QTextDocumentFragment::fromHtml(text).toPlainText();
            if (!text.isEmpty())
                texts.insert(place + '.' + name, text);
        }
        if (const auto *combo = qobject_cast<const QComboBox *>(widget)) {
            for (int item = 0; item < combo->count(); ++item)
                texts.insert(QStringLiteral("%1[%2]").arg(place).arg(item), combo->itemText(item));
        }
        if (const auto *tabs = qobject_cast<const QTabBar *>(widget)) {
            for (int tab = 0; tab < tabs->count(); ++tab)
                texts.insert(QStringLiteral("%1[%2]").arg(place).arg(tab), tabs->tabText(tab) + tabs->tabToolTip(tab));
        }
        if (const auto *header = qobject_cast<const QHeaderView *>(widget))
            addHeader(texts, place, header);
        for (const QAction *action : widget->actions())
            texts.insert(place + ".action", action->text());
    }
    return texts;
}

/** What a change of language must leave alone, whatever the language. */
Texts state()
{
    Texts state;
    for (const QWidget *widget : programWidgets()) {
        const QString place = placeOf(widget);
        if (place.contains(QLatin1String("qt_"))) // parts of Qt's own widgets come and go
            continue;
        QStringList values = {widget->isHidden() ? "hidden" : "shown", widget->isEnabled() ? "enabled" : "disabled"};
        if (widget->isWindow())
            values.append(QStringLiteral("at %1,%2").arg(widget->x()).arg(widget->y()));
        if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
            values.append(button->isChecked() ? "checked" : "unchecked");
        if (const auto *edit = qobject_cast<const QLineEdit *>(widget))
            values.append(edit->text());
        if (const auto *log = qobject_cast<const QTextEdit *>(widget))
            values.append(log->toHtml());
        if (const auto *spin = qobject_cast<const QAbstractSpinBox *>(widget))
            values.append(spin->text());
        if (const auto *combo = qobject_cast<const QComboBox *>(widget))
            values.append(QStringLiteral("%1 of %2").arg(combo->currentIndex()).arg(combo->count()));
        if (const auto *pages = qobject_cast<const QStackedWidget *>(widget))
            values.append(QString::number(pages->currentIndex()));
        if (const auto *tabs = qobject_cast<const QTabBar *>(widget))
            values.append(QString::number(tabs->currentIndex()));
        if (const auto *table = qobject_cast<const QTableView *>(widget)) {
            for (int row = 0; row < table->model()->rowCount(); ++row)
                values.append(table->model()->index(row, 0).data().toString());
        }
        state.insert(place, values.join(' '));
    }
    return state;
}

/** Entry by entry, because the first difference of two maps says nothing. */
QStringList differences(const Texts &before, const Texts &after)
{
    QStringList list;
    for (auto entry = before.cbegin(); entry != before.cend(); ++entry) {
        if (after.value(entry.key()) != entry.value())
            list.append(entry.key() + ": " + entry.value() + " -> " + after.value(entry.key()));
    }
    for (auto entry = after.cbegin(); entry != after.cend(); ++entry) {
        if (!before.contains(entry.key()))
            list.append(entry.key() + ": new: " + entry.value());
    }
    return list;
}

bool same(const Texts &before, const Texts &after)
{
    return differences(before, after).isEmpty();
}

// ---- Whether a text has room ---------------------------------------------------------------------------------------

QSize sizeOf(const QWidget *widget, const QString &text)
{
    return widget->fontMetrics().size(Qt::TextShowMnemonic, text);
}

QString fits(const QWidget *widget, const QString &text, QSize room)
{
    const QSize size = sizeOf(widget, text);
    if (size.width() <= room.width() && size.height() <= room.height())
        return QString();
    return QStringLiteral("%1: \"%2\" needs %3 x %4 and has %5 x %6")
        .arg(placeOf(widget), text)
        .arg(size.width())
        .arg(size.height())
        .arg(room.width())
        .arg(room.height());
}

QString labelFits(const QLabel *label)
{
    const bool rich = label->textFormat() == Qt::RichText || Qt::mightBeRichText(label->text());
    const QSize room = label->contentsRect().size() - QSize(2 * label->margin(), 2 * label->margin());
    if (!rich && !label->wordWrap())
        return fits(label, label->text(), room);
    const QSize needed =
        label->wordWrap() ? QSize(label->width(), label->heightForWidth(label->width())) : label->sizeHint();
    if (label->width() >= needed.width() && label->height() >= needed.height())
        return QString();
    return placeOf(label) + ": " + label->text();
}

QString buttonFits(const QAbstractButton *button)
{
    QStyleOptionButton option;
    option.initFrom(button);
    option.text = button->text();
    const auto element = qobject_cast<const QCheckBox *>(button)      ? QStyle::SE_CheckBoxContents
                         : qobject_cast<const QRadioButton *>(button) ? QStyle::SE_RadioButtonContents
                                                                      : QStyle::SE_PushButtonContents;
    return fits(button, button->text(), button->style()->subElementRect(element, &option, button).size());
}

QString comboFits(const QComboBox *combo)
{
    QStyleOptionComboBox option;
    option.initFrom(combo);
    option.editable = combo->isEditable();
    const QRect field =
        combo->style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, combo);
    return fits(combo, combo->currentText(), field.size());
}

QString groupFits(const QGroupBox *group)
{
    QStyleOptionGroupBox option;
    option.initFrom(group);
    option.text = group->title();
    option.subControls = QStyle::SC_GroupBoxFrame | QStyle::SC_GroupBoxLabel;
    const QRect title = group->style()->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxLabel, group);
    return group->rect().contains(title) ? QString() : placeOf(group) + ": " + group->title();
}

QString tabsFit(const QTabBar *tabs)
{
    QString clipped;
    for (int tab = 0; tab < tabs->count(); ++tab) {
        clipped += fits(tabs, tabs->tabText(tab), tabs->tabRect(tab).size());
        if (tabs->isTabVisible(tab) && !tabs->rect().contains(tabs->tabRect(tab)))
            clipped += placeOf(tabs) + ": out of sight: " + tabs->tabText(tab);
    }
    return clipped;
}

QString headerFits(const QHeaderView *header)
{
    QString clipped;
    for (int section = 0; section < header->count(); ++section)
        clipped += fits(
            header, header->model()->headerData(section, header->orientation()).toString(),
            header->orientation() == Qt::Horizontal ? QSize(header->sectionSize(section), header->height())
                                                    : QSize(header->width(), header->sectionSize(section)));
    return clipped;
}

QString textFits(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return label->text().isEmpty() ? QString() : labelFits(label);
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return button->text().isEmpty() ? QString() : buttonFits(button);
    if (const auto *combo = qobject_cast<const QComboBox *>(widget))
        return comboFits(combo);
    if (const auto *group = qobject_cast<const QGroupBox *>(widget))
        return groupFits(group);
    if (const auto *tabs = qobject_cast<const QTabBar *>(widget))
        return tabsFit(tabs);
    if (const auto *header = qobject_cast<const QHeaderView *>(widget))
        return headerFits(header);
    return QString();
}

/** Whether a widget lies within all that holds it, up to its window; what scrolls may lie elsewhere. */
QString isInside(const QWidget *widget)
{
    for (const QWidget *holder = widget->parentWidget(); holder && !widget->isWindow();
         holder = holder->parentWidget()) {
        if (holder->objectName() == QLatin1String("qt_scrollarea_viewport"))
            break;
        const QRect place(widget->mapTo(holder, QPoint()), widget->size());
        if (!holder->rect().contains(place))
            return placeOf(widget) + " leaves " + holder->objectName();
        if (holder->isWindow())
            break;
    }
    return QString();
}

bool hasText(const QWidget *widget)
{
    const auto *label = qobject_cast<const QLabel *>(widget);
    const auto *button = qobject_cast<const QAbstractButton *>(widget);
    return (label && !label->text().isEmpty()) || (button && !button->text().isEmpty()) ||
           qobject_cast<const QGroupBox *>(widget) || qobject_cast<const QComboBox *>(widget) ||
           qobject_cast<const QAbstractSpinBox *>(widget) || qobject_cast<const QLineEdit *>(widget);
}

/** Where a widget draws, in its parent: of a label only the text. */
QRect drawnRect(const QWidget *widget)
{
    const auto *label = qobject_cast<const QLabel *>(widget);
    if (!label)
        return widget->geometry();
    if (qobject_cast<const PositionLabel *>(label)) { // digits alone, in the middle, and something small below them
        const int height = label->fontMetrics().capHeight();
        const QRect area = label->contentsRect();
        return QRect(area.left(), area.center().y() - height / 2, area.width(), height).translated(label->pos());
    }
    return label->style()
        ->itemTextRect(label->fontMetrics(), label->contentsRect(), int(label->alignment()), true, label->text())
        .intersected(label->rect())
        .translated(label->pos());
}

/** The neighbours that lie over a widget, or it over them. */
QString overlaps(const QWidget *widget)
{
    QString list;
    for (const QWidget *other :
         widget->parentWidget()->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        if (other != widget && other->isVisible() && !other->isWindow() && hasText(other) &&
            drawnRect(other).intersects(drawnRect(widget)))
            list += placeOf(widget) + " meets " + other->objectName() + ' ';
    }
    return list;
}

/** What is cut off in a window that is shown, and how many texts were looked at. */
QStringList cutOff(const QWidget *window, int *texts)
{
    QStringList list;
    for (const QWidget *widget : window->findChildren<QWidget *>()) {
        if (!widget->isVisible() || widget->window() != window)
            continue;
        const QString clipped = textFits(widget);
        if (!clipped.isEmpty())
            list.append(clipped);
        if (!hasText(widget))
            continue;
        ++*texts;
        for (const QString &trouble : {isInside(widget), overlaps(widget)}) {
            if (!trouble.isEmpty())
                list.append(trouble);
        }
    }
    return list;
}

/** What a user types into, clicks or steps to; not the parts that Qt makes a control of. */
bool isControl(const QWidget *widget)
{
    const QWidget *parent = widget->parentWidget();
    return (widget->focusPolicy() != Qt::NoFocus || qobject_cast<const QAbstractButton *>(widget)) &&
           !widget->isWindow() && widget->window()->windowType() != Qt::Popup &&
           !qobject_cast<const QTabWidget *>(widget) &&
           (!widget->objectName().startsWith("qt_") || qobject_cast<const QTabBar *>(widget)) &&
           !qobject_cast<const QAbstractSpinBox *>(parent) && !qobject_cast<const QComboBox *>(parent) &&
           !qobject_cast<const QAbstractScrollArea *>(parent);
}

/** Of buttons that exclude each other Tab reaches one, and the arrow keys the others. */
bool isExclusive(const QWidget *widget)
{
    const auto *button = qobject_cast<const QAbstractButton *>(widget);
    return button && (button->autoExclusive() || (button->group() && button->group()->exclusive()));
}

/** Distinct, also among the panels. */
QString nameOf(const QWidget *widget)
{
    QString name = widget->objectName();
    for (const QWidget *parent = widget->parentWidget(); parent; parent = parent->parentWidget()) {
        if (const auto *panel = qobject_cast<const MoverControlWidget *>(parent))
            name.prepend(panel->axisName() + '/');
    }
    return name;
}

/** Whether `next` comes after `last` to someone who reads lines from above, and one column after the other. */
bool isRead(const QWidget *last, const QWidget *next)
{
    const QRect a(last->mapTo(last->window(), QPoint()), last->size());
    const QRect b(next->mapTo(next->window(), QPoint()), next->size());
    return b.center().y() > a.bottom() || b.left() > a.right();
}

} // namespace

/** The whole program, with a controller, in its two languages. */
class tst_Languages : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void everyWindowIsLookedAt();
    void onlyKnownTextsStayChinese();
    void textsWithoutChineseStayAsTheyAre();
    void anotherSwitchBringsEveryTextBack();
    void switchingKeepsTheState();
    void startsInTheStoredLanguage();
    void textsFit_data();
    void textsFit();

    void everyControlHasAName_data();
    void everyControlHasAName();
    void tabReachesEveryControlOnce_data();
    void tabReachesEveryControlOnce();

private:
    void choose(bool english);
    MoverControlWidget *panel() const { return m_open->panel(0); }
    static DebugWidget *console() { return topLevel<DebugWidget>(); }
    template <typename Widget>
    Widget *inSettings(const char *name) const
    {
        return m_open->dialog<OptionsWidget>()->findChild<Widget *>(QLatin1String(name));
    }

    std::unique_ptr<DebugLog> m_log;
    std::unique_ptr<OpenWindow> m_open;
};

void tst_Languages::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    const QString folder = QCoreApplication::applicationDirPath();
    for (const char *file : {"/mover_en_US.qm", "/font.ttf", "/deviceModelsParam"})
        QVERIFY2(QFile::exists(folder + QLatin1String(file)), file);
    StartUp::setNumberFormat();
    StartUp::installFont(folder + "/font.ttf");
    StartUp::installStyleSheet(":/style.qss");
    QVERIFY(!qApp->styleSheet().isEmpty());
}

void tst_Languages::init()
{
    QFile::remove(QCoreApplication::applicationDirPath() + "/appConfig.ini");
    QFile::remove(QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + "/appConfig.ini");
    simulator::reset();
    m_log.reset(); // one at a time, also after a failure
    m_log = std::make_unique<DebugLog>();
    m_open = std::make_unique<OpenWindow>();
    QCoreApplication::processEvents(); // the change of language at the start must not reach the panels
    m_open->connectTo();
    m_open->dialog<ConnectionWidget>()->findChild<QTimer *>()->stop(); // hides the dialog's message in five seconds
    m_open->addAxis(2);
    QTRY_COMPARE(m_open->panelNames(), QStringList({"Axis1", "Axis2", "Axis3"}));
    for (int axis = 0; axis < 3; ++axis)
        QTRY_VERIFY(m_open->panel(axis)->findChild<QLabel *>("label_currentPos")->text().startsWith("0.000"));
}

void tst_Languages::cleanup()
{
    m_open.reset();
    QVERIFY(SerialComDev::endThread(5000));
    QCOMPARE(qtWarnings(*m_log), QStringList());
    m_log.reset();
}

/** In the settings dialog, like the user, and closes it if it was not open. */
void tst_Languages::choose(bool english)
{
    auto *options = m_open->dialog<OptionsWidget>();
    const bool wasOpen = options->isVisible();
    if (!wasOpen)
        OpenWindow::click(m_open->find("pushButton_settings"));
    QWidget *const page = inSettings<QStackedWidget>("stackedWidget")->currentWidget();
    OpenWindow::click(inSettings<QPushButton>("pushButton_language"));
    auto *radio = inSettings<QRadioButton>(english ? "radioButton_en" : "radioButton_cn");
    QTest::mouseClick(radio, Qt::LeftButton, {}, QPoint(8, radio->height() / 2));
    inSettings<QStackedWidget>("stackedWidget")->setCurrentWidget(page);
    if (!wasOpen)
        options->hide();
    QCoreApplication::processEvents();
    QCOMPARE(options->language(), int(english));
}

void tst_Languages::everyWindowIsLookedAt()
{
    QSet<QString> classes;
    for (const QWidget *widget : programWidgets())
        classes.insert(QLatin1String(widget->metaObject()->className()));
    for (const char *name :
         {"AddControlsWidget", "ConnectionWidget", "CycleOperationWidget", "DebugWidget", "DeviceParamWidget",
          "DriveParamWidget", "HelpWidget", "JogParamWidget", "MoveParamWidget", "MoverControlWidget", "MoverWidget",
          "OptionsWidget", "PlaceholderWidget"})
        QVERIFY2(classes.contains(QLatin1String(name)), name);
    QVERIFY(shownTexts().size() > 300);
}

void tst_Languages::onlyKnownTextsStayChinese()
{
    QSet<QString> known = {QStringLiteral("开始心跳"), QStringLiteral("结束心跳")};
    for (const ConsoleCommand &command : consoleCommands) {
        if (isChinese(QString::fromUtf8(command.label)))
            known.insert(QString::fromUtf8(command.label));
    }
    choose(true);
    QSet<QString> found;
    const Texts texts = shownTexts();
    for (auto text = texts.cbegin(); text != texts.cend(); ++text) {
        if (!isChinese(text.value()))
            continue;
        QVERIFY2(known.contains(text.value()), qPrintable(text.key() + ": " + text.value()));
        QVERIFY2(text.key().startsWith("DebugWidget/"), qPrintable(text.key()));
        found.insert(text.value());
    }
    QCOMPARE(found, known);
}

void tst_Languages::textsWithoutChineseStayAsTheyAre()
{
    const Texts chinese = shownTexts();
    choose(true);
    const Texts english = shownTexts();
    QCOMPARE(english.keys(), chinese.keys()); // none went, none came
    QStringList changed;
    for (auto text = chinese.cbegin(); text != chinese.cend(); ++text) {
        if (!isChinese(text.value()) && english.value(text.key()) != text.value())
            changed.append(text.value() + " -> " + english.value(text.key()));
    }
    QVERIFY2(changed == QStringList{"JOG -> Jog"}, qPrintable(changed.join('\n')));
}

void tst_Languages::anotherSwitchBringsEveryTextBack()
{
    const Texts before = shownTexts();
    choose(true);
    QVERIFY(differences(before, shownTexts()).size() > 150);
    choose(false);
    QVERIFY2(same(before, shownTexts()), qPrintable(differences(before, shownTexts()).join('\n')));
    choose(true);
    const Texts english = shownTexts();
    choose(false);
    choose(true);
    QVERIFY2(same(english, shownTexts()), qPrintable(differences(english, shownTexts()).join('\n')));
}

void tst_Languages::switchingKeepsTheState()
{
    // Something of each kind that is not as it was built.
    for (QLineEdit *edit : console()->findChildren<QLineEdit *>())
        edit->setText("12.5");
    console()->findChild<QTabWidget *>("tabWidget")->setCurrentIndex(2);
    console()
        ->findChild<QTableView *>("tableView_conpen")
        ->model()
        ->setData(console()->findChild<QTableView *>("tableView_conpen")->model()->index(3, 0), "1.25");
    for (QWidget *widget : programWidgets()) {
        auto *combo = qobject_cast<QComboBox *>(widget);
        if (combo && combo->count() > 1)
            combo->setCurrentIndex(1);
    }
    for (QDoubleSpinBox *spin : panel()->findChildren<QDoubleSpinBox *>())
        spin->setValue(3.125);
    for (QSpinBox *spin : panel()->findChildren<QSpinBox *>())
        spin->setValue(7);
    panel()->findChild<CycleOperationWidget *>()->show();
    panel()->findChild<DeviceParamWidget *>()->setInputEnabled(true);
    m_open->dialog<HelpWidget>()->show();
    console()->show();
    m_open->find("pushButton_settings")->click();
    inSettings<QLineEdit>("lineEdit_motor_modelName")->setText("typed");
    inSettings<QCheckBox>("checkBox_triggerOut_2")->setChecked(true);
    inSettings<QDoubleSpinBox>("doubleSpinBox_Axis3")->setValue(-1.5);
    inSettings<QStackedWidget>("stackedWidget")->setCurrentIndex(3);
    inSettings<QPushButton>("pushButton_language")->setChecked(true); // as each switch leaves it
    emit SerialComDev::instance()->signal_stopMotor(0);
    QTRY_VERIFY(logOf(panel()).contains("停止运行"));
    QCOMPARE(
        m_open->dialog<HelpWidget>()->findChild<QLabel *>("label_firmwareVersion")->text(), QString("2.4.1 simulated"));

    // The choice of language itself is what changes.
    const auto rest = [] {
        Texts rest = state();
        for (const QString &place : rest.keys()) {
            if (place.endsWith("/radioButton_cn") || place.endsWith("/radioButton_en"))
                rest.remove(place);
        }
        return rest;
    };
    const Texts before = rest();
    simulator::clearJournal();
    choose(true);
    QVERIFY(inSettings<QRadioButton>("radioButton_en")->isChecked());
    QVERIFY2(same(before, rest()), qPrintable(differences(before, rest()).join('\n')));
    choose(false);
    QVERIFY(inSettings<QRadioButton>("radioButton_cn")->isChecked());
    QVERIFY2(same(before, rest()), qPrintable(differences(before, rest()).join('\n')));
    QCOMPARE(calls(), QStringList());
}

void tst_Languages::startsInTheStoredLanguage()
{
    choose(true);
    const Texts switched = shownTexts();
    m_open.reset();
    QVERIFY(SerialComDev::endThread(5000));
    simulator::reset();
    m_open = std::make_unique<OpenWindow>();
    m_open->connectTo();
    m_open->addAxis(2);
    QTRY_COMPARE(m_open->panelNames().size(), 3);
    QCoreApplication::processEvents();
    m_open->dialog<ConnectionWidget>()->slot_hideMsg();
    const Texts started = shownTexts();
    QStringList chinese;
    for (auto text = started.cbegin(); text != started.cend(); ++text) {
        if (isChinese(text.value()) && switched.value(text.key()) != text.value())
            chinese.append(text.key() + ": " + text.value());
    }
    QCOMPARE(chinese, QStringList());
    QVERIFY2(!isChinese(logOf(panel())), qPrintable(logOf(panel())));
}

void tst_Languages::textsFit_data()
{
    QTest::addColumn<bool>("english");
    QTest::addColumn<bool>("live"); // switched while the window is open
    QTest::newRow("Chinese") << false << false;
    QTest::newRow("English") << true << false;
    QTest::newRow("English, live") << true << true;
    QTest::newRow("Chinese again, live") << false << true;
}

void tst_Languages::textsFit()
{
    QFETCH(bool, english);
    QFETCH(bool, live);
    QStringList cut;
    int windows = 0;
    const auto look = [&](QWidget *window, const QString &page = {}) {
        const bool isPopup = qobject_cast<MotionParamPopup *>(window);
        if (isPopup) { // as by the click on its toggle: the one that is open goes before it comes
            m_open->window().activateWindow();
            QTRY_COMPARE(QGuiApplication::focusWindow(), m_open->window().windowHandle());
        }
        const bool switches = live && !isPopup; // a popup of a panel goes when the settings come
        if (switches)
            choose(!english);
        window->show();
        QVERIFY(QTest::qWaitForWindowExposed(window));
        if (switches)
            choose(english);
        else if (live) // a popup that a desktop deactivates late would close
            QVERIFY(QTest::qWaitForWindowActive(window));
        QCoreApplication::processEvents();
        int texts = 0;
        for (const QString &text : cutOff(window, &texts))
            cut.append(text);
        ++windows;
        QVERIFY2(texts > 3, window->metaObject()->className());
        if (qEnvironmentVariableIsSet("MOVER_PICTURES"))
            window->grab().save(QStringLiteral("%1/%2%3%4.png")
                                    .arg(
                                        qEnvironmentVariable("MOVER_PICTURES"), window->metaObject()->className(), page,
                                        english ? "_en" : "_cn"));
    };
    choose(english);
    m_open->rocker()->setVisible(true); // as with a joystick
    look(&m_open->window());
    for (int axis = 0; axis < 2; ++axis)
        m_open->panel(axis)->setMoveBtnEnabled(false);
    look(&m_open->window(), "_joystick");
    for (int axis = 0; axis < 2; ++axis)
        m_open->panel(axis)->setMoveBtnEnabled(true);
    panel()->findChild<DeviceParamWidget *>()->show();
    panel()->findChild<DeviceParamWidget *>()->raise();
    look(&m_open->window(), "_device");
    panel()->findChild<CycleOperationWidget *>()->show();
    panel()->findChild<CycleOperationWidget *>()->raise();
    look(&m_open->window(), "_loop");

    for (QWidget *popup : QWidgetList{
             panel()->findChild<MoveParamWidget *>(), panel()->findChild<JogParamWidget *>(),
             panel()->findChild<DriveParamWidget *>()}) {
        look(popup);
        popup->hide();
    }
    m_open->dialog<AddControlsWidget>()->setAxisNames({"Axis1", "Axis2", "Axis3"});
    for (QWidget *dialog : QWidgetList{
             m_open->dialog<AddControlsWidget>(), m_open->dialog<ConnectionWidget>(), m_open->dialog<HelpWidget>()}) {
        look(dialog);
        dialog->hide();
    }

    auto *tabs = console()->findChild<QTabWidget *>("tabWidget");
    for (int tab = 0; tab < tabs->count(); ++tab) {
        tabs->setCurrentIndex(tab);
        look(console(), QStringLiteral("_%1").arg(tab));
    }
    console()->hide();

    OpenWindow::click(m_open->find("pushButton_settings"));
    auto *pages = inSettings<QStackedWidget>("stackedWidget");
    for (int page = 0; page < pages->count(); ++page) {
        pages->setCurrentIndex(page);
        look(m_open->dialog<OptionsWidget>(), QStringLiteral("_%1").arg(page));
    }
    QCOMPARE(windows, 14 + tabs->count());
    QVERIFY2(cut.isEmpty(), qPrintable('\n' + cut.join('\n')));
}

// ---- Without eyes or mouse -----------------------------------------------------------------------------------------

void tst_Languages::everyControlHasAName_data()
{
    QTest::addColumn<bool>("english");
    QTest::newRow("Chinese") << false;
    QTest::newRow("English") << true;
    QTest::newRow("Chinese again") << false;
}

void tst_Languages::everyControlHasAName()
{
    QFETCH(bool, english);
    choose(!english);
    choose(english);
    int controls = 0;
    QStringList nameless;
    QStringList chinese;
    for (QWidget *widget : programWidgets()) {
        if (!isControl(widget))
            continue;
        ++controls;
        const QString name = QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
        const QString place = widget->window()->metaObject()->className() + QStringLiteral(", ") + widget->objectName();
        if (name.trimmed().isEmpty() && !qobject_cast<QTabBar *>(widget)) // whose tabs have names
            nameless.append(place);
        if (english && isChinese(widget->accessibleName()))
            chinese.append(place);
    }
    QCOMPARE(inSettings<QPushButton>("pushButton_close")->accessibleName(), QString(english ? "Close" : "关闭"));
    QCOMPARE(inSettings<QCheckBox>("checkBox_posConpen_close1")->text(), QString(english ? "close" : "关闭"));
    QVERIFY(controls > 200);
    QVERIFY2(nameless.isEmpty(), qPrintable('\n' + nameless.join('\n')));
    QVERIFY2(chinese.isEmpty(), qPrintable('\n' + chinese.join('\n')));
}

void tst_Languages::tabReachesEveryControlOnce_data()
{
    QTest::addColumn<QString>("window");
    for (const char *window :
         {"MoverWidget", "AddControlsWidget", "ConnectionWidget", "HelpWidget", "MoveParamWidget", "JogParamWidget",
          "DriveParamWidget", "OptionsWidget", "DebugWidget"})
        QTest::newRow(window) << window;
}

void tst_Languages::tabReachesEveryControlOnce()
{
    QFETCH(QString, window);
    QWidget *const shown = [&]() -> QWidget * {
        for (QWidget *widget : programWidgets()) {
            if (widget->metaObject()->className() == window)
                return widget;
        }
        return nullptr;
    }();
    auto *tabs = shown->findChild<QTabWidget *>();
    auto *pages = shown->findChild<QStackedWidget *>();
    const int count = tabs ? tabs->count() : window == "OptionsWidget" ? pages->count() : 1;
    for (int page = 0; page < count; ++page) {
        if (tabs)
            tabs->setCurrentIndex(page);
        else if (count > 1)
            pages->setCurrentIndex(page);
        shown->show();
        QApplication::setActiveWindow(shown);
        QVERIFY(QTest::qWaitForWindowActive(shown));
        QStringList left;
        for (QWidget *widget : programWidgets()) {
            if (isControl(widget) && widget->window() == shown && widget->isVisible() && widget->isEnabled() &&
                (widget->focusPolicy() & Qt::TabFocus) && !isExclusive(widget))
                left.append(nameOf(widget));
        }
        QVERIFY(!left.isEmpty());
        QWidget *const first = QApplication::focusWidget();
        QStringList twice;
        QWidget *last = nullptr;
        QStringList backwards;
        do {
            QWidget *focus = QApplication::focusWidget();
            if (!isExclusive(focus) && !left.removeOne(nameOf(focus)))
                twice.append(nameOf(focus));
            // The buttons stand beside or above the fields, and come after them.
            if (last && !isRead(last, focus) && !qobject_cast<QAbstractButton *>(focus))
                backwards.append(nameOf(last) + " -> " + nameOf(focus));
            last = focus;
            QTest::keyClick(focus, Qt::Key_Tab);
        } while (QApplication::focusWidget() != first && twice.size() < 5);
        QVERIFY2(left.isEmpty(), qPrintable("never: " + left.join(", ")));
        QVERIFY2(twice.isEmpty(), qPrintable("twice: " + twice.join(", ")));
        QVERIFY2(backwards.size() <= 1, qPrintable("backwards: " + backwards.join(", "))); // one is from end to start
    }
    shown->hide();
}

int main(int argc, char *argv[])
{
    StartUp::prepareApplication();
    QApplication application(argc, argv);
    tst_Languages test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_Languages.moc"

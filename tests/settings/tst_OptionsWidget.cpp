// SPDX-License-Identifier: MIT
#include "tests/settings/OptionsDialog.h"

#include "support/MessageBoxes.h"
#include "support/Mouse.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QGraphicsDropShadowEffect>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>

namespace {

void putCatalogue(const QString &name)
{
    const QString file = OptionsDialog::programFile(name);
    QFile::remove(file);
    QVERIFY(QFile::copy(ENGLISH_CATALOGUE, file));
}

/** Another window of the program. */
class Window final : public QWidget
{
public:
    int m_languageChanges = 0;

protected:
    void changeEvent(QEvent *event) override
    {
        if (event->type() == QEvent::LanguageChange)
            ++m_languageChanges;
        QWidget::changeEvent(event);
    }
};

} // namespace

/** The dialog's frame and the language page. */
class tst_OptionsWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init() { m_dialog = std::make_unique<OptionsDialog>(); }
    void cleanup() { m_dialog.reset(); }

    // Frame
    void isAFramelessModalDialogWithAShadow();
    void opensOnTheLanguagePage();
    void pageButtonsShowTheirPagesAndExcludeEachOther();
    void cautionComesBeforeTheMotorParameters();
    void keepsItsPageBetweenOpenings();
    void closeButtonHidesIt();
    void escapeHidesIt();
    void allOfItIsReachedByKeyboard();
    void isDraggedByItsTitleOnly();

    // Language
    void startsInChineseWithoutASettingsFile();
    void clickOnEnglishAppliesAndStoresIt();
    void clickOnChineseAppliesAndStoresIt();
    void storedLanguageIsAppliedOnConstruction();
    void showingTheStoredLanguageWritesNothing();
    void withoutCatalogueItStaysChineseAndKeepsTheChoice();
    void takesNoOtherCatalogue_data();
    void takesNoOtherCatalogue();
    void damagedCatalogueLeavesTheLanguage_data();
    void damagedCatalogueLeavesTheLanguage();
    void otherCodesChangeNothing();
    void otherCodeLeavesEnglish();
    void checkingChineseAloneMeansChinese();
    void uncheckingChineseAloneMeansEnglish();
    void uncheckingEnglishAloneMeansChineseAndReadsTheChoiceBack();
    void otherWindowsFollow();
    void unchangedLanguageDisturbsNobody();
    void qtsOwnTextsFollow();
    void leavesNoTranslatorBehind();

    // Texts
    void speaksBothLanguages_data();
    void speaksBothLanguages();
    void boxesSpeakBothLanguages();
    void messageFollowsTheLanguage_data();
    void messageFollowsTheLanguage();
    void textsFitInBothLanguages_data();
    void textsFitInBothLanguages();

private:
    bool isOn(const QString &button) { return m_dialog->find<QAbstractButton>(button)->isChecked(); }
    QString title() { return m_dialog->find<QLabel>("label")->text(); }
    QString page() { return m_dialog->find<QStackedWidget>("stackedWidget")->currentWidget()->objectName(); }
    void chooseEnglish();

    std::unique_ptr<OptionsDialog> m_dialog;
};

void tst_OptionsWidget::initTestCase()
{
    // As the program looks.
    QFont font = QApplication::font();
    font.setPixelSize(16);
    QApplication::setFont(font);
    QFile sheet(":/style.qss");
    QVERIFY(sheet.open(QIODevice::ReadOnly));
    qApp->setStyleSheet(QString::fromUtf8(sheet.readAll()));
}

void tst_OptionsWidget::chooseEnglish()
{
    putCatalogue("mover_en_US.qm");
    m_dialog->open("language");
    m_dialog->click("radioButton_en");
    QCOMPARE(title(), QString("Settings"));
}

void tst_OptionsWidget::isAFramelessModalDialogWithAShadow()
{
    const OptionsWidget *dialog = m_dialog->get();
    QVERIFY(dialog->isWindow());
    QVERIFY(dialog->windowFlags() & Qt::FramelessWindowHint);
    QVERIFY(dialog->testAttribute(Qt::WA_TranslucentBackground));
    QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
    const auto *shadow =
        qobject_cast<QGraphicsDropShadowEffect *>(m_dialog->find<QWidget>("widget_back")->graphicsEffect());
    QVERIFY(shadow);
    QCOMPARE(shadow->blurRadius(), 10.0);
    QCOMPARE(shadow->offset(), QPointF(0, 0));
    QCOMPARE(shadow->color(), QColor(Qt::gray));
}

void tst_OptionsWidget::opensOnTheLanguagePage()
{
    QCOMPARE(page(), QString("page_language"));
    QVERIFY(isOn("pushButton_language"));
}

void tst_OptionsWidget::pageButtonsShowTheirPagesAndExcludeEachOther()
{
    const MessageBoxes boxes("确定");
    const QStringList names = {"trigger", "motorParam", "posConpen", "language"};
    m_dialog->open("language");
    for (const QString &clicked : names) {
        m_dialog->click("pushButton_" + clicked);
        QCOMPARE(page(), "page_" + clicked);
        for (const QString &name : names)
            QCOMPARE(isOn("pushButton_" + name), name == clicked);
    }
}

void tst_OptionsWidget::cautionComesBeforeTheMotorParameters()
{
    int seen = 0;
    const MessageBoxes boxes([&](QMessageBox *box) {
        const auto answer = qScopeGuard([box] { MessageBoxes::press(box, "确定"); });
        ++seen;
        QCOMPARE(box->windowTitle(), QString("提示"));
        QCOMPARE(box->icon(), QMessageBox::Warning);
        QCOMPARE(box->standardButtons(), QMessageBox::Ok);
        QCOMPARE(box->windowModality(), Qt::ApplicationModal);
        QVERIFY(!box->parentWidget());
        if (seen == 1)
            QCOMPARE(page(), QString("page_language"));
    });
    m_dialog->open("language");
    for (int click = 1; click <= 3; ++click) { // also when the page is already there
        m_dialog->click("pushButton_motorParam");
        QCOMPARE(seen, click);
        QCOMPARE(page(), QString("page_motorParam"));
    }
    const QString caution = "修改电机参数可能会导致电机故障，请谨慎修改！";
    QCOMPARE(boxes.texts(), QStringList({caution, caution, caution}));
}

void tst_OptionsWidget::keepsItsPageBetweenOpenings()
{
    m_dialog->open("language");
    m_dialog->click("pushButton_trigger");
    m_dialog->click("pushButton_close");
    m_dialog->get()->loadDeviceSettings();
    m_dialog->get()->show();
    QCOMPARE(page(), QString("page_trigger"));
    QVERIFY(isOn("pushButton_trigger"));
}

void tst_OptionsWidget::closeButtonHidesIt()
{
    m_dialog->open("language");
    const QPointer<OptionsWidget> dialog = m_dialog->get();
    m_dialog->click("pushButton_close");
    QVERIFY(dialog);
    QVERIFY(!dialog->isVisible());
}

void tst_OptionsWidget::escapeHidesIt()
{
    m_dialog->open("trigger");
    QTest::keyClick(m_dialog->find<QDoubleSpinBox>("doubleSpinBox_Axis1"), Qt::Key_Escape);
    QVERIFY(!m_dialog->get()->isVisible());
}

void tst_OptionsWidget::allOfItIsReachedByKeyboard()
{
    m_dialog->open("language");
    m_dialog->find<QPushButton>("pushButton_language")->setFocus();
    // The page buttons are one stop of the Tab key; the arrow keys go from one to the next.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QCOMPARE(page(), QString("page_trigger"));

    // Every control of the page, and round to where it began.
    const QWidget *const start = QApplication::focusWidget();
    QStringList reached;
    do {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        reached.append(QApplication::focusWidget()->objectName());
    } while (QApplication::focusWidget() != start && reached.size() < 50);
    for (const char *name :
         {"checkBox_triggerIn_1", "checkBox_triggerOut_2", "doubleSpinBox_Axis3", "pushButton_close",
          "pushButton_trigger"})
        QVERIFY2(reached.contains(name), qPrintable(QString(name) + " not in " + reached.join(' ')));
}

void tst_OptionsWidget::isDraggedByItsTitleOnly()
{
    m_dialog->open("language");
    OptionsWidget *dialog = m_dialog->get();
    dialog->move(100, 100);
    QWidget *bar = m_dialog->find<QWidget>("widget_title");
    const QPoint start = bar->mapTo(dialog, QPoint(200, 10));
    Mouse::press(dialog, start);
    Mouse::move(dialog, start + QPointF(30.5, -20.4));
    QCOMPARE(dialog->pos(), QPoint(131, 80));
    Mouse::release(dialog, start);
    Mouse::move(dialog, start + QPointF(50, 50));
    QCOMPARE(dialog->pos(), QPoint(131, 80));

    QWidget *body = m_dialog->find<QWidget>("page_language");
    const QPoint below = body->mapTo(dialog, body->rect().center());
    Mouse::press(dialog, below);
    Mouse::move(dialog, below + QPoint(40, 40));
    QCOMPARE(dialog->pos(), QPoint(131, 80));
}

void tst_OptionsWidget::startsInChineseWithoutASettingsFile()
{
    putCatalogue("mover_en_US.qm");
    QCOMPARE(title(), QString("设置"));
    QCOMPARE(m_dialog->get()->language(), 0);
    QVERIFY(isOn("radioButton_cn"));
    QVERIFY(!isOn("radioButton_en"));
    QCOMPARE(OptionsDialog::stored(), -100); // showing the default is no choice
}

void tst_OptionsWidget::clickOnEnglishAppliesAndStoresIt()
{
    chooseEnglish();
    QCOMPARE(m_dialog->get()->language(), 1);
    QVERIFY(isOn("radioButton_en"));
    QVERIFY(!isOn("radioButton_cn"));
    QCOMPARE(OptionsDialog::stored(), 1);
    m_dialog->click("radioButton_en"); // again
    QCOMPARE(title(), QString("Settings"));
    QCOMPARE(OptionsDialog::stored(), 1);
}

void tst_OptionsWidget::clickOnChineseAppliesAndStoresIt()
{
    chooseEnglish();
    m_dialog->click("radioButton_cn");
    QCOMPARE(title(), QString("设置"));
    QCOMPARE(m_dialog->get()->language(), 0);
    QVERIFY(isOn("radioButton_cn"));
    QVERIFY(!isOn("radioButton_en"));
    QCOMPARE(OptionsDialog::stored(), 0);
}

void tst_OptionsWidget::storedLanguageIsAppliedOnConstruction()
{
    putCatalogue("mover_en_US.qm");
    OptionsDialog::store(1);
    QCOMPARE(title(), QString("Settings")); // never shown so far
    QCOMPARE(m_dialog->get()->language(), 1);
    QVERIFY(isOn("radioButton_en"));

    m_dialog->open("language");
    m_dialog->click("radioButton_cn");
    m_dialog->restart();
    QCOMPARE(title(), QString("设置"));
    QVERIFY(isOn("radioButton_cn"));
}

void tst_OptionsWidget::showingTheStoredLanguageWritesNothing()
{
    putCatalogue("mover_en_US.qm");
    const QByteArray text = "; by hand\n[language]\ntype=1\n"; // would not be written like that
    QFile file(OptionsDialog::programFile("appConfig.ini"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), text.size());
    file.close();
    QCOMPARE(title(), QString("Settings"));
    QVERIFY(isOn("radioButton_en"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), text);
}

void tst_OptionsWidget::withoutCatalogueItStaysChineseAndKeepsTheChoice()
{
    OptionsDialog::store(1);
    QCOMPARE(title(), QString("设置"));
    QVERIFY(isOn("radioButton_en"));

    m_dialog->open("language");
    const Window window;
    m_dialog->click("radioButton_cn");
    m_dialog->click("radioButton_en");
    QCoreApplication::processEvents();
    QCOMPARE(window.m_languageChanges, 0);
    QCOMPARE(title(), QString("设置"));
    QVERIFY(isOn("radioButton_en"));
    QCOMPARE(OptionsDialog::stored(), 1);

    putCatalogue("mover_en_US.qm");
    m_dialog->restart();
    QCOMPARE(title(), QString("Settings"));
}

void tst_OptionsWidget::takesNoOtherCatalogue_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"mover_en_US.qm.qm", "mover_en_US", "mover_en.qm", "mover.qm"})
        QTest::newRow(name) << name;
}

void tst_OptionsWidget::takesNoOtherCatalogue()
{
    QFETCH(QString, name);
    putCatalogue(name);
    OptionsDialog::store(1);
    const QString shown = title();
    QFile::remove(OptionsDialog::programFile(name));
    QCOMPARE(shown, QString("设置"));
}

void tst_OptionsWidget::damagedCatalogueLeavesTheLanguage_data()
{
    QTest::addColumn<QByteArray>("contents");
    QFile file(ENGLISH_CATALOGUE);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QByteArray wild = file.readAll();
    wild.replace(QByteArray::fromHex("06000000"), QByteArray::fromHex("067fffff")); // the texts' lengths
    QTest::newRow("no catalogue") << QByteArray("no catalogue");
    QTest::newRow("lengths that lead out of it") << wild;
}

void tst_OptionsWidget::damagedCatalogueLeavesTheLanguage()
{
    QFETCH(QByteArray, contents);
    QFile file(OptionsDialog::programFile("mover_en_US.qm"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(contents);
    file.close();
    OptionsDialog::store(1);
    QCOMPARE(title(), QString("设置"));
    QVERIFY(isOn("radioButton_en"));
}

void tst_OptionsWidget::otherCodesChangeNothing()
{
    putCatalogue("mover_en_US.qm");
    OptionsDialog::store(7);
    QCOMPARE(title(), QString("设置"));
    QCOMPARE(m_dialog->get()->language(), 7);
    QVERIFY(!isOn("radioButton_cn"));
    QVERIFY(!isOn("radioButton_en"));
    QCOMPARE(OptionsDialog::stored(), 7);

    // Either language can be chosen from there.
    m_dialog->open("language");
    m_dialog->click("radioButton_en");
    QCOMPARE(title(), QString("Settings"));
    QCOMPARE(OptionsDialog::stored(), 1);
}

void tst_OptionsWidget::otherCodeLeavesEnglish()
{
    chooseEnglish();
    m_dialog->get()->setLanguage(7);
    QCOMPARE(title(), QString("Settings"));
}

void tst_OptionsWidget::checkingChineseAloneMeansChinese()
{
    chooseEnglish();
    QVERIFY(QMetaObject::invokeMethod(m_dialog->get(), "on_radioButton_cn_toggled", Q_ARG(bool, true)));
    QCOMPARE(title(), QString("设置"));
    QCOMPARE(OptionsDialog::stored(), 0);
    QVERIFY(isOn("radioButton_en")); // nothing is read back
}

void tst_OptionsWidget::uncheckingChineseAloneMeansEnglish()
{
    putCatalogue("mover_en_US.qm");
    QVERIFY(QMetaObject::invokeMethod(m_dialog->get(), "on_radioButton_cn_toggled", Q_ARG(bool, false)));
    QCOMPARE(title(), QString("Settings"));
    QCOMPARE(OptionsDialog::stored(), 1);
    QVERIFY(isOn("radioButton_cn")); // nothing is read back
}

void tst_OptionsWidget::uncheckingEnglishAloneMeansChineseAndReadsTheChoiceBack()
{
    chooseEnglish();
    QVERIFY(QMetaObject::invokeMethod(m_dialog->get(), "on_radioButton_en_toggled", Q_ARG(bool, false)));
    QCOMPARE(title(), QString("设置"));
    QCOMPARE(OptionsDialog::stored(), 0);
    QVERIFY(isOn("radioButton_cn"));
}

void tst_OptionsWidget::otherWindowsFollow()
{
    Window window;
    chooseEnglish();
    QTRY_VERIFY(window.m_languageChanges > 0);
    QCoreApplication::processEvents();
    window.m_languageChanges = 0;
    m_dialog->click("radioButton_cn");
    QTRY_VERIFY(window.m_languageChanges > 0);
}

void tst_OptionsWidget::unchangedLanguageDisturbsNobody()
{
    chooseEnglish();
    Window window;
    QCoreApplication::processEvents();
    window.m_languageChanges = 0;
    m_dialog->click("radioButton_en");
    m_dialog->get()->setLanguage(1);
    m_dialog->get()->loadLanguage();
    QCoreApplication::processEvents();
    QCOMPARE(window.m_languageChanges, 0);
}

void tst_OptionsWidget::qtsOwnTextsFollow()
{
    const auto texts = [] {
        QMessageBox box(QMessageBox::Question, {}, {}, QMessageBox::Yes | QMessageBox::No | QMessageBox::Ok);
        QLineEdit edit;
        const std::unique_ptr<QMenu> menu(edit.createStandardContextMenu());
        return QStringList(
            {box.button(QMessageBox::Yes)->text(), box.button(QMessageBox::No)->text(),
             box.button(QMessageBox::Ok)->text(), menu->actions().value(0)->text().section('\t', 0, 0)});
    };
    const QStringList chinese = {"是(&Y)", "否(&N)", "确定", "撤消(&U)"};
    m_dialog->get();
    QCOMPARE(texts(), chinese);
    chooseEnglish();
    QCOMPARE(texts(), QStringList({"&Yes", "&No", "OK", "&Undo"}));
    m_dialog->click("radioButton_cn");
    QCOMPARE(texts(), chinese);
}

void tst_OptionsWidget::leavesNoTranslatorBehind()
{
    chooseEnglish();
    QCOMPARE(QCoreApplication::translate("OptionsWidget", "语言"), QString("Language"));
    m_dialog->restart();
    QCOMPARE(QCoreApplication::translate("OptionsWidget", "语言"), QString("语言"));
    QCOMPARE(QCoreApplication::translate("QPlatformTheme", "&Yes"), QString("&Yes"));
}

void tst_OptionsWidget::speaksBothLanguages_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<QString>("english");
    const auto add = [](const QString &name, const char *chinese, const char *english, const char *property = "text") {
        QTest::newRow(qPrintable(name)) << name << property << chinese << english;
    };
    add("OptionsWidget", "设置", "Settings", "windowTitle");
    add("label", "设置", "Settings");
    add("pushButton_language", "语言", "Language");
    add("pushButton_trigger", "触发", "Trigger");
    add("pushButton_motorParam", "电机参数", "Motor Param");
    add("pushButton_posConpen", "位置补偿", "Pos Conpen");
    add("radioButton_cn", "中文", "Chinese");
    add("radioButton_en", "英文", "English");
    const std::pair<const char *, const char *> axes[] = {
        {"1号轴", "Asix 1"}, {"2号轴", "Axis 2"}, {"3号轴", "Axis 3"}};
    for (int n = 1; n <= 3; ++n) {
        const auto &[chinese, english] = axes[n - 1];
        add(QString("groupBox_trigger_%1").arg(n), chinese, english, "title");
        add(QString("checkBox_triggerIn_%1").arg(n), "触发输入", "Trigger IN");
        add(QString("checkBox_triggerOut_%1").arg(n), "触发输出", "Trigger OUT");
        add(QString("label_disp_%1").arg(n), "位移量：", "displacement:");
        add(QString("groupBox_posConpen_%1").arg(n), chinese, english, "title");
        add(QString("checkBox_posConpen_on%1").arg(n), "启用", "open");
        add(QString("checkBox_posConpen_close%1").arg(n), "关闭", "close");
    }
    add("label_motorAxis", "轴号：", "Axis NO.:");
    add("label_motor_modelName", "型号名称：", "Model name");
    add("label_motor_serialNumber", "序列号：", "Serial NO.");
    add("label_motor_pulse", "一圈的脉冲数：", "Pulses/cycle");
    add("label_motor_helicalPitch", "导程：", "Lead");
    add("label_motor_restoreSpeed", "回原点的速度：", "Reset speed");
    add("label_motor_Motor_type", "位移台类型：", "Stage type");
    add("label_motor_unitType", "单位类型：", "Unit type");
    add("label_motor_PLimitPolarity", "正限位极性：", "P-LSP");
    add("label_motor_NLimitPolarity", "负限位极性：", "N-LSP");
    add("label_motor_zeroPolarity", "零点位极性：", "Z-PSP");
    add("label_motor_derection", "运动方向：", "Moving direction");
    add("label_motor_limitDerection", "限位方向：", "Limiting direction");
    add("pushButton_ReadParam", "读出参数", "ReadParam");
    add("pushButton_WriteParam", "写入参数", "WriteParam");
}

void tst_OptionsWidget::speaksBothLanguages()
{
    QFETCH(QString, name);
    QFETCH(QString, property);
    QFETCH(QString, chinese);
    QFETCH(QString, english);
    QWidget *widget = name == "OptionsWidget" ? m_dialog->get() : m_dialog->find<QWidget>(name);
    const auto text = [&] { return widget->property(qPrintable(property)).toString(); };
    QCOMPARE(text(), chinese);
    chooseEnglish();
    QCOMPARE(text(), english);
    m_dialog->click("radioButton_cn");
    QCOMPARE(text(), chinese);
}

void tst_OptionsWidget::boxesSpeakBothLanguages()
{
    m_dialog->connectController();
    m_dialog->get()->loadDeviceSettings();
    chooseEnglish();

    QStringList titles;
    const auto pressing = [&titles](const QString &button) {
        return [&titles, button](QMessageBox *box) {
            titles.append(box->windowTitle());
            MessageBoxes::press(box, button);
        };
    };
    {
        const MessageBoxes boxes(pressing("OK"));
        m_dialog->click("pushButton_motorParam");
        QCOMPARE(
            boxes.texts(),
            QStringList("Modifying the motor parameters may cause motor failure, please proceed with caution!"));
    }
    {
        const MessageBoxes boxes(pressing("&No"));
        m_dialog->click("pushButton_WriteParam");
        QCOMPARE(boxes.texts(), QStringList("Are you sure you want to modify the motor parameters?"));
    }
    QCOMPARE(titles, QStringList({"Message", "Message"}));
    {
        const MessageBoxes boxes("确认"); // the buttons of the shared box are not in this catalogue
        m_dialog->click("pushButton_trigger");
        m_dialog->find<QDoubleSpinBox>("doubleSpinBox_Axis1")->setValue(5000);
        m_dialog->click("checkBox_triggerIn_1");
        simulator::failCall("getMotorModelName", -9);
        m_dialog->click("checkBox_triggerIn_1");
        QCOMPARE(
            boxes.texts(), QStringList(
                               {"relative displacement out of range! [-100, 100]",
                                "Please set according to the \nactual travel of the stage!"}));
    }
}

void tst_OptionsWidget::messageFollowsTheLanguage_data()
{
    QTest::addColumn<QString>("failing");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("chinese");
    QTest::addColumn<QString>("english");
    QTest::newRow("read failed") << "getMotorParams"
                                 << "pushButton_ReadParam"
                                 << "读取电机参数失败：error（-9）"
                                 << "Failed to read motor parameters: error (-9)";
    QTest::newRow("read before write failed") << "getMotorParams"
                                              << "pushButton_WriteParam"
                                              << "写入电机参数失败：error（1000）"
                                              << "Failed to write motor parameters: error (1000)";
    QTest::newRow("write failed") << "setMotorParams"
                                  << "pushButton_WriteParam"
                                  << "写入电机参数失败：error（-9）"
                                  << "Failed to write motor parameters: error (-9)";
    QTest::newRow("written") << ""
                             << "pushButton_WriteParam"
                             << "写入电机参数成功"
                             << "Write motor parameters successfully";
}

void tst_OptionsWidget::messageFollowsTheLanguage()
{
    QFETCH(QString, failing);
    QFETCH(QString, button);
    QFETCH(QString, chinese);
    QFETCH(QString, english);
    const auto message = [this] { return m_dialog->find<QLabel>("label_msg")->text(); };
    m_dialog->connectController();
    m_dialog->open("motorParam");
    m_dialog->click("pushButton_ReadParam");
    if (!failing.isEmpty())
        simulator::failCall(failing.toStdString(), -9);
    {
        const MessageBoxes boxes("是(&Y)");
        m_dialog->click(button);
    }
    QCOMPARE(message(), chinese);
    chooseEnglish();
    QCOMPARE(message(), english);
    m_dialog->click("radioButton_cn");
    QCOMPARE(message(), chinese);
}

void tst_OptionsWidget::textsFitInBothLanguages_data()
{
    QTest::addColumn<bool>("english");
    QTest::addColumn<QString>("pageName");
    for (const char *pageName : {"language", "trigger", "motorParam", "posConpen"}) {
        QTest::addRow("%s Chinese", pageName) << false << pageName;
        QTest::addRow("%s English", pageName) << true << pageName;
    }
}

void tst_OptionsWidget::textsFitInBothLanguages()
{
    QFETCH(bool, english);
    QFETCH(QString, pageName);
    if (english)
        chooseEnglish();
    m_dialog->connectController();
    m_dialog->find<QDoubleSpinBox>("doubleSpinBox_Axis1")->setValue(-9999999.999);
    simulator::failCall("getMotorParams", -2147483647);
    m_dialog->open("motorParam");
    m_dialog->click("pushButton_ReadParam"); // the longest message
    m_dialog->open(pageName);
    QCoreApplication::processEvents(); // the layouts take in the new texts

    int texts = 0;
    for (const QWidget *widget : m_dialog->get()->findChildren<QWidget *>()) {
        const auto *button = qobject_cast<const QAbstractButton *>(widget);
        const bool hasText = (button && !button->text().isEmpty()) || qobject_cast<const QLabel *>(widget) ||
                             qobject_cast<const QGroupBox *>(widget) ||
                             qobject_cast<const QAbstractSpinBox *>(widget) || qobject_cast<const QComboBox *>(widget);
        if (!hasText || !widget->isVisible())
            continue;
        ++texts;
        QVERIFY2(
            widget->width() >= widget->sizeHint().width() && widget->height() >= widget->sizeHint().height(),
            qPrintable(QString("%1 is %2 x %3 and needs %4 x %5")
                           .arg(widget->objectName())
                           .arg(widget->width())
                           .arg(widget->height())
                           .arg(widget->sizeHint().width())
                           .arg(widget->sizeHint().height())));
        QVERIFY2(
            m_dialog->get()->rect().contains(QRect(widget->mapTo(m_dialog->get(), QPoint()), widget->size())),
            qPrintable(widget->objectName()));
    }
    QVERIFY2(texts >= 7, qPrintable(QString::number(texts))); // title, four page buttons, two on the page at least
    if (qEnvironmentVariableIsSet("MOVER_PICTURES"))
        m_dialog->get()->grab().save(
            qEnvironmentVariable("MOVER_PICTURES") + "/options_" + pageName + (english ? "_en.png" : "_cn.png"));
}

QTEST_MAIN(tst_OptionsWidget)
#include "tst_OptionsWidget.moc"

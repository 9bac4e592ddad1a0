// SPDX-License-Identifier: MIT
#include "models/AddControlsWidget.h"

#include "device/LibraryLock.h"
#include "device/SerialComDev.h"
#include "models/StageParams.h"
#include "controllers/simulated/SimulatorControl.h"
#include "support/Catalogue.h"
#include "support/FailOnDeadSlot.h"
#include "support/MessageBoxes.h"
#include "support/Mouse.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QGraphicsDropShadowEffect>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QRegularExpression>
#include <QtTest>

#include <cstring>
#include <thread>

namespace {

constexpr int controllerId = 1001; // the one of the default scenario
const QString error = "参数配置错误!请重试。";

QString modelPath()
{
    return QCoreApplication::applicationDirPath() + "/deviceModelsParam";
}

void writeModelFile(const QByteArray &contents)
{
    QFile file(modelPath());
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("cannot write the model file");
}

/** A model that the controller accepts; `changes` replace or add members. */
QJsonObject model(const QString &name, int moveType, const QJsonObject &changes = {})
{
    QJsonObject json{{"name", name},        {"moveType", moveType}, {"pulseOneCircle", 200}, {"dispOneCircle", 0.1},
                     {"restoreSpeed", 5},   {"unitString", "mm"},   {"optOrder", "NZP"},     {"maxSpeed", 20},
                     {"maxAcc", 100},       {"minPos", -50},        {"maxPos", 50},          {"returnTrip", -3},
                     {"maxRockerSpeed", 10}};
    for (auto change = changes.begin(); change != changes.end(); ++change)
        json[change.key()] = change.value();
    return json;
}

QByteArray fileOf(const QJsonArray &models)
{
    return QJsonDocument(QJsonObject{{"MoverModels", models}}).toJson();
}

/** Two linear models and one each of two other types; no lifting stage. */
QJsonArray fewModels()
{
    return {model("LIN-50", 0), model("LIN-100", 0), model("ROT-60", 1), model("ANG-10", 2)};
}

/** Linear models "LIN-0" to "LIN-999". */
QByteArray manyModels()
{
    QJsonArray models;
    for (int i = 0; i < 1000; ++i)
        models.append(model(QString("LIN-%1").arg(i), 0));
    return fileOf(models);
}

QStringList textsOf(const QComboBox *box)
{
    QStringList texts;
    for (int i = 0; i < box->count(); ++i)
        texts << box->itemText(i);
    return texts;
}

} // namespace

class tst_AddControlsWidget : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void showsItsTexts();
    void isFramelessTranslucentAndModal();
    void startsWithLinearStages();
    void hasExactlyOneTypeChecked();

    void offersTheGivenAxes();
    void offersModelsOfTheCheckedType();
    void choosesTheFirstModelOfANewType();
    void keepsTheTypeBetweenOpenings();
    void offersParsedModelsFromTheNextTypeOn();
    void keepsTheChoiceWhenTheFileIsMissing();
    void refillsFromTheFormerModelsWhenTheFileIsBroken_data();
    void refillsFromTheFormerModelsWhenTheFileIsBroken();
    void emptiesTheListWhenTheFileHasNoModels();
    void explainsAnEmptyModelList();

    void confirmDoesNothingWithoutAxisModelOrName();
    void writesTheModelToTheChosenAxis();
    void writesUnderTheMutexAndTheBusyCursorFromTheGuiThread();
    void takesTheAxisNumberFromItsText_data();
    void takesTheAxisNumberFromItsText();
    void announcesTheAxisAndCloses();
    void announcesTheStageTypeOfEachButton_data();
    void announcesTheStageTypeOfEachButton();
    void saysWhenTheControllerRefuses();
    void saysWhenTheModelHasNoRecord();
    void sendsTheNextRecordWhenAnotherTypeTookTheName();
    void logsTheConfirmedModel();

    void closesByItsButton();
    void closesByEscape();
    void confirmsByReturn();
    void takesATypedNameAtOnce();
    void findsTypedModel_data();
    void findsTypedModel();
    void findsTypedModelInTheOpenList();
    void movesByItsTitleBarOnly();
    void changesLanguageAndKeepsTheChoices();

private:
    template <typename Widget>
    Widget *find(const char *name) const
    {
        auto *widget = m_dialog->findChild<Widget *>(name);
        if (!widget)
            qFatal("no %s", name);
        return widget;
    }
    QComboBox *models() const { return find<QComboBox>("comboBox_models"); }
    QComboBox *axes() const { return find<QComboBox>("comboBox_Axsi"); }
    void click(const char *button) const { QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton); }
    void open(const QByteArray &file);

    FailOnDeadSlot m_deadSlots;
    std::unique_ptr<AddControlsWidget> m_dialog;
};

void tst_AddControlsWidget::initTestCase()
{
    // A typed search begins again after this pause, and a loaded machine pauses between two keys.
    QApplication::setKeyboardInputInterval(60000);

    // The dialog registers the record as a meta-type. Only here: once it is registered it stays so.
    QCOMPARE(QMetaType::type("MoverDevParam"), int(QMetaType::UnknownType));
    const AddControlsWidget dialog;
    QVERIFY(QMetaType::type("MoverDevParam") != QMetaType::UnknownType);
}

void tst_AddControlsWidget::init()
{
    simulator::reset();
    QCOMPARE(SerialComDev::instance()->open(controllerId), controllerId);
    simulator::clearJournal();
    m_dialog = std::make_unique<AddControlsWidget>();
    open(fileOf(fewModels()));
}

void tst_AddControlsWidget::cleanup()
{
    m_dialog.reset();
    simulator::releaseHung();
    QVERIFY(SerialComDev::endThread(5000));
    QFile::remove(modelPath());
}

/** As the main window opens the dialog. */
void tst_AddControlsWidget::open(const QByteArray &file)
{
    writeModelFile(file);
    m_dialog->setAxisNames({"Axis1", "Axis2", "Axis3"});
    m_dialog->loadModelsData();
    m_dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
}

void tst_AddControlsWidget::showsItsTexts()
{
    QCOMPARE(find<QLabel>("label_title")->text(), QString("添加控制器"));
    QCOMPARE(find<QPushButton>("pushButton_lineControl")->text(), QString("直线位移台"));
    QCOMPARE(find<QPushButton>("pushButton_rotationControl")->text(), QString("旋转位移台"));
    QCOMPARE(find<QPushButton>("pushButton_angularControl")->text(), QString("角位移台"));
    QCOMPARE(find<QPushButton>("pushButton_liftingControl")->text(), QString("升降移台"));
    QCOMPARE(find<QLabel>("label_model")->text(), QString("设备型号："));
    QCOMPARE(find<QLabel>("label_Axsi")->text(), QString("设备序号："));
    QCOMPARE(find<QPushButton>("pushButton_confirm")->text(), QString("确定"));
    QVERIFY(find<QWidget>("widget_types")->isAncestorOf(find<QPushButton>("pushButton_liftingControl")));
    QVERIFY(find<QWidget>("widget_title")->isAncestorOf(find<QPushButton>("pushButton_close")));
}

void tst_AddControlsWidget::isFramelessTranslucentAndModal()
{
    QVERIFY(m_dialog->isWindow());
    QVERIFY(m_dialog->windowFlags().testFlag(Qt::FramelessWindowHint));
    QVERIFY(m_dialog->testAttribute(Qt::WA_TranslucentBackground));
    QCOMPARE(m_dialog->windowModality(), Qt::ApplicationModal);
    auto *shadow = qobject_cast<QGraphicsDropShadowEffect *>(find<QWidget>("widget_back")->graphicsEffect());
    QVERIFY(shadow);
    QCOMPARE(shadow->blurRadius(), 10.0);
    QCOMPARE(shadow->offset(), QPointF(0, 0));
    QCOMPARE(shadow->color(), QColor(Qt::gray));
}

void tst_AddControlsWidget::startsWithLinearStages()
{
    QVERIFY(find<QPushButton>("pushButton_lineControl")->isChecked());
    QCOMPARE(textsOf(models()), (QStringList{"LIN-50", "LIN-100"}));
}

void tst_AddControlsWidget::hasExactlyOneTypeChecked()
{
    const QList<QPushButton *> types = find<QWidget>("widget_types")->findChildren<QPushButton *>();
    QCOMPARE(types.size(), 4);
    for (QPushButton *type : types) {
        for (int i = 0; i < 2; ++i) { // the second click does not release it
            QTest::mouseClick(type, Qt::LeftButton);
            QVERIFY(type->isChecked());
            QCOMPARE(std::count_if(types.begin(), types.end(), [](auto *button) { return button->isChecked(); }), 1);
        }
    }
}

void tst_AddControlsWidget::offersTheGivenAxes()
{
    QCOMPARE(textsOf(axes()), (QStringList{"Axis1", "Axis2", "Axis3"}));
    m_dialog->setAxisNames({"Axis3", "Axis2"});
    QCOMPARE(textsOf(axes()), (QStringList{"Axis3", "Axis2"}));
    QCOMPARE(axes()->currentText(), QString("Axis3"));
}

void tst_AddControlsWidget::offersModelsOfTheCheckedType()
{
    click("pushButton_rotationControl");
    QCOMPARE(textsOf(models()), QStringList{"ROT-60"});
    click("pushButton_angularControl");
    QCOMPARE(textsOf(models()), QStringList{"ANG-10"});
    click("pushButton_liftingControl");
    QCOMPARE(textsOf(models()), QStringList());
    click("pushButton_lineControl");
    QCOMPARE(textsOf(models()), (QStringList{"LIN-50", "LIN-100"}));
}

void tst_AddControlsWidget::choosesTheFirstModelOfANewType()
{
    models()->setCurrentIndex(1);
    click("pushButton_rotationControl");
    QCOMPARE(models()->currentText(), QString("ROT-60"));
    click("pushButton_lineControl");
    QCOMPARE(models()->currentText(), QString("LIN-50"));
}

void tst_AddControlsWidget::keepsTheTypeBetweenOpenings()
{
    click("pushButton_angularControl");
    click("pushButton_close");
    open(fileOf({model("ANG-20", 2), model("LIN-1", 0)}));
    QVERIFY(find<QPushButton>("pushButton_angularControl")->isChecked());
    QCOMPARE(textsOf(models()), QStringList{"ANG-20"});
}

void tst_AddControlsWidget::offersParsedModelsFromTheNextTypeOn()
{
    m_dialog->loadModelsJson(QJsonDocument::fromJson(fileOf({model("LIN-7", 0)})));
    QCOMPARE(textsOf(models()), (QStringList{"LIN-50", "LIN-100"}));
    click("pushButton_lineControl");
    QCOMPARE(textsOf(models()), QStringList{"LIN-7"});
}

void tst_AddControlsWidget::keepsTheChoiceWhenTheFileIsMissing()
{
    models()->setCurrentIndex(1);
    QVERIFY(QFile::remove(modelPath()));
    m_dialog->loadModelsData();
    QCOMPARE(textsOf(models()), (QStringList{"LIN-50", "LIN-100"}));
    QCOMPARE(models()->currentIndex(), 1);
}

void tst_AddControlsWidget::refillsFromTheFormerModelsWhenTheFileIsBroken_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::newRow("cut off") << QByteArray("{\"MoverModels\": [");
    QTest::newRow("nothing in it") << QByteArray("{}");
}

void tst_AddControlsWidget::refillsFromTheFormerModelsWhenTheFileIsBroken()
{
    QFETCH(QByteArray, contents);
    models()->setCurrentIndex(1);
    writeModelFile(contents);
    m_dialog->loadModelsData();
    QCOMPARE(textsOf(models()), (QStringList{"LIN-50", "LIN-100"}));
    QCOMPARE(models()->currentIndex(), 0);
}

void tst_AddControlsWidget::emptiesTheListWhenTheFileHasNoModels()
{
    writeModelFile(fileOf({}));
    m_dialog->loadModelsData();
    QCOMPARE(models()->count(), 0);
}

void tst_AddControlsWidget::explainsAnEmptyModelList()
{
    const QString explanation = "没有此类位移台的型号";
    click("pushButton_liftingControl");
    QCOMPARE(models()->currentIndex(), -1);
    QCOMPARE(models()->placeholderText(), explanation);
    {
        // Shown: the same box without the text looks different. The text's colour is that of the style sheet.
        m_dialog->setStyleSheet("QComboBox { color: white; background-color: black; }");
        const QImage explained = models()->grab().toImage();
        models()->setPlaceholderText(" ");
        QVERIFY(models()->grab().toImage() != explained);
    }
    const Catalogue english;
    QCOMPARE(models()->placeholderText(), QString("No model of this type"));
}

void tst_AddControlsWidget::confirmDoesNothingWithoutAxisModelOrName()
{
    QSignalSpy added(m_dialog.get(), &AddControlsWidget::signal_addControl);
    const auto doesNothing = [&] {
        click("pushButton_confirm");
        return m_dialog->isVisible() && added.isEmpty() && simulator::journal().empty();
    };
    m_dialog->setAxisNames({});
    QVERIFY(doesNothing());
    open(fileOf({model("", 0)}));
    QCOMPARE(models()->count(), 1);
    QVERIFY(doesNothing());
    click("pushButton_liftingControl"); // of which there is none
    QVERIFY(doesNothing());
}

void tst_AddControlsWidget::writesTheModelToTheChosenAxis()
{
    models()->setCurrentText("LIN-100");
    axes()->setCurrentText("Axis2");
    click("pushButton_confirm");
    QCOMPARE(simulator::journalText(), std::vector<std::string>{"setMotorParams(1001, 1, \"LIN-100\") = 0"});

    MotorParams stored = {};
    QVERIFY(SerialComDev::instance()->getMotorParams(1, stored) >= 0);
    MotorParams expected = {};
    std::strcpy(expected.modelName, "LIN-100");
    expected.pulseOneCircle = 200;
    expected.dispOneCircle = double(0.1F);
    expected.restoreSpeed = 5;
    std::strcpy(expected.optOrder, "NZP");
    expected.maxSpeed = 20;
    expected.maxAcc = 100;
    expected.minPos = -50;
    expected.maxPos = 50;
    expected.returnTrip = -3;
    expected.maxRockerSpeed = 10;
    QVERIFY(std::memcmp(&stored, &expected, sizeof stored) == 0);
}

void tst_AddControlsWidget::writesUnderTheMutexAndTheBusyCursorFromTheGuiThread()
{
    simulator::hangCall("setMotorParams");
    bool isHanging = false;
    bool isFree = true;
    bool isBusy = false;
    std::thread observer([&] {
        isHanging = simulator::waitUntilHanging(5000);
        isFree = LibraryLock(0).isLocked();
        isBusy = QGuiApplication::overrideCursor() && QGuiApplication::overrideCursor()->shape() == Qt::WaitCursor;
        simulator::releaseHung();
    });
    click("pushButton_confirm");
    observer.join();
    QVERIFY(isHanging);
    QVERIFY(!isFree);
    QVERIFY(isBusy);
    QVERIFY(!QGuiApplication::overrideCursor());
    QCOMPARE(simulator::journal().size(), size_t(1));
    QVERIFY(simulator::journal().front().thread == std::this_thread::get_id());
}

void tst_AddControlsWidget::takesTheAxisNumberFromItsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("index");
    QTest::newRow("Axis1") << "Axis1" << 0;
    QTest::newRow("Axis3") << "Axis3" << 2;
    QTest::newRow("Axis12") << "Axis12" << 11;
    QTest::newRow("prefix twice") << "AxisAxis2" << 1;
    QTest::newRow("no number") << "Axis" << -1;
}

void tst_AddControlsWidget::takesTheAxisNumberFromItsText()
{
    QFETCH(QString, text);
    QFETCH(int, index);
    simulator::failAlways("setMotorParams", -6); // every row ends alike
    m_dialog->setAxisNames({text});
    const MessageBoxes boxes;
    click("pushButton_confirm");
    QCOMPARE(boxes.count(), 1);
    QCOMPARE(
        simulator::journalText(),
        std::vector<std::string>{"setMotorParams(1001, " + std::to_string(index) + ", \"LIN-50\") = -6"});
}

void tst_AddControlsWidget::announcesTheAxisAndCloses()
{
    int announced = 0;
    connect(
        m_dialog.get(), &AddControlsWidget::signal_addControl, this,
        [&](const QString &name, int axis, const MoverDevParam &stage, bool autoDetect) {
            ++announced;
            QCOMPARE(name, QString("LIN-50"));
            QCOMPARE(axis, 2);
            QCOMPARE(stage.name, QString("LIN-50"));
            QCOMPARE(stage.dispOneCircle, 0.1F);
            QCOMPARE(autoDetect, false);
            QVERIFY(m_dialog->isVisible());
            QCOMPARE(simulator::callCount("setMotorParams"), 1);
        });
    axes()->setCurrentText("Axis3");
    click("pushButton_confirm");
    QCOMPARE(announced, 1);
    QVERIFY(!m_dialog->isVisible());
}

void tst_AddControlsWidget::announcesTheStageTypeOfEachButton_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<int>("moveType");
    QTest::newRow("linear") << QByteArray("pushButton_lineControl") << 0;
    QTest::newRow("rotation") << QByteArray("pushButton_rotationControl") << 1;
    QTest::newRow("angular") << QByteArray("pushButton_angularControl") << 2;
    QTest::newRow("lifting") << QByteArray("pushButton_liftingControl") << 3;
}

void tst_AddControlsWidget::announcesTheStageTypeOfEachButton()
{
    QFETCH(QByteArray, button);
    QFETCH(int, moveType);
    QSignalSpy added(m_dialog.get(), &AddControlsWidget::signal_addControl);
    open(fileOf({model("L", 0), model("R", 1), model("A", 2), model("U", 3)}));
    click(button);
    click("pushButton_confirm");
    QCOMPARE(added.size(), 1);
    QCOMPARE(added.first().at(2).value<MoverDevParam>().moveType, moveType);
}

void tst_AddControlsWidget::saysWhenTheControllerRefuses()
{
    QSignalSpy added(m_dialog.get(), &AddControlsWidget::signal_addControl);
    simulator::failCall("setMotorParams", -6);
    models()->setCurrentIndex(1);
    axes()->setCurrentIndex(1);
    bool wasBusy = true;
    const MessageBoxes boxes([&](QMessageBox *box) {
        wasBusy = QGuiApplication::overrideCursor() != nullptr;
        MessageBoxes::press(box, "确认");
    });
    click("pushButton_confirm");
    QCOMPARE(boxes.texts(), QStringList{error});
    QCOMPARE(boxes.parents().first().data(), m_dialog.get());
    QVERIFY(!wasBusy);
    QVERIFY(added.isEmpty());
    QVERIFY(m_dialog->isVisible());
    QCOMPARE(models()->currentText(), QString("LIN-100"));
    QCOMPARE(axes()->currentText(), QString("Axis2"));

    // Once more, and the controller accepts.
    click("pushButton_confirm");
    QCOMPARE(added.size(), 1);
    QVERIFY(!m_dialog->isVisible());
}

void tst_AddControlsWidget::saysWhenTheModelHasNoRecord()
{
    QSignalSpy added(m_dialog.get(), &AddControlsWidget::signal_addControl);
    open(fileOf({model("M", 0), model("M", 1)}));
    const MessageBoxes boxes("取消");
    click("pushButton_confirm");
    QCOMPARE(boxes.texts(), QStringList{error});
    QVERIFY(m_dialog->isVisible());
    QVERIFY(added.isEmpty());
    QVERIFY(simulator::journal().empty());
}

void tst_AddControlsWidget::sendsTheNextRecordWhenAnotherTypeTookTheName()
{
    QSignalSpy added(m_dialog.get(), &AddControlsWidget::signal_addControl);
    open(fileOf({model("M", 0), model("N", 3), model("M", 1)}));
    click("pushButton_confirm");
    QCOMPARE(simulator::journalText(), std::vector<std::string>{"setMotorParams(1001, 0, \"N\") = 0"});
    QCOMPARE(added.size(), 1);
    QCOMPARE(added.first().at(0).toString(), QString("M"));
    QCOMPARE(added.first().at(2).value<MoverDevParam>().name, QString("N"));
}

void tst_AddControlsWidget::logsTheConfirmedModel()
{
    QTest::ignoreMessage(QtDebugMsg, "on_pushButton_confirm_clicked \"LIN-50\"");
    click("pushButton_confirm");
}

void tst_AddControlsWidget::closesByItsButton()
{
    click("pushButton_close");
    QVERIFY(!m_dialog->isVisible());
    QVERIFY(simulator::journal().empty());
}

void tst_AddControlsWidget::closesByEscape()
{
    QTest::keyClick(models(), Qt::Key_Escape);
    QVERIFY(!m_dialog->isVisible());
    QVERIFY(simulator::journal().empty());
}

void tst_AddControlsWidget::confirmsByReturn()
{
    QTest::keyClick(models(), Qt::Key_Return);
    QCOMPARE(simulator::callCount("setMotorParams"), 1);
    QVERIFY(!m_dialog->isVisible());
}

void tst_AddControlsWidget::takesATypedNameAtOnce()
{
    QCOMPARE(m_dialog->focusWidget(), models());
}

void tst_AddControlsWidget::findsTypedModel_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("found");
    QTest::newRow("whole name") << "LIN-123"
                                << "LIN-123";
    QTest::newRow("beginning") << "LIN-77"
                               << "LIN-77";
    QTest::newRow("small letters") << "lin-19"
                                   << "LIN-19";
    QTest::newRow("no such model") << "LIN-5x"
                                   << "LIN-5";
}

void tst_AddControlsWidget::findsTypedModel()
{
    QFETCH(QString, typed);
    QFETCH(QString, found);
    open(manyModels());
    QTest::keyClicks(models(), typed);
    QCOMPARE(models()->currentText(), found);
}

void tst_AddControlsWidget::findsTypedModelInTheOpenList()
{
    open(manyModels());
    models()->showPopup();
    QVERIFY(QTest::qWaitForWindowExposed(models()->view()->window()));
    QTest::keyClicks(models()->view(), "LIN-999");
    QCOMPARE(models()->view()->currentIndex().data().toString(), QString("LIN-999"));
    QTest::keyClick(models()->view(), Qt::Key_Return);
    QCOMPARE(models()->currentText(), QString("LIN-999"));
    QVERIFY(m_dialog->isVisible()); // the key chose, it did not confirm
}

void tst_AddControlsWidget::movesByItsTitleBarOnly()
{
    auto *label = find<QLabel>("label_title");
    const QPoint grip = label->mapTo(m_dialog.get(), label->rect().center());
    const QPoint before = m_dialog->pos();
    QTest::mousePress(label, Qt::LeftButton, {}, label->rect().center());
    Mouse::move(m_dialog.get(), grip + QPoint(30, -20));
    QCOMPARE(m_dialog->pos(), before + QPoint(30, -20));
    Mouse::move(m_dialog.get(), grip + QPoint(5, 0));
    QCOMPARE(m_dialog->pos(), before + QPoint(35, -20));
    QTest::mouseRelease(m_dialog.get(), Qt::LeftButton, {}, grip);
    Mouse::move(m_dialog.get(), grip + QPoint(50, 50));
    QCOMPARE(m_dialog->pos(), before + QPoint(35, -20));

    auto *body = find<QLabel>("label_model"); // below the title bar
    QTest::mousePress(body, Qt::LeftButton, {}, body->rect().center());
    Mouse::move(m_dialog.get(), body->mapTo(m_dialog.get(), body->rect().center()) + QPoint(30, 20));
    QCOMPARE(m_dialog->pos(), before + QPoint(35, -20));
}

void tst_AddControlsWidget::changesLanguageAndKeepsTheChoices()
{
    click("pushButton_lineControl");
    models()->setCurrentIndex(1);
    axes()->setCurrentIndex(2);
    {
        const Catalogue english;
        QCOMPARE(find<QLabel>("label_title")->text(), QString("Add Controller"));
        QCOMPARE(find<QPushButton>("pushButton_lineControl")->text(), QString("Line Control"));
        QCOMPARE(find<QPushButton>("pushButton_rotationControl")->text(), QString("Rotation Control"));
        QCOMPARE(find<QPushButton>("pushButton_angularControl")->text(), QString("Angular control"));
        QCOMPARE(find<QPushButton>("pushButton_liftingControl")->text(), QString("Lifting Control"));
        QCOMPARE(find<QLabel>("label_model")->text(), QString("modelName:"));
        QCOMPARE(find<QLabel>("label_Axsi")->text(), QString("Axis Number:"));
        QCOMPARE(find<QPushButton>("pushButton_confirm")->text(), QString("confirm"));
        QCOMPARE(textsOf(models()), (QStringList{"LIN-50", "LIN-100"}));
        QCOMPARE(models()->currentIndex(), 1);
        QCOMPARE(axes()->currentText(), QString("Axis3"));

        simulator::failCall("setMotorParams", -6);
        const MessageBoxes boxes;
        click("pushButton_confirm");
        QCOMPARE(boxes.texts(), QStringList{"Parameter configuration error! Please try again."});
    }
    QCOMPARE(find<QPushButton>("pushButton_confirm")->text(), QString("确定"));
    QCOMPARE(models()->currentIndex(), 1);
}

QTEST_MAIN(tst_AddControlsWidget)
#include "tst_AddControlsWidget.moc"

// SPDX-License-Identifier: MIT
#include "support/Chinese.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTranslator>
#include <QXmlStreamReader>
#include <QtTest>

namespace {

struct Pair {
    const char *context;
    const char *chinese;
    const char *english;
};

// The wording that users and the maker's manuals know, odd spellings included.
constexpr Pair pairs[] = {
    // Main window
    {"MoverWidget", "帮助", "Help"},
    {"MoverWidget", "软件设置", "Softerware settings"},
    {"MoverWidget", "连接设备", "Connect the device serial port COM"},
    {"MoverWidget", "添加运动轴控制窗口", "Add an axis control widget"},
    {"MoverWidget", "使用摇杆", "Use rocker"},
    {"MoverWidget", "初始化运动轴参数成功", "Initialized motion axis parameters successfully"},
    {"MoverWidget", "初始化轴，识别芯片错误(%1)！", "Initialization axis, \nchip recognition error (%1)!"},
    {"MoverWidget", "初始化轴，读取参数错误(%1)！", "Initialize the axis,\n read parameter error (%1)!"},
    {"MoverWidget", "轴数量超出上限,请检查操作窗口后继续操作！",
     "The number of Axis exceeds the \nlimit,please check the operation \nwindow before continuing!"},
    {"MoverWidget", "设备未连接，请连接设备后继续操作!",
     "The device is not connected,please \nconnect the device and continue to \noperate!"},
    {"MoverWidget", "获取设备参数失败，请检查\n设备是否正确连接!",
     "Failed to get device parameters, \nplease check whether the device \nis correctly connected!"},
    {"MoverWidget", "轴数量已达上限!", "Maximum number of axes reached!"},
    {"MoverWidget", "您确定要关闭控制轴窗口吗?", "Sure you want to close the control\n axis window?"},
    // Message box
    {"MessageBox", "提示", "Message"},
    {"MessageBox", "取消", "Cancel"},
    {"MessageBox", "确认", "OK"},
    // Connection
    {"ConnectionWidget", "连接设备", "Connect Device"},
    {"ConnectionWidget", "串口选择：", "Selected COM"},
    {"ConnectionWidget", "连接", "Connect"},
    {"ConnectionWidget", "断开", "Disconnect"},
    {"ConnectionWidget", "设备已连接", "Device connected"},
    {"ConnectionWidget", "设备已断开", "The device has been disconnected"},
    {"ConnectionWidget", "打开设备失败(err:%1)", "Failed to open the device (err: %1)."},
    // Help
    {"HelpWidget", "帮助", "Help"},
    {"HelpWidget", "使用手册：", "Manual:"},
    {"HelpWidget", "二次开发：", "Development:"},
    {"HelpWidget", "软件版本：", "Software version:"},
    {"HelpWidget", "嵌入式版本：", "MCU version:"},
    {"HelpWidget", "查看", "view Manual"},
    {"HelpWidget", "查看 C++ SDK", "view C++ SDK"},
    {"HelpWidget", "查看 LabVIew SDK", "view LabView SDK"},
    {"HelpWidget", "查看C# SDK", "view C# SDK"},
    {"HelpWidget", "查看Python SDK", "view Python SDK"},
    {"HelpWidget", "了解更多详细信息", "Learn more"},
    // Axis panel
    {"MoverControlWidget", "运行中", "Doing"},
    {"MoverControlWidget", "已到达负限位！", "Negative limit reached!"},
    {"MoverControlWidget", "已到达正限位！", "Positive limit reached!"},
    {"MoverControlWidget", "负限位光耦失效 ", "negative limit photocoupler failed"},
    {"MoverControlWidget", "正限位光耦失效 ", "positive limit photocoupler failed"},
    {"MoverControlWidget", "原点限位光耦失效 ", "Origin limit photocoupler failed"},
    {"MoverControlWidget", "位移台序列号：", "Motor stage serial NO.:"},
    {"OperationLog", "设置设备参数", "Setting device parameters"},
    {"OperationLog", "移动", "Move"},
    {"OperationLog", "设置移动参数", "Setting move param"},
    {"OperationLog", "推进", "Drive"},
    {"OperationLog", "设置自动运行参数", "Setting drive param"},
    {"OperationLog", "步进", "Jog"},
    {"OperationLog", "设置步进参数", "Setting jog param"},
    {"OperationLog", "还原", "Restore"},
    {"OperationLog", "停止", "Stop"},
    {"OperationLog", "使能设备", "Enable control"},
    {"OperationLog", "当前运行次数", "current run count"},
    {"OperationLog", "运行中", "Doing"},
    {"OperationLog", "操作被取消", "Operation canceled"},
    {"OperationLog", "操作失败", "operation failure"},
    {"OperationLog", "操作成功", "operate successfully"},
    {"OperationLog", "运行完成", "Operation completed"},
    // Motion limits
    {"MotionLimits", "位置超出范围！[%1，%2]", "Position out of range! [%1, %2]"},
    {"MotionLimits", "速度超出范围！(0，%1]", "Speed out of range! (0, %1]"},
    {"MotionLimits", "加速度超出范围！(0，%1]", "Acceleration out of range! (0, %1]"},
    {"MotionLimits", "步长超出范围！(0，%1]", "Step size out of range! (0, %1]"},
    {"MotionLimits", "步进次数不能为0！", "The number of steps cannot be 0!"},
    {"MotionLimits", "步进延时不能为0！", "Step delay cannot be 0!"},
    {"MotionLimits", "相对位移超出范围！(0，%1]", "relative displacement out of range! (0, %1]"},
    {"MotionLimits", "循环次数不能为0！", "The number of cycles cannot be 0!"},
    // Loop run
    {"CycleOperationWidget", "  循环模式", "Loop running mode"},
    {"CycleOperationWidget", "相对位移：", "Travel"},
    {"CycleOperationWidget", "速度：", "Speed"},
    {"CycleOperationWidget", "加速度：", "Acc"},
    {"CycleOperationWidget", "循环次数：", "Loop count"},
    {"CycleOperationWidget", "停留时间：", "Res time"},
    {"CycleOperationWidget", "负方向开始循环运行", "The loop starts in the negative direction"},
    {"CycleOperationWidget", "正方向开始循环运行", "The loop starts in the positive direction"},
    {"CycleOperationWidget", "停止运行", "Stop runing"},
    // Add-axis dialog
    {"AddControlsWidget", "添加控制器", "Add Controller"},
    {"AddControlsWidget", "直线位移台", "Line Control"},
    {"AddControlsWidget", "旋转位移台", "Rotation Control"},
    {"AddControlsWidget", "角位移台", "Angular control"},
    {"AddControlsWidget", "升降移台", "Lifting Control"},
    {"AddControlsWidget", "设备型号：", "modelName:"},
    {"AddControlsWidget", "设备序号：", "Axis Number:"},
    {"AddControlsWidget", "确定", "confirm"},
    {"AddControlsWidget", "参数配置错误!请重试。", "Parameter configuration error! Please try again."},
    // Device parameters
    {"DeviceParamWidget", "外部输入输出", "External I/O"},
    {"DeviceParamWidget", "输入有效", "Enable input"},
    {"DeviceParamWidget", "输出有效", "Enable output"},
    {"DeviceParamWidget", "确认", "confirm"},
    {"DeviceParamWidget", "位移台型号配置", "Motor Stage Model Config"},
    {"DeviceParamWidget", "型号：", "Model"},
    {"DeviceParamWidget", "配置文件：", "Config file"},
    {"DeviceParamWidget", "写入", "write"},
    // Settings
    {"OptionsWidget", "设置", "Settings"},
    {"OptionsWidget", "语言", "Language"},
    {"OptionsWidget", "触发", "Trigger"},
    {"OptionsWidget", "电机参数", "Motor Param"},
    {"OptionsWidget", "位置补偿", "Pos Conpen"},
    {"OptionsWidget", "中文", "Chinese"},
    {"OptionsWidget", "英文", "English"},
    {"OptionsWidget", "提示", "Message"},
    {"OptionsWidget", "修改电机参数可能会导致电机故障，请谨慎修改！",
     "Modifying the motor parameters may cause motor failure, please proceed with caution!"},
    {"OptionsWidget", "1号轴", "Asix 1"},
    {"OptionsWidget", "2号轴", "Axis 2"},
    {"OptionsWidget", "3号轴", "Axis 3"},
    {"OptionsWidget", "触发输入", "Trigger IN"},
    {"OptionsWidget", "触发输出", "Trigger OUT"},
    {"OptionsWidget", "位移量：", "displacement:"},
    {"AxisOptions", "请匹配位移台实际行程进行设置！", "Please set according to the \nactual travel of the stage!"},
    {"AxisOptions", "位移量超出范围！[%1,%2]", "relative displacement out of range! [%1, %2]"},
    {"OptionsWidget", "轴号：", "Axis NO.:"},
    {"OptionsWidget", "型号名称：", "Model name"},
    {"OptionsWidget", "序列号：", "Serial NO."},
    {"OptionsWidget", "一圈的脉冲数：", "Pulses/cycle"},
    {"OptionsWidget", "导程：", "Lead"},
    {"OptionsWidget", "回原点的速度：", "Reset speed"},
    {"OptionsWidget", "位移台类型：", "Stage type"},
    {"OptionsWidget", "单位类型：", "Unit type"},
    {"OptionsWidget", "正限位极性：", "P-LSP"},
    {"OptionsWidget", "负限位极性：", "N-LSP"},
    {"OptionsWidget", "零点位极性：", "Z-PSP"},
    {"OptionsWidget", "运动方向：", "Moving direction"},
    {"OptionsWidget", "限位方向：", "Limiting direction"},
    {"OptionsWidget", "读出参数", "ReadParam"},
    {"OptionsWidget", "写入参数", "WriteParam"},
    {"OptionsWidget", "读取电机参数失败：error（%1）", "Failed to read motor parameters: error (%1)"},
    {"OptionsWidget", "是否确认修改电机参数？", "Are you sure you want to modify the motor parameters?"},
    {"OptionsWidget", "写入电机参数失败：error（%1）", "Failed to write motor parameters: error (%1)"},
    {"OptionsWidget", "写入电机参数成功", "Write motor parameters successfully"},
    {"OptionsWidget", "启用", "open"},
    {"OptionsWidget", "关闭", "close"},
    // Engineering console
    {"DebugWidget", "型号名称：", "Model name"},
    {"DebugWidget", "序列号：", "Serial NO."},
    {"DebugWidget", "一圈的脉冲数：", "Pulses/cycle"},
    {"DebugWidget", "导程：", "Lead"},
    {"DebugWidget", "回原点的速度：", "Reset speed"},
    {"DebugWidget", "零点位极性：", "Z-PSP"},
    {"DebugWidget", "位移台类型：", "Stage type"},
    {"DebugWidget", "运动方向：", "Moving direction"},
    {"DebugWidget", "单位类型：", "Unit type"},
    {"DebugWidget", "正限位极性：", "P-LSP"},
    {"DebugWidget", "负限位极性：", "N-LSP"},
    {"DebugWidget", "限位方向：", "Limiting direction"},
    {"DebugWidget", "写入电机参数成功", "Write motor parameters successfully"},
    {"DebugWidget", "写入电机参数失败：error（%1）", "Failed to write motor parameters: error (%1)"},
    {"DebugWidget", "读取电机参数失败：error（%1）", "Failed to read motor parameters: error (%1)"},
    {"DebugWidget", "提示", "Message"},
    // Command worker
    {"SerialComDev", "Move", "Move"},
    {"SerialComDev", "正方向Drive", "Positive Direction Drive"},
    {"SerialComDev", "负方向Drive", "Negative Direction Drive"},
    {"SerialComDev", "正方向Jog", "Positive direction Jog"},
    {"SerialComDev", "负方向Jog", "Negative direction Jog"},
    {"SerialComDev", "正方向循环", "Forward loop"},
    {"SerialComDev", "负方向循环", "Negative direction loop"},
    {"SerialComDev", "读取当前位置出错", "Error reading current location"},
    {"SerialComDev", "获取设备状态出错", "Error in getting device status"},
    {"SerialComDev", "设置参数，速度：%1，加速度：%2", "Set parameters, speed: %1, acceleration: %2"},
    {"SerialComDev", "设置速度参数出错", "Error setting speed parameters"},
    {"SerialComDev", "设置加速度参数出错", "Error setting acceleration parameters"},
    {"SerialComDev", "设置参数，相对位移：%1，使能：%2", "Set parameters, relative displacement: %1, enable: %2"},
    {"SerialComDev", "设置相对位移参数出错", "Setting the relative displacement parameters is incorrect"},
    {"SerialComDev", "设置相对位移使能参数出错", "Setting the relative displacement enable parameter failed"},
    {"SerialComDev", "设置参数，目标位置：%1", "Set parameters, target location: %1"},
    {"SerialComDev", "设置目标位置参数出错", "Error setting target location parameters"},
    {"SerialComDev", "JOG步长：%1, JOG次数：%2, JOG延时:%3", "JOG step size: %1, JOG times: %2, JOG delay: %3"},
    {"SerialComDev", "设置JOG步长失败", "Setting JOG step size failed"},
    {"SerialComDev", "设置JOG次数失败", "Failed to set JOG times"},
    {"SerialComDev", "循环次数：%1, 循环位移：%2", "Number of cycles: %1, Cycle displacement: %2"},
    {"SerialComDev", "设置循环次数失败", "Failed to set the number of loops"},
    {"SerialComDev", "设置循环位移量失败", "Failed to set the loop shift amount"},
    {"SerialComDev", "设置循环停留时间失败", "Failed to set the loop dwell time"},
    {"SerialComDev", "停止运行", "Stop running"},
    {"SerialComDev", "电机复位", "Motor reset"},
};

/** The only text that goes through the catalogue and comes out in Chinese. */
constexpr char keptByTheCatalogue[] = "设置JOG延时时间失败";

// Shown as they are in every language, so the catalogue knows nothing of them.
constexpr const char *neverTranslated[] = {
    "设备断开连接",
    "运行中关闭该界面将会自动停止，是否关闭？",
    "可以运行：%1, 停止：%2, 使能：%3, 归零：%4, 左限位：%5, 右限位：%6",
    "开始心跳",
    "结束心跳",
};

QStringList placeholders(const QString &text)
{
    QStringList found;
    auto match = QRegularExpression(QStringLiteral("%[0-9]")).globalMatch(text);
    while (match.hasNext())
        found.append(match.next().captured());
    found.sort();
    return found;
}

struct Entry {
    QString context;
    QString chinese;
    QString comment; // tells two uses of one text apart
    QString english;
};

/** All entries of the catalogue's source. */
QVector<Entry> catalogueEntries()
{
    QFile file(QStringLiteral(MOVER_SOURCE_DIR "/resources/i18n/mover_en_US.ts"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no catalogue source");
    QVector<Entry> entries;
    Entry entry;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("name"))
            entry.context = xml.readElementText();
        else if (xml.name() == QLatin1String("source"))
            entry.chinese = xml.readElementText();
        else if (xml.name() == QLatin1String("comment"))
            entry.comment = xml.readElementText();
        else if (xml.name() == QLatin1String("translation")) {
            entry.english = xml.readElementText();
            entries.append(entry);
            entry.comment.clear();
        }
    }
    return entries;
}

} // namespace

/** The English wording of the program, as the shipped catalogue has it. */
class tst_Texts : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void hasTheKnownWording_data();
    void hasTheKnownWording();
    void theOtherTextsAreEnglishToo();
    void placeholdersSurviveTranslation();
    void someTextsAreNeverTranslated();
    void picturesSpeakNoLanguage();

private:
    QTranslator m_shipped;
};

void tst_Texts::initTestCase()
{
    QVERIFY(m_shipped.load(QStringLiteral(MOVER_PROGRAM_DIR "/mover_en_US.qm")));
}

void tst_Texts::hasTheKnownWording_data()
{
    QTest::addColumn<QByteArray>("context");
    QTest::addColumn<QByteArray>("chinese");
    QTest::addColumn<QString>("english");
    for (const Pair &pair : pairs)
        QTest::addRow("%s: %s", pair.context, pair.chinese)
            << QByteArray(pair.context) << QByteArray(pair.chinese) << QString::fromUtf8(pair.english);
}

void tst_Texts::hasTheKnownWording()
{
    QFETCH(QByteArray, context);
    QFETCH(QByteArray, chinese);
    QFETCH(QString, english);
    QCOMPARE(m_shipped.translate(context, chinese), english);
}

void tst_Texts::theOtherTextsAreEnglishToo()
{
    QStringList chinese;
    const QVector<Entry> entries = catalogueEntries();
    QVERIFY(entries.size() > int(std::size(pairs)));
    for (const Entry &entry : entries) {
        QVERIFY2(!entry.english.trimmed().isEmpty(), qPrintable(entry.chinese));
        QCOMPARE(
            m_shipped.translate(entry.context.toUtf8(), entry.chinese.toUtf8(), entry.comment.toUtf8()), entry.english);
        if (isChinese(entry.english))
            chinese.append(entry.english);
    }
    QCOMPARE(chinese, QStringList{QString::fromUtf8(keptByTheCatalogue)});
}

void tst_Texts::placeholdersSurviveTranslation()
{
    for (const Entry &entry : catalogueEntries())
        QVERIFY2(placeholders(entry.chinese) == placeholders(entry.english), qPrintable(entry.chinese));
}

void tst_Texts::someTextsAreNeverTranslated()
{
    QStringList known;
    for (const Entry &entry : catalogueEntries())
        known.append(entry.chinese);
    for (const char *text : neverTranslated)
        QVERIFY2(!known.contains(QString::fromUtf8(text)), text);
}

/** But for the connect button's, which there is in both: its words stand in the table of the images. */
void tst_Texts::picturesSpeakNoLanguage()
{
    const QDir folder(QStringLiteral(MOVER_SOURCE_DIR "/resources/images"));
    const QStringList pictures = folder.entryList({QStringLiteral("*.svg")});
    QVERIFY(!pictures.isEmpty());
    for (const QString &picture : pictures) {
        QFile file(folder.filePath(picture));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY2(!isChinese(QString::fromUtf8(file.readAll())), qPrintable(picture));
    }
    QFile table(QStringLiteral(MOVER_SOURCE_DIR "/resources/images.json"));
    QVERIFY(table.open(QIODevice::ReadOnly));
    QStringList words;
    auto match = QRegularExpression(QStringLiteral("\"([^\"]*)\"")).globalMatch(QString::fromUtf8(table.readAll()));
    while (match.hasNext()) {
        const QString word = match.next().captured(1);
        if (isChinese(word))
            words.append(word);
    }
    QCOMPARE(words, QStringList{QStringLiteral("连接设备")});
}

QTEST_APPLESS_MAIN(tst_Texts)
#include "tst_Texts.moc"

// SPDX-License-Identifier: MIT
#include "console/DebugWidget.h"

#include "console/CompensationModel.h"
#include "console/ConsoleCommands.h"
#include "console/NumberInput.h"
#include "device/LibraryLock.h"
#include "device/LibraryText.h"
#include "device/SerialComDev.h"
#include "widgets/BusyCursor.h"
#include "widgets/Dialogs.h"
#include "widgets/Form.h"
#include "session/SmallFile.h"

#include "ui_DebugWidget.h"

#include <QCloseEvent>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QMessageBox>
#include <QStandardPaths>
#include <QTabBar>
#include <QWindow>

#include <algorithm>
#include <iterator>
#include <optional>

namespace {

template <typename... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

const ConsoleCommand &commandOf(int button)
{
    return *std::find_if(std::begin(consoleCommands), std::end(consoleCommands), [button](const ConsoleCommand &row) {
        return row.button == button;
    });
}

int deviceId()
{
    return SerialComDev::instance()->deviceId();
}

constexpr qint64 maxPlaceSize = 4096;

/** Where the place of the window on the screen is kept between runs. */
QString placeFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + QStringLiteral("/consolePlace");
}

/** The buttons of the tab bar, and Qt's own names for them. */
struct TabScroller {
    const char *button;
    const char *name;
};

constexpr TabScroller tabScrollers[] = {
    {"ScrollLeftButton", "Scroll Left"},
    {"ScrollRightButton", "Scroll Right"},
};

/** What of the controller's values the worker has to know: it stops all axes, and joystick mode first. */
void noteDeviceValue(const QString &function, int value)
{
    if (function.endsWith(QLatin1String("RockerEnable")))
        SerialComDev::instance()->noteRockerOn(value != 0);
    else if (function.endsWith(QLatin1String("DevAxisCount")))
        SerialComDev::instance()->noteAxisCount(value);
}

/** A status as the console shows it. */
QString statusText(int status)
{
    return SerialComDev::instance()->statusText(status);
}

} // namespace

DebugWidget::DebugWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::DebugWidget>(this))
    , m_motorParams(*ui)
    , m_compensation(new CompensationModel(this))
{
    setWindowIcon(QIcon(QStringLiteral(":/image/console.png")));
    for (const ConsoleCommand &command : consoleCommands) {
        auto *button = findChild<QPushButton *>(QStringLiteral("pushButton_%1").arg(command.button));
        button->setText(QString::fromUtf8(command.label));
        button->setToolTip(QLatin1String(command.function));
    }
    ui->pushButton_44->setText(QStringLiteral("开始心跳"));
    ui->pushButton_54->setText(QStringLiteral("结束心跳"));
    ui->tableView_conpen->setModel(m_compensation);
    ui->tableView_conpen->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    ui->tableView_conpen->verticalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    showInputWrong(false);
    const QByteArray place = SmallFile::read(placeFile(), maxPlaceSize);
    if (place.size() == saveGeometry().size()) // of a file that is cut off, Qt would take the size 0
        restoreGeometry(place);                // what is no place on this screen changes nothing
}

DebugWidget::~DebugWidget() = default;

// ---- Commands ------------------------------------------------------------------------------------------------------

int DebugWidget::axis() const
{
    return ui->comboBox_axis->currentIndex();
}

void DebugWidget::run(int button)
{
    const ConsoleCommand &command = commandOf(button);
    const QString input = ui->lineEdit_input->text();
    bool readable = true;
    std::optional<int> state;
    QString result;
    {
        const BusyCursor busy;
        const int axis = this->axis();
        const auto call = [](auto function, auto... arguments) {
            const LibraryLock library;
            return ((*library).*function)(deviceId(), arguments...);
        };
        const auto text = [&call](auto getter, auto... axis) {
            LibraryText text;
            const int status = call(getter, axis..., text.data(), text.length());
            return status < 0 ? statusText(status) : text.toString();
        };
        const auto number = [&](auto value) {
            readable = NumberInput::read(input, value);
            return value;
        };
        const auto status = [&](int value, int direction = 0) {
            if (command.motion)
                SerialComDev::instance()->noteCommand(
                    {axis, *command.motion, direction, MotionCommand::Console, value});
            return statusText(value);
        };
        const auto written = [&](int value) {
            if (command.writesParameters && value >= 0)
                SerialComDev::instance()->noteParametersWritten(axis);
            return statusText(value);
        };
        const auto real = [](double value) { return QString::number(value, 'g', 8); };
        const QByteArray bytes = input.toLatin1();
        result = std::visit(
            Overloaded{
                [&](ConsoleCommand::Call get) { return status(call(get, axis)); },
                [&](ConsoleCommand::Directed go) {
                    return status(call(go.start, axis, go.direction), go.direction == 1 ? 1 : -1);
                },
                [&](ConsoleCommand::IntegerSetter set) { return written(call(set, axis, number(int()))); },
                [&](ConsoleCommand::RealSetter set) { return statusText(call(set, axis, number(double()))); },
                [&](ConsoleCommand::TextSetter set) {
                    return written(call(set, axis, bytes.constData(), bytes.size()));
                },
                [&](ConsoleCommand::RealGetter get) { return real(call(get, axis)); },
                [&](ConsoleCommand::PositionGetter get) { return real(call(get, axis, static_cast<int *>(nullptr))); },
                [&](ConsoleCommand::TargetGetter get) {
                    unsigned char success = 0;
                    return real(call(get, axis, &success));
                },
                [&](ConsoleCommand::TextGetter get) { return text(get, axis); },
                [&](ConsoleCommand::StateGetter get) {
                    MotorStageState flags = {};
                    state = call(get, axis, &flags);
                    return QStringLiteral("可以运行：%1, 停止：%2, 使能：%3, 归零：%4, 左限位：%5, 右限位：%6")
                        .arg(flags.isCanRun)
                        .arg(flags.isStop)
                        .arg(flags.isEnable)
                        .arg(flags.isHome)
                        .arg(flags.isLeftLimit)
                        .arg(flags.isRightLimit);
                },
                [&](ConsoleCommand::UnlockedCall go) { return status(go(deviceId(), axis)); },
                [&](ConsoleCommand::DeviceGetter get) {
                    const int value = call(get);
                    if (value >= 0)
                        noteDeviceValue(QLatin1String(command.function), value);
                    return statusText(value);
                },
                [&](ConsoleCommand::DeviceSetter set) {
                    const int value = number(int());
                    const int result = call(set.set, value);
                    if (result >= 0)
                        noteDeviceValue(QLatin1String(command.function), value);
                    return statusText(result);
                },
                [&](ConsoleCommand::DeviceTextSetter set) {
                    return statusText(call(set, bytes.constData(), bytes.size()));
                },
                [&](ConsoleCommand::DeviceTextGetter get) { return text(get); },
            },
            command.operation);
    }
    if (state)
        ui->lineEdit_state->setText(QString::number(*state));
    showResult(command.function, [result] { return result; });
    showInputWrong(!readable);
}

/** Shows what came of a library call, in whatever language is chosen. */
void DebugWidget::showResult(const char *function, const std::function<QString()> &text)
{
    m_result = text;
    ui->label_function->setText(QLatin1String(function));
    ui->lineEdit_result->setText(text());
    ui->lineEdit_result->setCursorPosition(0);
    showInputWrong(false);
}

void DebugWidget::showInputWrong(bool wrong)
{
    NumberInput::mark(ui->lineEdit_input, wrong);
    ui->label_inputWrong->setVisible(wrong);
}

void DebugWidget::on_lineEdit_input_textEdited()
{
    showInputWrong(false);
}

// ---- Motor parameters ----------------------------------------------------------------------------------------------

void DebugWidget::on_pushButton_writeMotorParams_clicked()
{
    const MotorParams params = m_motorParams.record();
    qDebug() << "motorParams.minPos:" << params.minPos;
    std::optional<LibraryLock> library;
    int result = 0;
    {
        const BusyCursor busy;
        library.emplace();
        result = (*library)->setMotorParams(deviceId(), axis(), params);
    }
    if (result < 0) {
        showResult("setMotorParams", [result] { return tr("写入电机参数失败：error（%1）").arg(statusText(result)); });
        return;
    }
    SerialComDev::instance()->noteParametersWritten(axis());
    showResult("setMotorParams", [] { return tr("写入电机参数成功"); });

    // On purpose nobody reaches the library until the user has seen that the controller is still writing. Whatever
    // runs in this thread meanwhile must not wait for the library.
    QMessageBox box(
        QMessageBox::Information, tr("提示"), tr("写入中，请等待控制器状态指示灯变绿后再进行其他操作！"),
        QMessageBox::Ok, this);
    connect(&box, &QDialog::finished, &box, [&library] { library.reset(); });
    m_writingBox = &box;
    box.exec();
}

void DebugWidget::on_pushButton_readMorotParams_clicked()
{
    MotorParams params = {};
    int result = 0;
    {
        const BusyCursor busy;
        const LibraryLock library;
        result = library->getMotorParams(deviceId(), axis(), &params);
    }
    if (result < 0) {
        showResult("getMotorParams", [result] { return tr("读取电机参数失败：error（%1）").arg(statusText(result)); });
        return;
    }
    m_motorParams.show(params);
    showResult("getMotorParams", [result] { return statusText(result); });
}

// ---- Identification chip -------------------------------------------------------------------------------------------

void DebugWidget::on_pushButton_clear_clicked()
{
    // On purpose without LibraryLock, and no result is shown.
    const BusyCursor busy;
    UnlockedCalls::setClearIDChip(deviceId(), ui->comboBox_chipAxis->currentIndex());
    SerialComDev::instance()->noteParametersWritten(ui->comboBox_chipAxis->currentIndex());
}

// ---- Position compensation -----------------------------------------------------------------------------------------

void DebugWidget::setPosConpen(int enable)
{
    int result = 0;
    {
        const BusyCursor busy;
        const LibraryLock library;
        result = library->setPosConpenEnable(deviceId(), axis(), enable);
        if (result >= 0)
            SerialComDev::instance()->noteParametersWritten(axis());
    }
    showResult("setPosConpenEnable", [result] { return statusText(result); });
}

void DebugWidget::on_pushButton_pos_conpen_enable_clicked()
{
    setPosConpen(1);
}

void DebugWidget::on_pushButton_pos_conpen_disable_clicked()
{
    setPosConpen(0);
}

void DebugWidget::on_pushButton_clicked()
{
    m_compensation->clearRows(1); // the first row keeps what it shows until the controller has something for it
    CompensationModel::Pairs positive;
    CompensationModel::Pairs negative;
    positive.count = negative.count = CompensationModel::Rows;
    int positiveResult = 0;
    int negativeResult = 0;
    {
        const BusyCursor busy;
        const LibraryLock library;
        positiveResult = library->getPositivePosConpen(deviceId(), axis(), positive.values.data(), &positive.count);
        negativeResult = library->getNegativePosConpen(deviceId(), axis(), negative.values.data(), &negative.count);
    }
    if (positiveResult >= 0)
        m_compensation->show(CompensationModel::Positive, positive);
    if (negativeResult >= 0)
        m_compensation->show(CompensationModel::Negative, negative);
    showResult("getPositivePosConpen, getNegativePosConpen", [positiveResult, negativeResult] {
        return QStringLiteral("%1 %2").arg(positiveResult).arg(negativeResult);
    });
    qDebug() << "on_pushButton_clicked";
}

void DebugWidget::on_pushButton_pos_conpen_write_clicked()
{
    const CompensationModel::Pairs positive = m_compensation->pairs(CompensationModel::Positive);
    const CompensationModel::Pairs negative = m_compensation->pairs(CompensationModel::Negative);
    int positiveResult = 0;
    int negativeResult = 0;
    {
        const BusyCursor busy;
        const LibraryLock library;
        positiveResult = library->setPositivePosConpen(deviceId(), axis(), positive.values.data(), positive.count);
        negativeResult = library->setNegativePosConpen(deviceId(), axis(), negative.values.data(), negative.count);
        if (positiveResult >= 0 || negativeResult >= 0)
            SerialComDev::instance()->noteParametersWritten(axis());
    }
    showResult("setPositivePosConpen, setNegativePosConpen", [positiveResult, negativeResult] {
        return QStringLiteral("%1 %2").arg(positiveResult).arg(negativeResult);
    });
}

void DebugWidget::on_pushButton_pasteTable_clicked()
{
    ui->tableView_conpen->paste();
}

void DebugWidget::on_pushButton_clearTable_clicked()
{
    m_compensation->clearRows(0);
}

// ---- Heartbeat -----------------------------------------------------------------------------------------------------

void DebugWidget::on_pushButton_44_clicked()
{
    ui->lineEdit_heart->setText(QStringLiteral("0"));
    if (!m_heart) {
        m_heart = QSharedPointer<Heart>::create();
        const auto worker = SerialComDev::instance();
        connect(m_heart.data(), &Heart::heartBreak, this, &DebugWidget::hertBreak);
        connect(
            m_heart.data(), &Heart::sendHeart, worker.data(), &SerialComDev::signal_requestConsoleHeartBeat,
            Qt::DirectConnection);
        m_heart->listenTo(worker.data(), SIGNAL(signal_consoleHeartBeatInfo(CONTROLER_STATE, int)));
    }
    m_heart->startHeart();
}

void DebugWidget::on_pushButton_54_clicked()
{
    if (m_heart)
        m_heart->stopHeart();
}

void DebugWidget::hertBreak(int n)
{
    ui->lineEdit_heart->setText(QString::number(n));
}

// ---- Window --------------------------------------------------------------------------------------------------------

void DebugWidget::retranslate()
{
    ui->retranslateUi(this);
    // Qt gives them their names once.
    for (const TabScroller &scroller : tabScrollers)
        ui->tabWidget->findChild<QWidget *>(QLatin1String(scroller.button))
            ->setAccessibleName(QTabBar::tr(scroller.name));
    m_compensation->retranslate();
    if (m_result)
        ui->lineEdit_result->setText(m_result());
}

void DebugWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void DebugWidget::acknowledgeWriting()
{
    if (m_writingBox)
        m_writingBox->reject();
}

/** Whoever closes the console, above all the program that quits, gets the library back at once. */
void DebugWidget::closeEvent(QCloseEvent *event)
{
    acknowledgeWriting();
    if (m_bShownBefore)
        savePlace();
    QWidget::closeEvent(event);
}

/** A failure is not reported: the place then holds for this run only. */
void DebugWidget::savePlace() const
{
    const QFileInfo info(placeFile());
    QDir().mkpath(info.path());
    SmallFile::save(info.filePath(), saveGeometry());
}

void DebugWidget::showEvent(QShowEvent *event)
{
    // Changes nothing, but tells the window manager that the place is meant: it would find one of its own, even for a
    // window that the user has moved.
    if (m_bShownBefore)
        windowHandle()->setGeometry(geometry());
    m_bShownBefore = true;
    QWidget::showEvent(event);
}

void DebugWidget::paintEvent(QPaintEvent *)
{
    Dialogs::paintBackground(this);
}

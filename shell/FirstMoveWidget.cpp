// SPDX-License-Identifier: MIT
#include "shell/FirstMoveWidget.h"

#include "device/moverStatus.h"
#include "widgets/Form.h"
#include "widgets/MessageBox.h"

#include "ui_FirstMoveWidget.h"

#include <QListView>

#include <cmath>

namespace {

constexpr double speed = 1; // mm/s, if the board allows it
constexpr double leastMove = 0.05;

// Numbers of the board's settings.
constexpr int directions = 3;
constexpr int switchesInverted = 5;
constexpr int homingOn = 22;
constexpr int homingDirections = 23;

} // namespace

FirstMoveWidget::FirstMoveWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::FirstMoveWidget>(this))
{
    ui->comboBox_axis->setView(new QListView(ui->comboBox_axis));
}

FirstMoveWidget::~FirstMoveWidget() = default;

void FirstMoveWidget::begin(BoardLink *link)
{
    m_link = link;
    m_from.reset();
    m_moved.reset();
    ui->comboBox_axis->clear();
    for (int k = 0; k < link->board().axes; ++k)
        ui->comboBox_axis->addItem(BoardLink::letters().mid(k, 1));
    ui->checkBox_rightWay->setChecked(true);
    ui->doubleSpinBox_measured->setValue(1);
    showBoard();
}

int FirstMoveWidget::axis() const
{
    return std::max(ui->comboBox_axis->currentIndex(), 0);
}

void FirstMoveWidget::showBoard()
{
    if (!m_link)
        return;
    const MoverBoard &board = m_link->board();
    const bool rests = m_link->isResting();
    if (m_from && m_link->isOpen())
        m_moved = board.positions[axis()] - *m_from;
    if (rests)
        m_from.reset();
    if (m_link->setting(BoardLink::StepsPerUnit + axis(), m_dSteps) != m_dSteps)
        m_moved.reset(); // it was measured with other steps

    QString state = tr("没有应答");
    if (m_link->isOpen() && board.answers)
        state = board.locked ? tr("已锁定") : rests ? tr("静止") : tr("忙");
    ui->label_where->setText(tr("位置 %1 mm，%2").arg(QString::number(board.positions[axis()], 'f', 3), state));
    ui->pushButton_unlock->setEnabled(rests && board.locked);
    // A button that is held must see its release.
    for (QPushButton *button : {ui->pushButton_backward, ui->pushButton_forward})
        button->setEnabled(button->isDown() || (rests && !board.locked));
    ui->label_moved->setText(
        m_moved ? tr("控制板走了 %1 mm").arg(QString::number(*m_moved, 'f', 3)) : tr("松开即停止，最多走 1 mm"));
    ui->pushButton_propose->setEnabled(rests && std::abs(m_moved.value_or(0)) >= leastMove);

    QStringList switches;
    for (int k = 0; k < board.axes; ++k)
        switches.append(QStringLiteral("%1 %2").arg(
            BoardLink::letters().mid(k, 1), (board.pins >> k & 1U) ? tr("闭合") : tr("断开")));
    ui->label_switches->setText(switches.join(QStringLiteral("    ")));
    ui->pushButton_invertSwitches->setEnabled(rests);

    const bool homes = m_link->setting(homingOn, 0) != 0;
    const unsigned towardsMinus = unsigned(m_link->setting(homingDirections, 0));
    const bool homed = board.homed >> axis() & 1U;
    ui->label_homing->setText(
        !homes  ? tr("控制板的回零没有打开（$22=0）。没有限位开关时保持关闭。")
        : homed ? tr("%1 轴已回零。").arg(BoardLink::letters().mid(axis(), 1))
                : tr("%1 轴朝 %2 方向寻找限位开关（$23）。")
                      .arg(BoardLink::letters().mid(axis(), 1), (towardsMinus >> axis() & 1U) ? "−" : "+"));
    ui->pushButton_home->setEnabled(rests && homes);
    ui->pushButton_homeTheOtherWay->setEnabled(rests && homes);
    ui->pushButton_homingOn->setEnabled(rests && !homes);
}

void FirstMoveWidget::on_comboBox_axis_currentIndexChanged(int)
{
    m_from.reset();
    m_moved.reset();
    showBoard();
}

void FirstMoveWidget::tell(int status)
{
    if (status < 0)
        emit signal_refused(status);
}

void FirstMoveWidget::on_pushButton_unlock_clicked()
{
    tell(m_link->unlock());
}

void FirstMoveWidget::move(double distance)
{
    const double from = m_link->board().positions[axis()];
    m_dSteps = m_link->setting(BoardLink::StepsPerUnit + axis(), 0);
    m_moved.reset();
    const int status = m_link->move(axis(), distance, speed);
    m_from = from; // not before it runs
    if (status < 0)
        m_from.reset();
    tell(status);
}

void FirstMoveWidget::stop()
{
    m_link->stop();
    showBoard();
}

void FirstMoveWidget::proposeBit(int setting, int bit)
{
    const auto mask = unsigned(m_link->setting(setting, 0));
    emit signal_proposeSettings({{setting, double(mask ^ (1U << bit))}});
}

void FirstMoveWidget::on_pushButton_propose_clicked()
{
    BoardLink::Settings settings;
    const double measured = ui->doubleSpinBox_measured->value();
    const int number = BoardLink::StepsPerUnit + axis();
    if (measured > 0)
        settings.insert(
            number, std::round(m_link->setting(number, 0) * std::abs(m_moved.value_or(0)) / measured * 1000) / 1000);
    if (!ui->checkBox_rightWay->isChecked())
        settings.insert(directions, double(unsigned(m_link->setting(directions, 0)) ^ (1U << axis())));
    emit signal_proposeSettings(settings);
}

void FirstMoveWidget::on_pushButton_invertSwitches_clicked()
{
    proposeBit(switchesInverted, 0);
}

void FirstMoveWidget::on_pushButton_home_clicked()
{
    const MoverBoard &board = m_link->board();
    const QString moving =
        board.homesSingly ? BoardLink::letters().mid(axis(), 1) : BoardLink::letters().left(board.axes);
    if (MessageBox::confirm(this, tr("回零将移动 %1 轴，直到碰到限位开关。\n行程内是否没有障碍？").arg(moving)))
        tell(m_link->home(axis()));
}

void FirstMoveWidget::on_pushButton_homeTheOtherWay_clicked()
{
    proposeBit(homingDirections, axis());
}

void FirstMoveWidget::on_pushButton_homingOn_clicked()
{
    proposeBit(homingOn, 0);
}

void FirstMoveWidget::hideEvent(QHideEvent *event)
{
    if (m_link)
        m_link->stop(); // nobody holds a button that is not there
    QWidget::hideEvent(event);
}

void FirstMoveWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        showBoard();
    }
    QWidget::changeEvent(event);
}

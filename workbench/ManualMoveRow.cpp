// SPDX-License-Identifier: MIT
#include "workbench/ManualMoveRow.h"

#include "widgets/Form.h"
#include "workbench/SequenceTexts.h"

#include "ui_ManualMoveRow.h"

#include <QEvent>
#include <QKeyEvent>
#include <QListView>
#include <QSignalBlocker>

#include <algorithm>
#include <utility>

namespace {

using namespace std::chrono_literals;

// The longest that desktops let users choose until a key repeats itself, and between two repeats, and some more.
constexpr auto firstRepeat = 1200ms;
constexpr auto nextRepeat = 600ms;
constexpr double slowShare = 0.1; // of the stage's speed
constexpr double leastSpeed = 0.001;

} // namespace

ManualMoveRow::ManualMoveRow(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::ManualMoveRow>(this))
{
    ui->comboBox_manualAxis->setView(new QListView(this)); // so that the style sheet reaches the items of the list
    const struct {
        QPushButton *button;
        const char *normal;
        const char *disabled;
        int direction;
    } arrows[] = {
        {ui->pushButton_holdNegative, ":/image/sequence/left_normal.png", ":/image/sequence/left_unabled.png", -1},
        {ui->pushButton_holdPositive, ":/image/sequence/right_normal.png", ":/image/sequence/right_unabled.png", 1},
    };
    for (const auto &arrow : arrows) {
        QIcon icon(QLatin1String(arrow.normal));
        icon.addFile(QLatin1String(arrow.disabled), {}, QIcon::Disabled);
        arrow.button->setIcon(icon);
        arrow.button->installEventFilter(this);
        connect(arrow.button, &QPushButton::pressed, this, [this, direction = arrow.direction] { hold(direction); });
        connect(arrow.button, &QPushButton::released, this, &ManualMoveRow::release);
    }
    m_stalled.setSingleShot(true);
    connect(&m_stalled, &QTimer::timeout, this, &ManualMoveRow::release);
    setUsable(false);
}

ManualMoveRow::~ManualMoveRow() = default;

void ManualMoveRow::setAxes(const QVector<AxisDescription> &axes)
{
    const auto isSame = [](const AxisDescription &one, const AxisDescription &other) {
        return one.index == other.index && one.unit == other.unit && one.maxSpeed == other.maxSpeed;
    };
    if (std::equal(axes.cbegin(), axes.cend(), m_axes.cbegin(), m_axes.cend(), isSame))
        return;
    release();
    m_axes = axes;
    const QVariant chosen = ui->comboBox_manualAxis->currentData();
    const QSignalBlocker blocker(ui->comboBox_manualAxis);
    ui->comboBox_manualAxis->clear();
    for (const AxisDescription &axis : axes)
        ui->comboBox_manualAxis->addItem(axis.name(), axis.index);
    ui->comboBox_manualAxis->setCurrentIndex(
        axes.isEmpty() ? -1 : std::max(0, ui->comboBox_manualAxis->findData(chosen)));
    on_comboBox_manualAxis_currentIndexChanged(ui->comboBox_manualAxis->currentIndex());
}

void ManualMoveRow::setUsable(bool isUsable)
{
    if (!isUsable)
        release();
    const QList<QWidget *> controls = findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *control : controls)
        control->setEnabled(isUsable);
}

void ManualMoveRow::on_comboBox_manualAxis_currentIndexChanged(int index)
{
    release();
    if (index < 0)
        return;
    const AxisDescription &axis = m_axes.at(index);
    ui->label_unit->setText(axis.unit);
    const QSignalBlocker blocker(ui->doubleSpinBox_slow);
    const double most = std::max(leastSpeed, axis.maxSpeed);
    ui->doubleSpinBox_slow->setSuffix(QStringLiteral(" %1/s").arg(axis.unit));
    ui->doubleSpinBox_slow->setMaximum(most);
    ui->doubleSpinBox_slow->setValue(m_speeds.value(axis.index, most * slowShare));
}

void ManualMoveRow::on_doubleSpinBox_slow_valueChanged(double value)
{
    m_speeds.insert(ui->comboBox_manualAxis->currentData().toInt(), value);
}

void ManualMoveRow::on_lineEdit_target_returnPressed()
{
    const QString text = ui->lineEdit_target->text().trimmed();
    const auto target = SequenceTexts::toNumber(text);
    ui->lineEdit_target->selectAll(); // the next number replaces it
    if (!target) {
        emit signal_refused(text);
        return;
    }
    emit signal_goTo(ui->comboBox_manualAxis->currentData().toInt(), *target, ui->doubleSpinBox_slow->value());
}

// ---- Arrows --------------------------------------------------------------------------------------------------------

void ManualMoveRow::hold(int direction)
{
    if (m_iHeld != 0) { // two at once: nobody knows which one is meant
        release();
        return;
    }
    m_iHeld = direction;
    emit signal_held(ui->comboBox_manualAxis->currentData().toInt(), direction, ui->doubleSpinBox_slow->value());
}

void ManualMoveRow::release()
{
    m_stalled.stop();
    m_iKey = 0;
    if (std::exchange(m_iHeld, 0) != 0)
        emit signal_released();
}

bool ManualMoveRow::keyPressed(QObject *button, int key, bool isRepeat)
{
    const bool isBar = key == Qt::Key_Space;
    if (!isBar && key != Qt::Key_Left && key != Qt::Key_Right)
        return false;
    if (isRepeat) {
        if (key == m_iKey)
            m_stalled.start(nextRepeat);
        return true;
    }
    hold(key == Qt::Key_Left || (isBar && button == ui->pushButton_holdNegative) ? -1 : 1);
    if (m_iHeld != 0) {
        m_iKey = key;
        m_stalled.start(firstRepeat);
    }
    return true;
}

/** Of the arrows. */
bool ManualMoveRow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusOut) {
        release();
    } else if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease) {
        const auto *const key = static_cast<QKeyEvent *>(event);
        if (event->type() == QEvent::KeyPress && (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier)
            return keyPressed(watched, key->key(), key->isAutoRepeat());
        if (event->type() == QEvent::KeyRelease && !key->isAutoRepeat() && m_iKey != 0 && key->key() == m_iKey)
            release();
        // The button itself knows nothing of the bar, which would press it once more.
        return key->key() == Qt::Key_Space;
    }
    return QWidget::eventFilter(watched, event);
}

void ManualMoveRow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        ui->retranslateUi(this);
    QWidget::changeEvent(event);
}

void ManualMoveRow::hideEvent(QHideEvent *event)
{
    release();
    QWidget::hideEvent(event);
}

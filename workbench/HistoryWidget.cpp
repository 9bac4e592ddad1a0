// SPDX-License-Identifier: MIT
#include "workbench/HistoryWidget.h"

#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "widgets/Form.h"
#include "widgets/MessageBox.h"
#include "workbench/ParameterTexts.h"

#include "ui_HistoryWidget.h"

#include <QEvent>
#include <QFileDialog>
#include <QListView>
#include <QPointer>
#include <QSignalBlocker>

#include <algorithm>
#include <set>

namespace {

constexpr int rowHeight = 40;
constexpr int headHeight = 36;
constexpr int mostNamed = 10; // fields that a question or an answer names

void setUpTable(QTableWidget *table)
{
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(rowHeight);
    table->horizontalHeader()->setFixedHeight(headHeight);
    table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    table->horizontalHeader()->setHighlightSections(false);
    table->horizontalHeader()->setStretchLastSection(true);
    table->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    table->setTabKeyNavigation(false);
}

QString jsonFilter()
{
    return QStringLiteral("JSON (*.json)");
}

} // namespace

HistoryWidget::HistoryWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::HistoryWidget>(this))
    , m_history(ParameterHistory::instance())
    , m_delegate(new DifferenceDelegate(this))
{
    qRegisterMetaType<ParameterSnapshot>();
    setUpTable(ui->tableWidget_snapshots);
    setUpTable(ui->tableWidget_differences);
    const int widths[] = {174, 132, 64};
    for (int column = 0; column < 3; ++column)
        ui->tableWidget_snapshots->setColumnWidth(column, widths[column]);
    ui->tableWidget_differences->setItemDelegate(m_delegate);
    ui->tableWidget_differences->setColumnWidth(0, 206);
    ui->tableWidget_differences->setColumnWidth(1, 214);
    // Plain list views, so that the style sheet reaches the items of the lists.
    ui->comboBox_axis->setView(new QListView(this));
    ui->comboBox_compareWith->setView(new QListView(this));

    connect(ui->tableWidget_snapshots, &QTableWidget::currentCellChanged, this, [this](int row, int, int before) {
        if (row == before)
            return;
        m_now.reset();
        m_sNotice.clear();
        showChoices();
        readNow();
    });
    connect(ui->tableWidget_snapshots, &QTableWidget::itemSelectionChanged, this, &HistoryWidget::showDifferences);
    connect(m_history.data(), &ParameterHistory::signal_loaded, this, &HistoryWidget::loaded);
    connect(m_history.data(), &ParameterHistory::signal_kept, this, &HistoryWidget::add);
    connect(m_history.data(), &ParameterHistory::signal_saveFailed, this, [this] {
        tell(tr("快照未能写入磁盘，将随下一个快照一起保存。"));
    });
    connect(m_history.data(), &ParameterHistory::signal_readNow, this, [this](const ParameterSnapshot &now) {
        if (!chosen() || !now.isOfSameAxis(*chosen()))
            return;
        m_now = now;
        showDifferences();
    });
    connect(m_history.data(), &ParameterHistory::signal_restored, this, &HistoryWidget::restored);
    connect(m_history.data(), &ParameterHistory::signal_imported, this, [this](int count, bool isWhole, bool isSaved) {
        tell(
            count < 0  ? tr("该文件不是参数历史。")
            : !isSaved ? tr("导入的快照未能写入磁盘。")
            : isWhole  ? tr("已导入 %1 个快照。").arg(count)
                       : tr("该文件已损坏，只导入了其中完好的 %1 个快照。").arg(count));
    });
    connect(m_history.data(), &ParameterHistory::signal_exported, this, [this](const QString &file, bool isSaved) {
        tell(isSaved ? tr("已导出到 %1").arg(file) : tr("无法写入 %1").arg(file));
    });
    connect(ControlSession::instance().data(), &ControlSession::stateChanged, this, [this] {
        m_now.reset();
        showAxes();
        readNow();
    });
    connect(ControlSession::instance().data(), &ControlSession::axisAdded, this, &HistoryWidget::showAxes);
    showAxes();
    showList();
}

HistoryWidget::~HistoryWidget() = default;

// ---- Snapshots -----------------------------------------------------------------------------------------------------

void HistoryWidget::loaded(const QVector<ParameterSnapshot> &snapshots, const QStringList &damaged)
{
    const auto before = chosen() ? std::optional(*chosen()) : std::nullopt;
    m_isLoaded = true;
    m_snapshots = snapshots;
    std::stable_sort(m_snapshots.begin(), m_snapshots.end(), [](const auto &one, const auto &other) {
        return one.time > other.time;
    });
    showAxes();
    showList();
    select(before);
    if (!damaged.isEmpty())
        tell(tr("以下文件已损坏或由较新版本写成，已另存保留：%1").arg(damaged.join(QStringLiteral(", "))));
}

void HistoryWidget::add(const ParameterSnapshot &snapshot)
{
    if (!m_isLoaded)
        return;
    const auto before = chosen() ? std::optional(*chosen()) : std::nullopt;
    m_snapshots.prepend(snapshot);
    if (before && snapshot.isOfSameAxis(*before))
        m_now = snapshot;
    showAxes();
    showList();
    select(before);
}

/** The axes that have snapshots or are connected, behind "all". */
void HistoryWidget::showAxes()
{
    std::set<int> axes;
    for (const ParameterSnapshot &snapshot : qAsConst(m_snapshots))
        axes.insert(snapshot.axis);
    const auto session = ControlSession::instance();
    for (int axis = 0; axis < session->axisCount(); ++axis)
        axes.insert(axis);
    const QVariant chosen = ui->comboBox_axis->currentData();
    const QSignalBlocker quiet(ui->comboBox_axis);
    ui->comboBox_axis->clear();
    ui->comboBox_axis->addItem(tr("所有轴"), -1);
    for (const int axis : axes)
        ui->comboBox_axis->addItem(axisName(axis), axis);
    ui->comboBox_axis->setCurrentIndex(std::max(0, ui->comboBox_axis->findData(chosen)));
    ui->pushButton_snapshot->setEnabled(session->isConnected() && session->axisCount() > 0);
}

void HistoryWidget::showList()
{
    const int axis = ui->comboBox_axis->currentData().toInt();
    m_listed.clear();
    for (int k = 0; k < m_snapshots.size(); ++k) {
        if (axis < 0 || m_snapshots.at(k).axis == axis)
            m_listed.append(k);
    }
    QTableWidget *table = ui->tableWidget_snapshots;
    {
        const QSignalBlocker quiet(table);
        table->clearSelection();
        table->setRowCount(m_listed.size());
        for (int row = 0; row < m_listed.size(); ++row) {
            const ParameterSnapshot &snapshot = m_snapshots.at(m_listed.at(row));
            const QString texts[] = {
                ParameterTexts::time(snapshot), snapshot.controller, axisName(snapshot.axis),
                ParameterTexts::why(snapshot.why)};
            for (int column = 0; column < 4; ++column) {
                auto *item = new QTableWidgetItem(texts[column]);
                item->setToolTip(texts[column]); // a long serial number is cut
                table->setItem(row, column, item);
            }
        }
    }
    table->setVisible(!m_listed.isEmpty());
    ui->label_empty->setVisible(m_listed.isEmpty());
    showChoices();
}

/** The snapshot, or the newest where it is not in the list. */
void HistoryWidget::select(const std::optional<ParameterSnapshot> &snapshot)
{
    const auto *const place = std::find_if(
        m_listed.cbegin(), m_listed.cend(), [&](int k) { return snapshot && m_snapshots.at(k).isSame(*snapshot); });
    if (!m_listed.isEmpty()) {
        const QSignalBlocker quiet(ui->tableWidget_snapshots);
        ui->tableWidget_snapshots->setCurrentCell(place == m_listed.cend() ? 0 : int(place - m_listed.cbegin()), 0);
    }
    showChoices();
    if (!chosen() || !m_now || !m_now->isOfSameAxis(*chosen()))
        readNow();
}

const ParameterSnapshot *HistoryWidget::chosen() const
{
    const int row = ui->tableWidget_snapshots->currentRow();
    return row >= 0 && row < m_listed.size() ? &m_snapshots.at(m_listed.at(row)) : nullptr;
}

QVector<ParameterSnapshot> HistoryWidget::selected() const
{
    QVector<ParameterSnapshot> snapshots;
    const QModelIndexList rows = ui->tableWidget_snapshots->selectionModel()->selectedRows();
    for (const QModelIndex &row : rows)
        snapshots.append(m_snapshots.at(m_listed.at(row.row())));
    return snapshots;
}

void HistoryWidget::on_comboBox_axis_currentIndexChanged(int)
{
    const auto before = chosen() ? std::optional(*chosen()) : std::nullopt;
    showList();
    select(before);
}

void HistoryWidget::on_pushButton_snapshot_clicked()
{
    const int chosenAxis = ui->comboBox_axis->currentData().toInt();
    for (int axis = 0; axis < ControlSession::instance()->axisCount(); ++axis) {
        if (chosenAxis < 0 || chosenAxis == axis)
            m_history->keep(axis, ParameterSnapshot::ByHand);
    }
}

// ---- Differences ---------------------------------------------------------------------------------------------------

/** What the chosen snapshot can be compared with: the controller now, and the other snapshots of its axis. */
void HistoryWidget::showChoices()
{
    const ParameterSnapshot *one = chosen();
    const std::optional<ParameterSnapshot> before =
        other() && !comparesWithNow() ? std::optional(*other()) : std::nullopt;
    m_choices.clear();
    {
        const QSignalBlocker quiet(ui->comboBox_compareWith);
        ui->comboBox_compareWith->clear();
        ui->comboBox_compareWith->addItem(tr("控制器当前值"));
        int place = 0;
        for (int k = 0; one && k < m_snapshots.size(); ++k) {
            const ParameterSnapshot &snapshot = m_snapshots.at(k);
            if (!snapshot.isOfSameAxis(*one) || snapshot.isSame(*one))
                continue;
            m_choices.append(k);
            ui->comboBox_compareWith->addItem(
                ParameterTexts::time(snapshot) + QStringLiteral(" · ") + ParameterTexts::why(snapshot.why));
            if (before && snapshot.isSame(*before))
                place = m_choices.size();
            // Without the controller, the one before it tells what has changed.
            if (!before && place == 0 && !m_history->isConnected(*one) && snapshot.time < one->time)
                place = m_choices.size();
        }
        ui->comboBox_compareWith->setCurrentIndex(place);
    }
    showDifferences();
}

bool HistoryWidget::comparesWithNow() const
{
    return ui->comboBox_compareWith->currentIndex() <= 0;
}

const ParameterSnapshot *HistoryWidget::other() const
{
    if (comparesWithNow())
        return m_now ? &*m_now : nullptr;
    const int choice = ui->comboBox_compareWith->currentIndex() - 1;
    return choice < m_choices.size() && m_choices.at(choice) < m_snapshots.size()
               ? &m_snapshots.at(m_choices.at(choice))
               : nullptr;
}

void HistoryWidget::readNow()
{
    if (isVisible() && chosen() && m_history->isConnected(*chosen()))
        m_history->readNow(chosen()->axis);
    showDifferences();
}

void HistoryWidget::on_comboBox_compareWith_currentIndexChanged(int)
{
    m_sNotice.clear();
    readNow();
}

void HistoryWidget::on_checkBox_changedOnly_toggled(bool)
{
    showDifferences();
}

void HistoryWidget::showDifferences()
{
    const ParameterSnapshot *one = chosen();
    const ParameterSnapshot *two = other();
    const bool isConnected = one && m_history->isConnected(*one);
    const QVector<int> different = one && two ? differences(*one, *two) : QVector<int>();
    QTableWidget *table = ui->tableWidget_differences;
    table->setHorizontalHeaderLabels(
        {tr("参数"), one ? ParameterTexts::time(*one) : QString(),
         comparesWithNow() || !two ? tr("控制器当前值") : ParameterTexts::time(*two)});
    table->setRowCount(one ? parameterFields().size() : 0);
    for (int row = 0; row < table->rowCount(); ++row) {
        const bool isChanged = different.contains(row);
        const auto put = [&](int column, const QString &text, const QString &unit = QString()) {
            auto *item = new QTableWidgetItem(text);
            item->setData(DifferenceDelegate::UnitRole, unit);
            item->setData(DifferenceDelegate::ChangedRole, isChanged);
            item->setToolTip(text);
            table->setItem(row, column, item);
        };
        put(0, ParameterTexts::name(row));
        put(1, ParameterTexts::value(row, *one), ParameterTexts::unit(row, *one));
        put(2, two ? ParameterTexts::value(row, *two) : QString(), two ? ParameterTexts::unit(row, *two) : QString());
        table->setRowHidden(row, ui->checkBox_changedOnly->isChecked() && two && !isChanged);
    }
    const int count = parameterFields().size();
    if (!one)
        showStatus(QString());
    else if (two)
        showStatus(tr("%2 项中有 %1 项不同。恢复前会先保存快照。").arg(different.size()).arg(count));
    else
        showStatus(isConnected ? tr("正在读取控制器…") : tr("该控制器的这个轴未连接。"));
    ui->pushButton_export->setEnabled(one != nullptr);
    ui->pushButton_restore->setEnabled(isConnected && !m_history->isRestoring() && !m_before);
}

/** Stays until the user turns to something else. */
void HistoryWidget::tell(const QString &text)
{
    m_sNotice = text;
    showStatus(text);
}

void HistoryWidget::showStatus(const QString &text)
{
    const QString &shown = m_sNotice.isEmpty() ? text : m_sNotice;
    ui->label_status->setText(shown);
    ui->label_status->setToolTip(shown);
}

// ---- Restoring -----------------------------------------------------------------------------------------------------

void HistoryWidget::on_pushButton_restore_clicked()
{
    if (!chosen())
        return;
    m_sNotice.clear();
    // Asked with what the controller has now, not with what it had when the window was last looked at.
    const ParameterSnapshot wanted = *chosen();
    const auto once = std::make_shared<QMetaObject::Connection>();
    m_before = wanted;
    *once = connect(
        m_history.data(), &ParameterHistory::signal_readNow, this, [this, wanted, once](const ParameterSnapshot &now) {
            if (!now.isOfSameAxis(wanted))
                return;
            QObject::disconnect(*once);
            m_before.reset();
            QStringList lines;
            int count = 0;
            const QVector<int> different = differences(wanted, now);
            for (const int field : different) {
                if (parameterFields()[field].get(wanted).isUndefined())
                    continue;
                if (++count <= mostNamed)
                    lines.append(tr("%1：%2 → %3")
                                     .arg(
                                         ParameterTexts::name(field), ParameterTexts::valueAndUnit(field, now),
                                         ParameterTexts::valueAndUnit(field, wanted)));
            }
            if (count > mostNamed)
                lines.append(tr("另有 %1 项").arg(count - mostNamed));
            const QPointer<HistoryWidget> alive(this);
            if (count == 0) {
                MessageBox::inform(this, tr("控制器的值与该快照相同，无需恢复。"));
            } else if (
                MessageBox::confirm(
                    this,
                    tr("要把 %1 恢复为 %2 的快照吗？将更改：\n%3")
                        .arg(axisName(wanted.axis), ParameterTexts::time(wanted), lines.join(QLatin1Char('\n')))) &&
                alive) {
                m_history->restore(wanted);
            }
            if (alive)
                showDifferences();
        });
    m_history->readNow(wanted.axis);
    showDifferences();
}

void HistoryWidget::restored(const ParameterRestore &result)
{
    showDifferences();
    QString text;
    switch (result.outcome) {
    case ParameterRestore::NotRead:
        text = tr("未能读取控制器的当前参数，没有写入任何内容。");
        break;
    case ParameterRestore::NotKept:
        text = tr("未能保存恢复前的快照，没有写入任何内容。");
        break;
    case ParameterRestore::Vanished:
        text = tr("恢复过程中控制器已断开，请重新连接后检查参数。");
        break;
    case ParameterRestore::InUse:
        text = tr("该轴正由序列使用，没有写入任何内容。");
        break;
    case ParameterRestore::Done:
        if (result.missing.isEmpty()) {
            tell(tr("已恢复，并已从控制器读回确认。"));
            return;
        }
        QStringList names;
        for (const int field : result.missing)
            names.append(ParameterTexts::name(field));
        text = tr("以下参数未生效：%1").arg(names.join(QStringLiteral(", ")));
        if (result.status < 0)
            text += QLatin1Char('\n') + SerialComDev::instance()->statusText(result.status);
        break;
    }
    MessageBox::inform(this, text);
}

// ---- Files ---------------------------------------------------------------------------------------------------------

void HistoryWidget::on_pushButton_export_clicked()
{
    const QVector<ParameterSnapshot> snapshots = selected();
    const QPointer<HistoryWidget> alive(this);
    QString file = QFileDialog::getSaveFileName(this, tr("导出快照"), QStringLiteral("parameters.json"), jsonFilter());
    if (!alive || file.isEmpty() || snapshots.isEmpty())
        return;
    tell(tr("正在导出 …"));
    m_history->exportTo(file, snapshots);
}

void HistoryWidget::on_pushButton_import_clicked()
{
    const QPointer<HistoryWidget> alive(this);
    const QString file = QFileDialog::getOpenFileName(this, tr("导入快照"), QString(), jsonFilter());
    if (!alive || file.isEmpty())
        return;
    tell(tr("正在导入 …"));
    m_history->importFrom(file);
}

// ---- Window --------------------------------------------------------------------------------------------------------

void HistoryWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        const auto before = chosen() ? std::optional(*chosen()) : std::nullopt;
        m_sNotice.clear();
        ui->retranslateUi(this);
        showAxes();
        showList();
        select(before);
    }
    QWidget::changeEvent(event);
}

void HistoryWidget::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (!m_isLoaded)
        m_history->load();
    readNow();
}

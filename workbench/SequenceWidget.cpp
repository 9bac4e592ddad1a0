// SPDX-License-Identifier: MIT
#include "workbench/SequenceWidget.h"

#include "device/SerialComDev.h"
#include "session/ControlSession.h"
#include "session/SmallFile.h"
#include "widgets/Form.h"
#include "widgets/MessageBox.h"
#include "workbench/PositionDelegate.h"
#include "workbench/ScanDialog.h"
#include "workbench/SequenceStepDialog.h"
#include "workbench/SequenceTexts.h"
#include "workbench/StepDelegate.h"

#include "ui_SequenceWidget.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QRegularExpression>
#include <QScrollBar>
#include <QStandardPaths>
#include <QStyle>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <numeric>

namespace {

constexpr int headHeight = 36;
constexpr int rowHeight = StepDelegate::LineHeight;
constexpr int nameWidth = 104;
constexpr int axisWidth = 88;
constexpr int takeWidth = 124;
constexpr int goWidth = 60;
constexpr int saveAfterMs = 1000;
constexpr int saveAgainMs = 3000; // what could not be saved
constexpr int progressMs = 200;
constexpr int holdAgainMs = 50;
constexpr int askEveryMs = 500;
constexpr auto silentAfter = std::chrono::seconds(1);
constexpr int ownTicket = -1;      // none of the runner's
constexpr double leastWay = 0.001; // in the axis's unit
constexpr int mostEdits = 200;

struct ButtonIcon {
    QPushButton *Ui::SequenceWidget::*button;
    const char *normal;
    const char *disabled;
};
constexpr ButtonIcon icons[] = {
    {&Ui::SequenceWidget::pushButton_addPosition, ":/image/sequence/add_normal.png",
     ":/image/sequence/add_unabled.png"},
    {&Ui::SequenceWidget::pushButton_deletePosition, ":/image/sequence/trash_normal.png",
     ":/image/sequence/trash_unabled.png"},
    {&Ui::SequenceWidget::pushButton_importPositions, ":/image/sequence/import_normal.png",
     ":/image/sequence/import_unabled.png"},
    {&Ui::SequenceWidget::pushButton_exportPositions, ":/image/sequence/export_normal.png",
     ":/image/sequence/export_unabled.png"},
    {&Ui::SequenceWidget::pushButton_check, ":/image/sequence/check_normal.png", ":/image/sequence/check_unabled.png"},
    {&Ui::SequenceWidget::pushButton_addStep, ":/image/sequence/add_normal.png", ":/image/sequence/add_unabled.png"},
    {&Ui::SequenceWidget::pushButton_stepUp, ":/image/sequence/up_normal.png", ":/image/sequence/up_unabled.png"},
    {&Ui::SequenceWidget::pushButton_stepDown, ":/image/sequence/down_normal.png", ":/image/sequence/down_unabled.png"},
    {&Ui::SequenceWidget::pushButton_deleteStep, ":/image/sequence/trash_normal.png",
     ":/image/sequence/trash_unabled.png"},
    {&Ui::SequenceWidget::pushButton_importSteps, ":/image/sequence/import_normal.png",
     ":/image/sequence/import_unabled.png"},
    {&Ui::SequenceWidget::pushButton_exportSteps, ":/image/sequence/export_normal.png",
     ":/image/sequence/export_unabled.png"},
    {&Ui::SequenceWidget::pushButton_run, ":/image/sequence/play_normal.png", ":/image/sequence/play_unabled.png"},
    {&Ui::SequenceWidget::pushButton_pauseRun, ":/image/sequence/pause_normal.png",
     ":/image/sequence/pause_unabled.png"},
    {&Ui::SequenceWidget::pushButton_stepRun, ":/image/sequence/step_normal.png", ":/image/sequence/step_unabled.png"},
    {&Ui::SequenceWidget::pushButton_stopRun, ":/image/sequence/stop_normal.png", ":/image/sequence/stop_unabled.png"},
    {&Ui::SequenceWidget::pushButton_rewind, ":/image/sequence/rewind_normal.png",
     ":/image/sequence/rewind_unabled.png"},
};

QIcon iconOf(const ButtonIcon &row)
{
    QIcon icon(QLatin1String(row.normal));
    icon.addFile(QLatin1String(row.disabled), {}, QIcon::Disabled);
    return icon;
}

QString jsonFilter()
{
    return QStringLiteral("JSON (*.json)");
}

QString csvFilter()
{
    return QStringLiteral("CSV (*.csv)");
}

QString askByDialog(QWidget *parent, bool toSave, const QString &suggested, const QStringList &filters, QString *filter)
{
    const QString all = filters.join(QStringLiteral(";;"));
    return toSave ? QFileDialog::getSaveFileName(parent, QString(), suggested, all, filter)
                  : QFileDialog::getOpenFileName(parent, QString(), suggested, all, filter);
}

void setUpTable(QTableView *table)
{
    table->verticalHeader()->hide();
    table->verticalHeader()->setDefaultSectionSize(rowHeight);
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->horizontalHeader()->setFixedHeight(headHeight);
    table->horizontalHeader()->setHighlightSections(false);
    table->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    table->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    table->setMouseTracking(true); // for what is under the mouse
}

/** The rows from 0, the chosen ones moved up (-1) or down (1) by one; `chosen` becomes where they are then. */
QVector<int> shifted(int count, QVector<int> *chosen, int by)
{
    QVector<int> order(count);
    std::iota(order.begin(), order.end(), 0);
    QVector<bool> isChosen(count, false);
    for (const int row : qAsConst(*chosen))
        isChosen[row] = true;
    for (int k = 1; k < count; ++k) {
        const int row = by < 0 ? k : count - 1 - k;
        if (isChosen.at(row) && !isChosen.at(row + by)) {
            std::swap(order[row], order[row + by]);
            std::swap(isChosen[row], isChosen[row + by]);
        }
    }
    chosen->clear();
    for (int row = 0; row < count; ++row) {
        if (isChosen.at(row))
            chosen->append(row);
    }
    return order;
}

/**
 * Steps in another order; -1 stands for the next of `fresh`, and a row that is left out goes. Repeats go on beginning
 * with the step that they began with, or with the one that has come after it.
 */
QVector<SequenceStep> rearranged(
    const QVector<SequenceStep> &steps, const QVector<int> &order, const QVector<SequenceStep> &fresh = {})
{
    QVector<int> places(steps.size(), -1);
    for (int row = 0; row < order.size(); ++row) {
        if (order.at(row) >= 0)
            places[order.at(row)] = row;
    }
    for (int row = steps.size() - 2; row >= 0; --row) {
        if (places.at(row) < 0)
            places[row] = places.at(row + 1);
    }
    QVector<SequenceStep> result;
    result.reserve(order.size());
    int next = 0;
    for (const int row : order) {
        SequenceStep step = row < 0 ? fresh.at(next++) : steps.at(row);
        if (row >= 0 && step.kind == SequenceStep::Repeat && step.from >= 0 && step.from < steps.size() &&
            places.at(step.from) >= 0)
            step.from = places.at(step.from);
        result.append(step);
    }
    return result;
}

} // namespace

// ---- The document --------------------------------------------------------------------------------------------------

class SequenceWidget::Edit final : public QUndoCommand
{
public:
    Edit(SequenceWidget *page, const SequenceDocument &before, const SequenceDocument &after)
        : m_page(page)
        , m_positions(Splice<NamedPosition>::between(before.positions, after.positions))
        , m_steps(Splice<SequenceStep>::between(before.sequence.steps, after.sequence.steps))
        , m_before(before.sequence.name)
        , m_after(after.sequence.name)
    {
    }
    void redo() override { apply(m_positions, m_steps, m_after); }
    void undo() override { apply(m_positions.reversed(), m_steps.reversed(), m_before); }

private:
    void apply(const Splice<NamedPosition> &positions, const Splice<SequenceStep> &steps, const QString &name)
    {
        m_page->forgetRun();
        m_page->m_positions->apply(positions);
        m_page->m_steps->apply(steps);
        m_page->m_sName = name;
        m_page->applied();
    }

    SequenceWidget *const m_page;
    const Splice<NamedPosition> m_positions;
    const Splice<SequenceStep> m_steps;
    const QString m_before;
    const QString m_after;
};

SequenceWidget::SequenceWidget(const QString &folder, QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::SequenceWidget>(this))
    , m_session(ControlSession::instance())
    , m_runner(m_session->sequences())
    , m_sFolder(
          folder.isEmpty()
              ? QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation) + QStringLiteral("/sequences")
              : folder)
    , m_positions(new PositionModel(this))
    , m_steps(new StepModel(this))
    , m_askPath(askByDialog)
{
    m_undo.setUndoLimit(mostEdits);
    for (const ButtonIcon &icon : icons)
        (ui.get()->*icon.button)->setIcon(iconOf(icon));
    setUpPositions();
    setUpManual();
    setUpSteps();
    addKey(
        this, {QKeySequence(Qt::CTRL + Qt::Key_Z)}, [this] { m_undo.undo(); }, Qt::WidgetWithChildrenShortcut);
    addKey(
        this, {QKeySequence(Qt::CTRL + Qt::SHIFT + Qt::Key_Z), QKeySequence(Qt::CTRL + Qt::Key_Y)},
        [this] { m_undo.redo(); }, Qt::WidgetWithChildrenShortcut);

    m_saveSoon.setSingleShot(true);
    connect(&m_saveSoon, &QTimer::timeout, this, &SequenceWidget::save);
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, &SequenceWidget::saveNow);
    m_progress.setInterval(progressMs);
    connect(&m_progress, &QTimer::timeout, this, &SequenceWidget::showProgress);
    m_asks.setInterval(askEveryMs);
    connect(&m_asks, &QTimer::timeout, this, &SequenceWidget::askSilentAxes);
    connect(SerialComDev::instance().data(), &SerialComDev::signal_axisWatched, this, [this](int ticket) {
        if (ticket == ownTicket && m_iAwaited > 0)
            --m_iAwaited;
    });
    connect(&m_runner, &SequenceRunner::signal_stateChanged, this, [this] {
        if (m_runner.isActive() && !m_progress.isActive())
            begun();
        showMarks();
        showState();
    });
    connect(&m_runner, &SequenceRunner::signal_lineChanged, this, [this] {
        showMarks();
        showState();
    });
    connect(&m_runner, &SequenceRunner::signal_ended, this, &SequenceWidget::ended);
    connect(m_session.data(), &ControlSession::stateChanged, this, &SequenceWidget::follow);
    connect(m_session.data(), &ControlSession::axisAdded, this, &SequenceWidget::follow);
    connect(m_session.data(), &ControlSession::axisChanged, this, [this] {
        showAxes();
        showState();
    });
    showAxes();
    showState();
}

SequenceWidget::~SequenceWidget()
{
    hide(); // while there is somebody to be told that the focus goes
    for (const QTableView *table : {ui->tableView_positions, ui->tableView_steps})
        table->selectionModel()->disconnect(this);
    saveNow();
    for (auto document = m_unsaved.cbegin(); document != m_unsaved.cend(); ++document)
        m_store->save(document.key(), *document);
}

void SequenceWidget::setColours(const QString &colours)
{
    m_sColours = colours;
    m_colours.set(colours);
}

void SequenceWidget::setUpPositions()
{
    QTableView *const table = ui->tableView_positions;
    setUpTable(table);
    auto *const delegate = new PositionDelegate(&m_colours, this);
    table->setItemDelegate(delegate);
    table->setModel(m_positions);
    table->viewport()->installEventFilter(this);
    connect(ui->scrollBar_axes, &QScrollBar::valueChanged, this, &SequenceWidget::fitColumns);
    connect(delegate, &PositionDelegate::signal_clicked, this, &SequenceWidget::press);
    connect(m_positions, &PositionModel::signal_edited, this, &SequenceWidget::edited);
    connect(m_positions, &PositionModel::signal_refused, this, &SequenceWidget::tell);
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &SequenceWidget::showState);
    addKey(table, {QKeySequence(Qt::Key_Delete)}, [this] { on_pushButton_deletePosition_clicked(); });
    addKey(table, {QKeySequence(Qt::ALT + Qt::Key_Up)}, [this] { movePositions(-1); });
    addKey(table, {QKeySequence(Qt::ALT + Qt::Key_Down)}, [this] { movePositions(1); });
    addKey(
        table, {QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter), QKeySequence(Qt::Key_Space)}, [this, table] {
            const QModelIndex index = table->currentIndex();
            if (PositionDelegate::isButton(index))
                press(index);
            else if (index.flags() & Qt::ItemIsEditable)
                table->edit(index);
        });
}

void SequenceWidget::setUpSteps()
{
    QTableView *const table = ui->tableView_steps;
    setUpTable(table);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setItemDelegate(new StepDelegate(&m_colours, this));
    table->setModel(m_steps);
    const int widths[] = {66, 110, 0, 108, 87};
    for (int column = 0; column < StepModel::ColumnCount; ++column)
        table->setColumnWidth(column, widths[column]);
    table->horizontalHeader()->setSectionResizeMode(StepModel::Where, QHeaderView::Stretch);
    table->horizontalHeader()->setMinimumSectionSize(48);
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &SequenceWidget::showState);
    connect(table, &QTableView::doubleClicked, this, [this](const QModelIndex &index) { editStep(index.row()); });
    addKey(table, {QKeySequence(Qt::Key_Delete)}, [this] { on_pushButton_deleteStep_clicked(); });
    addKey(table, {QKeySequence(Qt::ALT + Qt::Key_Up)}, [this] { moveSteps(-1); });
    addKey(table, {QKeySequence(Qt::ALT + Qt::Key_Down)}, [this] { moveSteps(1); });
    addKey(table, {QKeySequence(Qt::Key_Insert)}, [this] { addStep(); });
    addKey(table, {QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)}, [this, table] {
        editStep(table->currentIndex().row());
    });

    auto *const add = new QMenu(ui->pushButton_addStep);
    add->setObjectName(QStringLiteral("menu_addStep"));
    connect(add->addAction(QString()), &QAction::triggered, this, &SequenceWidget::addStep);
    connect(add->addAction(QString()), &QAction::triggered, this, &SequenceWidget::addScan);
    ui->pushButton_addStep->setMenu(add);
    auto *const save = new QMenu(ui->pushButton_exportSteps);
    save->setObjectName(QStringLiteral("menu_exportSteps"));
    connect(save->addAction(QString()), &QAction::triggered, this, &SequenceWidget::exportSteps);
    connect(save->addAction(QString()), &QAction::triggered, this, &SequenceWidget::exportReport);
    ui->pushButton_exportSteps->setMenu(save);
}

/** While it can be edited. */
void SequenceWidget::addKey(
    QWidget *where, const QList<QKeySequence> &keys, std::function<void()> action, Qt::ShortcutContext context)
{
    auto *const key = new QAction(where);
    key->setShortcuts(keys);
    key->setShortcutContext(context);
    connect(key, &QAction::triggered, this, [this, action = std::move(action)] {
        if (isEditable())
            action();
    });
    where->addAction(key);
}

SequenceDocument SequenceWidget::document() const
{
    return {m_positions->rows(), {m_sName, m_steps->rows()}};
}

void SequenceWidget::change(const SequenceDocument &document)
{
    const SequenceDocument before = this->document();
    if (document != before)
        m_undo.push(new Edit(this, before, document));
}

void SequenceWidget::applied()
{
    m_isUnsaved = true;
    m_saveSoon.start(saveAfterMs);
    m_sNotice.clear();
    showAxes();
    showState();
}

bool SequenceWidget::isEditable() const
{
    return m_store && !m_store->isReadOnly() && !m_sController.isEmpty() && !m_runner.isActive();
}

/** To the controller that is connected. */
void SequenceWidget::follow()
{
    m_iAwaited = 0; // a controller that was closed answers nothing more
    const QString controller = m_session->serialNumber();
    if (m_store && m_session->isConnected() && controller != m_sController) {
        saveNow();
        load(controller);
    }
    showAxes();
    showState();
}

void SequenceWidget::load(const QString &controller)
{
    if (m_dialog)
        m_dialog->reject();
    if (m_isUnsaved)
        m_unsaved.insert(m_sController, document());
    SequenceStore::Contents contents = m_store->load(controller);
    m_sController = controller;
    m_isUnsaved = m_unsaved.contains(controller);
    if (m_isUnsaved) {
        contents.document = m_unsaved.take(controller);
        m_saveSoon.start(saveAgainMs);
    }
    forgetRun();
    m_undo.clear();
    m_positions->setRows(contents.document.positions);
    m_steps->setRows(contents.document.sequence.steps);
    m_sName = contents.document.sequence.name;
    m_sNotice = contents.damaged.isEmpty()
                    ? QString()
                    : tr("保存的文件已损坏或由较新版本写成，已另存保留：%1").arg(contents.damaged);
}

/** In a thread of its own. */
void SequenceWidget::save()
{
    m_saveSoon.stop();
    if (!m_isUnsaved || !m_store || m_store->isReadOnly() || m_sController.isEmpty())
        return;
    if (m_saving) {
        m_saveSoon.start(saveAfterMs);
        return;
    }
    m_isUnsaved = false;
    const auto isSaved = std::make_shared<bool>(false);
    m_isSaved = isSaved;
    m_saving.reset(QThread::create([isSaved, store = m_store.get(), controller = m_sController, document = document()] {
        *isSaved = store->save(controller, document);
    }));
    connect(m_saving.get(), &QThread::finished, this, [this, isSaved] {
        if (isSaved == m_isSaved)
            endSaving();
    });
    m_saving->start();
}

void SequenceWidget::endSaving()
{
    if (!m_saving)
        return;
    m_saving->wait();
    m_saving.reset();
    const bool isSaved = *std::exchange(m_isSaved, nullptr);
    if (std::exchange(m_hasFailedToSave, !isSaved) && isSaved)
        tell({});
    if (isSaved)
        return;
    m_isUnsaved = true;
    m_saveSoon.start(saveAgainMs);
    tell(tr("位置和序列未能写入磁盘，稍后会再试。"));
}

void SequenceWidget::saveNow()
{
    endSaving();
    save();
    endSaving();
}

QVector<AxisDescription> SequenceWidget::axes() const
{
    QVector<AxisDescription> axes;
    for (int index = 0; index < m_session->axisCount(); ++index) {
        if (const auto axis = m_session->axis(index))
            axes.append(axis->currentDescription());
    }
    return axes;
}

/** The connected ones, and those that a position has. */
void SequenceWidget::showAxes()
{
    QSet<int> known;
    const QVector<AxisDescription> connected = axes();
    for (const AxisDescription &axis : connected)
        known.insert(axis.index);
    for (const NamedPosition &position : m_positions->rows()) {
        for (auto axis = position.axes.cbegin(); axis != position.axes.cend(); ++axis)
            known.insert(axis.key());
    }
    QVector<int> axes(known.cbegin(), known.cend());
    std::sort(axes.begin(), axes.end());
    m_positions->setAxes(axes);
    ui->manualMove->setAxes(connected);
    m_positions->retranslate(); // units
    m_steps->retranslate();
    fitColumns();
}

/** The name and the buttons stay; the axes between them scroll where they have no room. */
void SequenceWidget::fitColumns()
{
    QTableView *const table = ui->tableView_positions;
    const int room = table->viewport()->width() - takeWidth - goWidth;
    const int count = m_positions->axisCount();
    const int fitting = std::min(count, std::max(1, (room - nameWidth) / axisWidth));
    ui->scrollBar_axes->setMaximum(count - fitting);
    ui->scrollBar_axes->setVisible(count > fitting && m_positions->rowCount() > 0);
    table->setColumnWidth(0, std::max(nameWidth, room - fitting * axisWidth));
    const int first = ui->scrollBar_axes->value();
    for (int axis = 0; axis < count; ++axis) {
        table->setColumnWidth(1 + axis, axisWidth);
        table->setColumnHidden(1 + axis, axis < first || axis >= first + fitting);
    }
    table->setColumnHidden(m_positions->takeColumn(), false); // an axis may have been there
    table->setColumnHidden(m_positions->goColumn(), false);
    table->setColumnWidth(m_positions->takeColumn(), takeWidth);
    table->setColumnWidth(m_positions->goColumn(), goWidth);
}

// ---- Positions -----------------------------------------------------------------------------------------------------

/** Where the axes stand; none, which is said, when one of them does not answer. */
std::optional<QMap<int, double>> SequenceWidget::placesNow(const QList<int> &axes)
{
    QMap<int, double> places;
    for (const int index : axes) {
        const auto axis = m_session->axis(index);
        const auto position = axis ? axis->lastPosition() : std::nullopt;
        if (!position || axis->trust().isStale()) {
            tell(tr("%1 没有应答，当前位置未知。").arg(AxisDescription::nameOf(index)));
            return std::nullopt;
        }
        places.insert(index, position->value);
    }
    return places;
}

void SequenceWidget::on_pushButton_addPosition_clicked()
{
    QList<int> all;
    const QVector<AxisDescription> connected = axes();
    for (const AxisDescription &axis : connected)
        all.append(axis.index);
    const auto places = placesNow(all);
    if (!places)
        return;
    SequenceDocument document = this->document();
    const auto isTaken = [&document](const QString &name) {
        return std::any_of(document.positions.cbegin(), document.positions.cend(), [&name](const NamedPosition &each) {
            return each.name == name;
        });
    };
    QString name;
    for (int number = document.positions.size() + 1; name.isEmpty() || isTaken(name); ++number)
        name = tr("位置 %1").arg(number);
    const QVector<int> chosen = selectedRows(ui->tableView_positions);
    const int row = chosen.isEmpty() ? document.positions.size() : chosen.last() + 1;
    document.positions.insert(row, {name, *places});
    change(document);
    select(ui->tableView_positions, {row});
    ui->tableView_positions->setFocus();
    ui->tableView_positions->edit(m_positions->index(row, 0)); // its name comes next
}

void SequenceWidget::on_pushButton_deletePosition_clicked()
{
    const QVector<int> chosen = selectedRows(ui->tableView_positions);
    if (chosen.isEmpty())
        return;
    SequenceDocument document = this->document();
    for (auto row = chosen.crbegin(); row != chosen.crend(); ++row)
        document.positions.remove(*row);
    change(document);
    select(ui->tableView_positions, {chosen.first()});
}

void SequenceWidget::movePositions(int by)
{
    QVector<int> chosen = selectedRows(ui->tableView_positions);
    const int column = ui->tableView_positions->currentIndex().column();
    SequenceDocument document = this->document();
    const QVector<int> order = shifted(document.positions.size(), &chosen, by);
    for (int row = 0; row < order.size(); ++row)
        document.positions[row] = m_positions->rows().at(order.at(row));
    change(document);
    select(ui->tableView_positions, chosen, column);
}

/** A position that is called otherwise is so in the steps too. */
void SequenceWidget::edited(int row, const NamedPosition &position)
{
    SequenceDocument document = this->document();
    const QString before = document.positions.at(row).name;
    document.positions[row] = position;
    if (before != position.name) {
        for (SequenceStep &step : document.sequence.steps) {
            if (step.kind == SequenceStep::GoTo && step.text == before)
                step.text = position.name;
        }
    }
    change(document);
}

void SequenceWidget::press(const QModelIndex &button)
{
    if (!(button.flags() & Qt::ItemIsEnabled))
        return;
    if (button.column() == m_positions->goColumn())
        go(button.row());
    else
        takeCurrent(button.row());
}

/** Of the axes that the position has; of all where it has none. */
void SequenceWidget::takeCurrent(int row)
{
    SequenceDocument document = this->document();
    QList<int> which = document.positions.at(row).axes.keys();
    if (which.isEmpty()) {
        const QVector<AxisDescription> connected = axes();
        for (const AxisDescription &axis : connected)
            which.append(axis.index);
    }
    const auto places = placesNow(which);
    if (!places)
        return;
    document.positions[row].axes = *places;
    change(document);
}

void SequenceWidget::go(int row)
{
    Sequence sequence; // without a name: nobody is told of it beyond this window and the panels
    SequenceStep step;
    step.kind = SequenceStep::GoTo;
    step.text = m_positions->rows().at(row).name;
    sequence.steps = {step};
    const QString reason = whyNot();
    if (!reason.isEmpty()) {
        tell(reason);
        return;
    }
    const SequencePlan plan = SequencePlan::of(sequence, m_positions->rows(), m_runner.setting());
    if (!plan.faults.isEmpty()) {
        tell(SequenceTexts::fault(plan.faults.first()));
        return;
    }
    if (agree(plan.doubtful, tr("仍然前往吗？"), tr("位置不可靠，仍然前往")))
        start(sequence, SequenceRunner::Mode::Run, Runs::Position);
}

void SequenceWidget::on_pushButton_importPositions_clicked()
{
    QString path;
    QByteArray bytes;
    if (!readFile({csvFilter()}, &path, &bytes))
        return;
    SequenceFileFault fault;
    const auto positions = SequenceFiles::positionsFromCsv(bytes, &fault);
    if (!positions) {
        refuse(fault);
        return;
    }
    SequenceDocument document = this->document();
    QHash<QString, int> rows;
    for (int row = 0; row < document.positions.size(); ++row)
        rows.insert(document.positions.at(row).name, row);
    for (const NamedPosition &position : *positions) {
        const int row = rows.value(position.name, -1);
        if (row >= 0)
            document.positions[row] = position;
        else
            document.positions.append(position);
    }
    change(document);
    tell(tr("已导入 %1 个位置，同名的已替换。").arg(positions->size()));
}

void SequenceWidget::on_pushButton_exportPositions_clicked()
{
    QString filter = csvFilter();
    const QPointer<SequenceWidget> alive(this);
    const QString path = m_askPath(this, true, QStringLiteral("positions.csv"), {filter}, &filter);
    if (alive && !path.isEmpty())
        writeFile(path, QStringLiteral("csv"), SequenceFiles::positionsToCsv(m_positions->rows()));
}

// ---- By hand -------------------------------------------------------------------------------------------------------

void SequenceWidget::setUpManual()
{
    connect(ui->manualMove, &ManualMoveRow::signal_goTo, this, [this](int axis, double target, double speed) {
        moveByHand(axis, target, speed, Runs::Target);
    });
    connect(ui->manualMove, &ManualMoveRow::signal_refused, this, [this](const QString &text) {
        tell(SequenceTexts::noNumber(text));
    });
    connect(ui->manualMove, &ManualMoveRow::signal_held, this, &SequenceWidget::hold);
    connect(ui->manualMove, &ManualMoveRow::signal_released, this, [this] {
        m_holdAgain.stop();
        if (m_runs == Runs::Hold)
            m_runner.stop();
    });
    m_holdAgain.setSingleShot(true);
    m_holdAgain.setInterval(holdAgainMs);
}

/** Towards the end of its travel, which it reaches only if the arrow is held for so long. */
void SequenceWidget::hold(int axis, int direction, double speed)
{
    const SequenceSetting setting = m_runner.setting();
    const auto known = setting.axes.constFind(axis);
    if (known == setting.axes.cend()) {
        tell(tr("%1 没有应答，当前位置未知。").arg(AxisDescription::nameOf(axis)));
        return;
    }
    const double end = direction < 0 ? known->description.minPos : known->description.maxPos;
    if (known->isMoving && !m_runner.isActive()) { // from the last time, say
        m_holdAgain.disconnect(this);
        connect(&m_holdAgain, &QTimer::timeout, this, [this, axis, direction, speed] { hold(axis, direction, speed); });
        m_holdAgain.start();
        tell(SequenceTexts::fault({0, SequenceFault::Moves, axis}));
    } else if ((end - known->position) * direction <= std::max(leastWay, known->description.pulse)) {
        tell(tr("%1 已在行程的终点。").arg(AxisDescription::nameOf(axis)));
    } else {
        moveByHand(axis, end, speed, Runs::Hold);
    }
}

/** Whoever holds an arrow sees where the axis goes, and is not asked whether its position is to be trusted. */
void SequenceWidget::moveByHand(int axis, double target, double speed, Runs runs)
{
    SequenceStep step;
    step.kind = SequenceStep::MoveTo;
    step.axis = axis;
    step.value = target;
    step.speed = speed;
    const Sequence sequence{QString(), {step}}; // without a name, as to go to a position
    const QString reason = whyNot();
    if (!reason.isEmpty()) {
        tell(reason);
        return;
    }
    const SequencePlan plan = SequencePlan::of(sequence, {}, m_runner.setting());
    if (!plan.faults.isEmpty()) {
        tell(SequenceTexts::fault(plan.faults.first()));
        return;
    }
    if (runs == Runs::Hold || agree(plan.doubtful, tr("仍然前往吗？"), tr("位置不可靠，仍然前往")))
        start(sequence, SequenceRunner::Mode::Run, runs);
}

// ---- Steps ---------------------------------------------------------------------------------------------------------

QVector<int> SequenceWidget::selectedRows(const QTableView *table) const
{
    QVector<int> rows;
    const QModelIndexList chosen = table->selectionModel()->selectedRows();
    for (const QModelIndex &index : chosen)
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void SequenceWidget::select(QTableView *table, const QVector<int> &rows, int column)
{
    const int count = table->model()->rowCount();
    if (rows.isEmpty() || count == 0)
        return;
    const QModelIndex current = table->model()->index(std::min(rows.first(), count - 1), std::max(0, column));
    QItemSelection selection(current, current);
    for (int k = 0; k < rows.size();) { // in as few ranges as there are
        int last = k;
        while (last + 1 < rows.size() && rows.at(last + 1) == rows.at(last) + 1)
            ++last;
        if (rows.at(last) < count)
            selection.select(table->model()->index(rows.at(k), 0), table->model()->index(rows.at(last), 0));
        k = last + 1;
    }
    table->selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    table->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    table->scrollTo(current);
}

void SequenceWidget::insertSteps(const QVector<SequenceStep> &steps)
{
    const QVector<int> chosen = selectedRows(ui->tableView_steps);
    const int count = m_steps->rowCount();
    if (count + steps.size() > SequenceFiles::MostSteps) {
        tell(tr("一个序列最多 %1 步。").arg(SequenceFiles::MostSteps));
        return;
    }
    const int at = chosen.isEmpty() ? count : chosen.last() + 1;
    QVector<int> order(count);
    std::iota(order.begin(), order.end(), 0);
    order.insert(at, steps.size(), -1);
    SequenceDocument document = this->document();
    document.sequence.steps = rearranged(m_steps->rows(), order, steps);
    change(document);
    QVector<int> rows(steps.size());
    std::iota(rows.begin(), rows.end(), at);
    select(ui->tableView_steps, rows);
    ui->tableView_steps->setFocus();
}

void SequenceWidget::ask(QDialog *dialog, std::function<void()> accepted)
{
    m_dialog = dialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, accepted = std::move(accepted)] {
        if (isEditable())
            accepted();
    });
    dialog->open();
}

void SequenceWidget::addStep()
{
    SequenceStep step;
    const QVector<AxisDescription> connected = axes();
    step.kind = !m_positions->rows().isEmpty() ? SequenceStep::GoTo : SequenceStep::MoveTo;
    step.axis = connected.isEmpty() ? 0 : connected.first().index;
    auto *const dialog = new SequenceStepDialog(step, m_positions->rows(), connected, this);
    ask(dialog, [this, dialog] { insertSteps({dialog->step()}); });
}

void SequenceWidget::addScan()
{
    const QVector<AxisDescription> connected = axes();
    if (connected.isEmpty()) {
        tell(tr("没有可用的轴。"));
        return;
    }
    auto *const dialog = new ScanDialog(connected, this);
    ask(dialog, [this, dialog] { insertSteps(dialog->scan().steps()); });
}

void SequenceWidget::editStep(int row)
{
    if (!isEditable() || row < 0 || row >= m_steps->rowCount())
        return;
    auto *const dialog = new SequenceStepDialog(m_steps->rows().at(row), m_positions->rows(), axes(), this);
    ask(dialog, [this, dialog, row] {
        SequenceDocument document = this->document();
        document.sequence.steps[row] = dialog->step();
        change(document);
    });
}

void SequenceWidget::moveSteps(int by)
{
    QVector<int> chosen = selectedRows(ui->tableView_steps);
    SequenceDocument document = this->document();
    document.sequence.steps = rearranged(m_steps->rows(), shifted(m_steps->rowCount(), &chosen, by));
    change(document);
    select(ui->tableView_steps, chosen);
}

void SequenceWidget::on_pushButton_stepUp_clicked()
{
    moveSteps(-1);
}

void SequenceWidget::on_pushButton_stepDown_clicked()
{
    moveSteps(1);
}

void SequenceWidget::on_pushButton_deleteStep_clicked()
{
    const QVector<int> chosen = selectedRows(ui->tableView_steps);
    if (chosen.isEmpty())
        return;
    QVector<bool> isChosen(m_steps->rowCount(), false);
    for (const int row : chosen)
        isChosen[row] = true;
    QVector<int> order;
    for (int row = 0; row < m_steps->rowCount(); ++row) {
        if (!isChosen.at(row))
            order.append(row);
    }
    SequenceDocument document = this->document();
    document.sequence.steps = rearranged(m_steps->rows(), order);
    change(document);
    select(ui->tableView_steps, {chosen.first()});
}

void SequenceWidget::on_lineEdit_name_editingFinished()
{
    if (!isEditable())
        return;
    SequenceDocument document = this->document();
    document.sequence.name = ui->lineEdit_name->text().trimmed();
    change(document);
}

/** A sequence brings the positions along that it needs; those that are here under the same name stay as they are. */
void SequenceWidget::on_pushButton_importSteps_clicked()
{
    QString path;
    QByteArray bytes;
    if (!readFile({jsonFilter(), csvFilter()}, &path, &bytes))
        return;
    SequenceFileFault fault;
    SequenceDocument document = this->document();
    int added = 0;
    if (QFileInfo(path).suffix().compare(QStringLiteral("csv"), Qt::CaseInsensitive) == 0) {
        const auto steps = SequenceFiles::stepsFromCsv(bytes, &fault);
        if (!steps) {
            refuse(fault);
            return;
        }
        document.sequence = {QFileInfo(path).completeBaseName(), *steps};
    } else {
        const auto imported = SequenceFiles::fromJson(bytes, &fault);
        if (!imported) {
            refuse(fault);
            return;
        }
        document.sequence = imported->sequence;
        QSet<QString> names;
        for (const NamedPosition &position : qAsConst(document.positions))
            names.insert(position.name);
        for (const NamedPosition &position : imported->positions) {
            if (names.contains(position.name))
                continue;
            document.positions.append(position);
            ++added;
        }
    }
    change(document);
    tell(tr("已导入 %1 步，新增 %2 个位置。Ctrl+Z 可撤销。").arg(document.sequence.steps.size()).arg(added));
}

void SequenceWidget::exportSteps()
{
    QString name = m_sName.isEmpty() ? QStringLiteral("sequence") : m_sName;
    name.replace(QRegularExpression(QStringLiteral("[/\\\\:*?\"<>|]")), QStringLiteral("-"));
    QString filter = jsonFilter();
    const QPointer<SequenceWidget> alive(this);
    const QString path = m_askPath(this, true, name + QStringLiteral(".json"), {jsonFilter(), csvFilter()}, &filter);
    if (!alive || path.isEmpty())
        return;
    const QString ending = QFileInfo(path).suffix().toLower();
    const bool isCsv = ending == QLatin1String("csv") || (ending != QLatin1String("json") && filter == csvFilter());
    writeFile(
        path, isCsv ? QStringLiteral("csv") : QStringLiteral("json"),
        isCsv ? SequenceFiles::stepsToCsv({m_sName, m_steps->rows()}) : SequenceFiles::toJson(document()));
}

void SequenceWidget::exportReport()
{
    QString filter = csvFilter();
    const QPointer<SequenceWidget> alive(this);
    const QString path = m_askPath(this, true, QStringLiteral("report.csv"), {filter}, &filter);
    if (alive && !path.isEmpty())
        writeFile(path, QStringLiteral("csv"), SequenceFiles::recordsToCsv(m_reported, m_report));
}

// ---- Files ---------------------------------------------------------------------------------------------------------

bool SequenceWidget::readFile(const QStringList &filters, QString *path, QByteArray *bytes)
{
    QString filter = filters.first();
    const QPointer<SequenceWidget> alive(this);
    *path = m_askPath(this, false, QString(), filters, &filter);
    if (!alive || path->isEmpty() || !isEditable()) // a sequence may have been started meanwhile
        return false;
    *bytes = SmallFile::read(*path, SequenceFiles::MostBytes);
    if (!bytes->isEmpty())
        return true;
    refuse({SequenceFileFault::NotRead, 0});
    return false;
}

void SequenceWidget::refuse(const SequenceFileFault &fault)
{
    MessageBox::inform(this, tr("没有导入任何内容。\n%1").arg(SequenceTexts::fileFault(fault)));
}

void SequenceWidget::writeFile(const QString &path, const QString &ending, const QByteArray &bytes)
{
    const QString whole = QFileInfo(path).suffix().isEmpty() ? path + QLatin1Char('.') + ending : path;
    QString error;
    if (SmallFile::save(whole, bytes, &error))
        tell(tr("已保存：%1").arg(QDir::toNativeSeparators(whole)));
    else
        MessageBox::inform(this, tr("无法保存文件：%1").arg(error));
}

// ---- Running -------------------------------------------------------------------------------------------------------

/** An axis whose panel is closed is asked by nobody else, and has a place all the same. */
void SequenceWidget::askSilentAxes()
{
    if (!m_session->isConnected() || m_runner.isActive() || m_iAwaited > 0)
        return;
    const auto now = std::chrono::steady_clock::now();
    QVector<int> silent;
    for (int index = 0; index < m_session->axisCount(); ++index) {
        const auto axis = m_session->axis(index);
        const auto position = axis ? axis->lastPosition() : std::nullopt;
        if (axis && (!position || now - position->at > silentAfter))
            silent.append(index);
    }
    m_iAwaited = silent.size();
    if (!silent.isEmpty())
        SerialComDev::instance()->watch(ownTicket, silent);
}

/** Why nothing can be started now; empty: it can. */
QString SequenceWidget::whyNot() const
{
    if (m_runner.isActive())
        return tr("已有序列在运行。");
    if (!m_session->isConnected())
        return tr("控制器未连接。");
    if (SerialComDev::instance()->isRockerOn())
        return tr("摇杆正在控制各轴。");
    return {};
}

/** Of the sequence; shows what is wrong with it. */
SequencePlan SequenceWidget::check()
{
    const Sequence sequence{m_sName, m_steps->rows()};
    SequencePlan plan = SequencePlan::of(sequence, m_positions->rows(), m_runner.setting());
    QHash<int, QString> faults;
    for (const SequenceFault &fault : qAsConst(plan.faults))
        faults.insert(fault.line, SequenceTexts::fault(fault));
    m_steps->setFaults(faults);
    if (!plan.faults.isEmpty()) {
        const int line = plan.faults.first().line;
        const QString first = tr("第 %1 步：%2").arg(line + 1).arg(faults.value(line));
        tell(
            plan.faults.size() == 1 ? tr("不能运行。%1").arg(first)
                                    : tr("有 %1 步不能运行。%2").arg(plan.faults.size()).arg(first));
        ui->tableView_steps->scrollTo(m_steps->index(line, 0));
    }
    return plan;
}

void SequenceWidget::on_pushButton_check_clicked()
{
    if (!m_session->isConnected()) {
        tell(whyNot());
        return;
    }
    const SequencePlan plan = check();
    if (!plan.faults.isEmpty())
        return;
    QStringList lines{tr("可以运行：共 %1 步，约需 %2（不含等待操作者的时间）。")
                          .arg(SequenceTexts::plain(plan.stepCount), SequenceTexts::time(plan.seconds))};
    for (auto extent = plan.extents.cbegin(); extent != plan.extents.cend(); ++extent)
        lines.append(tr("%1：%2 … %3")
                         .arg(
                             AxisDescription::nameOf(extent.key()), SequenceTexts::number(extent->least),
                             SequenceTexts::place(extent.key(), extent->most)));
    MessageBox::inform(this, lines.join(QLatin1Char('\n')));
}

/** Whether axes may move although their position is in doubt; `note` then goes into their logs. */
bool SequenceWidget::agree(const QSet<int> &doubtful, const QString &question, const QString &note)
{
    if (doubtful.isEmpty())
        return true;
    QList<int> axes = doubtful.values();
    std::sort(axes.begin(), axes.end());
    QStringList names;
    for (const int axis : qAsConst(axes))
        names.append(AxisDescription::nameOf(axis));
    const QPointer<SequenceWidget> alive(this);
    if (!MessageBox::confirm(
            this, tr("以下轴未回零，或者位置不可靠：%1\n").arg(names.join(QStringLiteral(", "))) + question) ||
        !alive)
        return false;
    log(doubtful, OPERATION_TYPE_WARNING, note);
    return true;
}

bool SequenceWidget::start(const Sequence &sequence, SequenceRunner::Mode mode, Runs runs)
{
    m_steps->setFaults({});
    forgetRun();
    m_runs = runs;
    ui->tableView_steps->clearSelection();
    if (m_runner.run(sequence, m_positions->rows(), mode))
        return true;
    m_runs = Runs::Nothing;
    const QString reason = whyNot();
    tell(reason.isEmpty() ? tr("轴的状态已改变，请重试。") : reason);
    return false;
}

void SequenceWidget::runSequence(SequenceRunner::Mode mode)
{
    if (m_runner.isActive()) {
        m_runner.resume(mode);
        return;
    }
    const QString reason = whyNot();
    if (!reason.isEmpty()) {
        tell(reason);
        return;
    }
    const QString question = tr("仍然运行吗？");
    const QString note = tr("位置不可靠，仍然运行序列");
    if (m_runs == Runs::Sequence && m_runner.resumeLine() >= 0) {
        if (const auto obstacle = m_runner.obstacle()) {
            tell(SequenceTexts::fault(*obstacle));
            return;
        }
        QSet<int> doubtful;
        const SequenceSetting setting = m_runner.setting();
        for (const int axis : m_runner.plan().axes) {
            if (!setting.axes.value(axis).isTrusted)
                doubtful.insert(axis);
        }
        if (agree(doubtful, question, note) && !m_runner.resume(mode))
            tell(tr("不能从这里继续，请回到开头。"));
        return;
    }
    const SequencePlan plan = check();
    if (plan.faults.isEmpty() && agree(plan.doubtful, question, note))
        start({m_sName.isEmpty() ? tr("未命名") : m_sName, m_steps->rows()}, mode, Runs::Sequence);
}

void SequenceWidget::on_pushButton_run_clicked()
{
    runSequence(SequenceRunner::Mode::Run);
}

void SequenceWidget::on_pushButton_stepRun_clicked()
{
    runSequence(SequenceRunner::Mode::Step);
}

void SequenceWidget::on_pushButton_pauseRun_clicked()
{
    m_runner.pause();
}

void SequenceWidget::on_pushButton_stopRun_clicked()
{
    m_runner.stop();
}

void SequenceWidget::on_pushButton_rewind_clicked()
{
    forgetRun();
    showState();
}

/** What ran last leaves no mark any more, and is not resumed. */
void SequenceWidget::forgetRun()
{
    m_runs = Runs::Nothing;
    m_sNotice.clear();
    m_steps->setFaults({});
    m_runner.rewind();
    showMarks();
}

QString SequenceWidget::runName() const
{
    return m_runs == Runs::Position ? m_runner.sequence().steps.first().text : m_runner.sequence().name;
}

void SequenceWidget::begun()
{
    m_since.start();
    m_progress.start();
    m_sNotice.clear();
    log(m_runner.plan().axes, OPERATION_TYPE_GENERAL, startText());
}

QString SequenceWidget::startText() const
{
    const SequenceStep &first = m_runner.sequence().steps.first();
    const int line = m_runner.line();
    if (m_runs == Runs::Position)
        return tr("前往位置“%1”").arg(runName());
    if (isByHand())
        return tr("手动移向 %1").arg(SequenceTexts::place(first.axis, first.value));
    return line > 0 ? tr("序列“%1”从第 %2 步继续").arg(runName()).arg(line + 1) : tr("序列“%1”开始").arg(runName());
}

QString SequenceWidget::endText(const SequenceEnd &end) const
{
    if (isByHand())
        return tr("手动移动：%1").arg(SequenceTexts::end(end));
    if (m_runs != Runs::Position)
        return SequenceTexts::ended(runName(), end);
    return end.reason == SequenceEnd::Finished ? tr("已到达位置“%1”").arg(runName())
                                               : tr("未到达位置“%1”：%2").arg(runName(), SequenceTexts::end(end));
}

void SequenceWidget::ended(const SequenceEnd &end)
{
    m_progress.stop();
    m_seconds = double(m_since.elapsed()) / 1000;
    const QString text = endText(end);
    log(m_runner.plan().axes, end.isFailure() ? OPERATION_TYPE_WARNING : OPERATION_TYPE_GENERAL, text);
    if (m_runs == Runs::Sequence) {
        m_reported = m_runner.sequence();
        m_report = m_runner.records();
    } else {
        m_sNotice = text;
    }
    showMarks();
    showState();
}

void SequenceWidget::log(const QSet<int> &axes, int type, const QString &text)
{
    QList<int> each = axes.values();
    std::sort(each.begin(), each.end());
    for (const int axis : qAsConst(each))
        emit SerialComDev::instance()->signal_showOperationMsg(axis, OPERATION_STATE_NONE, type, text);
}

// ---- What is shown -------------------------------------------------------------------------------------------------

void SequenceWidget::tell(const QString &text)
{
    m_sNotice = text;
    showState();
}

void SequenceWidget::showMarks()
{
    using Mark = StepModel::Mark;
    QTableView *const table = ui->tableView_steps;
    const auto isVisible = [table, this](int row) {
        return row >= 0 && table->viewport()->rect().intersects(table->visualRect(m_steps->index(row, 0)));
    };
    const int before = m_steps->runLine();
    const bool follows = before < 0 || isVisible(before);
    const SequenceEnd &end = m_runner.lastEnd();
    int tall = -1;
    if (m_runs != Runs::Sequence) {
        m_steps->setRun(-1, Mark::None);
    } else if (m_runner.isActive()) {
        m_steps->setRun(m_runner.line(), m_runner.state() == SequenceRunner::State::Paused ? Mark::Pauses : Mark::Runs);
    } else if (end.reason == SequenceEnd::Finished) {
        m_steps->setRun(m_steps->rowCount(), Mark::None);
    } else if (!end.isFailure()) {
        m_steps->setRun(end.line, Mark::Stopped);
    } else {
        const bool mayStillMove =
            end.reason == SequenceEnd::LinkLost || end.reason == SequenceEnd::Disconnected || !end.isStopped;
        const QString words = mayStillMove                            ? tr("%1。轴可能仍在运动。")
                              : end.reason == SequenceEnd::StoppedAll ? tr("%1。") // which says it already
                                                                      : tr("%1。序列的轴均已停止。");
        m_steps->setRun(end.line, Mark::Failed, words.arg(SequenceTexts::end(end)));
        tall = end.line;
    }
    if (tall != m_iTallRow) {
        if (m_iTallRow >= 0 && m_iTallRow < m_steps->rowCount())
            table->setRowHeight(m_iTallRow, rowHeight);
        if (tall >= 0)
            table->setRowHeight(tall, rowHeight + StepDelegate::ReasonHeight);
        m_iTallRow = tall;
    }
    if (m_steps->runLine() != before && follows && m_steps->runLine() < m_steps->rowCount())
        table->scrollTo(m_steps->index(m_steps->runLine(), 0));
    else if (tall >= 0)
        table->scrollTo(m_steps->index(tall, 0));
}

QString SequenceWidget::statusText() const
{
    const int count = m_steps->rowCount();
    const auto place = [this](int line) {
        const QString step = tr("第 %1 步，共 %2 步").arg(line + 1).arg(m_runner.sequence().steps.size());
        const QPair<int, int> pass = m_runner.pass();
        return pass.second > 1 ? tr("%1，第 %2 遍，共 %3 遍").arg(step).arg(pass.first).arg(pass.second) : step;
    };
    if (m_runner.isActive() && m_runs == Runs::Position)
        return tr("正在前往“%1”").arg(runName());
    if (m_runner.isActive() && isByHand())
        return startText();
    if (m_runner.isActive()) {
        const SequenceStep &step = m_runner.sequence().steps.at(m_runner.line());
        switch (m_runner.state()) {
        case SequenceRunner::State::Asking:
            return step.text;
        case SequenceRunner::State::Paused:
            return tr("已暂停，下一步是%1").arg(place(m_runner.line()));
        case SequenceRunner::State::Pausing:
            return tr("%1，之后暂停").arg(place(m_runner.line()));
        case SequenceRunner::State::Running:
        case SequenceRunner::State::Idle:
            break;
        }
        const QString what = SequenceTexts::where(step);
        return tr("%1：%2").arg(
            place(m_runner.line()), what == QStringLiteral("–") ? SequenceTexts::kind(step.kind) : what);
    }
    if (!m_sNotice.isEmpty())
        return m_sNotice;
    if (m_runs == Runs::Sequence) {
        const SequenceEnd &end = m_runner.lastEnd();
        if (end.reason == SequenceEnd::Finished)
            return tr("已完成 %1 步").arg(count);
        const QString text = tr("停止：%1。").arg(place(end.line));
        return m_runner.resumeLine() >= 0 ? tr("%1运行会从这里继续。").arg(text) : text;
    }
    if (m_store && m_store->isReadOnly())
        return tr("另一个程序正在使用这些位置和序列，这里只能查看。");
    if (!m_session->isConnected())
        return tr("连接控制器后可以运行。");
    return count == 0 ? QString() : tr("共 %1 步").arg(count);
}

void SequenceWidget::showState()
{
    using State = SequenceRunner::State;
    const State state = m_runner.state();
    const bool isActive = m_runner.isActive();
    const bool isSequence = m_runs == Runs::Sequence;
    const bool isEditable = this->isEditable();
    const bool isConnected = m_session->isConnected();
    const bool hasPositions = m_positions->rowCount() > 0;
    const bool hasSteps = m_steps->rowCount() > 0;
    const bool waits = isActive && isSequence && (state == State::Paused || state == State::Asking);
    const bool canStart = !isActive && isConnected && hasSteps && !m_sController.isEmpty();

    m_positions->setEditable(isEditable);
    m_positions->setUsable(isConnected && !isActive, isConnected && isEditable);
    ui->manualMove->setUsable(isConnected && m_session->axisCount() > 0 && (!isActive || isByHand()));
    const auto enable = [](bool isEnabled, std::initializer_list<QPushButton *> buttons) {
        for (QPushButton *button : buttons)
            button->setEnabled(isEnabled);
    };
    enable(isEditable && isConnected && m_session->axisCount() > 0, {ui->pushButton_addPosition});
    enable(isEditable && ui->tableView_positions->selectionModel()->hasSelection(), {ui->pushButton_deletePosition});
    enable(isEditable, {ui->pushButton_importPositions, ui->pushButton_importSteps, ui->pushButton_addStep});
    enable(
        isEditable && ui->tableView_steps->selectionModel()->hasSelection(),
        {ui->pushButton_stepUp, ui->pushButton_stepDown, ui->pushButton_deleteStep});
    enable(hasPositions, {ui->pushButton_exportPositions});
    enable(hasSteps, {ui->pushButton_exportSteps});
    enable(canStart, {ui->pushButton_check});
    enable(canStart || waits, {ui->pushButton_run, ui->pushButton_stepRun});
    enable(isActive && isSequence && state == State::Running, {ui->pushButton_pauseRun});
    enable(isActive, {ui->pushButton_stopRun});
    ui->pushButton_run->setText(waits ? tr("继续") : tr("运行"));
    ui->pushButton_rewind->setVisible(!isActive && isSequence && m_runner.resumeLine() >= 0);
    ui->lineEdit_name->setReadOnly(!isEditable);
    if (!ui->lineEdit_name->hasFocus() || !isEditable) {
        ui->lineEdit_name->setText(m_sName);
        ui->lineEdit_name->setCursorPosition(0); // a long one shows its begin
    }
    ui->tableView_positions->setVisible(hasPositions);
    ui->label_noPositions->setVisible(!hasPositions);
    if (!hasPositions)
        ui->scrollBar_axes->hide();
    ui->tableView_steps->setVisible(hasSteps);
    ui->label_noSteps->setVisible(!hasSteps);
    const QList<QAction *> add = ui->pushButton_addStep->menu()->actions();
    add.at(0)->setText(tr("步骤 …"));
    add.at(1)->setText(tr("扫描 …"));
    const QList<QAction *> save = ui->pushButton_exportSteps->menu()->actions();
    save.at(0)->setText(tr("步骤 …"));
    save.at(1)->setText(tr("运行报告 …"));
    save.at(1)->setEnabled(!isActive && !m_report.isEmpty());

    const QString status = statusText();
    ui->label_sequenceStatus->setText(status);
    ui->label_sequenceStatus->setToolTip(status);
    showProgress();
}

void SequenceWidget::showProgress()
{
    const bool hasRun = m_runs == Runs::Sequence || m_runs == Runs::Position;
    const bool isActive = m_runner.isActive();
    ui->progressBar_run->setValue(hasRun ? int(1000 * m_runner.progress()) : 0);
    const bool isFailed = hasRun && !isActive && m_runner.lastEnd().isFailure();
    if (ui->progressBar_run->property("failed").toBool() != isFailed) {
        ui->progressBar_run->setProperty("failed", isFailed);
        ui->progressBar_run->style()->unpolish(ui->progressBar_run);
        ui->progressBar_run->style()->polish(ui->progressBar_run);
    }
    ui->label_timeLeft->setText(
        !hasRun    ? QString()
        : isActive ? tr("剩余 %1").arg(SequenceTexts::time(m_runner.secondsLeft()))
                   : tr("用时 %1").arg(SequenceTexts::time(m_seconds)));
}

// ---- Window --------------------------------------------------------------------------------------------------------

bool SequenceWidget::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == ui->tableView_positions->viewport() && event->type() == QEvent::Resize)
        fitColumns();
    return QWidget::eventFilter(watched, event);
}

void SequenceWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        m_sNotice.clear();
        m_positions->retranslate();
        m_steps->retranslate();
        showMarks();
        showState();
    }
    QWidget::changeEvent(event);
}

void SequenceWidget::showEvent(QShowEvent *event)
{
    if (!m_store) {
        m_store = std::make_unique<SequenceStore>(m_sFolder);
        const QString controller = m_session->serialNumber();
        if (!controller.isEmpty())
            load(controller);
        showAxes();
        showState();
    }
    m_asks.start();
    askSilentAxes();
    QWidget::showEvent(event);
}

void SequenceWidget::hideEvent(QHideEvent *event)
{
    m_asks.stop();
    save();
    QWidget::hideEvent(event);
}

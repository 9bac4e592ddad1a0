// SPDX-License-Identifier: MIT
#include "shell/BoardAxesWidget.h"

#include "models/StageParams.h"
#include "widgets/Form.h"

#include "ui_BoardAxesWidget.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QListView>

#include <algorithm>
#include <cmath>

namespace {

// Numbers of the board's settings, for the first axis.
constexpr int highestSpeed = 110;
constexpr int ramp = 120;
constexpr int travel = 130;

constexpr int noModel = -1;
constexpr int keptModel = -2; // a stage of the file that the catalogue does not have

} // namespace

BoardAxesWidget::BoardAxesWidget(QWidget *parent)
    : QWidget(parent)
    , ui(makeForm<Ui::BoardAxesWidget>(this))
    , m_rows{
          {{ui->comboBox_letter1, ui->comboBox_model1, ui->label_axis1},
           {ui->comboBox_letter2, ui->comboBox_model2, ui->label_axis2},
           {ui->comboBox_letter3, ui->comboBox_model3, ui->label_axis3}}}
{
    for (const Row &row : m_rows) {
        row.letter->setView(new QListView(row.letter));
        row.model->setView(new QListView(row.model));
        connect(row.letter, QOverload<int>::of(&QComboBox::activated), this, &BoardAxesWidget::showBoard);
    }
}

BoardAxesWidget::~BoardAxesWidget() = default;

void BoardAxesWidget::begin(const BoardLink *link, const ControllersFile::Board &board)
{
    m_link = link;
    m_board = board;
    m_iAxes = link->board().axes;
    m_catalogue.loadFile(QCoreApplication::applicationDirPath() + QLatin1String("/deviceModelsParam"));
    ui->lineEdit_name->setText(board.name);
    for (int k = 0; k < int(m_rows.size()); ++k) {
        const Row &row = m_rows[std::size_t(k)];
        const bool there = k < m_iAxes;
        row.letter->setVisible(there);
        row.model->setVisible(there);
        row.values->setVisible(there);
        row.letter->clear();
        row.model->clear();
        for (int axis = 0; axis < m_iAxes; ++axis)
            row.letter->addItem(BoardLink::letters().mid(axis, 1));
        row.letter->setEnabled(m_iAxes > int(m_rows.size()));
        const ControllersFile::Axis before = board.axes.value(k, {BoardLink::letters().mid(k, 1), {}});
        row.letter->setCurrentIndex(std::max(row.letter->findText(before.letter), 0));
        row.model->addItem(tr("不指定"), noModel);
        for (int type = 0; type < StageTypeCount; ++type) {
            const QStringList names = m_catalogue.names(type);
            for (const QString &name : names)
                row.model->addItem(name, type);
        }
        const QString model = before.stage.value(QStringLiteral("modelName")).toString();
        if (!model.isEmpty() && row.model->findText(model) < 0)
            row.model->addItem(model, keptModel);
        row.model->setCurrentIndex(model.isEmpty() ? 0 : row.model->findText(model));
    }
    showBoard();
}

void BoardAxesWidget::showBoard()
{
    if (!m_link)
        return;
    const MoverBoard &board = m_link->board();
    ui->pushButton_adapt->setEnabled(m_link->isResting());
    for (const Row &row : m_rows) {
        const int axis = row.letter->currentIndex();
        if (axis < 0 || axis >= board.axes)
            continue; // what it said last stays
        row.values->setText(tr("%1 步/mm，行程 %2 mm\n最高 %3 mm/s，由 $%4 决定")
                                .arg(m_link->setting(BoardLink::StepsPerUnit + axis, 0))
                                .arg(m_link->setting(travel + axis, 0))
                                .arg(board.speeds[axis], 0, 'g', 3)
                                .arg(board.speedSettings[axis]));
    }
}

std::optional<MoverDevParam> BoardAxesWidget::chosen(const Row &row) const
{
    const int type = row.model->currentData().toInt();
    return type < 0 ? std::nullopt : m_catalogue.find(row.model->currentText(), type);
}

QJsonObject BoardAxesWidget::stage(const Row &row, int place) const
{
    if (row.model->currentData().toInt() == keptModel)
        return m_board.axes.value(place).stage;
    const std::optional<MoverDevParam> model = chosen(row);
    if (!model)
        return {};
    // The board's steps are those of its own motor and microsteps: the record's pulses follow them.
    MotorParams params = toMotorParams(*model);
    const double steps = m_link->setting(BoardLink::StepsPerUnit + row.letter->currentIndex(), 0);
    if (steps > 0 && params.dispOneCircle > 0) {
        params.pulseOneCircle = uint32_t(std::max(std::round(steps * params.dispOneCircle), 1.0));
        params.dispOneCircle = params.pulseOneCircle / steps;
    }
    return QJsonDocument::fromJson(BoardLink::stageText(params)).object();
}

std::optional<ControllersFile::Board> BoardAxesWidget::board() const
{
    ControllersFile::Board board = m_board;
    board.name = ui->lineEdit_name->text().trimmed();
    board.axes.clear();
    QStringList taken;
    for (int k = 0; k < std::min(m_iAxes, int(m_rows.size())); ++k) {
        const Row &row = m_rows[std::size_t(k)];
        const QString letter = row.letter->currentText();
        if (taken.contains(letter))
            return std::nullopt;
        taken.append(letter);
        board.axes.append({letter, stage(row, k)});
    }
    return board;
}

void BoardAxesWidget::on_pushButton_adapt_clicked()
{
    BoardLink::Settings settings;
    for (const Row &row : m_rows) {
        const std::optional<MoverDevParam> model = chosen(row);
        if (!model || !row.model->isVisibleTo(this))
            continue;
        const int axis = row.letter->currentIndex();
        // What the library writes with the parameters of a stage, all but the steps.
        settings.insert(highestSpeed + axis, model->maxSpeed * 60);
        settings.insert(ramp + axis, model->maxAcc * 10);
        settings.insert(travel + axis, model->maxPos - model->minPos);
    }
    emit signal_proposeSettings(settings);
}

void BoardAxesWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
        for (const Row &row : m_rows)
            row.model->setItemText(0, tr("不指定"));
        showBoard();
    }
    QWidget::changeEvent(event);
}

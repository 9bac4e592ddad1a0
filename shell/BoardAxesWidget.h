// SPDX-License-Identifier: MIT
#pragma once

#include "device/BoardLink.h"
#include "device/ControllersFile.h"
#include "models/StageModelCatalogue.h"

#include <QWidget>

#include <array>
#include <memory>

class QComboBox;
class QLabel;

namespace Ui {
class BoardAxesWidget;
}

/** A page of the controller set-up: the name of a board, and which stage model sits on each of its axes. GUI thread. */
class BoardAxesWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit BoardAxesWidget(QWidget *parent = nullptr);
    ~BoardAxesWidget() override;

    /** What is set up so far; `link` has to answer by now. */
    void begin(const BoardLink *link, const ControllersFile::Board &board);
    /** Shows what the board's settings say now. */
    void showBoard();

    /** What is to be saved; nothing while two rows have the same letter. */
    std::optional<ControllersFile::Board> board() const;

signals:
    /** Settings with which the board fits the chosen models. */
    void signal_proposeSettings(const BoardLink::Settings &settings);

protected:
    void changeEvent(QEvent *event) override;

private slots:
    void on_pushButton_adapt_clicked();

private:
    struct Row {
        QComboBox *letter;
        QComboBox *model;
        QLabel *values;
    };
    /** The model chosen in a row; nothing for none. */
    std::optional<MoverDevParam> chosen(const Row &row) const;
    QJsonObject stage(const Row &row, int place) const;

    std::unique_ptr<Ui::BoardAxesWidget> ui;
    std::array<Row, 3> m_rows;
    StageModelCatalogue m_catalogue;
    const BoardLink *m_link = nullptr;
    ControllersFile::Board m_board;
    int m_iAxes = 0;
};

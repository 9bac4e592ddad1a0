// SPDX-License-Identifier: MIT
#pragma once

#include "session/SequenceFiles.h"
#include "session/SequenceRunner.h"
#include "workbench/PositionModel.h"
#include "workbench/SequenceColours.h"
#include "workbench/StepModel.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QSharedPointer>
#include <QTimer>
#include <QUndoStack>
#include <QWidget>

#include <functional>
#include <memory>

class ControlSession;
class QDialog;
class QTableView;
class QThread;

namespace Ui {
class SequenceWidget;
}

/**
 * The workbench's page of named positions and of a sequence: edits them, keeps them for each controller, and runs them.
 * GUI thread; never waits for the controller.
 */
class SequenceWidget final : public QWidget
{
    Q_OBJECT
    // Set by the style sheet. clazy:excludeall=qproperty-without-notify
    Q_PROPERTY(QString colours READ colours WRITE setColours)

public:
    /** Asks for the name of a file; `filter` is the kind that was chosen among `filters`. Null: cancelled. */
    using AskPath = std::function<QString(
        QWidget *, bool toSave, const QString &suggested, const QStringList &filters, QString *filter)>;

    /** `folder`: where documents are kept; empty: where the program keeps them. */
    explicit SequenceWidget(const QString &folder = QString(), QWidget *parent = nullptr);
    ~SequenceWidget() override;

    QString colours() const { return m_sColours; }
    void setColours(const QString &colours);
    /** For tests: in place of the file dialog. */
    void setAskPath(AskPath ask) { m_askPath = std::move(ask); }

    SequenceDocument document() const;
    /** Changes it as one step that can be undone. */
    void change(const SequenceDocument &document);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void showEvent(QShowEvent *event) override;

private slots:
    void on_pushButton_addPosition_clicked();
    void on_pushButton_deletePosition_clicked();
    void on_pushButton_importPositions_clicked();
    void on_pushButton_exportPositions_clicked();
    void on_pushButton_stepUp_clicked();
    void on_pushButton_stepDown_clicked();
    void on_pushButton_deleteStep_clicked();
    void on_pushButton_importSteps_clicked();
    void on_pushButton_check_clicked();
    void on_pushButton_run_clicked();
    void on_pushButton_pauseRun_clicked();
    void on_pushButton_stepRun_clicked();
    void on_pushButton_stopRun_clicked();
    void on_pushButton_rewind_clicked();
    void on_lineEdit_name_editingFinished();

private:
    class Edit;
    enum class Runs { Nothing, Sequence, Position, Target, Hold };

    void setUpPositions();
    void setUpSteps();
    void addKey(
        QWidget *where, const QList<QKeySequence> &keys, std::function<void()> action,
        Qt::ShortcutContext context = Qt::WidgetShortcut);

    // The document.
    void follow();
    void load(const QString &controller);
    void save();
    void endSaving();
    void saveNow();
    void applied();
    bool isEditable() const;
    QVector<AxisDescription> axes() const;
    void showAxes();
    void fitColumns();

    // Positions.
    std::optional<QMap<int, double>> placesNow(const QList<int> &axes);
    void press(const QModelIndex &button);
    void takeCurrent(int row);
    void go(int row);
    void edited(int row, const NamedPosition &position);
    void movePositions(int by);

    // By hand.
    void setUpManual();
    bool isByHand() const { return m_runs == Runs::Target || m_runs == Runs::Hold; }
    void moveByHand(int axis, double target, double speed, Runs runs);
    void hold(int axis, int direction, double speed);

    // Steps.
    void ask(QDialog *dialog, std::function<void()> accepted);
    void addStep();
    void addScan();
    void editStep(int row);
    void insertSteps(const QVector<SequenceStep> &steps);
    void moveSteps(int by);
    void exportSteps();
    void exportReport();
    QVector<int> selectedRows(const QTableView *table) const;
    void select(QTableView *table, const QVector<int> &rows, int column = 0);

    bool readFile(const QStringList &filters, QString *path, QByteArray *bytes);
    void refuse(const SequenceFileFault &fault);
    void writeFile(const QString &path, const QString &ending, const QByteArray &bytes);

    // Running.
    void askSilentAxes();
    QString whyNot() const;
    SequencePlan check();
    bool agree(const QSet<int> &doubtful, const QString &question, const QString &note);
    bool start(const Sequence &sequence, SequenceRunner::Mode mode, Runs runs);
    void runSequence(SequenceRunner::Mode mode);
    void forgetRun();
    QString runName() const;
    QString startText() const;
    QString endText(const SequenceEnd &end) const;
    void begun();
    void ended(const SequenceEnd &end);
    void log(const QSet<int> &axes, int type, const QString &text);

    void tell(const QString &text);
    void showMarks();
    QString statusText() const;
    void showState();
    void showProgress();

    std::unique_ptr<Ui::SequenceWidget> ui;
    const QSharedPointer<ControlSession> m_session;
    SequenceRunner &m_runner;
    const QString m_sFolder;
    QString m_sColours;
    SequenceColours m_colours;
    PositionModel *const m_positions;
    StepModel *const m_steps;
    QString m_sName;
    QUndoStack m_undo;
    std::unique_ptr<SequenceStore> m_store; // once the page was shown
    QString m_sController;                  // whose document it is
    QTimer m_saveSoon;
    std::unique_ptr<QThread> m_saving;
    std::shared_ptr<bool> m_isSaved; // once that thread has ended
    bool m_isUnsaved = false;
    QMap<QString, SequenceDocument> m_unsaved; // of other controllers: could not be saved before they went
    bool m_hasFailedToSave = false;            // the last time
    QPointer<QDialog> m_dialog;
    QTimer m_progress;           // while one runs
    QTimer m_asks;               // while the page is shown
    int m_iAwaited = 0;          // answers of axes that were asked
    Runs m_runs = Runs::Nothing; // or ran last
    QTimer m_holdAgain;          // while an arrow is held and its axis still moves
    QElapsedTimer m_since;
    double m_seconds = 0; // that the last run took
    Sequence m_reported;  // the last sequence that has ended; moves by hand since leave its report alone
    QVector<SequenceRecord> m_report;
    int m_iTallRow = -1; // with a reason
    QString m_sNotice;   // what has happened; shown until something else does
    AskPath m_askPath;
};

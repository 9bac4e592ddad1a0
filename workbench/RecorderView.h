// SPDX-License-Identifier: MIT
#pragma once

#include "session/RecordingCsv.h"

#include <QSharedPointer>
#include <QThread>
#include <QTimer>
#include <QWidget>

#include <atomic>
#include <functional>
#include <memory>

class AxisRow;
class ControlSession;
class RecorderPlot;

namespace Ui {
class RecorderView;
}

/**
 * The workbench's page of the recorder: plots, what the axes do now and at the cursor, events, and the ways out into
 * files. Looks at the recorder only while it is shown. GUI thread.
 */
class RecorderView final : public QWidget
{
    Q_OBJECT

public:
    /** Asks for the name of a file to write; `filter` is the kind that was chosen among `filters`. Null: cancelled. */
    using AskPath =
        std::function<QString(QWidget *, const QString &suggested, const QStringList &filters, QString *filter)>;

    explicit RecorderView(QWidget *parent = nullptr);
    ~RecorderView() override;

    RecorderPlot *plot() const;
    /** For tests: in place of the file dialog. */
    void setAskPath(AskPath ask) { m_askPath = std::move(ask); }
    bool isExporting() const { return m_job != nullptr; }

protected:
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void showEvent(QShowEvent *event) override;

private slots:
    void on_pushButton_pause_clicked();
    void on_pushButton_exportPicture_clicked();
    void on_pushButton_cancelExport_clicked();

private:
    struct Job;

    void refresh();
    void refreshRows();
    void rebuildRows();
    void showView();
    void showFoot();
    void chooseCapture();
    void exportCsv(bool isAll);
    void showExport();
    void endExport();
    void note(const QString &text);
    QString suggestedPath(const QString &ending) const;

    std::unique_ptr<Ui::RecorderView> ui;
    const QSharedPointer<ControlSession> m_session;
    QTimer m_refresh; // while it is shown
    QTimer m_progress;
    QTimer m_noteEnd;
    quint64 m_revision = 0;
    quint64 m_eventRevision = 0;
    qint64 m_drawnUs = 0;
    QVector<AxisRow *> m_rows;
    int m_iRateHz = 10;
    AskPath m_askPath;
    QString m_sFolder;
    std::shared_ptr<Job> m_job;
    std::unique_ptr<QThread> m_export;
};

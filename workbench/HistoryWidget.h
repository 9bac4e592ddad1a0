// SPDX-License-Identifier: MIT
#pragma once

#include "session/ParameterHistory.h"
#include "workbench/DifferenceDelegate.h"

#include <QColor>
#include <QWidget>

#include <memory>
#include <optional>

namespace Ui {
class HistoryWidget;
}

/**
 * The page of the parameter history: the snapshots, and how two of them differ, or one and the controller now. GUI
 * thread; never waits for the controller or a file.
 */
class HistoryWidget final : public QWidget
{
    Q_OBJECT
    // Colours of the table of differences; the style sheet sets them. clazy:excludeall=qproperty-without-notify
    Q_PROPERTY(QColor textColor READ textColor WRITE setTextColor)
    Q_PROPERTY(QColor quietColor READ quietColor WRITE setQuietColor)
    Q_PROPERTY(QColor markColor READ markColor WRITE setMarkColor)
    Q_PROPERTY(QColor groundColor READ groundColor WRITE setGroundColor)

public:
    explicit HistoryWidget(QWidget *parent = nullptr);
    ~HistoryWidget() override;

    QColor textColor() const { return m_delegate->colours.text; }
    QColor quietColor() const { return m_delegate->colours.quiet; }
    QColor markColor() const { return m_delegate->colours.mark; }
    QColor groundColor() const { return m_delegate->colours.ground; }
    void setTextColor(const QColor &colour) { m_delegate->colours.text = colour; }
    void setQuietColor(const QColor &colour) { m_delegate->colours.quiet = colour; }
    void setMarkColor(const QColor &colour) { m_delegate->colours.mark = colour; }
    void setGroundColor(const QColor &colour) { m_delegate->colours.ground = colour; }

protected:
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private slots:
    void on_pushButton_snapshot_clicked();
    void on_pushButton_export_clicked();
    void on_pushButton_import_clicked();
    void on_pushButton_restore_clicked();
    void on_checkBox_changedOnly_toggled(bool checked);
    void on_comboBox_axis_currentIndexChanged(int index);
    void on_comboBox_compareWith_currentIndexChanged(int index);

private:
    void loaded(const QVector<ParameterSnapshot> &snapshots, const QStringList &damaged);
    void add(const ParameterSnapshot &snapshot);
    void showAxes();
    void showList();
    void showChoices();
    void showDifferences();
    void select(const std::optional<ParameterSnapshot> &snapshot);
    void readNow();
    void restored(const ParameterRestore &result);
    void tell(const QString &text);
    void showStatus(const QString &text);
    const ParameterSnapshot *chosen() const;
    const ParameterSnapshot *other() const;
    bool comparesWithNow() const;
    QVector<ParameterSnapshot> selected() const;

    std::unique_ptr<Ui::HistoryWidget> ui;
    const QSharedPointer<ParameterHistory> m_history;
    DifferenceDelegate *m_delegate;
    QVector<ParameterSnapshot> m_snapshots;    // newest first
    QVector<int> m_listed;                     // which of them the rows of the list are
    QVector<int> m_choices;                    // and those to compare with, behind the controller
    std::optional<ParameterSnapshot> m_now;    // the controller, as it was read last for the chosen axis
    std::optional<ParameterSnapshot> m_before; // to be restored once it was read what that changes
    QString m_sNotice;                         // what has happened; shown in place of the count
    bool m_isLoaded = false;
};

// SPDX-License-Identifier: MIT
#pragma once

#include "session/Recorder.h"

#include <QListView>

#include <memory>

class RecorderPlot;

/** What happened, newest first: sign, time and words. */
class EventList final : public QListView
{
    Q_OBJECT

public:
    explicit EventList(QWidget *parent = nullptr);
    ~EventList() override;

    /** `plot`: has the colours. */
    void setPlot(const RecorderPlot *plot);
    void setRecording(const Recording &recording);
    /** "14:07:58 Axis2 arrived" */
    QStringList texts() const;

signals:
    void signal_eventChosen(qint64 us);

protected:
    void changeEvent(QEvent *event) override;

private:
    class Model;
    class Delegate;

    std::unique_ptr<Model> m_model;
    std::unique_ptr<Delegate> m_delegate;
};

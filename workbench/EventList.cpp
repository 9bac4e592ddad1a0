// SPDX-License-Identifier: MIT
#include "workbench/EventList.h"

#include "workbench/EventWords.h"
#include "workbench/RecorderPlot.h"

#include <QDateTime>
#include <QEvent>
#include <QPainter>
#include <QStyledItemDelegate>

namespace {

constexpr int eventHeight = 28;
constexpr int timeLeft = 36;
constexpr int wordsLeft = 100;

} // namespace

class EventList::Model final : public QAbstractListModel
{
public:
    int rowCount(const QModelIndex &parent) const override { return parent.isValid() ? 0 : m_recording.events.size(); }
    QVariant data(const QModelIndex &index, int role) const override
    {
        const RecorderEvent &each = eventAt(index.row());
        if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
            return EventWords::of(each);
        if (role == Qt::AccessibleTextRole)
            return QString(timeOf(each) + QLatin1Char(' ') + EventWords::of(each));
        return {};
    }
    void set(const Recording &recording)
    {
        beginResetModel();
        m_recording.events = recording.events;
        m_recording.clock = recording.clock;
        endResetModel();
    }
    const RecorderEvent &eventAt(int row) const { return m_recording.events.at(m_recording.events.size() - 1 - row); }
    QString timeOf(const RecorderEvent &event) const
    {
        return QDateTime::fromMSecsSinceEpoch(m_recording.wallMs(event.us)).toString(QStringLiteral("HH:mm:ss"));
    }

private:
    Recording m_recording; // without its axes
};

class EventList::Delegate final : public QStyledItemDelegate
{
public:
    explicit Delegate(const Model *model)
        : m_model(model)
    {
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const RecorderEvent &event = m_model->eventAt(index.row());
        const PlotColours colours = plot->colours();
        const PlotPicture::Mark mark = EventWords::markOf(event, colours);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        if (option.state.testFlag(QStyle::State_Selected)) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(colours.control);
            painter->drawRoundedRect(QRectF(option.rect).adjusted(4, 1, -4, -1), 4, 4);
        }
        drawMark(
            painter, QPointF(option.rect.left() + 20, option.rect.center().y() + 0.5), mark.shape, mark.direction,
            mark.colour);
        QFont font = option.font;
        font.setPixelSize(14);
        painter->setFont(font);
        painter->setPen(colours.textSecondary);
        painter->drawText(option.rect.adjusted(timeLeft, 0, 0, 0), Qt::AlignVCenter, m_model->timeOf(event));
        font.setPixelSize(16);
        painter->setFont(font);
        painter->setPen(mark.isAlarm ? colours.alarm : colours.text);
        const QRect words = option.rect.adjusted(wordsLeft, 0, -6, 0);
        painter->drawText(
            words, Qt::AlignVCenter,
            painter->fontMetrics().elidedText(EventWords::of(event), Qt::ElideRight, words.width()));
        painter->restore();
    }
    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override { return {120, eventHeight}; }

    const RecorderPlot *plot = nullptr;

private:
    const Model *m_model;
};

EventList::EventList(QWidget *parent)
    : QListView(parent)
    , m_model(std::make_unique<Model>())
    , m_delegate(std::make_unique<Delegate>(m_model.get()))
{
    setModel(m_model.get());
    setUniformItemSizes(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const auto choose = [this](const QModelIndex &index) { emit signal_eventChosen(m_model->eventAt(index.row()).us); };
    connect(this, &QListView::activated, this, choose);
    connect(this, &QListView::doubleClicked, this, choose);
}

EventList::~EventList()
{
    setModel(nullptr);
    setItemDelegate(nullptr);
}

void EventList::setPlot(const RecorderPlot *plot)
{
    m_delegate->plot = plot;
    setItemDelegate(m_delegate.get());
}

void EventList::setRecording(const Recording &recording)
{
    m_model->set(recording);
}

QStringList EventList::texts() const
{
    QStringList texts;
    for (int row = 0; row < m_model->rowCount({}); ++row)
        texts.append(m_model->index(row).data(Qt::AccessibleTextRole).toString());
    return texts;
}

void EventList::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        viewport()->update();
    QListView::changeEvent(event);
}
